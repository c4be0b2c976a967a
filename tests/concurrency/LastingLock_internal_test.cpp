// The log where the system has stopped the thread that had its lock.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/LogMsgBuilder.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/logging/systemlog.h"
#include "VontalBase/platform/gates.h"

#include "concurrency/work.h"
#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>

namespace
{

using qvutils::DailyLogger;
using testing::ElementsAre;
using testsupport::TestSemaphore;
using Vontal::u8string;

class Text : public qvutils::LogMsgBuilder
{
public:
    u8string build() override
    {
        return "a\n";
    }
};

/// From here on the system says that all other threads are stopped.
void stopOtherThreads()
{
    qvplatform::armGates({"threads run on", 1, std::numeric_limits<std::uint64_t>::max()});
}

template <class Logger>
class Open : public Logger
{
public:
    using Logger::Logger;
    using Logger::mutex;
};

/// A thread that has the lock of a logger as long as this lives.
class Holder
{
public:
    explicit Holder(qvbase::ThreadMutex & mutex)
        : m_thread(
              [this, &mutex]
              {
                  mutex.acquire();
                  m_holds.release();
                  m_mayEnd.acquire();
                  mutex.release();
              })
    {
        m_holds.acquire();
    }
    Holder(const Holder &) = delete;
    Holder & operator=(const Holder &) = delete;
    ~Holder()
    {
        m_mayEnd.release();
        m_thread.join();
        qvplatform::disarmGates();
    }

private:
    TestSemaphore m_holds;
    TestSemaphore m_mayEnd;
    std::thread m_thread;
};

TEST(LostLock, IsNotWaitedForByALine)
{
    Open<ListLogger> logger;
    Text text;
    {
        const Holder holder(logger.mutex);
        stopOtherThreads();
        logger.log(text, 1);
        logger.setLogLevel(7);
    }
    EXPECT_THAT(logger.lines, ElementsAre()) << "what the lock guards may be half changed";
    EXPECT_EQ(logger.getLogLevel(), 7U);
    logger.log(text, 1);
    EXPECT_THAT(logger.lines, ElementsAre("a\n"));
}

TEST(LostLock, LeavesADailyLoggerAsItIs)
{
    const testsupport::TempDirectory directory;
    {
        Open<DailyLogger> logger;
        u8string name("before");
        {
            const Holder holder(logger.mutex);
            stopOtherThreads();
            EXPECT_FALSE(logger.init_logger(7, placeOf(directory) + "server", ".log"));
        }
        EXPECT_EQ(logger.getLogLevel(), 1024U);
        EXPECT_TRUE(logger.init_logger(7, placeOf(directory) + "server", ".log"));
        {
            const Holder holder(logger.mutex);
            stopOtherThreads();
            EXPECT_FALSE(logger.getCurrentFileName(name));
        }
        EXPECT_EQ(name, "before");
        EXPECT_TRUE(logger.getCurrentFileName(name));
    }
    directory.clear();
}

TEST(LostLock, IsTakenAsUsualByTheThreadThatHasIt)
{
    Open<ListLogger> logger;
    Text text;
    stopOtherThreads();
    logger.mutex.acquire();
    logger.log(text, 1);
    EXPECT_EQ(logger.mutex.getRecursiveCounter(), 1U);
    logger.mutex.release();
    qvplatform::disarmGates();
    EXPECT_THAT(logger.lines, ElementsAre("a\n"));
}

constexpr int good = 3;

/// A line that is never finished. Never destroyed, as its thread never ends.
class EndlessText : public qvutils::LogMsgBuilder
{
public:
    u8string build() override
    {
        isHere.release();
        TestSemaphore never;
        never.acquire();
        return "never\n";
    }

    TestSemaphore isHere;
};

VONTALBASE_TEST_CHILD(endsWithAThreadStoppedWithinALine, arguments)
{
    if (!qvutils::initSystemLog(u8string(arguments.at(0)), "server", 1024))
        return 10;
    static auto & text = *new EndlessText;
    if (!qvbase::Thread::execute(newWork([] { qvutils::systemLogger.log(text, 1); })))
        return 11;
    text.isHere.acquire();
    stopOtherThreads();
    // As static objects of other libraries may do.
    qvutils::getSystemLogFormater()->writeMessage(1, "dropped");
    return qvutils::initSystemLog(u8string(arguments.at(0)), "other", 1024) ? 12 : good;
}

TEST(LostLock, EndsTheSystemLogWithoutItsLastLines)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult child =
        testsupport::runChild("endsWithAThreadStoppedWithinALine", {placeOf(directory)});
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_EQ(child.standardError, "");
    const std::vector<std::string> names = namesIn(directory);
    ASSERT_EQ(names.size(), 1U);
    EXPECT_THAT(linesOf(directory, names[0]),
        ElementsAre(HasForm("Logging started - ????.??.?? ??:??:??~"), HasForm("??:??:?? #1:thrId=*:~")));
    directory.clear();
}

} // namespace
