/// @internal
/// @file
/// The system's threads.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvplatform
{

/// What a thread runs. The result is of no use to anybody.
using ThreadEntry = unsigned int (*)(void * argument);

/// A thread that was started and not yet joined.
struct StartedThread
{
    /// Null where the start failed.
    void * handle = nullptr;
    /// The system's number of the thread.
    std::uint32_t id = 0;
};

/// Starts a thread, which may run before this call returns.
/// @param stackBytes the size of its stack; 0 for the system's own choice.
/// @return the thread, which one `joinThread` must be given; a null handle where the system refused.
StartedThread startThread(ThreadEntry entry, void * argument, std::size_t stackBytes = 0);

/// Waits without limit until the thread has ended, and closes its handle.
void joinThread(void * handle) noexcept;

/// The system's number of the calling thread, the same that `startThread` told of it.
std::uint32_t currentThreadId() noexcept;

/// The system's number of this process; another one in a copy that the process has made of itself.
std::uint32_t currentProcessId() noexcept;

/// The system's pseudo-handle for "the calling thread", the same value in every thread.
void * currentThreadPseudoHandle() noexcept;

/// Suspends the calling thread for at least so many milliseconds; 0 gives up the rest of its time slice, and
/// the greatest number is without end.
void sleepMilliseconds(unsigned int milliseconds) noexcept;

/// Whether the process is at its end and the system has already stopped all other threads, wherever they
/// were, so that a lock which one of them held is never given back. False where threads run to the very end.
///
/// The gate "threads run on" makes it true.
bool areOtherThreadsStopped() noexcept;

/// Makes the calling thread a single-threaded COM apartment, where there is COM. No failure is reported.
void enterApartment() noexcept;
/// Undoes one `enterApartment`.
void leaveApartment() noexcept;

} // namespace qvplatform
