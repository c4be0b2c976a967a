#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/SimpleLogger.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/text/u8string.h"

#include "support/TempDirectory.h"
#include "support/Torture.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace
{

using qvutils::DailyLogger;
using qvutils::LogFormater;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;
using Vontal::u8string;

class LogTorture : public testing::Test
{
protected:
    LogTorture() : prefix(directory.text() + "\\server")
    {
    }
    ~LogTorture() override
    {
        qvplatform::resetClocks();
        directory.clear();
    }

    static void onDay(int day)
    {
        qvplatform::setLocalNow({2026, 11, day, 12, 0, 0, 0});
    }

    [[nodiscard]] bool contains(int day, const std::string & text) const
    {
        const UnseenAllocations unseen;
        const std::string name = "server202611" + std::to_string(day) + ".log";
        return directory.contains(name) && directory.read(name).find(text) != std::string::npos;
    }

    /// Does something that memory may end.
    static void attempt(const Fault & fault, const std::function<void()> & action)
    {
        try
        {
            action();
        }
        catch (const std::bad_alloc &)
        {
            EXPECT_TRUE(fault.isAllocation());
        }
    }

    testsupport::TempDirectory directory;
    u8string prefix;
};

TEST_F(LogTorture, ADailyLogLosesLinesAndStartsAgain)
{
    const u8string suffix(".log");
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            {
                const UnseenAllocations unseen;
                directory.clear();
            }
            onDay(13);
            DailyLogger logger;
            LogFormater formater(&logger, 1024, true);
            attempt(fault, [&] { EXPECT_TRUE(logger.init_logger(1024, prefix, suffix)); });
            const bool isFaultyStart = fault.happened();
            attempt(fault, [&] { formater.writeMessage(1, "first message", "some/file.cpp", 1); });
            if (!fault.excuses())
            {
                EXPECT_TRUE(contains(13, ":some/file.cpp:1: first message"));
            }
            onDay(14);
            const bool isFaultyDay = fault.happened();
            attempt(fault, [&] { formater.writeMessage(1, "second message"); });
            if (!fault.excuses())
            {
                EXPECT_TRUE(contains(14, ": second message"));
            }
            // From here on everything is as it was, if the fault has come up.
            onDay(15);
            const bool isOver = fault.happened();
            bool isStartedAgain = false;
            attempt(fault, [&] { isStartedAgain = logger.init_logger(1024, prefix, suffix); });
            attempt(fault, [&] { formater.writeMessage(1, "third message"); });
            if (isOver)
            {
                EXPECT_TRUE(contains(15, ": third message"));
                EXPECT_EQ(contains(15, "Logging started - 2026.11.15 12:00:00"), isStartedAgain);
            }
            if (isFaultyStart && fault.isGate("open file"))
            {
                EXPECT_TRUE(isStartedAgain) << "a file that does not open stops the log";
            }
            if (isOver && !isFaultyDay && fault.isGate("open file"))
            {
                EXPECT_TRUE(isStartedAgain);
            }
        });
    EXPECT_GT(report.gatePassages, 10U);
    EXPECT_GT(report.faultyRuns, 30U);
}

TEST_F(LogTorture, ASimpleLogLosesLinesAndIsClosed)
{
    const u8string path = directory.text() + "\\server20261113.log";
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            onDay(13);
            {
                qvutils::SimpleLogger logger(path, 1024, false);
                LogFormater formater(&logger, 1024, true);
                attempt(fault, [&] { formater.writeMessage(1, "a message"); });
            }
            if (!fault.excuses())
            {
                EXPECT_TRUE(contains(13, ": a message"));
                EXPECT_TRUE(contains(13, "Logging stoped - 2026.11.13 12:00:00"));
            }
        });
    EXPECT_GT(report.gatePassages, 5U);
    EXPECT_GT(report.faultyRuns, 15U);
}

} // namespace
