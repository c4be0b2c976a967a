// Lines byte for byte, on a clock that the test sets.

#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/LogMsgBuilderImpl.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/threads.h"

#include "logging/logsupport.h"
#include "support/FailingAllocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <thread>

namespace
{

using qvutils::LogFormater;
using qvutils::LogMsgBuilderImpl;
using testing::ElementsAre;

/// Calls a private operation, which may be named where a template is instantiated.
template <void (LogFormater::*Operation)(Vontal::u8string &)>
struct PrivateOperation
{
    friend void callWriteTime(LogFormater & formater, Vontal::u8string & out)
    {
        (formater.*Operation)(out);
    }
};
template struct PrivateOperation<&LogFormater::writeTime>;
void callWriteTime(LogFormater & formater, Vontal::u8string & out);

class LogLines : public testing::Test
{
protected:
    LogLines()
    {
        qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 987});
    }
    ~LogLines() override
    {
        qvplatform::resetClocks();
    }

    /// The part of a line that the caller does not give.
    static std::string head(int id)
    {
        return "#" + std::to_string(id) + ":thrId=" + std::to_string(qvplatform::currentThreadId());
    }
};

TEST_F(LogLines, AreMadeOfTheirParts)
{
    const struct
    {
        const char * label;
        const char * message;
        const char * file;
        unsigned int line;
        const char * expected;
    } rows[] = {
        {"message and position", "Cannot open", "src\\disk", 310, ":src\\disk:310: Cannot open\n"},
        {"a build root is cut", "Cannot open", "C:\\Mirsa\\Vontal\\vontal.git\\src\\disk", 310,
            ":src\\disk:310: Cannot open\n"},
        {"the other build root is cut", "a", "c:/mirsa/vontal.release64/src/disk", 310, ":src/disk:310: a\n"},
        {"message alone", "Cannot open", nullptr, 310, ": Cannot open\n"},
        {"position alone", nullptr, "src\\disk", 310, ":src\\disk:310\n"},
        {"nothing", nullptr, nullptr, 310, "\n"},
        {"empty message", "", nullptr, 0, ": \n"},
        {"empty message with position", "", "a", 1, ":a:1: \n"},
        {"message ends in a line feed", "a\n", nullptr, 0, ": a\n"},
        {"message is a line feed", "\n", nullptr, 0, ": \n"},
        {"message ends in two line feeds", "a\n\n", nullptr, 0, ": a\n\n"},
        {"line feed inside", "a\nb", nullptr, 0, ": a\nb\n"},
        {"carriage return at the end", "a\r", nullptr, 0, ": a\r\n"},
        {"position ends in a line feed", nullptr, "a\n", 1, ":a\n:1\n"},
        {"line 0", "a", "b", 0, ":b:0: a\n"},
        {"greatest line", "a", "b", 4294967295U, ":b:4294967295: a\n"},
        {"empty file name", "a", "", 5, "::5: a\n"},
        {"more than ASCII",
            "Gr\xC3\xB6\xC3\x9F"
            "e \xF0\x9F\x98\x80",
            "\xC3\xA4.cpp", 1,
            ":\xC3\xA4.cpp:1: Gr\xC3\xB6\xC3\x9F"
            "e \xF0\x9F\x98\x80\n"},
        {"no UTF-8", "\xFF\x80", nullptr, 0, ": \xFF\x80\n"},
        {"what looks like a format", "%s %n 100%", nullptr, 0, ": %s %n 100%\n"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(LogMsgBuilderImpl(5, row.message, row.file, row.line, true, 42).build(),
            "13:05:09 " + head(42) + row.expected);
        EXPECT_EQ(LogMsgBuilderImpl(5, row.message, row.file, row.line, false, 42).build(),
            head(42) + row.expected);
    }
}

TEST_F(LogLines, BeginWithTheTimeInTwoDigitsAndWithoutTheDate)
{
    const struct
    {
        qvplatform::CivilTime time;
        const char * expected;
    } rows[] = {
        {{2026, 11, 13, 0, 0, 0, 0}, "00:00:00 #"},
        {{2026, 1, 5, 1, 2, 3, 999}, "01:02:03 #"},
        {{2026, 12, 31, 23, 59, 59, 999}, "23:59:59 #"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.expected);
        qvplatform::setLocalNow(row.time);
        const std::string text = LogMsgBuilderImpl(1, "a", nullptr, 0, true, 1).build();
        EXPECT_EQ(text.substr(0, 10), row.expected);
    }
}

TEST_F(LogLines, CarryTheGreatestNumber)
{
    const std::string text = LogMsgBuilderImpl(1, "a", nullptr, 0, false, 4294967295U).build();
    EXPECT_EQ(text, "#4294967295:thrId=" + std::to_string(qvplatform::currentThreadId()) + ": a\n");
}

TEST_F(LogLines, TakeTimeAndTextsWhenTheyAreBuilt)
{
    std::string message = "early";
    LogMsgBuilderImpl builder(1, message.c_str(), nullptr, 0, true, 7);
    qvplatform::setLocalNow({2026, 11, 13, 14, 0, 0, 0});
    message[0] = 'E';
    EXPECT_EQ(builder.build(), "14:00:00 " + head(7) + ": Early\n");
}

TEST_F(LogLines, CarryTheThreadThatLogs)
{
    ListLogger logger;
    LogFormater formater(&logger, 2000, true);
    std::string expected;
    std::thread other(
        [&]
        {
            expected = "13:05:09 " + head(1) + ": from there\n";
            formater.writeMessage(1, "from there");
        });
    other.join();
    formater.writeMessage(1, "from here");
    EXPECT_THAT(logger.lines, ElementsAre(expected, "13:05:09 " + head(2) + ": from here\n"));
    EXPECT_NE(expected.substr(9, 20), logger.lines.at(1).substr(9, 20));
}

TEST_F(LogLines, CarryTheThreadThatBuildsThem)
{
    LogMsgBuilderImpl builder(1, "a", nullptr, 0, false, 7);
    std::string expected;
    std::string built;
    std::thread other(
        [&]
        {
            expected = head(7) + ": a\n";
            built = builder.build();
        });
    other.join();
    EXPECT_EQ(built, expected);
    EXPECT_NE(built, head(7) + ": a\n") << "that is the thread that made the builder";
}

TEST_F(LogLines, HaveTheirTimeByItselfInATextAsKept)
{
    ListLogger logger;
    LogFormater formater(&logger, 2000, false);
    Vontal::u8string text("before");
    callWriteTime(formater, text);
    EXPECT_EQ(text, "13:05:09");
}

TEST_F(LogLines, ClosesWithTwoNumbersAsKept)
{
    ListLogger logger;
    for (int i = 0; i < 97; ++i)
        logger.getNextId();
    {
        const LogFormater formater(&logger, 1024, true);
    }
    EXPECT_THAT(logger.lines, ElementsAre("13:05:09 " + head(99) + ": 98 Destructor\n"));
}

TEST_F(LogLines, ThatAreNotWantedAreNeverBuilt)
{
    ListLogger logger(10);
    LogFormater formater(&logger, 2000, true);
    const testsupport::FailingAllocator window;
    formater.writeMessage(11, "a message that is too long for a string without an allocation", __FILE__, 1);
    EXPECT_EQ(window.allocations(), 0U);
}

TEST_F(LogLines, AreLostAloneWhereMemoryIsShort)
{
    ListLogger logger;
    LogFormater formater(&logger, 2000, false);
    {
        const testsupport::FailingAllocator window({.allocation = 1});
        EXPECT_THROW(formater.writeMessage(1, "lost"), std::bad_alloc);
    }
    // Another thread gets the lock, so it was given back.
    std::thread other([&] { formater.writeMessage(1, "next"); });
    other.join();
    ASSERT_EQ(logger.lines.size(), 1U);
    EXPECT_EQ(logger.lines[0].substr(0, 3), "#2:");
}

} // namespace
