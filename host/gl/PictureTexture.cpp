#include "host/gl/PictureTexture.h"

#include "base/BArray.h"
#include "host/gl/GeomBuffers.h"

#include <GL/glew.h>

namespace vx
{
static std::uint64_t HashOfPicture(const CPB_Offscreen& picture)
{
    const int form[3] = {picture.Width(), picture.Height(), picture.HasAlpha() ? 1 : 0};
    std::uint64_t hash = HashOf(form, sizeof form);
    for (int y = 0; y < picture.Height(); ++y)
        hash = HashOf(picture.Row(y), 4 * std::size_t(picture.Width()), hash);
    return hash;
}

BString PictureTexture::Upload(const CPB_Offscreen& picture)
{
    const int width = picture.Width(), height = picture.Height();
    const bool fits = picture.BitsPerPixel() == 32;
    const std::uint64_t hash = fits ? HashOfPicture(picture) : 0;
    if (mTexture && fits && hash == mHash)
        return {};
    Release();
    if (!fits)
        return BString::Format("a picture of %d bits a pixel cannot be shown, expected 32", picture.BitsPerPixel());
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    if (width > largest || height > largest)
        return BString::Format("a picture of %d x %d pixels is too large for this OpenGL: at most %d a side", width,
                               height, int(largest));
    BArray<std::uint8_t> pixels;
    if (!pixels.SetCountForWriting(4 * std::int64_t(width) * height))
        return "no memory for a picture";
    for (int y = 0; y < height; ++y)
    {
        const std::uint8_t* from = picture.Row(height - 1 - y);
        std::uint8_t* to = pixels.Data() + 4 * std::int64_t(y) * width;
        for (int x = 0; x < width; ++x, from += 4, to += 4)
        {
            const unsigned alpha = picture.HasAlpha() ? from[3] : 255u;
            for (int c = 0; c < 3; ++c)
                to[c] = std::uint8_t((from[c] * alpha + 127u) / 255u);
            to[3] = std::uint8_t(alpha);
        }
    }
    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.Data());
    glGenerateMipmap(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, 0);
    mWidth = width;
    mHeight = height;
    mHash = hash;
    GpuArray::CountUpload(std::size_t(pixels.Count()));
    return {};
}

void PictureTexture::Release()
{
    if (mTexture)
        glDeleteTextures(1, &mTexture);
    mTexture = 0;
    mWidth = mHeight = 0;
}

void PictureTexture::Bind(int unit) const
{
    glActiveTexture(GL_TEXTURE0 + GLenum(unit));
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glActiveTexture(GL_TEXTURE0);
}
} // namespace vx
