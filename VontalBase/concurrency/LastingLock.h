/// @internal
/// @file
/// Holding a lock that is used to the very end of a process.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/platform/threads.h"

namespace qvbase
{

/// Holds a lock until the end of a scope, unless the system has stopped the thread that had it.
/// A lock of such a thread never comes free, and must not be waited for.
class LastingLock
{
public:
    /// Waits for the lock, if there is anybody to wait for.
    explicit LastingLock(ThreadMutex & guarded) : m_mutex(guarded), m_isHeld(take(guarded))
    {
    }
    LastingLock(const LastingLock &) = delete;
    LastingLock & operator=(const LastingLock &) = delete;
    ~LastingLock()
    {
        if (m_isHeld)
            m_mutex.release();
    }

    /// False where the lock is lost, and what it guards may be half changed.
    [[nodiscard]] bool isHeld() const noexcept
    {
        return m_isHeld;
    }

private:
    static bool take(ThreadMutex & mutex)
    {
        if (mutex.tryAcquire())
            return true;
        if (qvplatform::areOtherThreadsStopped())
            return false;
        mutex.acquire();
        return true;
    }

    ThreadMutex & m_mutex;
    bool m_isHeld;
};

} // namespace qvbase
