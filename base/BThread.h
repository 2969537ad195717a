// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BDependentProvider.h"

#include <cstddef>

/// One operating-system thread. The thread runs DoBegin once, then DoRepeatedly for as long as it answers true, then
/// DoDone. A started thread is joined by Join or by the destructor, but a subclass must Join before its own members
/// die, since the virtual functions run on the thread.
class FENWICK_EXPORT BThread : public BDependentProvider
{
public:
    /// @param startSuspended accepted and not used: construction never starts the thread, because the subclass whose
    ///                       virtual functions it would run does not exist yet; Run does
    /// @param stackSize bytes; 0 takes the system's default
    /// @param lowPriority a hint; ignored where the system has no such thing
    BThread(bool startSuspended, std::size_t stackSize, bool lowPriority);
    ~BThread() override;

    bool Run();         ///< starts the thread; false when it is running already or could not be started
    void Join();        ///< waits for the end; nothing when it is not running
    void RequestStop(); ///< DoRepeatedly is not called again
    bool StopRequested() const;
    bool IsCurrentThread() const; ///< the caller runs on this thread
    /// Makes the object stand for the calling thread, which it neither starts nor joins: for naming the main thread.
    void AdoptCurrentThread();

protected:
    virtual void DoBegin() {}
    virtual bool DoRepeatedly() { return false; }
    virtual void DoDone() {}

private:
    static void Main(void* self);

    struct Impl;
    Impl* mImpl;
};
