// The log of a process, as applications see it. Each test has a process of its own for it.

#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/LogMsgBuilder.h"
#include "VontalBase/logging/LoggerInterface.h"
#include "VontalBase/logging/systemlog.h"

#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/ForkedChild.h"
#include "support/Sanitizers.h"
#include "support/TestSemaphore.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvutils::getSystemLogFormater;
using qvutils::getSystemLogLevel;
using qvutils::initSystemLog;
using qvutils::setSystemLogLevel;
using testing::ElementsAre;
using testsupport::runChild;
using testsupport::TempDirectory;
using Vontal::u8string;

constexpr int good = 3;
constexpr const char * banner = "Logging started - ????.??.?? ??:??:??~";
constexpr const char * lastBanner = "Logging stoped - ????.??.?? ??:??:??";

/// A line with a number and the text behind the thread's.
auto line(int id, const std::string & rest)
{
    return HasForm("??:??:?? #" + std::to_string(id) + ":thrId=*" + rest);
}

auto startLine(int id, const std::string & level)
{
    return line(id, ":VontalBase\\VontalBase\\logging:112: LogLevel=" + level + ", acp=*");
}

/// Runs a child that logs, and gives the lines of its one file.
std::vector<std::string> linesOfChild(const char * child)
{
    const TempDirectory directory;
    const testsupport::ChildResult result = runChild(child, {placeOf(directory)});
    EXPECT_EQ(result.exitCode, good) << result.standardError;
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.standardOutput, "") << "nothing is printed anywhere else";
    const std::vector<std::string> names = namesIn(directory);
    std::vector<std::string> lines;
    EXPECT_EQ(names.size(), 1U);
    if (names.size() == 1)
    {
        EXPECT_THAT(names[0], HasForm("server????????.log"));
        lines = linesOf(directory, names[0]);
    }
    directory.clear();
    return lines;
}

bool start(const std::vector<std::string> & arguments, int level = 1024)
{
    return initSystemLog(u8string(arguments.at(0)), "server", level);
}

VONTALBASE_TEST_CHILD(startsAndEnds, arguments)
{
    return start(arguments) ? good : 10;
}

TEST(SystemLog, BeginsWithABannerAndALineOfItsSettings)
{
    EXPECT_THAT(linesOfChild("startsAndEnds"),
        ElementsAre(HasForm(banner), startLine(1, "1024"), line(3, ": 2 Destructor"), HasForm(lastBanner)));
}

VONTALBASE_TEST_CHILD(usesItsLogBeforeTheStart, arguments)
{
    getSystemLogFormater()->writeMessage(1, "early");
    getSystemLogFormater()->writeMessage(5000, "early");
    if (getSystemLogLevel() != 1024 || !getSystemLogFormater()->isLoggingLevel(1024) ||
        getSystemLogFormater()->isLoggingLevel(1025))
        return 10;
    setSystemLogLevel(7);
    if (getSystemLogLevel() != 7)
        return 11;
    return start(arguments) && getSystemLogLevel() == 1024 ? good : 12;
}

TEST(SystemLog, DropsLinesBeforeTheStartButUsesUpTheirNumbers)
{
    EXPECT_THAT(linesOfChild("usesItsLogBeforeTheStart"),
        ElementsAre(HasForm(banner), startLine(3, "1024"), line(5, ": 4 Destructor"), HasForm(lastBanner)));
}

VONTALBASE_TEST_CHILD(neverStartsItsLog, arguments)
{
    std::filesystem::current_path(arguments.at(0));
    getSystemLogFormater()->writeMessage(1, "a");
    u8string name;
    auto * const logger = static_cast<qvutils::DailyLogger *>(getSystemLogFormater()->getLogger());
    return logger->getCurrentFileName(name) ? 10 : good;
}

TEST(SystemLog, WritesNothingIfItIsNeverStarted)
{
    const TempDirectory directory;
    const testsupport::ChildResult result = runChild("neverStartsItsLog", {directory.text()});
    EXPECT_EQ(result.exitCode, good);
    EXPECT_EQ(result.standardOutput + result.standardError, "");
    EXPECT_THAT(namesIn(directory), ElementsAre()) << "this was the working directory";
}

