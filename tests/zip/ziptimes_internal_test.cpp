#include "VontalBase/platform/clock.h"
#include "VontalBase/zip/ziptimes.h"

#include "support/ChildProcess.h"
#include "support/UserSettings.h"

#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using qvplatform::CivilTime;

/// The file time of a count of seconds since 1970.
constexpr std::uint64_t fileTime(std::int64_t seconds)
{
    return static_cast<std::uint64_t>(116'444'736'000'000'000 + seconds * 10'000'000);
}

constexpr std::int64_t minute = 600'000'000;

class ZipTimes : public testing::Test
{
protected:
    ~ZipTimes() override
    {
        qvplatform::resetClocks();
    }
};

struct DosRow
{
    const char * label;
    CivilTime time;
    std::uint32_t dosDate;
};

// The year since 1980 in 7 bits, the month in 4, the day in 5, the hour in 5, the minute in 6, half of the
// second in 5.
constexpr DosRow dosRows[] = {
    {"the first", {1980, 1, 1, 0, 0, 0, 0}, 0x00210000},
    {"some", {2001, 2, 3, 4, 5, 6, 0}, 0x2A4320A3},
    {"a leap day", {2004, 2, 29, 12, 0, 0, 0}, 0x305D6000},
    {"the last", {2107, 12, 31, 23, 59, 58, 0}, 0xFF9FBF7D},
};

TEST_F(ZipTimes, BecomeDosDatesAndBack)
{
    for (const DosRow & row : dosRows)
    {
        SCOPED_TRACE(row.label);
        const std::uint64_t time = zip::fileTimeOf(row.time);
        EXPECT_EQ(zip::dosDateOf(time), row.dosDate);
        EXPECT_EQ(zip::fileTimeOfDosDate(row.dosDate), time);
    }
}

TEST_F(ZipTimes, LoseOddSecondsAndWhatIsBelowThem)
{
    EXPECT_EQ(zip::dosDateOf(zip::fileTimeOf({2001, 2, 3, 4, 5, 7, 999}) + 9'999), 0x2A4320A3U);
    EXPECT_EQ(zip::dosDateOf(zip::fileTimeOf({2001, 2, 3, 4, 5, 8, 0})), 0x2A4320A4U);
}

TEST_F(ZipTimes, BeyondDosDatesBecomeTheirFirstAndLast)
{
    const DosRow rows[] = {
        {"the last before", {1979, 12, 31, 23, 59, 59, 999}, 0x00210000},
        {"1965", {1965, 7, 8, 9, 10, 11, 0}, 0x00210000},
        {"1601", {1601, 1, 1, 0, 0, 0, 0}, 0x00210000},
        {"the last second", {2107, 12, 31, 23, 59, 59, 999}, 0xFF9FBF7D},
        {"the first after", {2108, 1, 1, 0, 0, 0, 0}, 0xFF9FBF7D},
        {"far away", {9999, 5, 6, 7, 8, 9, 0}, 0xFF9FBF7D},
    };
    for (const DosRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(zip::dosDateOf(zip::fileTimeOf(row.time)), row.dosDate);
    }
    EXPECT_EQ(zip::dosDateOf(std::numeric_limits<std::uint64_t>::max()), 0xFF9FBF7DU);
}

TEST_F(ZipTimes, HaveNoFileTimeForDosDatesThatAreNone)
{
    struct Row
    {
        const char * label;
        std::uint32_t dosDate;
    };
    const Row rows[] = {{"nothing", 0}, {"day 0", 0x2A4020A3}, {"month 0", 0x2A0320A3},
        {"month 13", 0x2BA320A3}, {"29 February 2001", 0x2A5D20A3}, {"31 April", 0x2A9F20A3},
        {"hour 24", 0x2A43C0A3}, {"minute 60", 0x2A432783}, {"second 60", 0x2A4320BE},
        {"all bits", 0xFFFFFFFF}};
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(zip::fileTimeOfDosDate(row.dosDate), 0U);
    }
}

TEST_F(ZipTimes, CountFromTheBeginningOf1601)
{
    EXPECT_EQ(zip::civilTimeOf(0), (CivilTime{1601, 1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(zip::fileTimeOf({1601, 1, 1, 0, 0, 0, 0}), 0U);
    EXPECT_EQ(zip::civilTimeOf(fileTime(981'173'106) + 6'789'999), (CivilTime{2001, 2, 3, 4, 5, 6, 678}));
    EXPECT_EQ(zip::fileTimeOf({2001, 2, 3, 4, 5, 6, 678}), fileTime(981'173'106) + 6'780'000);
    EXPECT_EQ(zip::civilTimeOf(fileTime(-1)), (CivilTime{1969, 12, 31, 23, 59, 59, 0}));
}

TEST_F(ZipTimes, ComeFromSecondsSince1970)
{
    EXPECT_EQ(zip::fileTimeOfSeconds(0), 116'444'736'000'000'000U);
    EXPECT_EQ(zip::fileTimeOfSeconds(981'173'106), fileTime(981'173'106));
    EXPECT_EQ(zip::fileTimeOfSeconds(-20'700), fileTime(-20'700));
    EXPECT_EQ(zip::fileTimeOfSeconds(0x7FFFFFFF), fileTime(2'147'483'647));
    EXPECT_EQ(zip::fileTimeOfSeconds(std::numeric_limits<std::int32_t>::min()), fileTime(-2'147'483'648));
}

TEST_F(ZipTimes, AreShiftedNoFurtherThanTheyGo)
{
    constexpr std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(zip::shifted(1000, 10), 1010U);
    EXPECT_EQ(zip::shifted(1000, -10), 990U);
    EXPECT_EQ(zip::shifted(1000, 0), 1000U);
    EXPECT_EQ(zip::shifted(9, -10), 0U);
    EXPECT_EQ(zip::shifted(10, -10), 0U);
    EXPECT_EQ(zip::shifted(last - 9, 10), last);
    EXPECT_EQ(zip::shifted(last - 10, 10), last);
    EXPECT_EQ(zip::shifted(0, std::numeric_limits<std::int64_t>::min()), 0U);
}

struct DifferenceRow
{
    const char * label;
    CivilTime local;
    std::int64_t minutes;
};

TEST_F(ZipTimes, TellByHowManyMinutesTheLocalClockIsAhead)
{
    // 2001-02-03 04:05:06 in UTC.
    qvplatform::setFileTimeNow(fileTime(981'173'106));
    const DifferenceRow rows[] = {{"none", {2001, 2, 3, 4, 5, 6, 0}, 0},
        {"Kathmandu", {2001, 2, 3, 9, 50, 6, 0}, 345}, {"read later", {2001, 2, 3, 9, 50, 35, 999}, 345},
        {"read earlier", {2001, 2, 3, 9, 49, 36, 1}, 345}, {"half a minute", {2001, 2, 3, 9, 50, 36, 0}, 346},
        {"behind", {2001, 2, 3, 0, 35, 6, 0}, -210},
        {"behind, read later", {2001, 2, 3, 0, 35, 35, 999}, -210},
        {"another day", {2001, 2, 2, 16, 5, 6, 0}, -720}};
    for (const DifferenceRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        qvplatform::setLocalNow(row.local);
        EXPECT_EQ(zip::localMinusUtc(), row.minutes * minute);
    }
}

TEST_F(ZipTimes, TakeThePresentFromTheLocalClock)
{
    qvplatform::setLocalNow({2001, 2, 3, 4, 5, 6, 789});
    qvplatform::setFileTimeNow(fileTime(0));
    EXPECT_EQ(zip::localFileTimeNow(), fileTime(981'173'106) + 7'890'000);
}

struct SecondsRow
{
    const char * zone;
    CivilTime local;
    std::int64_t seconds;
};

constexpr const char * kathmandu = "NPT-5:45";
constexpr const char * berlin = "CET-1CEST,M3.5.0,M10.5.0/3";

// Worked out by hand: seconds as in UTC, less the zone's standard time.
constexpr SecondsRow secondsRows[] = {
    {"UTC0", {1970, 1, 1, 0, 0, 0, 0}, 0},
    {"UTC0", {1970, 1, 1, 0, 0, 1, 999}, 1},
    {"UTC0", {2001, 2, 3, 4, 5, 6, 789}, 981'173'106},
    {"UTC0", {2037, 12, 31, 23, 59, 59, 0}, 2'145'916'799},
    {"UTC0", {1969, 12, 31, 23, 59, 59, 0}, 86'399},
    {"UTC0", {1965, 7, 8, 12, 34, 56, 0}, 45'296},
    {"UTC0", {1601, 1, 1, 0, 0, 0, 0}, 0},
    {"UTC0", {2038, 1, 1, 0, 0, 0, 0}, 2'145'830'400},
    {"UTC0", {2040, 5, 6, 1, 2, 3, 0}, 2'145'834'123},
    {kathmandu, {1970, 1, 1, 0, 0, 0, 0}, -20'700},
    {kathmandu, {1965, 7, 8, 12, 34, 56, 0}, 24'596},
    {kathmandu, {2001, 2, 3, 4, 5, 6, 0}, 981'152'406},
    {kathmandu, {2040, 5, 6, 1, 2, 3, 0}, 2'145'813'423},
    {berlin, {2001, 2, 3, 4, 5, 6, 0}, 981'169'506},
    {berlin, {2001, 7, 8, 4, 5, 6, 0}, 994'561'506},
    {berlin, {1965, 7, 8, 12, 34, 56, 0}, 41'696},
    {"EST5EDT,M3.2.0,M11.1.0", {1970, 1, 1, 0, 0, 0, 0}, 18'000},
    {"EST5EDT,M3.2.0,M11.1.0", {2037, 12, 31, 23, 59, 59, 0}, 2'145'934'799},
};

VONTALBASE_TEST_CHILD(countsSecondsInZones, arguments)
{
    int number = 0;
    for (const SecondsRow & row : secondsRows)
    {
        ++number;
        testsupport::takeZone(row.zone);
        qvplatform::refreshTimeZone();
        if (zip::secondsOfLocalFileTime(zip::fileTimeOf(row.local)) !=
            static_cast<std::uint32_t>(row.seconds))
            return number;
    }
    return 0;
}

TEST_F(ZipTimes, KeptSecondsAreCountedWithDaylightSavingOff)
{
    if (!testsupport::zoneCanBeTaken())
        GTEST_SKIP() << "the zone is that of the system here";
    EXPECT_EQ(testsupport::runChild("countsSecondsInZones").exitCode, 0) << "the number of the row";
}

TEST_F(ZipTimes, CountSecondsAsTheSystemDoesInItsOwnZone)
{
    for (const CivilTime & time : {CivilTime{2001, 2, 3, 4, 5, 6, 0}, CivilTime{2001, 7, 8, 4, 5, 6, 0}})
    {
        std::tm fields = {};
        fields.tm_year = time.year - 1900;
        fields.tm_mon = time.month - 1;
        fields.tm_mday = time.day;
        fields.tm_hour = time.hour;
        fields.tm_min = time.minute;
        fields.tm_sec = time.second;
        fields.tm_isdst = 0;
        EXPECT_EQ(zip::secondsOfLocalFileTime(zip::fileTimeOf(time)),
            static_cast<std::uint32_t>(std::mktime(&fields)));
    }
}

} // namespace
