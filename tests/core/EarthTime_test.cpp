#include "VontalBase/core/EarthTime.h"
#include "VontalBase/platform/filetime.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using qvbase::EarthTime;
using Vontal::long32;

static_assert(!std::is_polymorphic_v<EarthTime>);
static_assert(sizeof(EarthTime) == 12);
static_assert(offsetof(EarthTime, year) == 0 && offsetof(EarthTime, month) == 2);
static_assert(offsetof(EarthTime, day) == 4 && offsetof(EarthTime, time) == 8);
static_assert(std::is_same_v<decltype(EarthTime::year), short>);
static_assert(std::is_same_v<decltype(EarthTime::time), long32>);
static_assert(std::is_void_v<decltype(std::declval<EarthTime &>() = std::declval<const EarthTime &>())>);
static_assert(std::is_same_v<decltype(std::declval<EarthTime>().hour()), short>);
static_assert(std::is_same_v<decltype(std::declval<EarthTime>().minutes()), short>);
static_assert(std::is_same_v<decltype(std::declval<EarthTime>().getDayCounter()), long32>);
static_assert(std::is_same_v<decltype(std::declval<EarthTime>().formatDate()), Vontal::u8string>);

constexpr long32 dayEnd = 86400000;
constexpr short least16 = std::numeric_limits<short>::min();
constexpr short greatest16 = std::numeric_limits<short>::max();
constexpr long32 least32 = std::numeric_limits<std::int32_t>::min();
constexpr long32 greatest32 = std::numeric_limits<std::int32_t>::max();

std::string describe(const EarthTime & value)
{
    return std::to_string(value.year) + "/" + std::to_string(value.month) + "/" + std::to_string(value.day) +
           " " + std::to_string(value.time);
}

EarthTime dateOf(short year, short month, short day)
{
    return {year, month, day, 0};
}

EarthTime timeOf(long32 milliseconds)
{
    return {2024, 1, 15, milliseconds};
}

/// Gives the protected members to the tests.
class Opened : public EarthTime
{
public:
    using EarthTime::EarthTime;
    using EarthTime::init;
    using EarthTime::parse_in;
};

TEST(EarthTime, IsAllZerosAtFirst)
{
    EXPECT_EQ(describe(EarthTime()), "0/0/0 0");
}

TEST(EarthTime, StoresNumbersWithoutACheck)
{
    EXPECT_EQ(describe(EarthTime(2024, 1, 15, 3600000)), "2024/1/15 3600000");
    EXPECT_EQ(describe(EarthTime(least16, 99, -7, least32)), "-32768/99/-7 -2147483648");
    EarthTime copy;
    copy = EarthTime(1, 2, 3, 4);
    EXPECT_EQ(describe(copy), "1/2/3 4");
    EXPECT_EQ(describe(EarthTime(copy)), "1/2/3 4");
}

TEST(EarthTime, BreaksSecondsSince1970DownInUtc)
{
    const struct
    {
        std::int64_t seconds;
        const char * expected;
    } rows[] = {
        {0, "1970/1/1 0"},
        {1, "1970/1/1 1000"},
        {86399, "1970/1/1 86399000"},
        {86400, "1970/1/2 0"},
        {951782399, "2000/2/28 86399000"},
        {951782400, "2000/2/29 0"},
        {1000000000, "2001/9/9 6400000"},
        {1705320000, "2024/1/15 43200000"},
        {2147483647, "2038/1/19 11647000"},
        {2147483648, "2038/1/19 11648000"},
        {4102444800, "2100/1/1 0"},
        {32503679999, "2999/12/31 86399000"},
    };
    for (const auto & row : rows)
        EXPECT_EQ(describe(EarthTime(row.seconds)), row.expected) << row.seconds;
}

TEST(EarthTime, IsAllZerosForSecondsThatTheSystemRefuses)
{
    EXPECT_EQ(describe(EarthTime(std::numeric_limits<std::int64_t>::max())), "0/0/0 0");
    EXPECT_EQ(describe(EarthTime(std::numeric_limits<std::int64_t>::min())), "0/0/0 0");
}

TEST(EarthTime, LosesTheFractionOfASecondOfAFileTime)
{
    const struct
    {
        std::uint64_t units;
        const char * expected;
    } rows[] = {
        {116444736000000000, "1970/1/1 0"}, {116444736000000000 + 9999999, "1970/1/1 0"},
        {116444736000000000 + 10000000, "1970/1/1 1000"},
        {132224078456780009, "2020/1/2 11045000"}, // 03:04:05
    };
    for (const auto & row : rows)
    {
        FILETIME fileTime{};
        fileTime.dwLowDateTime = static_cast<std::uint32_t>(row.units);
        fileTime.dwHighDateTime = static_cast<std::uint32_t>(row.units >> 32);
        const EarthTime value(&fileTime);
        EXPECT_EQ(describe(value), row.expected) << row.units;
        EXPECT_EQ(fileTime.dwLowDateTime, static_cast<std::uint32_t>(row.units)) << "it is only read";
    }
}

