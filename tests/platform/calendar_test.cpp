#include "VontalBase/platform/calendar.h"

#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using qvplatform::CivilTime;

/// A date that goes on day by day, as one does it on the fingers.
struct Finger
{
    int year;
    int month;
    int day;
    int weekday;

    int lengthOfMonth() const
    {
        switch (month)
        {
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        case 2:
            if (year % 400 == 0)
                return 29;
            if (year % 100 == 0)
                return 28;
            return year % 4 == 0 ? 29 : 28;
        default:
            return 31;
        }
    }

    void next()
    {
        weekday = weekday == 6 ? 0 : weekday + 1;
        if (day < lengthOfMonth())
        {
            ++day;
            return;
        }
        day = 1;
        if (month < 12)
        {
            ++month;
            return;
        }
        month = 1;
        ++year;
    }
};

/// Compares all days from `finger` on, which is so many days after 1970-01-01.
void expectDays(Finger finger, std::int64_t number, int count)
{
    for (int i = 0; i < count; ++i, ++number, finger.next())
    {
        ASSERT_EQ(qvplatform::daysSince1970(finger.year, finger.month, finger.day), number);
        ASSERT_EQ(qvplatform::daysInMonth(finger.year, finger.month), finger.lengthOfMonth());
        ASSERT_EQ(qvplatform::dayOfWeek(finger.year, finger.month, finger.day), finger.weekday);
        const CivilTime lastMillisecond{finger.year, finger.month, finger.day, 23, 59, 59, 999};
        const std::int64_t milliseconds = number * 86'400'000 + 86'399'999;
        ASSERT_EQ(qvplatform::civilTime(milliseconds), lastMillisecond) << number;
        ASSERT_EQ(qvplatform::millisecondsSince1970(lastMillisecond), milliseconds);
    }
}

TEST(PlatformCalendar, AgreesWithCountingOnTheFingersOverFourHundredYears)
{
    expectDays({1970, 1, 1, 4}, 0, 146097);
}

TEST(PlatformCalendar, AgreesWithCountingOnTheFingersBefore1970)
{
    // 1601-01-01 was a Monday, and the moment from which file times count.
    expectDays({1601, 1, 1, 1}, -134774, 134774);
    // From the year before 0 on. 400 years have a whole number of weeks, and 1999-03-01 was a Monday.
    expectDays({-1, 3, 1, 1}, -719834, 800);
}

TEST(PlatformCalendar, KnowsMomentsByTheirNumbers)
{
    const struct
    {
        const char * label;
        std::int64_t milliseconds;
        CivilTime time;
    } rows[] = {
        {"the beginning", 0, {1970, 1, 1, 0, 0, 0, 0}},
        {"one millisecond before", -1, {1969, 12, 31, 23, 59, 59, 999}},
        {"a thousand million seconds", 1'000'000'000'000, {2001, 9, 9, 1, 46, 40, 0}},
        {"31 bits of seconds", 2'147'483'647'000, {2038, 1, 19, 3, 14, 7, 0}},
        {"the leap day of 2000", 951'827'696'123, {2000, 2, 29, 12, 34, 56, 123}},
        {"where file times begin", -11'644'473'600'000, {1601, 1, 1, 0, 0, 0, 0}},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(qvplatform::civilTime(row.milliseconds), row.time);
        EXPECT_EQ(qvplatform::millisecondsSince1970(row.time), row.milliseconds);
    }
}

TEST(PlatformCalendar, HasNoDaysInAMonthThatIsNone)
{
    EXPECT_EQ(qvplatform::daysInMonth(2024, 0), 0);
    EXPECT_EQ(qvplatform::daysInMonth(2024, 13), 0);
    EXPECT_EQ(qvplatform::daysInMonth(2024, -1), 0);
}

TEST(PlatformCalendar, BreaksEveryDayOfFourHundredYearsDownAsTheArithmeticDoes)
{
    for (std::int64_t day = 0; day < 146097; ++day)
    {
        std::tm broken{};
        ASSERT_TRUE(qvplatform::breakDownUtc(day * 86400 + 3661, broken));
        const CivilTime time = qvplatform::civilTime((day * 86400 + 3661) * 1000);
        ASSERT_EQ(broken.tm_year + 1900, time.year);
        ASSERT_EQ(broken.tm_mon + 1, time.month);
        ASSERT_EQ(broken.tm_mday, time.day);
        ASSERT_EQ(broken.tm_hour, 1);
        ASSERT_EQ(broken.tm_min, 1);
        ASSERT_EQ(broken.tm_sec, 1);
    }
}

TEST(PlatformCalendar, GivesZerosForAYearThatTheSystemRefuses)
{
    for (const std::int64_t seconds :
        {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()})
    {
        std::tm broken{};
        broken.tm_year = 99;
        broken.tm_mday = 7;
        broken.tm_sec = 5;
        EXPECT_FALSE(qvplatform::breakDownUtc(seconds, broken));
        EXPECT_EQ(broken.tm_year, 0);
        EXPECT_EQ(broken.tm_mon, 0);
        EXPECT_EQ(broken.tm_mday, 0);
        EXPECT_EQ(broken.tm_hour, 0);
        EXPECT_EQ(broken.tm_min, 0);
        EXPECT_EQ(broken.tm_sec, 0);
    }
}

} // namespace
