/// @internal
/// @file
/// The recursive lock of the system.
#pragma once

#include "VontalBase/platform/lockorder.h"

#include <array>
#include <cstddef>

namespace qvplatform
{

/// A lock that the thread which holds it can take again. Waiting has no limit, and no failure is reported.
class RecursiveLock
{
public:
    RecursiveLock() noexcept;
    RecursiveLock(const RecursiveLock &) = delete;
    RecursiveLock & operator=(const RecursiveLock &) = delete;
    /// Nobody may hold the lock or wait for it.
    ~RecursiveLock();

    void acquire() noexcept;
    /// Takes the lock if that needs no waiting.
    /// @return whether it was taken; it is then the calling thread's as after `acquire`.
    bool tryAcquire() noexcept;
    /// Gives back one `acquire` of the calling thread.
    void release() noexcept;

    /// What it guards.
    LockRank rank = LockRank::None;

private:
    alignas(std::max_align_t) std::array<std::byte, 40> m_storage;
};

} // namespace qvplatform
