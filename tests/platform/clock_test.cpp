#include "VontalBase/platform/clock.h"

#include "support/ChildProcess.h"
#include "support/UserSettings.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>

namespace
{

using qvplatform::CivilTime;

std::int64_t standardNow()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

/// Gives the clocks back to the system in the end.
class PlatformClock : public testing::Test
{
protected:
    ~PlatformClock() override
    {
        qvplatform::resetClocks();
    }
};

/// The system's clock may tick more rarely than that of the standard library.
constexpr std::int64_t tick = 20;

TEST_F(PlatformClock, CountsFileTimesFrom1601)
{
    const std::int64_t before = standardNow();
    const std::uint64_t units = qvplatform::fileTimeNow();
    const std::int64_t after = standardNow();
    const std::int64_t milliseconds = static_cast<std::int64_t>(units / 10'000) - 11'644'473'600'000;
    EXPECT_GE(milliseconds, before - tick);
    EXPECT_LE(milliseconds, after + tick);
}

TEST_F(PlatformClock, TellsTheTimeInUtcWithMilliseconds)
{
    const std::int64_t before = standardNow();
    const CivilTime now = qvplatform::utcNow();
    const std::int64_t after = standardNow();
    EXPECT_GE(qvplatform::millisecondsSince1970(now), before - tick);
    EXPECT_LE(qvplatform::millisecondsSince1970(now), after + tick);
}

TEST_F(PlatformClock, TellsTheTimeOfTheUsersZone)
{
    // That the system and the C library mean the same zone is made sure of before the tests run.
    const std::int64_t before = standardNow();
    const CivilTime now = qvplatform::localNow();
    const std::int64_t after = standardNow();
    const std::time_t moment = static_cast<std::time_t>(before / 1000);
    const std::tm local = *std::localtime(&moment);
    const CivilTime expected{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
        local.tm_min, local.tm_sec, static_cast<int>(before % 1000)};
    const std::int64_t passed =
        qvplatform::millisecondsSince1970(now) - qvplatform::millisecondsSince1970(expected);
    EXPECT_GE(passed, -tick);
    EXPECT_LE(passed, after - before + tick);
}

VONTALBASE_TEST_CHILD(goesToAnotherZone, arguments)
{
    constexpr std::int64_t ahead = (5 * 60 + 45) * 60'000;
    // Within one second again and again, most of the times.
    for (int i = 0; i < 20; ++i)
    {
        testsupport::takeZone("ABC0");
        const std::int64_t here = qvplatform::millisecondsSince1970(qvplatform::localNow());
        testsupport::takeZone("XYZ-5:45");
        const std::int64_t there = qvplatform::millisecondsSince1970(qvplatform::localNow());
        constexpr std::int64_t aMinute = 60'000;
        if (there - here < ahead - aMinute || there - here > ahead + aMinute)
            return 10;
    }
    return 3;
}

TEST_F(PlatformClock, FollowsTheProcessToAnotherZoneWithinASecond)
{
    if (!testsupport::zoneCanBeTaken())
        GTEST_SKIP() << "the zone is that of the system here";
    EXPECT_EQ(testsupport::runChild("goesToAnotherZone").exitCode, 3);
}

struct StandardRow
{
    const char * zone;
    CivilTime time;
    std::int64_t seconds;
};

// The seconds of the same date and time in UTC, less how far the zone's standard time is ahead.
constexpr StandardRow standardRows[] = {
    {"UTC0", {1970, 1, 1, 0, 0, 0, 0}, 0},
    {"UTC0", {1970, 1, 1, 23, 59, 59, 0}, 86'399},
    {"UTC0", {1970, 1, 2, 0, 0, 0, 0}, 86'400},
    {"UTC0", {2004, 2, 29, 12, 0, 0, 999}, 1'078'056'000},
    {"UTC0", {2037, 12, 31, 23, 59, 59, 0}, 2'145'916'799},
    {"XYZ-5:45", {1970, 1, 1, 0, 0, 0, 0}, -20'700},
    {"XYZ-5:45", {1970, 1, 1, 5, 45, 0, 0}, 0},
    {"XYZ-14", {1970, 1, 1, 0, 0, 0, 0}, -50'400},
    {"XYZ12", {2037, 12, 31, 23, 59, 59, 0}, 2'145'959'999},
    {"CET-1CEST,M3.5.0,M10.5.0/3", {2001, 2, 3, 4, 5, 6, 0}, 981'169'506},
    {"CET-1CEST,M3.5.0,M10.5.0/3", {2001, 7, 8, 4, 5, 6, 0}, 994'561'506},
};

VONTALBASE_TEST_CHILD(countsStandardTime, arguments)
{
    int number = 0;
    for (const StandardRow & row : standardRows)
    {
        ++number;
        testsupport::takeZone(row.zone);
        qvplatform::refreshTimeZone();
        if (qvplatform::secondsOfStandardTime(row.time) != row.seconds)
            return number;
    }
    return 0;
}

TEST_F(PlatformClock, CountsSecondsOfLocalTimeWithDaylightSavingOff)
{
    if (!testsupport::zoneCanBeTaken())
        GTEST_SKIP() << "the zone is that of the system here";
    EXPECT_EQ(testsupport::runChild("countsStandardTime").exitCode, 0) << "the number of the row";
}

TEST_F(PlatformClock, CountsSecondsOfLocalTimeInTheZoneOfTheSystem)
{
    qvplatform::refreshTimeZone();
    const CivilTime time{2001, 2, 3, 4, 5, 6, 0};
    const std::int64_t seconds = qvplatform::secondsOfStandardTime(time);
    const CivilTime dayLater{2001, 2, 4, 4, 5, 6, 0};
    EXPECT_EQ(qvplatform::secondsOfStandardTime(dayLater) - seconds, 86'400);
    constexpr std::int64_t inUtc = 981'173'106;
    constexpr std::int64_t farthest = 14 * 3600;
    EXPECT_LE(seconds, inUtc + farthest);
    EXPECT_GE(seconds, inUtc - farthest);
    EXPECT_EQ((seconds - inUtc) % 900, 0);
}

TEST_F(PlatformClock, CountsWholeSecondsFrom1970)
{
    const std::int64_t before = standardNow();
    const std::int64_t seconds = qvplatform::secondsSince1970();
    const std::int64_t after = standardNow();
    EXPECT_GE(seconds, (before - tick) / 1000);
    EXPECT_LE(seconds, (after + tick) / 1000);
}

TEST_F(PlatformClock, LocalTimeCanBeSetByATest)
{
    const CivilTime moment{2031, 12, 31, 23, 59, 59, 999};
    qvplatform::setLocalNow(moment);
    EXPECT_EQ(qvplatform::localNow(), moment);
    EXPECT_EQ(qvplatform::localNow(), moment) << "it stands still";
    EXPECT_NE(qvplatform::systemLocalNow(), moment);
    EXPECT_NE(qvplatform::utcNow().year, 2031) << "UTC goes on";
    qvplatform::resetClocks();
    EXPECT_NE(qvplatform::localNow(), moment);
}

TEST_F(PlatformClock, TheOtherClockCanBeSetByATest)
{
    // 2020-01-02 03:04:05.678, of which nine units of 100 nanoseconds are below a millisecond.
    qvplatform::setFileTimeNow(132'224'078'456'780'009);
    EXPECT_EQ(qvplatform::fileTimeNow(), 132'224'078'456'780'009U);
    EXPECT_EQ(qvplatform::utcNow(), (CivilTime{2020, 1, 2, 3, 4, 5, 678}));
    EXPECT_EQ(qvplatform::secondsSince1970(), 1'577'934'245);
    EXPECT_NE(qvplatform::localNow().year, 2020) << "local time goes on";
    qvplatform::resetClocks();
    EXPECT_GT(qvplatform::fileTimeNow(), 132'224'078'456'780'009U);
}

TEST_F(PlatformClock, ATimeBefore1970HasANegativeNumber)
{
    qvplatform::setFileTimeNow(10'000'000);
    EXPECT_EQ(qvplatform::secondsSince1970(), -11'644'473'599);
    EXPECT_EQ(qvplatform::utcNow(), (CivilTime{1601, 1, 1, 0, 0, 1, 0}));
}

} // namespace
