/// @internal
/// @file
/// Telling the library's locks apart for the check of their order.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/platform/lockorder.h"
#include "VontalBase/platform/locks.h"

namespace qvbase
{

/// Gives ranks to locks.
class LockRanks
{
public:
    /// Called once, before the lock is used.
    static void set(ThreadMutex & mutex, qvplatform::LockRank rank) noexcept
    {
        mutex.lock->rank = rank;
    }
};

/// A lock that has its rank from the beginning.
struct RankedMutex
{
    explicit RankedMutex(qvplatform::LockRank rank)
    {
        LockRanks::set(mutex, rank);
    }

    ThreadMutex mutex;
};

} // namespace qvbase
