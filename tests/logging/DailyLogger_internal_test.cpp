// The files of the days, on a clock that the test sets.

#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/computername.h"
#include "VontalBase/platform/gates.h"

#include "logging/logsupport.h"
#include "support/FailingAllocator.h"
#include "support/IntendedLeak.h"
#include "support/ResourceSnapshot.h"
#include "support/WriteCount.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>

namespace
{

using qvutils::DailyLogger;
using qvutils::LogFormater;
using testing::ElementsAre;
using Vontal::u8string;

namespace fs = std::filesystem;

std::string bracketedName()
{
    std::string name;
    return qvplatform::readComputerName(name) ? " (" + name + ")" : "";
}

class DailyLog : public testing::Test
{
protected:
    DailyLog()
    {
        atNoonOf(13);
    }
    ~DailyLog() override
    {
        qvplatform::disarmGates();
        qvplatform::resetClocks();
        directory.clear();
    }

    static void atNoonOf(int day)
    {
        qvplatform::setLocalNow({2026, 11, day, 12, 0, 0, 0});
    }

    [[nodiscard]] u8string prefix() const
    {
        return placeOf(directory) + "server";
    }

    bool start(DailyLogger & logger, unsigned int threshold = 1024) const
    {
        return logger.init_logger(threshold, prefix(), ".log");
    }

    static u8string currentNameOf(DailyLogger & logger)
    {
        u8string name("none");
        return logger.getCurrentFileName(name) ? name : u8string("none");
    }

    /// The lines of the file of a day.
    [[nodiscard]] std::vector<std::string> linesOfDay(int day) const
    {
        return linesOf(directory, "server202611" + std::to_string(day) + ".log");
    }

    const std::string startedAtNoonOf13 = "Logging started - 2026.11.13 12:00:00" + bracketedName();
    const std::string stoppedAtNoonOf13 = "Logging stoped - 2026.11.13 12:00:00";
    testsupport::TempDirectory directory;
};

TEST_F(DailyLog, BeginsAndEndsWithBanners)
{
    qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 999});
    {
        DailyLogger logger;
        EXPECT_TRUE(start(logger));
        EXPECT_TRUE(logger.internal_log("a line\n"));
        qvplatform::setLocalNow({2026, 11, 13, 23, 59, 59, 0});
    }
    EXPECT_THAT(linesOfDay(13), ElementsAre("Logging started - 2026.11.13 13:05:09" + bracketedName(),
                                    "a line", "Logging stoped - 2026.11.13 23:59:59"));
}

TEST_F(DailyLog, HasNoBracketsWhereTheMachineHasNoName)
{
    qvplatform::armGates({"computer name", 1, 1});
    DailyLogger logger;
    EXPECT_TRUE(start(logger));
    EXPECT_THAT(linesOfDay(13), ElementsAre("Logging started - 2026.11.13 12:00:00"));
}

TEST_F(DailyLog, PadsDatesAndTimesInNamesAndBanners)
{
    const struct
    {
        qvplatform::CivilTime time;
        const char * name;
        const char * moment;
    } rows[] = {
        {{2026, 1, 5, 1, 2, 3, 4}, "server20260105.log", "2026.01.05 01:02:03"},
        {{2026, 12, 31, 23, 59, 59, 999}, "server20261231.log", "2026.12.31 23:59:59"},
        {{2000, 2, 29, 0, 0, 0, 0}, "server20000229.log", "2000.02.29 00:00:00"},
        {{9999, 10, 10, 10, 10, 10, 10}, "server99991010.log", "9999.10.10 10:10:10"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.name);
        qvplatform::setLocalNow(row.time);
        {
            DailyLogger logger;
            EXPECT_TRUE(start(logger));
            EXPECT_EQ(currentNameOf(logger), placeOf(directory) + row.name);
        }
        EXPECT_THAT(linesOf(directory, row.name),
            ElementsAre(std::string("Logging started - ") + row.moment + bracketedName(),
                std::string("Logging stoped - ") + row.moment));
    }
    EXPECT_EQ(namesIn(directory).size(), std::size(rows));
}

