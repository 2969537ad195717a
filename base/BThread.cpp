// FenwickBase: foundation of the VelmarBase project.
#include "base/BThread.h"
#include "base/platform/Platform.h"

#include <atomic>
#include <cstdint>
#include <new>

struct BThread::Impl
{
    std::size_t stackSize;
    bool lowPriority;
    vx::platform::Thread* thread = nullptr; // started and not joined yet
    std::atomic<std::uint64_t> number{0};   // of the thread that this object stands for; 0: none
    std::atomic<bool> finished{false};      // DoDone has returned
    std::atomic<bool> stopRequested{false};
};

BThread::BThread(bool, std::size_t stackSize, bool lowPriority) : mImpl(new (std::nothrow) Impl{stackSize, lowPriority})
{
}

BThread::~BThread()
{
    RequestStop(); // the subclass is gone by now, so there is nothing left to repeat
    Join();
    delete mImpl;
}

bool BThread::Run()
{
    if (!mImpl || IsCurrentThread() || (mImpl->thread && !mImpl->finished.load(std::memory_order_acquire)))
        return false;
    Join();
    mImpl->finished.store(false, std::memory_order_relaxed);
    mImpl->stopRequested.store(false, std::memory_order_relaxed);
    mImpl->thread = vx::platform::StartThread(&Main, this, mImpl->stackSize, mImpl->lowPriority);
    return mImpl->thread != nullptr;
}

void BThread::Main(void* self)
{
    BThread* const thread = static_cast<BThread*>(self);
    Impl* const impl = thread->mImpl;
    impl->number.store(vx::platform::CurrentThreadNumber(), std::memory_order_relaxed);
    thread->DoBegin();
    while (!thread->StopRequested() && thread->DoRepeatedly())
        ;
    thread->DoDone();
    impl->finished.store(true, std::memory_order_release);
}

void BThread::Join()
{
    if (IsCurrentThread() || !mImpl || !mImpl->thread) // a thread that waits for its own end waits for ever
        return;
    vx::platform::JoinThread(mImpl->thread);
    mImpl->thread = nullptr;
    mImpl->number.store(0, std::memory_order_relaxed);
}

void BThread::RequestStop()
{
    if (mImpl)
        mImpl->stopRequested.store(true, std::memory_order_relaxed);
}

bool BThread::StopRequested() const { return mImpl && mImpl->stopRequested.load(std::memory_order_relaxed); }

bool BThread::IsCurrentThread() const
{
    return mImpl && mImpl->number.load(std::memory_order_relaxed) == vx::platform::CurrentThreadNumber();
}

void BThread::AdoptCurrentThread()
{
    if (mImpl && !mImpl->thread)
        mImpl->number.store(vx::platform::CurrentThreadNumber(), std::memory_order_relaxed);
}
