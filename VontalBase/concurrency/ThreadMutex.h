/// @file
/// The one lock type of the library.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <memory>

namespace qvplatform
{
class RecursiveLock;
}

namespace qvbase
{

/// A recursive lock: the thread that holds it can acquire it again, and gives it back as many times.
///
/// Waiting has no limit; there is no attempt without waiting. No failure is reported.
///
/// Locks of the library that may be held together are taken in this order: that of a long-running command;
/// that of a task executor or of a process runner; that of the thread registry; that of the resource manager;
/// that of the multi-language strings; and last that of a logger or `g_referencedObjectMutex`, under which no
/// other one is taken.
class VONTALBASE_API ThreadMutex
{
public:
    /// A free lock. `std::bad_alloc` may leave it.
    ThreadMutex();
    /// Kept: copies the members as they stand. The copy has no lock of its own: it takes and gives back
    /// that of @p other, and its counter begins at what that of @p other is now.
    ThreadMutex(const ThreadMutex & other) = default;
    /// Kept: copies the members as they stand, as the copy constructor does.
    ThreadMutex & operator=(const ThreadMutex & other) = default;
    /// Gives the lock back as many times as it is held, and then deletes it. A lock that other objects
    /// share through copying lives on in them. No other thread may hold it or wait for it.
    virtual ~ThreadMutex();

    /// Waits until the lock is free or the caller's own, and takes it once.
    virtual void acquire();
    /// Gives the lock back once. The caller must hold it.
    virtual void release();

    /// How many times the lock is held. The answer means something only to the thread that holds it.
    std::uint32_t getRecursiveCounter() const noexcept
    {
        return recursiveCounter;
    }

private:
    // The log and the resource manager must not wait for threads that are gone.
    friend class LastingLock;
    friend class LockRanks;

    /// Takes the lock once if that needs no waiting. @return whether it was taken.
    bool tryAcquire() noexcept;

    std::shared_ptr<qvplatform::RecursiveLock> lock;
    std::uint32_t recursiveCounter = 0;
};

} // namespace qvbase