TEST_F(DailyLog, IsStoppedAtFirst)
{
    {
        DailyLogger logger;
        EXPECT_EQ(logger.getLogLevel(), 1024U);
        EXPECT_FALSE(logger.internal_log("a\n"));
        EXPECT_EQ(currentNameOf(logger), "none");
        LogFormater(&logger, 1, true).writeMessage(1, "a");
    }
    EXPECT_THAT(namesIn(directory), ElementsAre()) << "no file, and no last line";
}

TEST_F(DailyLog, StartsOnceAndKeepsWhatItWasStartedWith)
{
    DailyLogger logger;
    EXPECT_TRUE(logger.init_logger(7, prefix(), ".log"));
    EXPECT_FALSE(logger.init_logger(8, placeOf(directory) + "other", ".txt"));
    EXPECT_EQ(logger.getLogLevel(), 7U);
    atNoonOf(14);
    EXPECT_TRUE(logger.internal_log("a\n"));
    EXPECT_THAT(namesIn(directory), ElementsAre("server20261113.log", "server20261114.log"));
}

TEST_F(DailyLog, StartsByItsConstructor)
{
    DailyLogger logger(7, prefix(), ".log");
    EXPECT_EQ(logger.getLogLevel(), 7U);
    EXPECT_FALSE(start(logger)) << "it is started";
    EXPECT_TRUE(logger.internal_log("a\n"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, "a"));
}

TEST_F(DailyLog, WritesItsBannerWhateverTheThreshold)
{
    DailyLogger logger(0, prefix(), ".log");
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13));
}

TEST_F(DailyLog, ChangesItsFileWithTheFirstLineOfADay)
{
    const auto before = testsupport::ResourceSnapshot::take();
    DailyLogger logger(1024, prefix(), ".log");
    const std::size_t withOneFile = testsupport::ResourceSnapshot::take().descriptors;
    qvplatform::setLocalNow({2026, 11, 13, 23, 59, 59, 999});
    EXPECT_TRUE(logger.internal_log("before midnight\n"));
    qvplatform::setLocalNow({2026, 11, 14, 0, 0, 0, 0});
    EXPECT_FALSE(directory.contains("server20261114.log")) << "not before there is a line";
    EXPECT_EQ(currentNameOf(logger), prefix() + "20261113.log");
    EXPECT_TRUE(logger.internal_log("after midnight\n"));
    EXPECT_EQ(currentNameOf(logger), prefix() + "20261114.log");
    EXPECT_TRUE(logger.internal_log("again\n"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, "before midnight"));
    EXPECT_THAT(linesOfDay(14), ElementsAre("after midnight", "again")) << "no banner";
    EXPECT_EQ(testsupport::ResourceSnapshot::take().descriptors, withOneFile);
    EXPECT_EQ(withOneFile, before.descriptors + 1);
}

TEST_F(DailyLog, LeavesNoFileForADayWithoutLines)
{
    DailyLogger logger(1024, prefix(), ".log");
    atNoonOf(14);
    atNoonOf(15);
    EXPECT_TRUE(logger.internal_log("a\n"));
    EXPECT_THAT(namesIn(directory), ElementsAre("server20261113.log", "server20261115.log"));
}

TEST_F(DailyLog, OpensAFileForItsLastLineAlone)
{
    {
        const DailyLogger logger(1024, prefix(), ".log");
        atNoonOf(14);
    }
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13));
    EXPECT_THAT(linesOfDay(14), ElementsAre("Logging stoped - 2026.11.14 12:00:00"));
}

TEST_F(DailyLog, GoesBackToTheFileOfADayWhenTheClockIsSetBack)
{
    DailyLogger logger(1024, prefix(), ".log");
    atNoonOf(14);
    EXPECT_TRUE(logger.internal_log("tomorrow\n"));
    atNoonOf(13);
    EXPECT_TRUE(logger.internal_log("today\n"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, "today"));
    EXPECT_THAT(linesOfDay(14), ElementsAre("tomorrow"));
}