TEST(EarthTime, TakesABrokenDownTimeAsItIs)
{
    const struct
    {
        const char * label;
        int year, month, day, hour, minute, second;
        const char * expected;
    } rows[] = {
        {"a usual one", 124, 0, 15, 1, 2, 3, "2024/1/15 3723000"},
        {"the last second of a year", 99, 11, 31, 23, 59, 59, "1999/12/31 86399000"},
        {"a leap second", 116, 11, 31, 23, 59, 60, "2016/12/31 86400000"},
        {"parts out of range", 0, 12, 0, -1, -1, -1, "1900/13/0 -3661000"},
        {"a year beyond 16 bits", 30868, 0, 1, 0, 0, 0, "-32768/1/1 0"},
        {"the greatest numbers", 2147483647, 2147483647, 2147483647, 2147483647, 2147483647, 2147483647,
            // 2147485547, 2147483648 and 2147483647 modulo 2 to the 16th; 2147483647 * 3661000 modulo 2 to
            // the 32nd, which is that of -3661000 + 2 to the 31st * (3661000 mod 2).
            "1899/0/-1 -3661000"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::tm brokenDown{};
        brokenDown.tm_year = row.year;
        brokenDown.tm_mon = row.month;
        brokenDown.tm_mday = row.day;
        brokenDown.tm_hour = row.hour;
        brokenDown.tm_min = row.minute;
        brokenDown.tm_sec = row.second;
        EXPECT_EQ(describe(EarthTime(&brokenDown)), row.expected);
        Opened value(9, 9, 9, 9);
        value.init(&brokenDown);
        EXPECT_EQ(describe(value), row.expected);
    }
}

TEST(EarthTime, IsTakenApartByTheReaders)
{
    const struct
    {
        long32 time;
        int hour, minute, minutes, second, milisecond;
    } rows[] = {
        {0, 0, 0, 0, 0, 0},
        {999, 0, 0, 0, 0, 999},
        {1000, 0, 0, 0, 1, 0},
        {59999, 0, 0, 0, 59, 999},
        {60000, 0, 1, 1, 0, 0},
        {3599999, 0, 59, 59, 59, 999},
        {3600000, 1, 0, 60, 0, 0},
        {45296789, 12, 34, 754, 56, 789},
        {dayEnd, 24, 0, 1440, 0, 0},
        {-1, 0, 0, 0, 0, -1},
        {-3661001, -1, -1, -61, -1, -1},
        {1966079999, 546, 7, 32767, 59, 999},
        {1966080000, 546, 8, -32768, 0, 0},
        {greatest32, 596, 31, -29745, 23, 647},
        {least32, -596, -31, 29745, -23, -648},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.time);
        const EarthTime value = timeOf(row.time);
        EXPECT_EQ(value.hour(), row.hour);
        EXPECT_EQ(value.minute(), row.minute);
        EXPECT_EQ(value.minutes(), row.minutes);
        EXPECT_EQ(value.second(), row.second);
        EXPECT_EQ(value.milisecond(), row.milisecond);
    }
}

TEST(EarthTime, IsOrderedByYearMonthDayAndTime)
{
    // Each is less than all behind it.
    const EarthTime values[] = {
        {least16, 12, 31, greatest32},
        {-1, 12, 31, 0},
        {0, 0, 0, -1},
        {0, 0, 0, 0},
        {2023, 12, 31, dayEnd},
        {2024, -1, 31, 0},
        {2024, 1, -1, 0},
        {2024, 1, 15, -1},
        {2024, 1, 15, 0},
        {2024, 1, 15, 1},
        {2024, 1, 16, 0},
        {2024, 2, 1, -5},
        {2025, 1, 1, 0},
    };
    for (std::size_t i = 0; i < std::size(values); ++i)
    {
        for (std::size_t j = 0; j < std::size(values); ++j)
        {
            SCOPED_TRACE(describe(values[i]) + " and " + describe(values[j]));
            EXPECT_EQ(values[i] == values[j], i == j);
            EXPECT_EQ(values[i] != values[j], i != j);
            EXPECT_EQ(values[i] < values[j], i < j);
            EXPECT_EQ(values[i] <= values[j], i <= j);
            EXPECT_EQ(values[i] > values[j], i > j);
            EXPECT_EQ(values[i] >= values[j], i >= j);
        }
    }
}

TEST(EarthTime, OfTheSameDayDiffersInTimeAlone)
{
    EXPECT_TRUE(EarthTime(2024, 1, 15, 5).isSameDay(EarthTime(2024, 1, 15, -7)));
    EXPECT_FALSE(EarthTime(2024, 1, 15, 5).isSameDay(EarthTime(2023, 1, 15, 5)));
    EXPECT_FALSE(EarthTime(2024, 1, 15, 5).isSameDay(EarthTime(2024, 2, 15, 5)));
    EXPECT_FALSE(EarthTime(2024, 1, 15, 5).isSameDay(EarthTime(2024, 1, 16, 5)));
}

TEST(EarthTime, KeepsItsRuleOfWhatIsValid)
{
    const struct
    {
        const char * label;
        EarthTime value;
        bool expected;
    } rows[] = {
        {"the default", EarthTime(), true},
        {"February 29 of a common year", {2023, 2, 29, 0}, true},
        {"February 30", {2024, 2, 30, 0}, false},
        {"April 30", {2024, 4, 30, 0}, true},
        {"April 31", {2024, 4, 31, 0}, false},
        {"no month, any day", {2024, 13, 99, 0}, true},
        {"no month, the end of the day", {2024, 0, 0, dayEnd}, true},
        {"no month, beyond the end of the day", {2024, 0, 0, dayEnd + 1}, false},
        {"no month, a negative time", {2024, -1, 1, least32}, true},
        {"January 99", {2024, 1, 99, 0}, false},
        {"January 0", {2024, 1, 0, 0}, false},
        {"January -1", {2024, 1, -1, 0}, false},
        {"a real month, a time beyond the day", {2024, 1, 1, 99999999}, true},
        {"a real month, a negative time", {2024, 1, 1, -5}, true},
        {"any year", {least16, 12, 31, 0}, true},
    };
    for (const auto & row : rows)
        EXPECT_EQ(row.value.is_valid(), row.expected) << row.label;
}