VONTALBASE_TEST_CHILD(startsTwice, arguments)
{
    if (!start(arguments, 50))
        return 10;
    if (initSystemLog(u8string(arguments.at(0)), "other", 60) || getSystemLogLevel() != 50)
        return 11;
    getSystemLogFormater()->writeMessage(50, "a");
    return good;
}

TEST(SystemLog, StartsOnceAndKeepsItsFileAndLevel)
{
    EXPECT_THAT(linesOfChild("startsTwice"),
        ElementsAre(HasForm(banner), startLine(1, "50"), line(2, ": a"), HasForm(lastBanner)))
        << "the closing line has the level 1024";
}

VONTALBASE_TEST_CHILD(logsNothingButTheMostImportant, arguments)
{
    if (!start(arguments, 1))
        return 10;
    getSystemLogFormater()->writeMessage(1, "a");
    getSystemLogFormater()->writeMessage(2, "b");
    setSystemLogLevel(0);
    getSystemLogFormater()->writeMessage(1, "c");
    getSystemLogFormater()->writeMessage(0, "d");
    return good;
}

TEST(SystemLog, LeavesItsSettingsOutBelowLevelTwo)
{
    EXPECT_THAT(linesOfChild("logsNothingButTheMostImportant"),
        ElementsAre(HasForm(banner), line(2, ": a"), line(5, ": d"), HasForm(lastBanner)));
}

VONTALBASE_TEST_CHILD(logsAtLevelTwo, arguments)
{
    return start(arguments, 2) ? good : 10;
}

TEST(SystemLog, WritesItsSettingsAtLevelTwo)
{
    EXPECT_THAT(
        linesOfChild("logsAtLevelTwo"), ElementsAre(HasForm(banner), startLine(1, "2"), HasForm(lastBanner)));
}

VONTALBASE_TEST_CHILD(hasANegativeLevel, arguments)
{
    setSystemLogLevel(std::numeric_limits<int>::min());
    if (getSystemLogLevel() != std::numeric_limits<int>::min() ||
        !getSystemLogFormater()->isLoggingLevel(2147483648U) ||
        getSystemLogFormater()->isLoggingLevel(2147483649U))
        return 10;
    if (!start(arguments, -1) || getSystemLogLevel() != -1)
        return 11;
    getSystemLogFormater()->writeMessage(4294967295U, "everything");
    return good;
}

TEST(SystemLog, TakesANegativeLevelForAVeryHighOne)
{
    EXPECT_THAT(linesOfChild("hasANegativeLevel"),
        ElementsAre(HasForm(banner), startLine(1, "4294967295"), line(2, ": everything"),
            line(4, ": 3 Destructor"), HasForm(lastBanner)));
}

VONTALBASE_TEST_CHILD(closesAtTheGivenLevel, arguments)
{
    if (!start(arguments))
        return 10;
    setSystemLogLevel(std::stoi(arguments.at(1)));
    return good;
}

TEST(SystemLog, WritesItsClosingLineFromThreshold1024On)
{
    for (const bool isWritten : {false, true})
    {
        const TempDirectory directory;
        const std::string level = isWritten ? "1024" : "1023";
        EXPECT_EQ(runChild("closesAtTheGivenLevel", {placeOf(directory), level}).exitCode, good);
        const std::vector<std::string> lines = linesOf(directory, namesIn(directory).at(0));
        EXPECT_EQ(lines.size(), isWritten ? 4U : 3U);
        EXPECT_THAT(lines.back(), HasForm(lastBanner));
        directory.clear();
    }
}

VONTALBASE_TEST_CHILD(namesItsFile, arguments)
{
    auto * const logger = static_cast<qvutils::DailyLogger *>(getSystemLogFormater()->getLogger());
    if (!start(arguments))
        return 10;
    u8string name;
    if (!logger->getCurrentFileName(name) || name.rfind(arguments.at(0) + "server", 0) != 0)
        return 11;
    return logger->init_logger(1, "a", "b") ? 12 : good;
}

