// FenwickBase: foundation of the VelmarBase project.
#include "base/BMutex.h"
#include "base/platform/Platform.h"

#include <atomic>
#include <cstdint>
#include <new>

// The owner is kept beside the system's mutex, because what a system does on unlocking somebody else's mutex ranges
// from an error code to undefined behaviour.
struct BMutex::Impl
{
    vx::platform::Mutex* mutex;
    std::atomic<std::uint64_t> owner{
        0};                 // thread number; 0: nobody. Equal to the caller's number only on its own thread
    std::int64_t depth = 0; // read and written by the owner only

    void Entered()
    {
        owner.store(vx::platform::CurrentThreadNumber(), std::memory_order_relaxed);
        ++depth;
    }
    bool IsMine() const { return owner.load(std::memory_order_relaxed) == vx::platform::CurrentThreadNumber(); }
    void Leave()
    {
        if (--depth == 0)
            owner.store(0, std::memory_order_relaxed);
        vx::platform::UnlockMutex(mutex);
    }
};

BMutex::BMutex() : mImpl(nullptr)
{
    vx::platform::Mutex* const mutex = vx::platform::NewMutex();
    if (!mutex)
        return;
    mImpl = new (std::nothrow) Impl{mutex};
    if (!mImpl)
        vx::platform::DeleteMutex(mutex);
}

BMutex::~BMutex()
{
    if (!mImpl)
        return;
    while (mImpl->IsMine()) // systems do not allow to destroy a mutex that is held
        mImpl->Leave();
    vx::platform::DeleteMutex(mImpl->mutex);
    delete mImpl;
}

void BMutex::Lock()
{
    if (!mImpl)
        return;
    vx::platform::LockMutex(mImpl->mutex);
    mImpl->Entered();
}

bool BMutex::TryLock()
{
    if (!mImpl)
        return true;
    if (!vx::platform::TryLockMutex(mImpl->mutex))
        return false;
    mImpl->Entered();
    return true;
}

void BMutex::Unlock()
{
    if (mImpl && mImpl->IsMine())
        mImpl->Leave();
}
