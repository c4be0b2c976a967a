// The system log byte for byte, on a clock that the test sets. It is on once in a process, so each test has a
// process of its own.

#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/logging/systemlog.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/computername.h"
#include "VontalBase/platform/encoding.h"
#include "VontalBase/platform/threads.h"

#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/FailingAllocator.h"

#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <string>

namespace
{

using qvutils::getSystemLogFormater;
using qvutils::initSystemLog;
using testing::ElementsAre;
using testsupport::runChild;
using Vontal::u8string;

constexpr int good = 3;

/// Tells the test the thread's number.
void tellThread()
{
    std::printf("%u", static_cast<unsigned int>(qvplatform::currentThreadId()));
}

std::string bracketedName()
{
    std::string name;
    return qvplatform::readComputerName(name) ? " (" + name + ")" : "";
}

VONTALBASE_TEST_CHILD(logsADay, arguments)
{
    qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 0});
    tellThread();
    if (!initSystemLog(u8string(arguments.at(0)), "server", 1024))
        return 10;
    getSystemLogFormater()->writeMessage(1024, "Cannot open", "src\\disk", 310);
    getSystemLogFormater()->writeMessage(1025, "not wanted");
    qvplatform::setLocalNow({2026, 11, 13, 13, 7, 51, 0});
    return good;
}

TEST(SystemLog, IsWrittenFromItsBannerToItsLastLine)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult child = runChild("logsADay", {placeOf(directory)});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    const std::string thread = ":thrId=" + child.standardOutput;
    EXPECT_THAT(linesOf(directory, "server20261113.log"),
        ElementsAre("Logging started - 2026.11.13 13:05:09" + bracketedName(),
            "13:05:09 #1" + thread + ":VontalBase\\VontalBase\\logging:112: LogLevel=1024, acp=" +
                std::to_string(qvplatform::ansiCodePage()),
            "13:05:09 #2" + thread + ":src\\disk:310: Cannot open", "13:07:51 #5" + thread + ": 4 Destructor",
            "Logging stoped - 2026.11.13 13:07:51"));
    directory.clear();
}

VONTALBASE_TEST_CHILD(closesItsLogWithoutMemory, arguments)
{
    qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 0});
    tellThread();
    if (!initSystemLog(u8string(arguments.at(0)), "server", 1024))
        return 10;
    {
        const testsupport::FailingAllocator window(
            {.allocation = 1, .repeats = std::numeric_limits<std::uint64_t>::max()});
        {
            // Its destructor is the end of the log; that of the library's own one then finds nothing to do.
            const qvutils::SystemLogSwitch logSwitch;
        }
        if (window.allocations() != 0)
            return 11;
    }
    getSystemLogFormater()->writeMessage(1, "dropped");
    return initSystemLog(u8string(arguments.at(0)), "other", 5) || qvutils::getSystemLogLevel() != 1024
               ? 12
               : good;
}

TEST(SystemLog, ClosesForGoodAndWithoutMemory)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult child = runChild("closesItsLogWithoutMemory", {placeOf(directory)});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_THAT(namesIn(directory), ElementsAre("server20261113.log"));
    const std::vector<std::string> lines = linesOf(directory, "server20261113.log");
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2], "13:05:09 #3:thrId=" + child.standardOutput + ": 2 Destructor");
    EXPECT_EQ(lines[3], "Logging stoped - 2026.11.13 13:05:09");
    directory.clear();
}

VONTALBASE_TEST_CHILD(startsWithLittleMemory, arguments)
{
    qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 0});
    const u8string directory(arguments.at(0));
    const u8string name("server");
    for (std::uint64_t allocation = 1; allocation < 1000; ++allocation)
    {
        const testsupport::FailingAllocator window({.allocation = allocation});
        try
        {
            // The first start that succeeds is one whose second line found no memory.
            return initSystemLog(directory, name, 1024) && window.refused() == 1 ? good : 10;
        }
        catch (const std::bad_alloc &)
        {
            // The next round asks for one more.
        }
    }
    return 11;
}

TEST(SystemLog, StartsAlthoughThereIsNoMemoryForItsSecondLine)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult child = runChild("startsWithLittleMemory", {placeOf(directory)});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_THAT(linesOf(directory, "server20261113.log"),
        ElementsAre("Logging started - 2026.11.13 13:05:09" + bracketedName(),
            HasForm("13:05:09 #*:thrId=*: * Destructor"), "Logging stoped - 2026.11.13 13:05:09"));
    directory.clear();
}

VONTALBASE_TEST_CHILD(logsOverMidnight, arguments)
{
    qvplatform::setLocalNow({2026, 12, 31, 23, 59, 59, 0});
    tellThread();
    if (!initSystemLog(u8string(arguments.at(0)), "", 1024))
        return 10;
    qvplatform::setLocalNow({2027, 1, 1, 0, 0, 0, 0});
    return good;
}

TEST(SystemLog, EndsInTheFileOfTheDay)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult child = runChild("logsOverMidnight", {placeOf(directory)});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_EQ(linesOf(directory, "20261231.log").size(), 2U);
    EXPECT_THAT(linesOf(directory, "20270101.log"),
        ElementsAre("00:00:00 #3:thrId=" + child.standardOutput + ": 2 Destructor",
            "Logging stoped - 2027.01.01 00:00:00"));
    directory.clear();
}

VONTALBASE_TEST_CHILD(hasAStoppedLog, arguments)
{
    qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 0});
    const u8string missing = u8string(arguments.at(0)) + "missing\\";
    if (!initSystemLog(missing, "server", 1024) || !initSystemLog(missing, "server", 5))
        return 10;
    if (qvutils::getSystemLogLevel() != 5)
        return 11;
    getSystemLogFormater()->writeMessage(1, "dropped");
    qvplatform::setLocalNow({2026, 11, 14, 13, 5, 9, 0});
    tellThread();
    return initSystemLog(u8string(arguments.at(0)), "server", 1024) ? good : 12;
}

TEST(SystemLog, ReportsATrueStartWhereTheFileDoesNotOpenAsKept)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult child = runChild("hasAStoppedLog", {placeOf(directory)});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_THAT(namesIn(directory), ElementsAre("server20261114.log"));
    // Two start-up lines and one other were dropped.
    EXPECT_EQ(linesOf(directory, "server20261114.log").at(1).substr(0, 12), "13:05:09 #4:");
    directory.clear();
}

} // namespace