TEST(SystemLog, IsADailyLogger)
{
    linesOfChild("namesItsFile");
}

/// A line that waits until it may go on.
class WaitingText : public qvutils::LogMsgBuilder
{
public:
    u8string build() override
    {
        isHere.release();
        mayGoOn.acquire();
        return "waited\n";
    }

    testsupport::TestSemaphore isHere;
    testsupport::TestSemaphore mayGoOn;
};

VONTALBASE_TEST_CHILD(hasACopyThatExitsWithinALine, arguments)
{
    if (!start(arguments))
        return 10;
    WaitingText text;
    std::thread other([&text] { getSystemLogFormater()->getLogger()->log(text, 1); });
    text.isHere.acquire();
    // The copy has the lock of a thread that it does not have.
    const int exitCode = testsupport::runInForkedChild(
        []
        {
            std::exit(7);
            return 8;
        });
    text.mayGoOn.release();
    other.join();
    getSystemLogFormater()->writeMessage(1, "behind the copy");
    return exitCode == 7 ? good : 11;
}

TEST(SystemLog, IsLeftAloneByACopyOfTheProcessThatExits)
{
    if (!testsupport::canFork())
        GTEST_SKIP() << "processes are not copied here";
    EXPECT_THAT(linesOfChild("hasACopyThatExitsWithinALine"),
        ElementsAre(HasForm(banner), startLine(1, "1024"), "waited", line(2, ": behind the copy"),
            line(4, ": 3 Destructor"), HasForm(lastBanner)));
}

VONTALBASE_TEST_CHILD(startsItsLogInACopy, arguments)
{
    return testsupport::runInForkedChild(
        [&arguments]
        {
            std::exit(start(arguments) ? good : 10);
            return 11;
        });
}

TEST(SystemLog, IsClosedByACopyOfTheProcessThatHasStartedIt)
{
    if (!testsupport::canFork())
        GTEST_SKIP() << "processes are not copied here";
    EXPECT_THAT(linesOfChild("startsItsLogInACopy"),
        ElementsAre(HasForm(banner), startLine(1, "1024"), line(3, ": 2 Destructor"), HasForm(lastBanner)));
}

TEST(SystemLog, IsNotStartedInThisProcess)
{
    EXPECT_NE(getSystemLogFormater(), nullptr);
    EXPECT_EQ(getSystemLogFormater(), getSystemLogFormater());
    EXPECT_EQ(getSystemLogLevel(), 1024);
}

/// Set by children that log from their static objects.
bool logsEarlyAndLate = false;

/// Asks before main begins, and logs behind its end.
class EarlyAndLate
{
public:
    EarlyAndLate()
    {
        if (!testsupport::refusesEarlyUse)
            isReady = getSystemLogFormater()->isLoggingLevel(1024) && getSystemLogLevel() == 1024;
    }
    EarlyAndLate(const EarlyAndLate &) = delete;
    EarlyAndLate & operator=(const EarlyAndLate &) = delete;
    ~EarlyAndLate()
    {
        if (!logsEarlyAndLate)
            return;
        getSystemLogFormater()->writeMessage(1, "from a destructor");
        getSystemLogFormater()->writeMessage(1, "file", 1);
        setSystemLogLevel(getSystemLogLevel());
    }

    bool isReady = testsupport::refusesEarlyUse;
};

const EarlyAndLate earlyAndLate;

VONTALBASE_TEST_CHILD(logsFromStaticObjects, arguments)
{
    logsEarlyAndLate = true;
    static const EarlyAndLate atTheEndOfMain;
    return earlyAndLate.isReady && start(arguments) ? good : 10;
}

TEST(SystemLog, MayBeUsedByStaticObjects)
{
    const std::vector<std::string> lines = linesOfChild("logsFromStaticObjects");
    ASSERT_GE(lines.size(), 4U);
    EXPECT_THAT(lines.back(), HasForm(lastBanner));
    EXPECT_THAT(lines[2], line(2, ": from a destructor")) << "the log is still on then";
}

} // namespace
