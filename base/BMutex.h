// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"

/// A recursive mutex: the thread that holds it may lock it again and must unlock it as often. Unlocking a mutex that
/// the calling thread does not hold does nothing.
class FENWICK_EXPORT BMutex
{
public:
    BMutex();
    ~BMutex();
    BMutex(const BMutex&) = delete;
    BMutex& operator=(const BMutex&) = delete;

    void Lock(); ///< waits without time limit
    bool TryLock();
    void Unlock();

private:
    struct Impl;
    Impl* mImpl; ///< null only when memory ran out at construction; then nothing is ever locked
};

/// Holds a mutex for the length of a scope.
class BMutexLock
{
public:
    explicit BMutexLock(BMutex& mutex) : mMutex(mutex) { mMutex.Lock(); }
    ~BMutexLock() { mMutex.Unlock(); }
    BMutexLock(const BMutexLock&) = delete;
    BMutexLock& operator=(const BMutexLock&) = delete;

private:
    BMutex& mMutex;
};
