// The calendar and the printed forms, held over four hundred years against a second statement of them that
// shares nothing with the first: a list of the days of a year, and forms written out as patterns.

#include "VontalBase/core/EarthTime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace
{

using qvbase::EarthTime;

struct MonthAndDay
{
    short month;
    short day;
};

/// The 366 days that every year has.
std::vector<MonthAndDay> listDays()
{
    const std::map<short, short> lengths = {{1, 31}, {2, 29}, {3, 31}, {4, 30}, {5, 31}, {6, 30}, {7, 31},
        {8, 31}, {9, 30}, {10, 31}, {11, 30}, {12, 31}};
    std::vector<MonthAndDay> days;
    for (const auto & [month, length] : lengths)
    {
        for (short day = 1; day <= length; ++day)
            days.push_back({month, day});
    }
    return days;
}

const std::vector<MonthAndDay> daysOfYear = listDays();

constexpr short firstYear = 1900;
constexpr short endYear = 2300;

/// Calls `check` with each day of the four hundred years and its place in the year, counted from 0.
template <class Check>
void forEachDay(const Check & check)
{
    for (short year = firstYear; year < endYear; ++year)
    {
        for (std::size_t place = 0; place < daysOfYear.size(); ++place)
        {
            check(EarthTime(year, daysOfYear[place].month, daysOfYear[place].day, 0), place);
            if (testing::Test::HasFatalFailure())
                return;
        }
    }
}

bool isSame(const EarthTime & value, int year, int month, int day, int time)
{
    return value.year == year && value.month == month && value.day == day && value.time == time;
}

/// The numbers in place of the letters of a pattern.
std::string filled(const std::string & pattern, const EarthTime & value, bool zeroPad)
{
    std::string out;
    for (const char letter : pattern)
    {
        std::array<char, 16> number{};
        if (letter == 'Y')
            std::snprintf(number.data(), number.size(), "%d", value.year);
        else if (letter == 'M')
            std::snprintf(number.data(), number.size(), zeroPad ? "%02d" : "%d", value.month);
        else if (letter == 'D')
            std::snprintf(number.data(), number.size(), zeroPad ? "%02d" : "%d", value.day);
        else
            number[0] = letter;
        out += number.data();
    }
    return out;
}

std::wstring widened(const std::string & text)
{
    return {text.begin(), text.end()};
}

struct DateForm
{
    short format;
    const char * narrow;
    const char * narrowWithYear;
    const char * wide;
    const char * wideWithYear;
};

const DateForm dateForms[] = {
    {0, "M.D", "Y.M.D", "M.D", "Y.M.D"},
    {1, "D.M", "D.MY", "D.M", "D.M.Y"},
    {2, "M-D", "M-DY", "M-D", "M-D-Y"},
    {3, "MD", "YMD", "M.D", "M.D.Y"},
    {4, "", "", "M.D", "M.D.Y"},
};

TEST(EarthTimeCalendar, HasAListOf366Days)
{
    ASSERT_EQ(daysOfYear.size(), 366U);
    EXPECT_EQ(daysOfYear[59].month, 2);
    EXPECT_EQ(daysOfYear[59].day, 29);
    EXPECT_EQ(daysOfYear[365].month, 12);
    EXPECT_EQ(daysOfYear[365].day, 31);
}

TEST(EarthTimeCalendar, GoesThroughTheListYearAfterYear)
{
    forEachDay(
        [](const EarthTime & value, std::size_t place)
        {
            const bool isLast = place + 1 == daysOfYear.size();
            const MonthAndDay next = daysOfYear[isLast ? 0 : place + 1];
            const int nextYear = isLast ? value.year + 1 : value.year;
            EarthTime stepped = value;
            stepped.incDay();
            ASSERT_TRUE(isSame(stepped, nextYear, next.month, next.day, 0)) << value.year << ' ' << place;
            EarthTime moved = value;
            moved.addHours(25);
            ASSERT_TRUE(isSame(moved, nextYear, next.month, next.day, 3600000)) << value.year << ' ' << place;
        });
}

TEST(EarthTimeCalendar, CountsTheDaysOfTheList)
{
    const EarthTime origin(firstYear, 1, 1, 0);
    int count = 0;
    forEachDay(
        [&](const EarthTime & value, std::size_t place)
        {
            ASSERT_EQ(value.getDayCounter(), value.year * 366 + static_cast<int>(place) + 1);
            ASSERT_EQ(origin.diffDays(value), count);
            ASSERT_EQ(value.diffDays(origin), -count);
            ++count;
        });
    EXPECT_EQ(count, 400 * 366);
}

TEST(EarthTimeCalendar, FindsTheDaysOfTheListValidAndNoOthers)
{
    std::map<std::pair<int, int>, bool> listed;
    for (const MonthAndDay & entry : daysOfYear)
        listed[{entry.month, entry.day}] = true;
    for (short month = 1; month <= 12; ++month)
    {
        for (short day = -40; day <= 400; ++day)
        {
            for (const short year : {short{2023}, short{2024}, short{1900}, short{2000}})
            {
                const bool expected = listed.count({month, day}) != 0;
                ASSERT_EQ(EarthTime(year, month, day, 99999999).is_valid(), expected) << month << ' ' << day;
            }
        }
    }
}

TEST(EarthTimeCalendar, PrintsEveryDayByTheTable)
{
    std::string narrow;
    std::wstring wide;
    forEachDay(
        [&](const EarthTime & value, std::size_t)
        {
            for (const DateForm & form : dateForms)
            {
                for (const bool withYear : {false, true})
                {
                    for (const bool zeroPad : {false, true})
                    {
                        value.printDate(narrow, form.format, withYear, zeroPad);
                        const char * const pattern = withYear ? form.narrowWithYear : form.narrow;
                        ASSERT_EQ(narrow, filled(pattern, value, zeroPad));
                    }
                    value.printDate(wide, form.format, withYear);
                    const char * const pattern = withYear ? form.wideWithYear : form.wide;
                    ASSERT_EQ(wide, widened(filled(pattern, value, false)));
                }
            }
        });
}

TEST(EarthTimeCalendar, PrintsEveryFormatNumberBeyondTheTableAsTheLastOfIt)
{
    const EarthTime value(2024, 1, 15, 0);
    std::string narrow;
    std::wstring wide;
    for (int format = -32768; format <= 32767; ++format)
    {
        if (format >= 0 && format <= 3)
            continue;
        for (const bool withYear : {false, true})
        {
            narrow = "before";
            value.printDate(narrow, static_cast<short>(format), withYear, true);
            ASSERT_EQ(narrow, "") << format;
            value.printDate(wide, static_cast<short>(format), withYear);
            ASSERT_EQ(wide, withYear ? L"1.15.2024" : L"1.15") << format;
        }
    }
}

TEST(EarthTimeCalendar, ReadsEveryDayInEveryFormat)
{
    forEachDay(
        [](const EarthTime & value, std::size_t)
        {
            const std::pair<short, const char *> forms[] = {{short{0}, "Y-M-D"}, {short{1}, "D.M.Y"},
                {short{2}, "M/D/Y"}, {short{3}, "YMD"}, {short{7}, "M D Y"}};
            for (const auto & [format, pattern] : forms)
            {
                const std::string text = filled(pattern, value, true);
                EarthTime narrow(1, 2, 3, 4);
                ASSERT_TRUE(narrow.parseDate(text.c_str(), format)) << text;
                ASSERT_TRUE(narrow == value) << text;
                EarthTime wide(1, 2, 3, 4);
                ASSERT_TRUE(wide.parseDate(widened(text).c_str(), format)) << text;
                ASSERT_TRUE(wide == value) << text;
            }
        });
}

TEST(EarthTimeCalendar, ReadsBackEveryDayButThe31st)
{
    forEachDay(
        [](const EarthTime & value, std::size_t place)
        {
            const EarthTime withTime(
                value.year, value.month, value.day, static_cast<Vontal::long32>(place * 1000));
            std::string text;
            withTime.serialize(text);
            EarthTime back;
            ASSERT_TRUE(back.deserialize(text));
            if (value.day == 31)
                ASSERT_TRUE(isSame(back, value.year, value.month + 1, 0, withTime.time));
            else
                ASSERT_TRUE(back == withTime);
        });
}

TEST(EarthTimeCalendar, PrintsEverySecondOfADay)
{
    std::string narrow;
    std::wstring wide;
    for (int second = 0; second <= 86400; ++second)
    {
        const int milliseconds = second == 86400 ? 0 : second % 1000;
        const EarthTime value(2024, 1, 15, second * 1000 + milliseconds);
        const int h = second / 3600;
        const int m = second / 60 - h * 60;
        const int s = second - h * 3600 - m * 60;
        const char * const formats[] = {
            "%02d:%02d", "%d:%02d", "%02d:%02d:%02d", "%02d%02d%02d", "%02d:%02d:%02d.%03d"};
        for (int format = 0; format <= 4; ++format)
        {
            std::array<char, 32> expected{};
            std::snprintf(expected.data(), expected.size(), formats[format], h, m, s, milliseconds);
            value.printTime(narrow, format);
            ASSERT_EQ(narrow, format == 4 ? "" : expected.data());
            value.printTime(wide, format);
            ASSERT_EQ(wide, widened(expected.data()));
        }
        ASSERT_EQ(value.hour(), h);
        ASSERT_EQ(value.minute(), m);
        ASSERT_EQ(value.minutes(), h * 60 + m);
        ASSERT_EQ(value.second(), s);
        ASSERT_EQ(value.milisecond(), milliseconds);
    }
}

TEST(EarthTimeCalendar, ReadsEveryMinuteOfADay)
{
    for (int minute = 0; minute <= 1440; ++minute)
    {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%d:%02d", minute / 60, minute % 60);
        EarthTime value;
        ASSERT_TRUE(value.parseTime(text.data()));
        ASSERT_EQ(value.time, minute * 60000);
    }
}

TEST(EarthTimeCalendar, SetsEveryTimeOfDayPartByPart)
{
    for (short h = -2; h <= 27; ++h)
    {
        for (short m = -2; m <= 62; ++m)
        {
            for (short s = -2; s <= 62; s = static_cast<short>(s + 4))
            {
                EarthTime value(2024, 1, 15, 5);
                value.setTime(h, m, s, m);
                int expected = h >= 0 && h < 25 ? h * 3600000 : 5;
                expected += m < 60 ? m * 60000 + m : 0;
                expected += s < 60 ? s * 1000 : 0;
                ASSERT_EQ(value.time, expected);
            }
        }
    }
}

} // namespace
