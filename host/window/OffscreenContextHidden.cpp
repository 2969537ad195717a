// For systems without EGL: the context of a window that is never shown. Needs a desktop, unlike its sibling
// OffscreenContext.cpp; the build takes one of the two.
#include "host/window/OffscreenContext.h"

#include "host/gl/LoadGL.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

namespace vx
{
// GLFW is started by the first context and ended by the last. Windows belong to the main thread, so this is not locked.
static int sUsers = 0;

struct OffscreenContext::Impl
{
    GLFWwindow* window = nullptr;
    bool started = false;

    ~Impl()
    {
        if (window)
            glfwDestroyWindow(window);
        if (started && --sUsers == 0)
            glfwTerminate();
    }

    BString Open()
    {
        const char* why = nullptr;
        started = sUsers > 0 || glfwInit() == GLFW_TRUE;
        if (!started)
        {
            glfwGetError(&why);
            return why ? why : "no desktop";
        }
        ++sUsers;
        glfwDefaultWindowHints();
        glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
        glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_COMPAT_PROFILE);
        window = glfwCreateWindow(16, 16, "", nullptr, nullptr);
        if (!window)
        {
            glfwGetError(&why);
            return why ? why : "no OpenGL 3.3 with the compatibility profile";
        }
        glfwMakeContextCurrent(window);
        return LoadGL();
    }
};

OffscreenContext::OffscreenContext() = default;
OffscreenContext::~OffscreenContext() = default;

bool OffscreenContext::Create()
{
    mImpl.reset();
    mError.Empty();
    auto impl = std::make_unique<Impl>();
    const BString problem = impl->Open();
    if (!problem.IsEmpty())
    {
        mError = "no OpenGL to be had (" + problem + ")";
        return false;
    }
    mImpl = std::move(impl);
    mDescription = "hidden window: " + DescribeGL();
    return true;
}

bool OffscreenContext::MakeCurrent()
{
    if (!mImpl)
        return false;
    glfwMakeContextCurrent(mImpl->window);
    return glfwGetCurrentContext() == mImpl->window;
}

void OffscreenContext::Release()
{
    if (mImpl)
        glfwMakeContextCurrent(nullptr);
}
} // namespace vx
