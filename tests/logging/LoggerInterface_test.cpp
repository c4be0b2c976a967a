#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/logging/LogMsgBuilder.h"
#include "VontalBase/logging/LoggerInterface.h"

#include "logging/logsupport.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"
#include "support/VirtualSlot.h"

#include <algorithm>
#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvutils::LoggerInterface;
using qvutils::LogMsgBuilder;
using testing::ElementsAre;
using testsupport::TestSemaphore;
using testsupport::virtualSlot;
using testsupport::virtualSlots;
using Vontal::u8string;

static_assert(!std::has_virtual_destructor_v<LoggerInterface> && std::is_abstract_v<LoggerInterface>);
static_assert(!std::has_virtual_destructor_v<LogMsgBuilder> && std::is_abstract_v<LogMsgBuilder>);

class Text : public LogMsgBuilder
{
public:
    explicit Text(u8string text) : m_text(std::move(text))
    {
    }
    u8string build() override
    {
        ++builds;
        return m_text;
    }

    int builds = 0;

private:
    u8string m_text;
};

/// A sink that shows its lock.
class OpenLogger : public ListLogger
{
public:
    using ListLogger::ListLogger;
    using LoggerInterface::mutex;
};

TEST(LoggerInterface, HasItsVirtualOperationAlone)
{
    EXPECT_EQ(virtualSlot(&LoggerInterface::internal_log), 0U);
    EXPECT_EQ(virtualSlots<ListLogger>(), 1U);
    EXPECT_EQ(virtualSlot(&LogMsgBuilder::build), 0U);
    EXPECT_EQ(virtualSlots<Text>(), 1U);
}

TEST(LoggerInterface, GivesOutNumbersFromOneOn)
{
    ListLogger logger;
    EXPECT_EQ(logger.getNextId(), 1U);
    EXPECT_EQ(logger.getNextId(), 2U);
    EXPECT_EQ(logger.getNextId(), 3U);
}

TEST(LoggerInterface, GivesEachNumberToOneThread)
{
    constexpr unsigned int threads = 8;
    constexpr unsigned int numbers = 5000;
    ListLogger logger;
    std::vector<std::vector<std::uint32_t>> given(threads);
    std::vector<std::thread> running;
    for (auto & own : given)
    {
        running.emplace_back(
            [&]
            {
                for (unsigned int i = 0; i < numbers; ++i)
                    own.push_back(logger.getNextId());
            });
    }
    for (std::thread & thread : running)
        thread.join();
    std::vector<std::uint32_t> all;
    for (const auto & own : given)
    {
        EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
        all.insert(all.end(), own.begin(), own.end());
    }
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), threads * numbers);
    EXPECT_EQ(all.front(), 1U);
    EXPECT_EQ(all.back(), threads * numbers);
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

