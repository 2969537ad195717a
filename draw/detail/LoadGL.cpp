#include "draw/detail/LoadGL.h"

#include <GL/glew.h>

namespace vx
{
static bool AreLoaded()
{
    return glTexImage3D && glUseProgram && glBindFramebuffer && glDeleteFramebuffers && glDeleteRenderbuffers;
}

// What glewInit answers is not looked at: built for GLX, it reports failure under EGL and Wayland after it has loaded
// every function. The functions themselves are the test.
bool LoadGLFunctions()
{
    if (AreLoaded())
        return true;
    glewExperimental = GL_TRUE;
    glewInit();
    constexpr int kMostErrors = 16; // without a context there may be no end of them
    for (int i = 0; i < kMostErrors && glGetError() != GL_NO_ERROR; ++i)
    {
    }
    return AreLoaded();
}
} // namespace vx
