/// A thread that wants a lock which the test may hold.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"

#include "support/Eventually.h"
#include "support/TestSemaphore.h"

#include <thread>

/// Takes the lock once, as soon as it can, and gives it back. Whoever makes it frees the lock before the end.
class Contender
{
public:
    explicit Contender(qvbase::ThreadMutex & mutex)
        : m_thread(
              [this, &mutex]
              {
                  m_started.release();
                  mutex.acquire();
                  mutex.release();
                  m_entered.release();
              })
    {
        m_started.acquire();
    }
    Contender(const Contender &) = delete;
    Contender & operator=(const Contender &) = delete;
    ~Contender()
    {
        m_thread.join();
    }

    /// Whether it got the lock. To be asked once for true.
    bool entered()
    {
        return m_entered.tryAcquireFor(testsupport::patience);
    }

    /// Whether it still waits, after time enough for one that does not.
    bool isKeptOut()
    {
        return !m_entered.tryAcquireFor(testsupport::suspicion);
    }

private:
    testsupport::TestSemaphore m_started;
    testsupport::TestSemaphore m_entered;
    std::thread m_thread;
};

/// Whether another thread gets the lock at this moment.
inline bool isFree(qvbase::ThreadMutex & mutex)
{
    Contender contender(mutex);
    return contender.entered();
}
