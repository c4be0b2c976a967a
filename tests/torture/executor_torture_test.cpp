#include "VontalBase/concurrency/SimpleTaskExecutor.h"
#include "VontalBase/concurrency/Task.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "support/Eventually.h"
#include "support/Torture.h"
#include "torture/threadends.h"

#include <atomic>
#include <gtest/gtest.h>
#include <new>
#include <thread>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::Task;
using qvbase::TaskExecutor;
using testsupport::Fault;
using testsupport::UnseenAllocations;

/// A task that counts what becomes of it, and allocates nothing.
class Counting : public Task
{
public:
    explicit Counting(std::atomic<int> & runs) : m_runs(runs)
    {
    }
    virtual ~Counting() = default;
    void cancel() override
    {
    }

protected:
    void run(TaskExecutor *) override
    {
        ++m_runs;
    }

private:
    std::atomic<int> & m_runs;
};

/// Waits until it may count, and allocates nothing.
class Waiting : public Counting
{
public:
    Waiting(std::atomic<int> & runs, const std::atomic<bool> & mayRun) : Counting(runs), m_mayRun(mayRun)
    {
    }
    virtual ~Waiting() = default;

protected:
    void run(TaskExecutor * executor) override
    {
        while (!m_mayRun)
            std::this_thread::yield();
        Counting::run(executor);
    }

private:
    const std::atomic<bool> & m_mayRun;
};

/// Waits for the threads of the library, and closes the handle that it keeps of the last.
void closeAll()
{
    EXPECT_TRUE(testsupport::eventually(&everybodyHasRetired));
    closeTheLast();
}

/// Whether it was the start of a thread that went wrong.
bool hasNoThread(const Fault & fault)
{
    return fault.isAllocation() || fault.isGate("start thread");
}

TEST(ExecutorTorture, ATaskThatNoThreadCouldBeHadForWaitsForTheNextOne)
{
    int waited = 0;
    testsupport::torture(
        [&](const Fault & fault)
        {
            std::atomic<int> runs{0};
            try
            {
                Reference<TaskExecutor> executor;
                qvbase::createSimpleTaskExecutor(executor);
                const Reference<Task> task(new ReferencedImplMT<Counting>(runs));
                executor->addTask(task);
                const UnseenAllocations unseen;
                if (hasNoThread(fault))
                {
                    Reference<Task> current;
                    EXPECT_FALSE(executor->getCurrentTask(current)) << "it is stopped";
                    executor->stop();
                    EXPECT_EQ(executor->getTaskCount(), 1U) << "a stop of a stopped one does nothing";
                    EXPECT_EQ(runs, 0);
                    ++waited;
                }
                executor->addTask(task);
                // The first worker may have ended by then, so that it is this task that no thread was had
                // for.
                executor->start();
                EXPECT_TRUE(testsupport::eventually([&] { return runs == 2; }));
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            closeAll();
        });
    EXPECT_GE(waited, 2) << "for want of a thread, and of memory";
}

TEST(ExecutorTorture, ATaskIsAddedOrMemoryWasTooShortForIt)
{
    constexpr int tasks = 200;
    int refused = 0;
    testsupport::torture(
        [&](const Fault & fault)
        {
            std::atomic<int> runs{0};
            std::atomic<bool> mayRun{false};
            try
            {
                Reference<TaskExecutor> executor;
                qvbase::createSimpleTaskExecutor(executor);
                // The tasks pile up behind the first one.
                const Reference<Task> task(new ReferencedImplMT<Waiting>(runs, mayRun));
                int added = 0;
                for (int i = 0; i < tasks; ++i)
                {
                    try
                    {
                        if (i % 2 == 0)
                            executor->addTask(task);
                        else
                            executor->addPriorityTask(task);
                        ++added;
                    }
                    catch (const std::bad_alloc &)
                    {
                        EXPECT_TRUE(fault.isAllocation());
                        ++refused;
                    }
                }
                const UnseenAllocations unseen;
                mayRun = true;
                // One of them may go wrong.
                executor->start();
                executor->start();
                EXPECT_TRUE(testsupport::eventually([&] { return executor->getTaskCount() == 0; }));
                EXPECT_TRUE(testsupport::eventually([&] { return runs == added; }));
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            closeAll();
        });
    EXPECT_GT(refused, 0);
}

TEST(ExecutorTorture, ATaskThatNoThreadCouldBeHadForIsLetGoWithTheExecutor)
{
    testsupport::torture(
        [&](const Fault & fault)
        {
            std::atomic<int> runs{0};
            try
            {
                Reference<TaskExecutor> executor;
                qvbase::createSimpleTaskExecutor(executor);
                const Reference<Task> task(new ReferencedImplMT<Counting>(runs));
                executor->addPriorityTask(task);
                // A task that stayed for ever would be found among the allocations.
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            closeAll();
        });
}

} // namespace
