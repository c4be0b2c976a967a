/// @file
/// A semaphore for the tests' own threads.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace testsupport
{

/// Begins at 0. In place of std::counting_semaphore, which in some versions of the standard library can miss
/// a release and sleep for ever.
///
/// A waiter may destroy it as soon as it is let go, even while the `release` that let it go still runs.
class TestSemaphore
{
public:
    void release()
    {
        const std::shared_ptr<State> state = m_state;
        const std::lock_guard lock(state->mutex);
        ++state->count;
        state->changed.notify_one();
    }

    void acquire()
    {
        const std::shared_ptr<State> state = m_state;
        std::unique_lock lock(state->mutex);
        state->changed.wait(lock, [&] { return state->count > 0; });
        --state->count;
    }

    /// False if the count was still 0 at the end of the time.
    bool tryAcquireFor(std::chrono::milliseconds limit)
    {
        const std::shared_ptr<State> state = m_state;
        std::unique_lock lock(state->mutex);
        if (!state->changed.wait_for(lock, limit, [&] { return state->count > 0; }))
            return false;
        --state->count;
        return true;
    }

    /// False if the count is 0.
    bool tryAcquire()
    {
        return tryAcquireFor(std::chrono::milliseconds(0));
    }

private:
    struct State
    {
        std::mutex mutex;
        std::condition_variable changed;
        int count = 0;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace testsupport
