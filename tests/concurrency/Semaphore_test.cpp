#include "VontalBase/concurrency/Semaphore.h"

#include "support/Eventually.h"
#include "support/ResourceSnapshot.h"
#include "support/TestSemaphore.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::Semaphore;
using testsupport::patience;
using testsupport::suspicion;

static_assert(std::has_virtual_destructor_v<Semaphore>);
static_assert(std::is_constructible_v<Semaphore, int>);
static_assert(std::is_copy_constructible_v<Semaphore> && std::is_copy_assignable_v<Semaphore>);

static_assert(std::is_convertible_v<int, Semaphore>, "the constructor is not explicit");

/// Operations of the same names and with other results, which would not compile if they were virtual in the
/// base.
class Shadowing : public Semaphore
{
public:
    using Semaphore::Semaphore;
    static int acquire()
    {
        return 1;
    }
    static int release()
    {
        return 2;
    }
};

/// A thread that acquires once and says so.
class Waiter
{
public:
    explicit Waiter(Semaphore & semaphore)
        : m_thread(
              [this, &semaphore]
              {
                  m_started.release();
                  semaphore.acquire();
                  m_passed.release();
              })
    {
        m_started.acquire();
    }
    Waiter(const Waiter &) = delete;
    Waiter & operator=(const Waiter &) = delete;
    ~Waiter()
    {
        m_thread.join();
    }
    bool passed()
    {
        return m_passed.tryAcquireFor(patience);
    }
    bool waits()
    {
        return !m_passed.tryAcquireFor(suspicion);
    }

private:
    testsupport::TestSemaphore m_started;
    testsupport::TestSemaphore m_passed;
    std::thread m_thread;
};

TEST(Semaphore, LetsAsManyPassAsItsInitialCount)
{
    Semaphore semaphore(3);
    semaphore.acquire();
    semaphore.acquire();
    semaphore.acquire();
    Waiter waiter(semaphore);
    EXPECT_TRUE(waiter.waits());
    semaphore.release();
    EXPECT_TRUE(waiter.passed());
}

TEST(Semaphore, LetsNobodyPassAtZero)
{
    Semaphore semaphore(0);
    Waiter waiter(semaphore);
    EXPECT_TRUE(waiter.waits());
    semaphore.release();
    EXPECT_TRUE(waiter.passed());
}

TEST(Semaphore, LetsOnePassForEachRelease)
{
    Semaphore semaphore(0);
    semaphore.release();
    semaphore.release();
    semaphore.acquire();
    semaphore.acquire();
    testsupport::TestSemaphore passed;
    std::vector<std::thread> waiters;
    for (int i = 0; i < 2; ++i)
    {
        waiters.emplace_back(
            [&]
            {
                semaphore.acquire();
                passed.release();
            });
    }
    semaphore.release();
    EXPECT_TRUE(passed.tryAcquireFor(patience));
    EXPECT_FALSE(passed.tryAcquireFor(suspicion));
    semaphore.release();
    for (std::thread & waiter : waiters)
        waiter.join();
    EXPECT_TRUE(passed.tryAcquire());
}

TEST(Semaphore, IgnoresAReleaseAtItsLimit)
{
    Semaphore semaphore(2147483647);
    semaphore.release();
    semaphore.acquire();
    semaphore.release();
    semaphore.acquire();
    SUCCEED() << "nobody waited and nothing was reported";
}

TEST(Semaphore, MakesNobodyWaitWhereItCouldNotBeMade)
{
    Semaphore semaphore(-1);
    semaphore.acquire();
    semaphore.release();
    semaphore.acquire();
    semaphore.acquire();
    SUCCEED() << "a negative count is refused by the system, which is not detected";
}

TEST(Semaphore, CarriesManyThreadsThrough)
{
    Semaphore places(3);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 32; ++i)
    {
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < 200; ++round)
                {
                    places.acquire();
                    const int now = ++inside;
                    int before = most.load();
                    while (before < now && !most.compare_exchange_weak(before, now))
                    {
                    }
                    --inside;
                    places.release();
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_LE(most.load(), 3);
    EXPECT_GE(most.load(), 1);
    for (int i = 0; i < 3; ++i)
        places.acquire();
}

TEST(Semaphore, SharesItsCountWithItsCopies)
{
    Semaphore semaphore(0);
    Semaphore copy(semaphore);
    Semaphore assigned(0);
    assigned = semaphore;
    copy.release();
    semaphore.acquire();
    assigned.release();
    copy.acquire();
    Waiter waiter(assigned);
    EXPECT_TRUE(waiter.waits());
    semaphore.release();
    EXPECT_TRUE(waiter.passed());
}

TEST(Semaphore, IsClosedForAllCopiesByTheFirstThatIsDestroyed)
{
    Semaphore semaphore(0);
    {
        const Semaphore copy(semaphore);
    }
    // Kept: from here on nobody waits.
    semaphore.acquire();
    semaphore.acquire();
    semaphore.release();
    semaphore.acquire();
}

TEST(Semaphore, HasNoVirtualOperationButItsDestructor)
{
    Shadowing own(0);
    Semaphore & base = own;
    base.release();
    base.acquire();
    Waiter waiter(base);
    EXPECT_TRUE(waiter.waits());
    base.release();
    EXPECT_TRUE(waiter.passed());
}

TEST(Semaphore, LetsAllWaitersGoOnWhenItIsClosed)
{
    Semaphore semaphore(0);
    auto copy = std::make_unique<Semaphore>(semaphore);
    Waiter first(semaphore);
    Waiter second(semaphore);
    Waiter third(semaphore);
    EXPECT_TRUE(first.waits());
    EXPECT_TRUE(second.waits());
    EXPECT_TRUE(third.waits());
    copy.reset();
    EXPECT_TRUE(first.passed());
    EXPECT_TRUE(second.passed());
    EXPECT_TRUE(third.passed());
}

TEST(Semaphore, LetsAllWaitersGoOnWhenTheObjectThatTheyWaitOnIsDestroyed)
{
    auto semaphore = std::make_unique<Semaphore>(0);
    Waiter first(*semaphore);
    Waiter second(*semaphore);
    Waiter third(*semaphore);
    EXPECT_TRUE(first.waits());
    EXPECT_TRUE(second.waits());
    EXPECT_TRUE(third.waits());
    semaphore.reset();
    EXPECT_TRUE(first.passed());
    EXPECT_TRUE(second.passed());
    EXPECT_TRUE(third.passed());
}

TEST(Semaphore, GivesItsHandleBack)
{
    const auto use = []
    {
        Semaphore semaphore(1);
        const Semaphore copy(semaphore);
        semaphore.acquire();
    };
    use();
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 100; ++i)
        use();
    EXPECT_LE(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
}

} // namespace
