#include "host/gl/LoadGL.h"

#include <GL/glew.h>

namespace vx
{
// What GLEW built for GLX answers when there is an EGL or Wayland context: it looks for an X display after it has
// loaded every entry point.
static constexpr GLenum kNoGlxDisplay = 4;

BString LoadGL()
{
    glewExperimental = GL_TRUE; // a core or EGL context does not list what GLEW looks for
    const GLenum answer = glewInit();
    const bool loaded = glGenBuffers && glGenFramebuffers && glTexBuffer && glDrawElementsBaseVertex;
    if (answer != GLEW_OK && !(answer == kNoGlxDisplay && loaded))
        return BString::Format("OpenGL's functions could not be loaded (%s)",
                               reinterpret_cast<const char*>(glewGetErrorString(answer)));
    while (glGetError() != GL_NO_ERROR) // GLEW's own probing leaves errors in newer contexts
    {
    }
    GLint major = 0, minor = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    if (!loaded || major * 10 + minor < 33)
        return BString::Format("OpenGL 3.3 is needed, this machine offers %s", DescribeGL().CString());
    return {};
}

bool ContextIsAlive()
{
    if (!glGetString(GL_VERSION))
        return false;
    // Contexts that were not asked to tell of resets answer that there was none.
    return !glGetGraphicsResetStatus || glGetGraphicsResetStatus() == GL_NO_ERROR;
}

BString DescribeGL()
{
    const auto text = [](GLenum what)
    {
        const GLubyte* const value = glGetString(what);
        return BString(value ? reinterpret_cast<const char*>(value) : "unknown");
    };
    return text(GL_RENDERER) + ", " + text(GL_VERSION);
}

static const char* ErrorName(GLenum error)
{
    switch (error)
    {
    case GL_INVALID_ENUM:
        return "invalid enum";
    case GL_INVALID_VALUE:
        return "invalid value";
    case GL_INVALID_OPERATION:
        return "invalid operation";
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return "invalid framebuffer operation";
    case GL_OUT_OF_MEMORY:
        return "out of memory";
    default:
        return "unknown error";
    }
}

BString PendingGLErrors()
{
    BString names;
    // Bounded: without a context glGetError may answer errors for ever.
    for (int i = 0; i < 16; ++i)
    {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR)
            break;
        names += names.IsEmpty() ? "" : ", ";
        names += ErrorName(error);
    }
    return names;
}
} // namespace vx