TEST_F(DailyLog, TellsDaysApartByYearMonthAndDay)
{
    DailyLogger logger;
    EXPECT_TRUE(start(logger));
    for (const qvplatform::CivilTime & time :
        {qvplatform::CivilTime{2026, 12, 13, 12, 0, 0, 0}, qvplatform::CivilTime{2027, 12, 13, 12, 0, 0, 0}})
    {
        qvplatform::setLocalNow(time);
        EXPECT_TRUE(logger.internal_log("a\n"));
    }
    EXPECT_THAT(
        namesIn(directory), ElementsAre("server20261113.log", "server20261213.log", "server20271213.log"));
}

TEST_F(DailyLog, AppendsWhenItIsStartedAgainOnTheSameDay)
{
    {
        const DailyLogger logger(1024, prefix(), ".log");
    }
    {
        const DailyLogger logger(1024, prefix(), ".log");
    }
    EXPECT_THAT(linesOfDay(13),
        ElementsAre(startedAtNoonOf13, stoppedAtNoonOf13, startedAtNoonOf13, stoppedAtNoonOf13));
}

TEST_F(DailyLog, WritesTextAsItStands)
{
    DailyLogger logger(1024, prefix(), ".log");
    EXPECT_TRUE(logger.internal_log("a"));
    EXPECT_TRUE(logger.internal_log("b\nc\n"));
    EXPECT_TRUE(logger.internal_log("100% %s\n"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, "ab", "c", "100% %s"));
}

TEST_F(DailyLog, RefusesANullTextAndGoesOn)
{
    DailyLogger logger(1024, prefix(), ".log");
    EXPECT_FALSE(logger.internal_log(nullptr));
    EXPECT_TRUE(logger.internal_log("a\n"));
    atNoonOf(14);
    EXPECT_FALSE(logger.internal_log(nullptr));
    EXPECT_FALSE(directory.contains("server20261114.log"));
}

TEST_F(DailyLog, StopsAtAnEmptyTextAsKept)
{
    DailyLogger logger(1024, prefix(), ".log");
    EXPECT_FALSE(logger.internal_log(""));
    EXPECT_FALSE(logger.internal_log("a\n"));
    EXPECT_TRUE(start(logger));
    EXPECT_TRUE(logger.internal_log("b\n"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, startedAtNoonOf13, "b"));
}

TEST_F(DailyLog, PassesForStartedAlthoughTheFileDoesNotOpenAsKept)
{
    DailyLogger logger;
    EXPECT_TRUE(logger.init_logger(1024, placeOf(directory) + "missing\\server", ".log"));
    EXPECT_EQ(currentNameOf(logger), "none");
    EXPECT_FALSE(logger.internal_log("a\n"));
    EXPECT_THAT(namesIn(directory), ElementsAre()) << "no directory is made";
}

TEST_F(DailyLog, StopsAgainWhenAFailedOpenIsTriedOnTheSameDayAsKept)
{
    DailyLogger logger;
    EXPECT_TRUE(logger.init_logger(1024, placeOf(directory) + "missing\\server", ".log"));
    EXPECT_TRUE(start(logger)) << "it was stopped";
    EXPECT_FALSE(logger.internal_log("a\n"));
    EXPECT_TRUE(start(logger)) << "and is again";
    EXPECT_THAT(namesIn(directory), ElementsAre());
    atNoonOf(14);
    EXPECT_TRUE(start(logger));
    EXPECT_TRUE(logger.internal_log("b\n"));
    EXPECT_THAT(linesOfDay(14), ElementsAre("Logging started - 2026.11.14 12:00:00" + bracketedName(), "b"));
}

TEST_F(DailyLog, IsStartedByItsConstructorAlthoughTheFileDoesNotOpenAsKept)
{
    DailyLogger logger(1024, placeOf(directory) + "missing\\server", ".log");
    EXPECT_FALSE(start(logger)) << "it passes for started";
    EXPECT_FALSE(logger.internal_log("a\n")) << "there is no stream";
    EXPECT_TRUE(start(logger)) << "that has stopped it";
    EXPECT_THAT(namesIn(directory), ElementsAre());
}

