// VelmarBase: reference host.
#pragma once

#include "VelmarHostExport.h"
#include "base/BString.h"

#include <memory>

namespace vx
{
/// An OpenGL context without a window, for pictures that go to files. Needs no display server: EGL on the surfaceless
/// platform first, then on a graphics device, then on the default display. Drawing goes to framebuffer objects.
/// One thread at a time; the context is current on the thread that created it until Release or destruction.
class VELMAR_HOST_EXPORT OffscreenContext
{
public:
    OffscreenContext();
    ~OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

    /// Makes a context of at least OpenGL 3.3, compatibility profile, loads its functions and makes it current.
    /// False where there is no OpenGL to be had; Error() then says why.
    bool Create();
    bool MakeCurrent();
    void Release(); ///< no context is current on this thread afterwards

    bool IsCreated() const { return mImpl != nullptr; }
    const BString& Error() const { return mError; }             ///< one line, empty after success
    const BString& Description() const { return mDescription; } ///< "platform: renderer, version"

private:
    struct Impl;
    std::unique_ptr<Impl> mImpl;
    BString mError, mDescription;
};
} // namespace vx
