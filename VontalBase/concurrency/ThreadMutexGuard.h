/// @file
/// Holding a lock for a scope.
#pragma once

#include "VontalBase/export.h"

namespace qvbase
{

class ThreadMutex;

/// Holds a `ThreadMutex` until the end of a scope.
///
/// It remembers whether it holds the lock, but not how many times: its destructor gives one hold back. Taking
/// and giving back go through the virtual operations of the lock. A guard belongs to the thread that made it.
class VONTALBASE_API ThreadMutexGuard
{
public:
    /// Guards a lock.
    ///
    /// Kept: the guard believes that it holds the lock also when @p acquireNow is false, so that its
    /// destructor gives back a hold which the caller took.
    ///
    /// @param guarded the lock, which must outlive the guard.
    /// @param acquireNow whether to take the lock here.
    ThreadMutexGuard(ThreadMutex & guarded, bool acquireNow);
    /// Kept: copies the members, so that both guards give the lock back.
    ThreadMutexGuard(const ThreadMutexGuard & other) = default;
    /// Copies the members: the hold that this guard had is no longer given back.
    ThreadMutexGuard & operator=(const ThreadMutexGuard & other) = default;
    /// Gives the lock back if the guard believes that it holds it.
    virtual ~ThreadMutexGuard();

    /// Waits for the lock and takes it once more, whether or not the guard holds it already.
    virtual void acquire();
    /// Gives the lock back once, whether or not the guard holds it: the calling thread must.
    virtual void release();
    /// Forgets the hold and leaves the lock as it is, for somebody else to give back.
    virtual void detach();

private:
    ThreadMutex * mutex;
    bool locked;
};

} // namespace qvbase
