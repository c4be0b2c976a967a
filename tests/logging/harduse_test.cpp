// Processes that are killed, and several that want one file.

#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/systemlog.h"

#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>

namespace
{

using qvutils::DailyLogger;
using testsupport::runChild;
using testsupport::TempDirectory;
using Vontal::u8string;

VONTALBASE_TEST_CHILD(logsUntilItIsKilled, arguments)
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (!qvutils::initSystemLog(u8string(arguments.at(0)), "server", 1024))
        return 10;
    for (int number = 1;; ++number)
    {
        const u8string message = "line " + std::to_string(number) + " end";
        qvutils::getSystemLogFormater()->writeMessage(1, message, nullptr, 0);
        const std::string report = std::to_string(number) + "\n";
        std::fwrite(report.data(), 1, report.size(), stdout);
    }
}

/// The number at a place of a text; 0 where there is none.
int numberAt(const std::string & text, std::size_t place)
{
    int number = 0;
    std::from_chars(text.data() + place, text.data() + text.size(), number);
    return number;
}

/// The last number that a child has told to the end.
int lastReported(const std::string & output)
{
    const std::size_t end = output.rfind('\n');
    if (end == std::string::npos || end == 0)
        return 0;
    const std::size_t before = output.rfind('\n', end - 1);
    return numberAt(output, before == std::string::npos ? 0 : before + 1);
}

TEST(KilledProcess, LeavesEveryLineWhoseCallHadReturned)
{
    std::mt19937 random{std::random_device{}()};
    int runsWithLines = 0;
    // Time for the child to begin; more where it was not enough.
    std::chrono::milliseconds start(testsupport::isSlow ? 1000 : 20);
    for (int run = 0; run < testsupport::repetitions(40); ++run)
    {
        const TempDirectory directory;
        const auto limit = start + std::chrono::microseconds(random() % 50'000);
        const testsupport::ChildResult child = runChild("logsUntilItIsKilled", {placeOf(directory)},
            std::chrono::duration_cast<std::chrono::milliseconds>(limit));
        ASSERT_TRUE(child.timedOut) << child.exitCode << child.standardError;
        const int last = lastReported(child.standardOutput);
        if (last == 0)
            start = std::min(2 * start, std::chrono::milliseconds(testsupport::patience));
        else
        {
            ++runsWithLines;
            std::set<int> found;
            for (const std::string & name : namesIn(directory))
            {
                const std::string bytes = directory.read(name);
                for (std::size_t at = bytes.find(": line "); at != std::string::npos;
                     at = bytes.find(": line ", at + 1))
                {
                    const int number = numberAt(bytes, at + 7);
                    const std::string rest = std::to_string(number) + " end" + testsupport::lineEnd();
                    if (bytes.compare(at + 7, rest.size(), rest) == 0 && !found.insert(number).second)
                        ADD_FAILURE() << "line " << number << " is there twice";
                }
            }
            int missing = 0;
            for (int number = 1; number <= last; ++number)
                missing += found.count(number) == 1 ? 0 : 1;
            EXPECT_EQ(missing, 0) << "of " << last;
        }
        directory.clear();
    }
    EXPECT_GT(runsWithLines, 0);
}

VONTALBASE_TEST_CHILD(wantsTheSameLog, arguments)
{
    DailyLogger logger;
    u8string name;
    if (!logger.init_logger(1024, u8string(arguments.at(0)), ".log"))
        return 10;
    const bool isOpen = logger.getCurrentFileName(name);
    const bool isWritten = logger.internal_log("from the child\n");
    return isOpen == isWritten ? (isOpen ? 20 : 30) : 11;
}

TEST(SecondProcess, IsRefusedTheFileOfAnother)
{
    const TempDirectory directory;
    const u8string prefix = placeOf(directory) + "server";
    {
        DailyLogger logger(1024, prefix, ".log");
        ASSERT_TRUE(logger.internal_log("before\n"));
        EXPECT_EQ(runChild("wantsTheSameLog", {prefix}).exitCode, 30);
        EXPECT_TRUE(logger.internal_log("after\n"));
        EXPECT_EQ(runChild("wantsTheSameLog", {prefix + "-2-"}).exitCode, 20) << "another file is free";
        const std::vector<std::string> names = namesIn(directory);
        ASSERT_EQ(names.size(), 2U);
        const std::vector<std::string> lines = linesOf(directory, names[1]);
        EXPECT_THAT(lines, testing::ElementsAre(HasForm("Logging started~"), "before", "after"));
    }
    EXPECT_EQ(runChild("wantsTheSameLog", {prefix}).exitCode, 20) << "it is free again";
    directory.clear();
}

} // namespace
