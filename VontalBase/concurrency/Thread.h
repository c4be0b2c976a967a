/// @file
/// The library's one way of starting a thread.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>

namespace qvbase
{

class Runnable;

/// The handle of a thread, as a value that owns nothing.
///
/// Nothing stops a thread from outside and nothing joins one: a thread ends when its `run` returns. Each
/// thread that ends closes the handles of those that ended before it, and the handle of the last stays open.
/// Nothing waits for running threads when the process ends; the library must not be unloaded while they run.
class VONTALBASE_API Thread
{
public:
    /// Stores @p handle as it is. It is never closed.
    Thread(void * handle) noexcept : m_handle(handle)
    {
    }
    /// Copies what the other one has.
    Thread(const Thread &) = default;
    /// Copies what the other one has.
    Thread & operator=(const Thread &) = default;

    /// Whether the two handles are the same value.
    bool operator==(const Thread & other) const noexcept
    {
        return m_handle == other.m_handle;
    }

    /// Starts a thread that runs @p runnable.
    ///
    /// The thread holds a reference on @p runnable until its `run` has returned, and drops it on that
    /// thread; the object is then destroyed there if nobody else holds it. On Windows the thread is a
    /// single-threaded COM apartment as long as it runs. Any thread may call it.
    ///
    /// @param runnable the work, or null.
    ///
    /// @return true if the thread was started; false, with no reference kept, if @p runnable is null or the
    ///     system refused. An object that nobody else holds is then destroyed before the call returns, with
    ///     the lock of the thread registry held. `std::bad_alloc` may leave the call, which then has done
    ///     nothing, so that the object is still the caller's.
    static bool execute(Runnable * runnable);

    /// The system's pseudo-handle of the calling thread.
    ///
    /// Kept: it is the same value in every thread, so any two results are equal.
    static Thread getCurrentThread() noexcept;

private:
    static std::uint32_t threadProc(void * parameter);

    void * m_handle;
};

} // namespace qvbase
