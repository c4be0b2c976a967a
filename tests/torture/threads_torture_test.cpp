#include "VontalBase/concurrency/CondThreadMutex.h"
#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/Semaphore.h"
#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "support/Eventually.h"
#include "support/Torture.h"
#include "torture/threadends.h"

#include <atomic>
#include <gtest/gtest.h>
#include <new>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::Thread;
using qvbase::threadRegistry;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;

/// A runnable that counts what becomes of it, and allocates nothing.
class Counting : public qvbase::Runnable
{
public:
    Counting(std::atomic<int> & runs, std::atomic<int> & ends) : m_runs(&runs), m_ends(&ends)
    {
    }
    Counting(const Counting &) = delete;
    Counting & operator=(const Counting &) = delete;
    virtual ~Counting()
    {
        ++*m_ends;
    }
    void run() override
    {
        ++*m_runs;
    }

private:
    std::atomic<int> * m_runs;
    std::atomic<int> * m_ends;
};

TEST(ThreadsTorture, AThreadIsStartedOrNothingHasHappened)
{
    int refusedBySystem = 0;
    int refusedByMemory = 0;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            std::atomic<int> runs{0};
            std::atomic<int> ends{0};
            Reference<Counting> own;
            {
                const UnseenAllocations unseen;
                own = new ReferencedImplMT<Counting>(runs, ends);
            }
            bool started = false;
            bool threw = false;
            try
            {
                started = Thread::execute(own);
            }
            catch (const std::bad_alloc &)
            {
                threw = true;
                ++refusedByMemory;
            }
            const UnseenAllocations unseen;
            EXPECT_EQ(threw, fault.isAllocation());
            EXPECT_EQ(started, !threw && !fault.isGate("start thread"));
            refusedBySystem += !started && !threw ? 1 : 0;
            own = nullptr;
            EXPECT_TRUE(testsupport::eventually([&] { return ends.load() == 1; }))
                << "no reference is left over";
            EXPECT_EQ(runs.load(), started ? 1 : 0);
            EXPECT_TRUE(testsupport::eventually(&everybodyHasRetired));
            EXPECT_EQ(threadRegistry.threadRegistryMutex.getRecursiveCounter(), 0U);
            closeTheLast();
        });
    EXPECT_EQ(report.gatePassages, 1U);
    EXPECT_EQ(refusedBySystem, 1);
    EXPECT_GT(refusedByMemory, 0);
}

TEST(ThreadsTorture, LocksSemaphoresAndConditionsAreMadeOrThrow)
{
    const TortureReport report = torture(
        [](const Fault &)
        {
            qvbase::ThreadMutex mutex;
            qvbase::Semaphore semaphore(1);
            qvbase::CondThreadMutex condition(mutex);
            // What the system did not give is not waited for.
            semaphore.acquire();
            mutex.acquire();
            condition.signal();
            condition.wait();
            EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
            mutex.release();
        });
    EXPECT_EQ(report.gatePassages, 2U);
    EXPECT_GT(report.faultyRuns, 4U);
}

} // namespace