TEST(EarthTime, CountsDaysByYearsOf366)
{
    EXPECT_EQ(EarthTime().getDayCounter(), 0);
    EXPECT_EQ(dateOf(2024, 1, 15).getDayCounter(), 740799); // 2024 * 366 + 15
    EXPECT_EQ(dateOf(2024, 13, 99).getDayCounter(), 740883) << "no month has no offset";
    EXPECT_EQ(dateOf(2024, -3, 1).getDayCounter(), 740785);
    EXPECT_EQ(dateOf(greatest16, 12, greatest16).getDayCounter(), 12025824); // 11992722 + 335 + 32767
    EXPECT_EQ(dateOf(least16, 1, least16).getDayCounter(), -12025856);       // -11993088 - 32768
}

TEST(EarthTime, KeepsOneDayTooManyAcrossAFebruaryOfACommonYear)
{
    EXPECT_EQ(dateOf(2024, 2, 28).diffDays(dateOf(2024, 3, 1)), 2);
    EXPECT_EQ(dateOf(2023, 2, 28).diffDays(dateOf(2023, 3, 1)), 2);
    EXPECT_EQ(dateOf(2023, 3, 1).diffDays(dateOf(2023, 2, 28)), -2);
    EXPECT_EQ(dateOf(2023, 12, 31).diffDays(dateOf(2024, 1, 1)), 1);
    EXPECT_EQ(timeOf(5).diffDays(timeOf(7)), 0);
    EXPECT_EQ(dateOf(greatest16, 12, greatest16).diffDays(dateOf(least16, 1, least16)), -24051680);
}

TEST(EarthTime, GoesToTheNextDay)
{
    const struct
    {
        EarthTime from;
        const char * expected;
    } rows[] = {
        {dateOf(2023, 2, 28), "2023/2/29 0"},
        {dateOf(2024, 2, 28), "2024/2/29 0"},
        {dateOf(2023, 2, 29), "2023/3/1 0"},
        {dateOf(2024, 12, 31), "2025/1/1 0"},
        {dateOf(2024, 1, 29), "2024/1/30 0"},
        {dateOf(2024, 1, 30), "2024/1/31 0"},
        {dateOf(2024, 1, 31), "2024/2/1 0"},
        {dateOf(2024, 4, 29), "2024/4/30 0"},
        {dateOf(2024, 4, 30), "2024/5/1 0"},
        {dateOf(2024, 11, 30), "2024/12/1 0"},
        // Whatever is no date.
        {EarthTime(2024, 1, 15, -7), "2024/1/16 -7"},
        {dateOf(0, 0, 0), "0/0/1 0"},
        {dateOf(2024, 2, 99), "2024/3/1 0"},
        {dateOf(2024, 4, 99), "2024/5/1 0"},
        {dateOf(2024, 1, greatest16), "2024/2/1 0"},
        {dateOf(2024, 1, least16), "2024/1/-32767 0"},
        {dateOf(2024, 13, 31), "2025/1/1 0"},
        {dateOf(2024, greatest16, 31), "2025/1/1 0"},
        {dateOf(2024, -1, 31), "2024/0/1 0"},
        {dateOf(greatest16, 12, 31), "-32768/1/1 0"},
    };
    for (const auto & row : rows)
    {
        EarthTime value = row.from;
        value.incDay();
        EXPECT_EQ(describe(value), row.expected) << "after " << describe(row.from);
    }
}

TEST(EarthTime, AddsHours)
{
    const struct
    {
        EarthTime from;
        int hours;
        const char * expected;
    } rows[] = {
        {timeOf(0), 0, "2024/1/15 0"},
        {timeOf(0), 1, "2024/1/15 3600000"},
        {timeOf(0), 25, "2024/1/16 3600000"},
        {timeOf(1), 24, "2024/1/16 1"},
        {timeOf(dayEnd), 0, "2024/1/15 86400000"},
        {timeOf(dayEnd), 1, "2024/1/16 3600000"},
        {timeOf(99999999), 0, "2024/1/16 13599999"},
        {dateOf(2023, 2, 28), 49, "2023/3/1 3600000"},
        {dateOf(2023, 2, 28), 48, "2023/2/29 86400000"},
        {dateOf(2024, 12, 31), 25, "2025/1/1 3600000"},
        {dateOf(2024, 1, 15), 366 * 24 + 1, "2025/1/15 3600000"},
        {dateOf(2024, 3, 1), 365 * 24 + 1, "2025/2/29 3600000"},
        {timeOf(-1), 25, "2024/1/16 3599999"},
    };
    for (const auto & row : rows)
    {
        EarthTime value = row.from;
        value.addHours(row.hours);
        EXPECT_EQ(describe(value), row.expected) << describe(row.from) << " and " << row.hours;
    }
}