TEST_F(DailyLog, IsStartedByItsConstructorAndGoesOnWithTheNextDay)
{
    DailyLogger logger(1024, placeOf(directory) + "later\\server", ".log");
    fs::create_directory(directory.path() / "later");
    atNoonOf(14);
    EXPECT_TRUE(logger.internal_log("a\n"));
    EXPECT_THAT(linesOf(directory, "later/server20261114.log"), ElementsAre("a"));
}

TEST_F(DailyLog, StopsForGoodWhenTheFileOfANewDayDoesNotOpen)
{
    fs::create_directory(directory.path() / "server20261114.log");
    DailyLogger logger(1024, prefix(), ".log");
    const std::size_t withOneFile = testsupport::ResourceSnapshot::take().descriptors;
    atNoonOf(14);
    EXPECT_FALSE(logger.internal_log("a\n"));
    EXPECT_EQ(testsupport::ResourceSnapshot::take().descriptors, withOneFile - 1) << "the old file is closed";
    EXPECT_EQ(currentNameOf(logger), prefix() + "20261113.log") << "the earlier name stays";
    fs::remove(directory.path() / "server20261114.log");
    EXPECT_FALSE(logger.internal_log("b\n")) << "no line tries again";
    atNoonOf(15);
    EXPECT_FALSE(logger.internal_log("c\n")) << "nor does a day";
    EXPECT_TRUE(start(logger));
    EXPECT_TRUE(logger.internal_log("d\n"));
    EXPECT_THAT(namesIn(directory), ElementsAre("server20261113.log", "server20261115.log"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13));
}

TEST_F(DailyLog, StopsWhenALineIsNotWrittenAndGoesOnInTheSameFileWhenStarted)
{
    for (const char * const service : {"write stream", "flush stream"})
    {
        SCOPED_TRACE(service);
        directory.clear();
        DailyLogger logger(1024, prefix(), ".log");
        qvplatform::armGates({service, 1, 1});
        EXPECT_FALSE(logger.internal_log("lost\n"));
        qvplatform::disarmGates();
        EXPECT_FALSE(logger.internal_log("dropped\n"));
        // Kept: the file of the day stays open, so the new prefix counts from the next day on.
        EXPECT_TRUE(logger.init_logger(5, placeOf(directory) + "other", ".txt"));
        EXPECT_EQ(logger.getLogLevel(), 5U);
        EXPECT_TRUE(logger.internal_log("back\n"));
        EXPECT_EQ(currentNameOf(logger), prefix() + "20261113.log");
        atNoonOf(14);
        EXPECT_TRUE(logger.internal_log("next\n"));
        EXPECT_THAT(namesIn(directory), ElementsAre("other20261114.txt", "server20261113.log"));
        EXPECT_EQ(linesOfDay(13).back(), "back");
        atNoonOf(13);
    }
}

TEST_F(DailyLog, WritesNoLastLineWhenItHasStopped)
{
    {
        DailyLogger logger(1024, prefix(), ".log");
        EXPECT_FALSE(logger.internal_log(""));
    }
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13));
}

TEST_F(DailyLog, LeavesNothingAloneButTheNameItTells)
{
    DailyLogger logger;
    u8string name("before");
    EXPECT_FALSE(logger.getCurrentFileName(name));
    EXPECT_EQ(name, "before");
    EXPECT_TRUE(start(logger));
    EXPECT_TRUE(logger.getCurrentFileName(name));
    EXPECT_EQ(name, prefix() + "20261113.log");
}

TEST_F(DailyLog, RefusesItsFileToASecondLogger)
{
    DailyLogger first(1024, prefix(), ".log");
    DailyLogger second;
    EXPECT_TRUE(start(second));
    EXPECT_EQ(currentNameOf(second), "none");
    EXPECT_FALSE(second.internal_log("intruder\n"));
    EXPECT_TRUE(first.internal_log("a\n"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, "a"));
}

