#include "shader/detail/NoiseUpload.h"

#include "draw/detail/LoadGL.h"

#include <GL/glew.h>

namespace vx
{
void LoadVolumeFunctions() { LoadGLFunctions(); }

void UploadNoiseVolume(std::uint32_t texture, int width, int height, int depth, const std::uint8_t* bytes)
{
    glBindTexture(GL_TEXTURE_3D, texture);
    glTexParameterf(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, 0.0f); // of the 2D target: intended
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, GL_REPEAT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (glTexImage3D)
        glTexImage3D(GL_TEXTURE_3D, 0, GL_LUMINANCE, width, height, depth, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, bytes);
}
} // namespace vx