TEST(EarthTime, KeepsTheEndOfADayOnThatDay)
{
    EarthTime value = timeOf(0);
    value.addHours(24);
    EXPECT_EQ(describe(value), "2024/1/15 86400000");
    value = timeOf(0);
    value.addHours(48);
    EXPECT_EQ(describe(value), "2024/1/16 86400000");
}

TEST(EarthTime, KeepsTheDateWhenHoursAreTakenAway)
{
    EarthTime value = timeOf(0);
    value.addHours(-1);
    EXPECT_EQ(describe(value), "2024/1/15 -3600000");
    value.addHours(-100);
    EXPECT_EQ(describe(value), "2024/1/15 -363600000");
    value.addHours(std::numeric_limits<int>::min());
    EXPECT_EQ(describe(value), "2024/1/15 -2147483648") << "it goes no further";
    value.addHours(597);
    EXPECT_EQ(describe(value), "2024/1/15 1716352") << "-2147483648 + 597 * 3600000";
}

/// The rule as it is told: a day at a time.
void addHoursSlowly(EarthTime & value, int hours)
{
    std::int64_t sum = value.time + std::int64_t{hours} * 3600000;
    while (sum > dayEnd)
    {
        value.incDay();
        sum -= dayEnd;
    }
    value.time = static_cast<long32>(sum);
}

TEST(EarthTime, AddsManyHoursAsOneDayAfterTheOther)
{
    const EarthTime starts[] = {dateOf(2024, 1, 1), dateOf(2023, 2, 29), dateOf(2024, 12, 31),
        EarthTime(2024, 6, 30, 5), dateOf(0, 0, 0), dateOf(2024, 2, 31), dateOf(2024, 2, 30),
        dateOf(2024, 4, 31), dateOf(2024, 99, 31), dateOf(2024, 13, 5), dateOf(2024, -20, 31),
        dateOf(2024, 5, -400), dateOf(2024, 1, 99), dateOf(greatest16, 12, 31)};
    for (const EarthTime & start : starts)
    {
        for (int days = 0; days < 1200; days += 7)
        {
            const int hours = days * 24 + days % 24;
            EarthTime value = start;
            value.addHours(hours);
            EarthTime slow = start;
            addHoursSlowly(slow, hours);
            ASSERT_EQ(describe(value), describe(slow)) << describe(start) << " and " << hours;
        }
    }
}

TEST(EarthTime, AddsAsManyHoursAsThereAre)
{
    // 2147483647 hours are 89478485 days and 7 hours; those are 244476 years of 366 days and 269 days.
    EarthTime value = dateOf(2024, 1, 1);
    value.addHours(std::numeric_limits<int>::max());
    // 2024 + 244476 is 246500, which is -15644 in 16 bits; day 270 is the 26th of September.
    EXPECT_EQ(describe(value), "-15644/9/26 25200000");
    // From the remotest of all states.
    value = EarthTime(least16, least16, least16, least32);
    value.addHours(std::numeric_limits<int>::max());
    EXPECT_TRUE(value.is_valid());
}

TEST(EarthTime, IsSetToAWholeHour)
{
    const struct
    {
        short hour;
        long32 expected;
    } rows[] = {{0, 0}, {1, 3600000}, {24, dayEnd}, {25, 7}, {-1, 7}, {greatest16, 7}, {least16, 7}};
    for (const auto & row : rows)
    {
        EarthTime value = timeOf(7);
        value.setTime(row.hour);
        EXPECT_EQ(value.time, row.expected) << row.hour;
        EXPECT_EQ(value.day, 15);
    }
}

TEST(EarthTime, IsSetPartByPart)
{
    const struct
    {
        const char * label;
        short hour, minute, second, milisecond;
        long32 expected;
    } rows[] = {
        {"all of it", 1, 2, 3, 59, 3723059},
        {"zeros", 0, 0, 0, 0, 0},
        {"the end of the day", 24, 59, 59, 59, 89999059},
        {"minutes beyond the limit", 1, 60, 3, 4, 3603004},
        {"seconds beyond the limit", 1, 2, 60, 4, 3720004},
        {"an hour beyond the limit", 25, 2, 3, 4, 123004 + 5000},
        {"a negative hour", -1, 2, 3, 4, 123004 + 5000},
        {"nothing that counts", 25, 60, 60, 60, 5000},
        {"a negative minute", 1, -1, 0, 0, 3540000},
        {"negative parts", 1, 0, -1, -1, 3598999},
        {"the least parts", 0, least16, least16, least16, -1998880768},
    };
    for (const auto & row : rows)
    {
        EarthTime value = timeOf(5000);
        value.setTime(row.hour, row.minute, row.second, row.milisecond);
        EXPECT_EQ(value.time, row.expected) << row.label;
        EXPECT_EQ(value.day, 15);
    }
}

TEST(EarthTime, KeepsALimitOf59OnMiliseconds)
{
    EarthTime value = timeOf(0);
    value.setTime(1, 2, 3, 500);
    EXPECT_EQ(value.time, 3723000);
    value.setTime(1, 2, 3, 60);
    EXPECT_EQ(value.time, 3723000);
    value.setTime(1, 2, 3, 59);
    EXPECT_EQ(value.time, 3723059);
}

