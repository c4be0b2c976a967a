// Which locks are held where the library calls what applications have written: none.

#include "VontalBase/concurrency/LongRunCommand.h"
#include "VontalBase/concurrency/LongRunCommandListener.h"
#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/LoggerInterface.h"
#include "VontalBase/platform/lockorder.h"
#include "VontalBase/text/mlregistry.h"
#include "VontalBase/text/u8string.h"

#include "concurrency/monitors.h"
#include "concurrency/tasks.h"
#include "concurrency/work.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace
{

using qvbase::LongRunCommand;
using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvplatform::heldLocks;
using testsupport::TestSemaphore;

/// The most locks that were held at the calls of each kind.
class Calls
{
public:
    void note(const std::string & call)
    {
        const std::lock_guard lock(m_mutex);
        std::size_t & most = m_most[call];
        most = std::max(most, heldLocks());
    }

    [[nodiscard]] std::map<std::string, std::size_t> most() const
    {
        const std::lock_guard lock(m_mutex);
        return m_most;
    }

private:
    mutable std::mutex m_mutex;
    std::map<std::string, std::size_t> m_most;
};

using Most = std::map<std::string, std::size_t>;

class NotingTask : public qvbase::Task
{
public:
    NotingTask(Calls & calls, TestSemaphore * entered, TestSemaphore * mayLeave)
        : m_calls(calls), m_entered(entered), m_mayLeave(mayLeave)
    {
    }
    NotingTask(const NotingTask &) = delete;
    NotingTask & operator=(const NotingTask &) = delete;
    virtual ~NotingTask()
    {
        m_calls.note("destructor");
    }

    void cancel() override
    {
        m_calls.note("cancel");
    }

protected:
    void run(qvbase::TaskExecutor *) override
    {
        m_calls.note("run");
        if (m_entered == nullptr)
            return;
        m_entered->release();
        m_mayLeave->acquire();
    }

private:
    Calls & m_calls;
    TestSemaphore * m_entered;
    TestSemaphore * m_mayLeave;
};

TEST(Callbacks, OfTheExecutorFindNoLockHeld)
{
    Calls calls;
    TestSemaphore entered;
    TestSemaphore mayLeave;
    const Reference<qvbase::TaskExecutor> executor = newExecutor();
    executor->addTask(new ReferencedImplMT<NotingTask>(calls, &entered, &mayLeave));
    executor->addTask(new ReferencedImplMT<NotingTask>(calls, nullptr, nullptr));
    entered.acquire();
    std::thread stopper([&] { executor->stop(); });
    EXPECT_TRUE(testsupport::eventually([&] { return executor->isStopping(); }));
    mayLeave.release();
    stopper.join();
    // Kept: a task is let go under the lock of the executor.
    EXPECT_EQ(calls.most(), (Most{{"run", 0U}, {"cancel", 0U}, {"destructor", 1U}}));
}

class NotingListener : public qvbase::LongRunCommandListener
{
public:
    NotingListener(Calls & calls, TestSemaphore & finished) : m_calls(calls), m_finished(finished)
    {
    }
    NotingListener(const NotingListener &) = delete;
    NotingListener & operator=(const NotingListener &) = delete;
    virtual ~NotingListener() = default;

    void commandFinished(LongRunCommand *, qvbase::TriState) override
    {
        m_calls.note("commandFinished");
        m_finished.release();
    }

private:
    Calls & m_calls;
    TestSemaphore & m_finished;
};

class NotingCommand : public LongRunCommand
{
public:
    explicit NotingCommand(Calls & calls) : m_calls(calls)
    {
    }

protected:
    void execute() override
    {
        m_calls.note("execute");
    }

private:
    Calls & m_calls;
};

TEST(Callbacks, OfALongRunningCommandFindNoLockHeld)
{
    Calls calls;
    TestSemaphore finished;
    const Reference<qvbase::TaskExecutor> executor = newExecutor();
    auto * const command = new ReferencedImplMT<NotingCommand>(calls);
    const Reference<LongRunCommand> held(command);
    command->setListener(new ReferencedImplMT<NotingListener>(calls, finished));
    executor->addTask(command);
    finished.acquire();
    executor->stop();
    EXPECT_EQ(calls.most(), (Most{{"execute", 0U}, {"commandFinished", 0U}}));
}

VONTALBASE_TEST_CHILD(saysSomethingTwice, arguments)
{
    std::fputs("output", stdout);
    std::fputs("error", stderr);
    return 0;
}

TEST(Callbacks, OfAMonitorFindNoLockHeld)
{
    Calls calls;
    const MonitorReference monitor = newMonitor();
    monitor->inOutput = [&](const std::string &)
    {
        calls.note("onOutput");
    };
    monitor->inError = [&](const std::string &)
    {
        calls.note("onError");
    };
    monitor->inFinished = [&]
    {
        calls.note("onFinished");
    };
    qvbase::ProcessRunner runner;
    ASSERT_TRUE(startChild(runner, monitor, "saysSomethingTwice", {}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(calls.most(), (Most{{"onOutput", 0U}, {"onError", 0U}, {"onFinished", 0U}}));
}

TEST(Callbacks, OfAThreadFindNoLockHeld)
{
    Calls calls;
    TestSemaphore ended;
    const auto note = [&]
    {
        calls.note("run");
    };
    const auto noteEnd = [&]
    {
        calls.note("destructor");
        ended.release();
    };
    ASSERT_TRUE(qvbase::Thread::execute(newWork(note, noteEnd)));
    ended.acquire();
    EXPECT_EQ(calls.most(), (Most{{"run", 0U}, {"destructor", 0U}}));
}

TEST(LocksOfTheLibrary, HaveTheirPlacesInTheOrder)
{
    const qvbase::ThreadMutexGuard first(qvbase::threadRegistry.threadRegistryMutex, true);
    EXPECT_EQ(heldLocks(), 1U);
    const qvbase::ThreadMutexGuard second(Vontal::mlLock, true);
    EXPECT_EQ(heldLocks(), 2U);
    const qvbase::ThreadMutexGuard last(qvbase::g_referencedObjectMutex, true);
    EXPECT_EQ(heldLocks(), 3U);
}

TEST(LocksOfTheLibrary, AreKnownWhereACommandHoldsItsOwn)
{
    class Opened : public LongRunCommand
    {
    public:
        using LongRunCommand::mutex;

    protected:
        void execute() override
        {
        }
    };
    const Reference<Opened> command(new ReferencedImplMT<Opened>);
    const qvbase::ThreadMutexGuard guard(command->mutex, true);
    EXPECT_EQ(heldLocks(), 1U);
}

TEST(LocksOfTheLibrary, AreKnownWhereALineIsWritten)
{
    class Logger : public qvutils::LoggerInterface
    {
    public:
        Logger() : LoggerInterface(1)
        {
        }

        std::size_t held = 0;

    protected:
        bool internal_log(const char *) override
        {
            held = heldLocks();
            return true;
        }
    };
    Logger logger;
    qvutils::LogFormater(&logger, 1, false).writeMessage(1, "line");
    EXPECT_EQ(logger.held, 1U);
}

} // namespace