TEST(LoggerInterface, ComparesLevelsAsUnsigned)
{
    const struct
    {
        unsigned int threshold;
        unsigned int level;
        bool isLogged;
    } rows[] = {
        {0, 0, true},
        {0, 1, false},
        {1024, 0, true},
        {1024, 1023, true},
        {1024, 1024, true},
        {1024, 1025, false},
        {1024, 4294967295U, false},
        {4294967295U, 4294967295U, true},
        {2147483648U, 2147483647U, true},
        {2147483647U, 2147483648U, false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(std::to_string(row.level) + " at " + std::to_string(row.threshold));
        ListLogger logger(row.threshold);
        EXPECT_EQ(logger.getLogLevel(), row.threshold);
        EXPECT_EQ(logger.isLoggingLevel(row.level), row.isLogged);
        ListLogger set(5);
        set.setLogLevel(row.threshold);
        EXPECT_EQ(set.isLoggingLevel(row.level), row.isLogged);
        Text text("a\n");
        set.log(text, row.level);
        EXPECT_EQ(text.builds, row.isLogged ? 1 : 0) << "a text that is not wanted is not built";
        EXPECT_EQ(set.lines.size(), row.isLogged ? 1U : 0U);
    }
}

TEST(LoggerInterface, HandsTheTextToTheSinkAsItStands)
{
    ListLogger logger;
    Text first("a\nb");
    Text second("");
    Text third(u8string("c\0d", 3));
    logger.log(first, 1);
    logger.log(second, 1);
    logger.log(third, 1);
    EXPECT_THAT(logger.lines, ElementsAre("a\nb", "", "c"));
}

TEST(LoggerInterface, BuildsAndWritesALineUnderItsLock)
{
    class HeldText : public LogMsgBuilder
    {
    public:
        explicit HeldText(OpenLogger & logger) : m_logger(logger)
        {
        }
        u8string build() override
        {
            holds = m_logger.mutex.getRecursiveCounter();
            return "a\n";
        }

        unsigned int holds = 0;

    private:
        OpenLogger & m_logger;
    };
    OpenLogger logger;
    HeldText text(logger);
    logger.log(text, 1);
    EXPECT_EQ(text.holds, 1U);
    EXPECT_EQ(logger.mutex.getRecursiveCounter(), 0U);
}

TEST(LoggerInterface, WritesOneLineAtATime)
{
    TestSemaphore entered;
    TestSemaphore mayLeave;
    class SlowText : public Text
    {
    public:
        SlowText(TestSemaphore & first, TestSemaphore & second)
            : Text("slow\n"), m_first(first), m_second(second)
        {
        }
        u8string build() override
        {
            m_first.release();
            m_second.acquire();
            return Text::build();
        }

    private:
        TestSemaphore & m_first;
        TestSemaphore & m_second;
    };
    ListLogger logger;
    SlowText slow(entered, mayLeave);
    std::thread writer([&] { logger.log(slow, 1); });
    entered.acquire();
    TestSemaphore done;
    std::thread other(
        [&]
        {
            Text quick("quick\n");
            logger.log(quick, 1);
            done.release();
        });
    Text unwanted("unwanted\n");
    logger.log(unwanted, 1025);
    EXPECT_TRUE(logger.isLoggingLevel(1)) << "the threshold is read without the lock";
    EXPECT_FALSE(done.tryAcquireFor(testsupport::suspicion));
    mayLeave.release();
    writer.join();
    other.join();
    EXPECT_THAT(logger.lines, ElementsAre("slow\n", "quick\n"));
}

TEST(LoggerInterface, SetsItsThresholdUnderItsLock)
{
    OpenLogger logger(7);
    logger.mutex.acquire();
    TestSemaphore started;
    TestSemaphore done;
    std::thread other(
        [&]
        {
            started.release();
            logger.setLogLevel(8);
            done.release();
        });
    started.acquire();
    EXPECT_FALSE(done.tryAcquireFor(testsupport::suspicion));
    EXPECT_EQ(logger.getLogLevel(), 7U);
    logger.mutex.release();
    EXPECT_TRUE(done.tryAcquireFor(testsupport::patience));
    other.join();
    EXPECT_EQ(logger.getLogLevel(), 8U);
}

TEST(LoggerInterface, GivesItsLockBackWhenABuilderThrows)
{
    class Thrower : public LogMsgBuilder
    {
    public:
        u8string build() override
        {
            throw std::length_error("too long");
        }
    };
    OpenLogger logger;
    Thrower thrower;
    EXPECT_THROW(logger.log(thrower, 1), std::length_error);
    EXPECT_EQ(logger.mutex.getRecursiveCounter(), 0U);
    Text text("a\n");
    logger.log(text, 1);
    EXPECT_THAT(logger.lines, ElementsAre("a\n"));
}

TEST(LoggerInterface, LetsASinkLogByItself)
{
    class Chatty : public ListLogger
    {
    public:
        bool internal_log(const char * text) override
        {
            if (lines.empty())
            {
                ListLogger::internal_log("inner\n");
                Text inner("another\n");
                log(inner, 1);
            }
            return ListLogger::internal_log(text);
        }
    };
    Chatty logger;
    Text text("outer\n");
    logger.log(text, 1);
    EXPECT_THAT(logger.lines, ElementsAre("inner\n", "another\n", "outer\n"));
}

/// Whether two loggers have one lock.
bool shareALock(OpenLogger & first, OpenLogger & second)
{
    first.mutex.acquire();
    TestSemaphore done;
    std::thread other(
        [&]
        {
            second.mutex.acquire();
            second.mutex.release();
            done.release();
        });
    const bool isFree = done.tryAcquireFor(testsupport::suspicion);
    first.mutex.release();
    other.join();
    return !isFree;
}

TEST(LoggerInterface, CopiesItsMembersAsTheyStandAsKept)
{
    OpenLogger logger(7);
    logger.getNextId();
    logger.getNextId();
    OpenLogger copy(logger);
    OpenLogger moved(std::move(copy));
    OpenLogger assigned(9);
    assigned = logger;
    OpenLogger moveAssigned(9);
    moveAssigned = std::move(assigned);
    for (OpenLogger * other : {&moved, &moveAssigned})
    {
        EXPECT_EQ(other->getLogLevel(), 7U);
        EXPECT_EQ(other->getNextId(), 3U);
        EXPECT_TRUE(shareALock(logger, *other)) << "a copy has no lock of its own";
    }
    EXPECT_EQ(logger.getNextId(), 3U) << "each goes on counting by itself";
    logger.setLogLevel(8);
    EXPECT_EQ(moved.getLogLevel(), 7U);
    OpenLogger foreign(7);
    EXPECT_FALSE(shareALock(logger, foreign));
}

} // namespace