TEST(EarthTime, WrapsWhereASumOfPartsDoesNotFit)
{
    EarthTime value = timeOf(least32);
    value.setTime(25, -1, 0, 0);
    EXPECT_EQ(value.time, 2147423648) << "-2147483648 - 60000 + 2 to the 32nd";
}

TEST(EarthTime, ReadsDigitsAtTheBeginningOfAText)
{
    const struct
    {
        const char * text;
        long32 maxDigits;
        short count;
        short value;
    } rows[] = {
        {"", 0, 0, 77}, {"x1", 0, 0, 77}, {"-1", 0, 0, 77}, {" 1", 0, 0, 77}, {"0", 0, 1, 0},
        {"123", 0, 3, 123}, {"123x4", 0, 3, 123}, {"123", 2, 2, 12}, {"123", 3, 3, 123}, {"123", 4, 3, 123},
        {"12", -1, 2, 12}, {"000012", 4, 4, 0}, {"32767", 0, 5, 32767}, {"32768", 0, 5, -32768},
        {"65535", 0, 5, -1}, {"65536", 0, 5, 0}, {"65537", 0, 5, 1},
        {"99999999999999999999", 0, 20, -1}, // 10 to the 20th is 0 modulo 2 to the 16th
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.text);
        Opened reader;
        short value = 77;
        EXPECT_EQ(reader.parse_in(row.text, value, row.maxDigits), row.count);
        EXPECT_EQ(value, row.value);
        value = 77;
        const std::string narrow = row.text;
        const std::wstring wide(narrow.begin(), narrow.end());
        EXPECT_EQ(reader.parse_in(wide.c_str(), value, row.maxDigits), row.count);
        EXPECT_EQ(value, row.value);
    }
    Opened reader;
    short value = 77;
    EXPECT_EQ(reader.parse_in(static_cast<const char *>(nullptr), value, 0), 0);
    EXPECT_EQ(reader.parse_in(static_cast<const wchar_t *>(nullptr), value, 0), 0);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(reader.parse_in(std::string(70000, '0').append("5").c_str(), value, 0), 32767);
    EXPECT_EQ(value, 5);
}

struct DateRow
{
    const char * text;
    short format;
    /// Null where the text is refused.
    const char * expected;
};

const DateRow dateRows[] = {
    {"2024-01-15", 0, "2024/1/15 0"},
    {"2024/1/15", 0, "2024/1/15 0"},
    {"2024x1x15", 0, "2024/1/15 0"},
    {"2024-1.15", 0, "2024/1/15 0"},
    {"2024 1 15", 0, "2024/1/15 0"},
    {"0-0-0", 0, "0/0/0 0"},
    {"2024-99-99", 0, "2024/99/99 0"},
    {"0002024-0001-00015", 0, "2024/1/15 0"},
    {"65536-32768-65535", 0, "0/-32768/-1 0"},
    {"4294967297-1-1", 0, "1/1/1 0"},
    {"15.01.2024", 1, "2024/1/15 0"},
    {"15.01.24", 1, "24/1/15 0"},
    {"01-15-2024", 2, "2024/1/15 0"},
    {"01-15-2024", 4, "2024/1/15 0"},
    {"01-15-2024", -1, "2024/1/15 0"},
    {"01-15-2024", greatest16, "2024/1/15 0"},
    {"20240115", 3, "2024/1/15 0"},
    {"2024115", 3, "2024/11/5 0"},
    {"202411", 3, nullptr},
    {"2024011", 3, "2024/1/1 0"},
    {"00000000", 3, "0/0/0 0"},
    {"202401150", 3, nullptr},
    {"2024-01-15", 3, nullptr},
    {"20240115 ", 3, nullptr},
    {"2024", 3, nullptr},
    {"x20240115", 3, nullptr},
    {"", 0, nullptr},
    {"", 3, nullptr},
    {"2024--01-15", 0, nullptr},
    {"2024-01-15 ", 0, nullptr},
    {" 2024-01-15", 0, nullptr},
    {"2024-01", 0, nullptr},
    {"2024-01-", 0, nullptr},
    {"2024-", 0, nullptr},
    {"2024", 0, nullptr},
    {"-01-15", 0, nullptr},
    {"2024-x-15", 0, nullptr},
    {"2024-01-15-", 0, nullptr},
    {"2024-01-15-3", 0, nullptr},
    {"15.-1.2024", 1, nullptr},
    {"+15.1.2024", 1, nullptr},
};

TEST(EarthTime, ParsesDates)
{
    for (const DateRow & row : dateRows)
    {
        SCOPED_TRACE(std::string(row.text) + " in format " + std::to_string(row.format));
        const std::string narrow = row.text;
        const std::wstring wide(narrow.begin(), narrow.end());
        EarthTime value(7, 8, 9, 10);
        EXPECT_EQ(value.parseDate(row.text, row.format), row.expected != nullptr);
        EXPECT_EQ(describe(value), row.expected != nullptr ? row.expected : "7/8/9 10");
        value = EarthTime(7, 8, 9, 10);
        EXPECT_EQ(value.parseDate(wide.c_str(), row.format), row.expected != nullptr);
        EXPECT_EQ(describe(value), row.expected != nullptr ? row.expected : "7/8/9 10");
    }
}

