/// @internal
/// @file
/// What a thread waits for: an auto-reset event and a counting semaphore.
///
/// Waiting has no limit. A thing that the system did not give, or that was closed, is not waited for:
/// `wait` and `acquire` then return at once. No failure is reported.
#pragma once

#include <memory>

namespace qvplatform
{

/// A flag that frees one waiter each time it is set. Setting it twice before a wait frees one waiter.
class AutoResetEvent
{
public:
    /// An event that is not set.
    AutoResetEvent();
    AutoResetEvent(const AutoResetEvent &) = delete;
    AutoResetEvent & operator=(const AutoResetEvent &) = delete;
    ~AutoResetEvent();

    void set() noexcept;
    void wait() noexcept;

private:
    struct System;
    std::unique_ptr<System> m_system;
};

/// A count of at most 2147483647 that threads wait to take from.
class CountingSemaphore
{
public:
    /// A negative count is refused by the system.
    explicit CountingSemaphore(int initialCount);
    CountingSemaphore(const CountingSemaphore &) = delete;
    CountingSemaphore & operator=(const CountingSemaphore &) = delete;
    ~CountingSemaphore();

    void acquire() noexcept;
    /// Does nothing when the count is at its limit.
    void release() noexcept;
    /// Gives the semaphore back to the system; a second call does nothing.
    void close() noexcept;

private:
    struct System;
    std::unique_ptr<System> m_system;
};

} // namespace qvplatform
