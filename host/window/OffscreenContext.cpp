#include "host/window/OffscreenContext.h"

#include "host/gl/LoadGL.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstring>
#include <vector>

namespace vx
{
namespace
{
struct Candidate
{
    const char* platform;
    EGLDisplay display;
};

bool HasExtension(const char* list, const char* name)
{
    const std::size_t length = std::strlen(name);
    for (const char* at = list; at && (at = std::strstr(at, name)); at += length)
        if ((at == list || at[-1] == ' ') && (at[length] == ' ' || at[length] == 0))
            return true;
    return false;
}

template <class Function>
Function Load(const char* name)
{
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

// Displays in the order in which they are tried.
std::vector<Candidate> Candidates()
{
    std::vector<Candidate> found;
    const char* const extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const auto platformDisplay = Load<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    const auto add = [&](const char* platform, EGLDisplay display)
    {
        if (display != EGL_NO_DISPLAY)
            found.push_back({platform, display});
    };
    if (platformDisplay && HasExtension(extensions, "EGL_MESA_platform_surfaceless"))
        add("surfaceless", platformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
    const auto queryDevices = Load<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    if (platformDisplay && queryDevices && HasExtension(extensions, "EGL_EXT_platform_device"))
    {
        EGLDeviceEXT devices[8];
        EGLint count = 0;
        if (queryDevices(8, devices, &count))
            for (EGLint i = 0; i < count; ++i)
                add("device", platformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr));
    }
    add("default display", eglGetDisplay(EGL_DEFAULT_DISPLAY));
    return found;
}
} // namespace

struct OffscreenContext::Impl
{
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE;
    bool opened = false;

    ~Impl()
    {
        if (!opened)
            return;
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (surface != EGL_NO_SURFACE)
            eglDestroySurface(display, surface);
        if (context != EGL_NO_CONTEXT)
            eglDestroyContext(display, context);
        // The display stays initialised until the process ends: another context may use it, and starting a driver again
        // takes a good part of a second.
    }

    // Empty on success, else what this display lacks.
    BString Open(EGLDisplay on)
    {
        display = on;
        opened = eglInitialize(display, nullptr, nullptr) == EGL_TRUE;
        if (!opened)
            return "cannot be initialised";
        if (!eglBindAPI(EGL_OPENGL_API))
            return "has no desktop OpenGL";
        const EGLint configWish[] = {EGL_SURFACE_TYPE,    EGL_PBUFFER_BIT, EGL_RED_SIZE,  8, EGL_GREEN_SIZE, 8,
                                     EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,  EGL_BLUE_SIZE, 8, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (!eglChooseConfig(display, configWish, &config, 1, &count) || count < 1)
            return "has no configuration for offscreen drawing";
        // What is needed, not the newest: a driver answers with the newest that is compatible.
        const EGLint contextWish[] = {EGL_CONTEXT_MAJOR_VERSION,
                                      3,
                                      EGL_CONTEXT_MINOR_VERSION,
                                      3,
                                      EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                      EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT,
                                      EGL_NONE};
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextWish);
        if (context == EGL_NO_CONTEXT)
            return "offers no OpenGL 3.3 with the compatibility profile";
        // Never drawn to; some drivers make no context current without a surface.
        const EGLint size[] = {EGL_WIDTH, 4, EGL_HEIGHT, 4, EGL_NONE};
        surface = eglCreatePbufferSurface(display, config, size);
        if (surface == EGL_NO_SURFACE)
            return "has no offscreen surface";
        if (!eglMakeCurrent(display, surface, surface, context))
            return "does not make its context current";
        return LoadGL();
    }
};

OffscreenContext::OffscreenContext() = default;
OffscreenContext::~OffscreenContext() = default;

bool OffscreenContext::Create()
{
    mImpl.reset();
    mError.Empty();
    BString tried;
    for (const Candidate& candidate : Candidates())
    {
        auto impl = std::make_unique<Impl>();
        const BString problem = impl->Open(candidate.display);
        if (problem.IsEmpty())
        {
            mImpl = std::move(impl);
            mDescription = BString(candidate.platform) + ": " + DescribeGL();
            return true;
        }
        tried += BString::Format("%s%s: %s", tried.IsEmpty() ? "" : "; ", candidate.platform, problem.CString());
    }
    mError = "no OpenGL to be had (";
    mError += tried.IsEmpty() ? BString("EGL offers no display") : tried;
    mError += ")";
    return false;
}

bool OffscreenContext::MakeCurrent()
{
    return mImpl && eglBindAPI(EGL_OPENGL_API) &&
           eglMakeCurrent(mImpl->display, mImpl->surface, mImpl->surface, mImpl->context);
}

void OffscreenContext::Release()
{
    if (mImpl)
        eglMakeCurrent(mImpl->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}
} // namespace vx
