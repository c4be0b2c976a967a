/// @file
/// A place where the tests' own threads wait for each other.
#pragma once

#include <condition_variable>
#include <mutex>

namespace testsupport
{

/// In place of std::barrier, which in some versions of the standard library can miss an arrival and sleep for
/// ever. It serves once.
class TestBarrier
{
public:
    explicit TestBarrier(int threads) : m_missing(threads)
    {
    }

    /// Waits until as many threads have come as there are.
    void arriveAndWait()
    {
        std::unique_lock lock(m_mutex);
        --m_missing;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_missing == 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_missing;
};

} // namespace testsupport