TEST(EarthTime, ParsesNoDateFromANullPointer)
{
    EarthTime value(7, 8, 9, 10);
    for (const short format : {short{0}, short{1}, short{2}, short{3}})
    {
        EXPECT_FALSE(value.parseDate(static_cast<const char *>(nullptr), format));
        EXPECT_FALSE(value.parseDate(static_cast<const wchar_t *>(nullptr), format));
    }
    EXPECT_EQ(describe(value), "7/8/9 10");
}

TEST(EarthTime, TakesForADigitAndForASeparatorWhatTheWideTextHas)
{
    EarthTime value;
    EXPECT_TRUE(value.parseDate(L"2024\u5E7401\u670815", 0));
    EXPECT_EQ(describe(value), "2024/1/15 0");
    EXPECT_FALSE(value.parseDate(L"\uFF12024-1-15", 0)) << "only ASCII digits are digits";
}

TEST(EarthTime, ReadsADateHoweverLongItsNumbersAre)
{
    const std::string zeros(100'000, '0');
    EarthTime value;
    EXPECT_TRUE(value.parseDate((zeros + "2024-" + zeros + "1-" + zeros + "15").c_str(), 0));
    EXPECT_EQ(describe(value), "2024/1/15 0");
}

TEST(EarthTime, ParsesTimes)
{
    const struct
    {
        const char * text;
        /// -1 where the text is refused.
        long32 expected;
    } rows[] = {
        {"", 0},
        {"12:30", 45000000},
        {"12", 43200000},
        {"12:", 43200000},
        {"12x30", 45000000},
        {"12 30", 45000000},
        {":30", 1800000},
        {":", 0},
        {"-5", 300000},
        {"0", 0},
        {"00:00", 0},
        {"24:00", dayEnd},
        {"24", dayEnd},
        {"24:01", -1},
        {"25", -1},
        {"23:60", dayEnd},
        {"23:61", -1},
        {"0:1440", dayEnd},
        {"0:1441", -1},
        {"12:30:15", -1},
        {"12::30", -1},
        {"::", -1},
        {"12:30 ", -1},
        {" 12:30", -1},
        {"00000000000000000012:00000000000000000030", 45000000},
        {"71582788:16", -1}, // modulo 2 to the 32nd it would be 1536
        {"4294967296", -1},  // and this 0
        {"0:99999999999999999999999999", -1},
        {"99999999999999999999999999", -1},
        {"18446744073709551616", -1},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.text);
        EarthTime value(7, 8, 9, 10);
        EXPECT_EQ(value.parseTime(row.text), row.expected >= 0);
        EXPECT_EQ(value.time, row.expected >= 0 ? row.expected : 10);
        EXPECT_EQ(value.day, 9) << "the date stays";
    }
    EarthTime value(7, 8, 9, 10);
    EXPECT_FALSE(value.parseTime(nullptr));
    EXPECT_EQ(describe(value), "7/8/9 10");
}

TEST(EarthTime, KeepsMinutesUnlimitedInParseTime)
{
    EarthTime value;
    EXPECT_TRUE(value.parseTime("12:99"));
    EXPECT_EQ(value.time, 49140000);
    EXPECT_EQ(value.hour(), 13);
    EXPECT_EQ(value.minute(), 39);
}

std::string narrowDate(const EarthTime & value, short format, bool withYear, bool zeroPad)
{
    std::string out = "before";
    value.printDate(out, format, withYear, zeroPad);
    return out;
}

std::wstring wideDate(const EarthTime & value, short format, bool withYear)
{
    std::wstring out = L"before";
    value.printDate(out, format, withYear);
    return out;
}

TEST(EarthTime, PrintsDatesOnNarrowText)
{
    const EarthTime value = dateOf(2024, 1, 5);
    const struct
    {
        short format;
        bool withYear;
        bool zeroPad;
        const char * expected;
    } rows[] = {
        {0, false, false, "1.5"},
        {0, false, true, "01.05"},
        {0, true, false, "2024.1.5"},
        {0, true, true, "2024.01.05"},
        {1, false, false, "5.1"},
        {1, false, true, "05.01"},
        {2, false, false, "1-5"},
        {2, false, true, "01-05"},
        {3, false, false, "15"},
        {3, false, true, "0105"},
        {3, true, false, "202415"},
        {3, true, true, "20240105"},
        {4, true, true, ""},
        {4, false, false, ""},
        {-1, true, true, ""},
        {greatest16, true, true, ""},
    };
    for (const auto & row : rows)
    {
        EXPECT_EQ(narrowDate(value, row.format, row.withYear, row.zeroPad), row.expected)
            << row.format << row.withYear << row.zeroPad;
    }
    EXPECT_EQ(narrowDate(dateOf(2024, 1, 15), 0, true, true), "2024.01.15");
    EXPECT_EQ(narrowDate(dateOf(5, -1, 100), 0, true, true), "5.-1.100") << "the year is not padded";
    EXPECT_EQ(narrowDate(dateOf(least16, least16, least16), 0, true, true), "-32768.-32768.-32768");
}

TEST(EarthTime, KeepsTheYearWithoutASeparatorOnNarrowText)
{
    EXPECT_EQ(narrowDate(dateOf(2024, 1, 15), 1, true, true), "15.012024");
    EXPECT_EQ(narrowDate(dateOf(2024, 1, 15), 1, true, false), "15.12024");
    EXPECT_EQ(narrowDate(dateOf(2024, 1, 15), 2, true, true), "01-152024");
}

