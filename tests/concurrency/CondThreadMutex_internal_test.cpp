#include "VontalBase/concurrency/CondThreadMutex.h"
#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/platform/gates.h"

#include "concurrency/Contender.h"
#include "concurrency/NotedMutex.h"
#include "support/Eventually.h"
#include "support/ResourceSnapshot.h"
#include "support/TestSemaphore.h"

#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::CondThreadMutex;
using qvbase::ThreadMutex;

static_assert(std::has_virtual_destructor_v<CondThreadMutex>);

TEST(CondThreadMutex, GivesUpAWholeRecursiveHoldWhileItWaits)
{
    ThreadMutex mutex;
    CondThreadMutex condition(mutex);
    testsupport::TestSemaphore held;
    std::uint32_t depthBehind = 0;
    std::thread waiter(
        [&]
        {
            mutex.acquire();
            mutex.acquire();
            mutex.acquire();
            held.release();
            condition.wait();
            depthBehind = mutex.getRecursiveCounter();
            mutex.release();
            mutex.release();
            mutex.release();
        });
    held.acquire();
    // To get in here is what the test is about: the waiter must have given up all three levels.
    mutex.acquire();
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    condition.signal();
    mutex.release();
    waiter.join();
    EXPECT_EQ(depthBehind, 3U);
    EXPECT_TRUE(isFree(mutex));
}

TEST(CondThreadMutex, ReleasesAndAcquiresOnceForEachLevel)
{
    NotedMutex mutex;
    CondThreadMutex condition(mutex);
    mutex.acquire();
    mutex.acquire();
    mutex.acquire();
    mutex.log.clear();
    condition.signal();
    EXPECT_EQ(mutex.log, "");
    condition.wait();
    EXPECT_EQ(mutex.log, "release release release acquire acquire acquire ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 3U);
}

TEST(CondThreadMutex, TakesAHoldOfNoneAsNone)
{
    NotedMutex mutex;
    CondThreadMutex condition(mutex);
    condition.signal();
    condition.wait();
    EXPECT_EQ(mutex.log, "");
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(CondThreadMutex, TakesACounterThatWasReleasedTooOftenAsNone)
{
    NotedMutex mutex;
    // It shares the lock and holds it, so that the other one may be released below zero.
    ThreadMutex witness(mutex);
    witness.acquire();
    mutex.release();
    ASSERT_EQ(mutex.getRecursiveCounter(), 4294967295U);
    mutex.log.clear();
    CondThreadMutex condition(mutex);
    condition.signal();
    condition.wait();
    EXPECT_EQ(mutex.log, "");
    EXPECT_EQ(mutex.getRecursiveCounter(), 4294967295U);
    mutex.acquire();
    witness.release();
}

/// Operations of the same names and with other results, which would not compile if they were virtual in the
/// base.
class Shadowing : public CondThreadMutex
{
public:
    using CondThreadMutex::CondThreadMutex;
    static int wait()
    {
        return 1;
    }
    static int signal()
    {
        return 2;
    }
};

TEST(CondThreadMutex, HasNoVirtualOperationButItsDestructor)
{
    ThreadMutex mutex;
    Shadowing own(mutex);
    CondThreadMutex & base = own;
    mutex.acquire();
    base.signal();
    base.wait();
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    mutex.release();
}

/// A thread that waits as often as told and counts.
class Waiter
{
public:
    Waiter(ThreadMutex & mutex, CondThreadMutex & condition, testsupport::TestSemaphore & passed)
        : m_thread(
              [&, this]
              {
                  mutex.acquire();
                  m_holds.release();
                  condition.wait();
                  passed.release();
                  mutex.release();
              })
    {
        m_holds.acquire();
    }
    Waiter(const Waiter &) = delete;
    Waiter & operator=(const Waiter &) = delete;
    ~Waiter()
    {
        m_thread.join();
    }

private:
    testsupport::TestSemaphore m_holds;
    std::thread m_thread;
};

/// Signals as its callers do, with the lock held.
void signal(ThreadMutex & mutex, CondThreadMutex & condition)
{
    mutex.acquire();
    condition.signal();
    mutex.release();
}

TEST(CondThreadMutex, KeepsOneSignalForTheNextWaitAndNotTwo)
{
    ThreadMutex mutex;
    CondThreadMutex condition(mutex);
    signal(mutex, condition);
    signal(mutex, condition);
    mutex.acquire();
    condition.wait();
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U) << "it returned at once";
    mutex.release();

    testsupport::TestSemaphore passed;
    Waiter waiter(mutex, condition, passed);
    EXPECT_FALSE(passed.tryAcquireFor(testsupport::suspicion)) << "the second signal added nothing";
    signal(mutex, condition);
    EXPECT_TRUE(passed.tryAcquireFor(testsupport::patience));
}

TEST(CondThreadMutex, FreesOneWaiterForEachSignal)
{
    ThreadMutex mutex;
    CondThreadMutex condition(mutex);
    testsupport::TestSemaphore passed;
    const Waiter first(mutex, condition, passed);
    const Waiter second(mutex, condition, passed);
    const Waiter third(mutex, condition, passed);
    EXPECT_FALSE(passed.tryAcquireFor(testsupport::suspicion));
    for (int signals = 1; signals <= 3; ++signals)
    {
        signal(mutex, condition);
        EXPECT_TRUE(passed.tryAcquireFor(testsupport::patience)) << "signal " << signals;
        EXPECT_FALSE(passed.tryAcquireFor(testsupport::suspicion)) << "it freed one alone";
    }
}

TEST(CondThreadMutex, WaitsForNothingWhereTheSystemGaveNoEvent)
{
    qvplatform::armGates({"create event", 1, 1, qvplatform::GateAnswer::Fail});
    ThreadMutex mutex;
    CondThreadMutex condition(mutex);
    qvplatform::disarmGates();
    EXPECT_STREQ(qvplatform::faultedGate(), "create event");
    mutex.acquire();
    mutex.acquire();
    condition.wait();
    condition.signal();
    condition.wait();
    EXPECT_EQ(mutex.getRecursiveCounter(), 2U);
}

TEST(CondThreadMutex, GivesItsEventBack)
{
    ThreadMutex mutex;
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 100; ++i)
        const CondThreadMutex condition(mutex);
    EXPECT_LE(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
}

} // namespace