TEST_F(DailyLog, SharesItsStreamWithACopyAsKept)
{
    {
        DailyLogger logger(7, prefix(), ".log");
        // Each of them would close the one stream, so that the copies must not be destroyed.
        const testsupport::IntendedLeak leak;
        auto * const copy = new DailyLogger(logger);
        auto * const assigned = new DailyLogger;
        *assigned = logger;
        EXPECT_EQ(assigned->getLogLevel(), 7U);
        EXPECT_EQ(currentNameOf(*copy), prefix() + "20261113.log");
        EXPECT_FALSE(start(*copy));
        EXPECT_TRUE(copy->internal_log("copy\n"));
        EXPECT_TRUE(logger.internal_log("logger\n"));
        EXPECT_TRUE(assigned->internal_log("assigned\n"));
        EXPECT_FALSE(copy->internal_log(""));
        EXPECT_TRUE(logger.internal_log("the others do not follow\n"));
    }
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, "copy", "logger", "assigned",
                                    "the others do not follow", stoppedAtNoonOf13));
}

TEST_F(DailyLog, TriesTheNewDayAgainWhenMemoryWasShort)
{
    DailyLogger logger(1024, prefix(), ".log");
    atNoonOf(14);
    {
        const testsupport::FailingAllocator window({.allocation = 1});
        EXPECT_THROW(logger.internal_log("lost\n"), std::bad_alloc);
    }
    EXPECT_TRUE(logger.internal_log("a\n"));
    EXPECT_THAT(linesOfDay(14), ElementsAre("a"));
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13));
}

TEST_F(DailyLog, HandsEachLineToTheSystemInOnePiece)
{
    constexpr unsigned int count = 50;
    std::string line(10'000, 'l');
    line += '\n';
    DailyLogger logger(1024, prefix(), ".log");
    unsigned long long before = 0;
    if (!testsupport::countWrites(before))
        GTEST_SKIP() << "this system does not count the writes, or writes text in pieces";
    for (unsigned int i = 0; i < count; ++i)
        EXPECT_TRUE(logger.internal_log(line.c_str()));
    unsigned long long after = 0;
    EXPECT_TRUE(testsupport::countWrites(after));
    EXPECT_EQ(after - before, count);
    EXPECT_EQ(linesOfDay(13).size(), count + 1);
}

TEST_F(DailyLog, WritesItsLastLineWithoutMemory)
{
    std::optional<DailyLogger> logger(std::in_place, 1024U, prefix(), ".log");
    {
        const testsupport::FailingAllocator window(
            {.allocation = 1, .repeats = std::numeric_limits<std::uint64_t>::max()});
        logger.reset();
        EXPECT_EQ(window.allocations(), 0U);
    }
    EXPECT_THAT(linesOfDay(13), ElementsAre(startedAtNoonOf13, stoppedAtNoonOf13));
}

TEST_F(DailyLog, TakesNamesOfAnyFormThatFilesMayHave)
{
    const struct
    {
        const char * label;
        std::string prefix;
        std::string suffix;
        std::string name;
    } rows[] = {
        {"nothing but the date", "", "", "20261113"},
        {"more than ASCII", "\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80", ".\xC3\xB6",
            "\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80"
            "20261113.\xC3\xB6"},
        {"what looks like a format", "%i%s%n", "%04i", "%i%s%n20261113%04i"},
        {"blanks", "a b ", " c", "a b 20261113 c"},
        {"the longest name", std::string(247, 'n'), "", std::string(247, 'n') + "20261113"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        {
            DailyLogger logger(1024, placeOf(directory) + row.prefix, row.suffix);
            EXPECT_EQ(currentNameOf(logger), placeOf(directory) + row.name);
        }
        EXPECT_THAT(linesOf(directory, row.name), ElementsAre(startedAtNoonOf13, stoppedAtNoonOf13));
        directory.remove(row.name);
    }
    DailyLogger tooLong(1024, placeOf(directory) + std::string(248, 'n'), "");
    EXPECT_EQ(currentNameOf(tooLong), "none");
    EXPECT_FALSE(tooLong.internal_log("a\n"));
    EXPECT_THAT(namesIn(directory), ElementsAre());
}

} // namespace