TEST(EarthTime, PrintsDatesOnWideText)
{
    const EarthTime value = dateOf(2024, 1, 5);
    const struct
    {
        short format;
        bool withYear;
        const wchar_t * expected;
    } rows[] = {
        {0, true, L"2024.1.5"},
        {0, false, L"1.5"},
        {1, true, L"5.1.2024"},
        {1, false, L"5.1"},
        {2, true, L"1-5-2024"},
        {2, false, L"1-5"},
        {3, true, L"1.5.2024"},
        {3, false, L"1.5"},
        {4, true, L"1.5.2024"},
        {-1, false, L"1.5"},
    };
    for (const auto & row : rows)
        EXPECT_EQ(wideDate(value, row.format, row.withYear), row.expected) << row.format << row.withYear;
    EXPECT_EQ(wideDate(dateOf(2024, 1, 15), 1, true), L"15.1.2024");
}

std::string narrowTime(const EarthTime & value, long32 format)
{
    std::string out = "before";
    value.printTime(out, format);
    return out;
}

std::wstring wideTime(const EarthTime & value, long32 format)
{
    std::wstring out = L"before";
    value.printTime(out, format);
    return out;
}

TEST(EarthTime, PrintsTimes)
{
    const struct
    {
        long32 time;
        long32 format;
        const char * expected;
    } rows[] = {
        {3723004, 0, "01:02"},
        {3723004, 1, "1:02"},
        {3723004, 2, "01:02:03"},
        {3723004, 3, "010203"},
        {3723004, 5, ""},
        {3723004, -1, ""},
        {3723004, greatest32, ""},
        {0, 0, "00:00"},
        {0, 1, "0:00"},
        {dayEnd, 2, "24:00:00"},
        {86399999, 2, "23:59:59"},
        {45296789, 1, "12:34"},
        {-3661001, 2, "-1:-1:-1"},
        {greatest32, 2, "596:31:23"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(std::to_string(row.time) + " in format " + std::to_string(row.format));
        const std::string expected = row.expected;
        EXPECT_EQ(narrowTime(timeOf(row.time), row.format), expected);
        EXPECT_EQ(wideTime(timeOf(row.time), row.format), std::wstring(expected.begin(), expected.end()));
    }
}

TEST(EarthTime, KeepsMilisecondsForWideTextAlone)
{
    EXPECT_EQ(wideTime(timeOf(3723004), 4), L"01:02:03.004");
    EXPECT_EQ(wideTime(timeOf(45296789), 4), L"12:34:56.789");
    EXPECT_EQ(narrowTime(timeOf(3723004), 4), "");
}

TEST(EarthTime, KeepsTheSignOfATimeBehindWhatFillsItUp)
{
    // The hours, minutes and seconds are 0, and the sign counts among the three characters.
    EXPECT_EQ(wideTime(timeOf(-1), 4), L"00:00:00.0-1");
    EXPECT_EQ(wideTime(timeOf(-12), 4), L"00:00:00.-12");
    EXPECT_EQ(wideTime(timeOf(-999), 4), L"00:00:00.-999");
    EXPECT_EQ(wideTime(timeOf(-1001), 4), L"00:00:-1.0-1");
    EXPECT_EQ(narrowTime(timeOf(-1), 4), "");
    EXPECT_EQ(narrowTime(timeOf(-1), 2), "00:00:00");
    EXPECT_EQ(narrowTime(timeOf(-1001), 2), "00:00:-1");
    EXPECT_EQ(wideTime(timeOf(-1001), 2), L"00:00:-1");
}

TEST(EarthTime, TakesANativeLongForAFormat)
{
    std::string out;
    const long format = 2L;
    timeOf(3723004).printTime(out, static_cast<long>(format));
    EXPECT_EQ(out, "01:02:03");
}

TEST(EarthTime, SerializesToTwelveCharactersBehindWhatIsThere)
{
    // 1 * 31 + 15 - 31 = 15, 15 * 65536 + 2024 = 985064 = 20 + 82 * 83 + 59 * 83^2 + 1 * 83^3;
    // 3600000 = 41 + 47 * 83 + 24 * 83^2 + 6 * 83^3.
    std::string out = "before:";
    EXPECT_TRUE(EarthTime(2024, 1, 15, 3600000).serialize(out));
    EXPECT_EQ(out, "before:A\x7Fh.--V\\E3--");
    out.clear();
    EXPECT_TRUE(EarthTime(0, 1, 0, 0).serialize(out));
    EXPECT_EQ(out, "------------");
}

std::string roundTrip(const EarthTime & value)
{
    std::string text;
    EXPECT_TRUE(value.serialize(text));
    EXPECT_EQ(text.size(), 12U);
    for (const char c : text)
        EXPECT_GE(c, '-') << "the alphabet begins there, and ends with the greatest char";
    EarthTime back(7, 8, 9, 10);
    const std::string before = text;
    EXPECT_TRUE(back.deserialize(text));
    EXPECT_EQ(text, before) << "the text stays";
    return describe(back);
}

TEST(EarthTime, KeepsANegativeYearBorrowingFromTheDayWhenItIsSerialized)
{
    // ((1 * 31 + 15 - 31) << 16) - 1 is 983039, in digits of 83 from the lowest: 70 57 59 1.
    std::string text;
    EXPECT_TRUE(EarthTime(-1, 1, 15, 0).serialize(text));
    EXPECT_EQ(text, "sfh.--------");
    EarthTime back;
    EXPECT_TRUE(back.deserialize(text));
    EXPECT_EQ(back, EarthTime(-1, 1, 14, 0));
}

TEST(EarthTime, ReadsBackWhatItHasSerialized)
{
    const EarthTime values[] = {EarthTime(2024, 1, 15, 3600000), EarthTime(), EarthTime(2024, 12, 30, dayEnd),
        EarthTime(greatest16, 2, 29, greatest32), EarthTime(1, 1, 1, -1), EarthTime(1, 1, 1, least32)};
    for (const EarthTime & value : values)
        EXPECT_EQ(roundTrip(value), describe(value));
}

TEST(EarthTime, KeepsTheLossOfThe31stWhenItIsSerialized)
{
    EXPECT_EQ(roundTrip(EarthTime(2024, 1, 31, 5)), "2024/2/0 5");
    EXPECT_EQ(roundTrip(EarthTime(2024, 12, 31, 5)), "2024/13/0 5");
    EXPECT_EQ(roundTrip(EarthTime(2024, 1, 0, 5)), "2024/1/0 5");
}

TEST(EarthTime, ReadsTheFirstTwelveCharactersAndNoFewer)
{
    std::string text = "A\x7Fh.--V\\E3--";
    std::string longer = text + "and more";
    std::string shorter = text.substr(0, 11);
    std::string empty;
    EarthTime value(7, 8, 9, 10);
    EXPECT_FALSE(value.deserialize(shorter));
    EXPECT_FALSE(value.deserialize(empty));
    EXPECT_EQ(describe(value), "7/8/9 10");
    EXPECT_TRUE(value.deserialize(longer));
    EXPECT_EQ(describe(value), "2024/1/15 3600000");
}

TEST(EarthTime, ReadsAnyCharactersAsSomeValue)
{
    std::string text(12, '\x7F');
    EarthTime value;
    EXPECT_TRUE(value.deserialize(text));
    // 83^6 - 1 = 326940373368 is 522858872 modulo 2 to the 32nd, which is 7978 * 65536 + 12664, and
    // 7978 is 257 * 31 + 11.
    EXPECT_EQ(describe(value), "12664/258/11 522858872");
    // Below 0, since a char has a sign: -173 * (83^6 - 1) / 82 = -689764446252 is 1725288404 modulo 2 to the
    // 32nd, which is 26325 * 65536 + 53204; 53204 is -12332 in 16 bits, and 26325 is 849 * 31 + 6.
    text.assign(12, '\x80');
    EXPECT_TRUE(value.deserialize(text));
    EXPECT_EQ(describe(value), "-12332/850/6 1725288404");
    for (int c = 0; c < 256; ++c)
    {
        text.assign(12, static_cast<char>(c));
        EXPECT_TRUE(value.deserialize(text));
    }
}

TEST(EarthTime, HasNoLocaleDateForWhatIsNone)
{
    const EarthTime values[] = {EarthTime(), dateOf(2023, 2, 29), dateOf(2024, 2, 30), dateOf(2024, 13, 1),
        dateOf(2024, 0, 1), dateOf(2024, 1, 0), dateOf(2024, 1, 32), dateOf(2024, 1, -1),
        dateOf(1600, 12, 31), dateOf(30828, 1, 1), dateOf(-5, 1, 1)};
    for (const EarthTime & value : values)
        EXPECT_EQ(value.formatDate(), "") << describe(value);
    for (const long32 time : {-1, 86400000, 2147483647})
    {
        EXPECT_EQ(timeOf(time).formatTime(true), "") << time;
        EXPECT_EQ(timeOf(time).formatTime(false), "") << time;
    }
}

TEST(EarthTime, HasALocaleDateWhateverItsTimeAndALocaleTimeWhateverItsDate)
{
    const Vontal::u8string date = dateOf(2024, 1, 15).formatDate();
    EXPECT_NE(date.find("15"), std::string::npos) << date;
    EXPECT_NE(date.find("2024"), std::string::npos) << date;
    EXPECT_EQ(timeOf(-1).formatDate(), date);
    EXPECT_EQ(timeOf(dayEnd).formatDate(), date);

    const Vontal::u8string time = timeOf(3723004).formatTime(true);
    EXPECT_NE(time.find("02"), std::string::npos) << time;
    EXPECT_NE(time.find("03"), std::string::npos) << time;
    EXPECT_EQ(EarthTime(0, 0, 0, 3723004).formatTime(true), time);
    const Vontal::u8string withoutSeconds = timeOf(3723004).formatTime(false);
    EXPECT_NE(withoutSeconds.find("02"), std::string::npos) << withoutSeconds;
    EXPECT_EQ(withoutSeconds.find("03"), std::string::npos) << withoutSeconds;
}

TEST(EarthTime, HasALocaleDateOnTheFirstAndTheLastDayThatThereIs)
{
    EXPECT_NE(dateOf(1601, 1, 1).formatDate(), "");
    EXPECT_NE(dateOf(30827, 12, 31).formatDate(), "");
    EXPECT_NE(dateOf(2024, 2, 29).formatDate(), "");
}

} // namespace
