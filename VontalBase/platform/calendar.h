/// @internal
/// @file
/// The Gregorian calendar, without time zones.
///
/// All of it but the system's own breakdown is plain arithmetic. None of the functions fails otherwise than
/// by its result; any thread may call them.
#pragma once

#include <cstdint>
#include <ctime>

namespace qvplatform
{

/// A date and a time of day.
struct CivilTime
{
    int year = 0;
    /// 1 to 12.
    int month = 0;
    /// 1 to 31.
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    friend bool operator==(const CivilTime &, const CivilTime &) = default;
};

constexpr bool isLeapYear(int year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// @param month 1 to 12; 0 comes back for any other.
constexpr int daysInMonth(int year, int month) noexcept
{
    constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12)
        return 0;
    return month == 2 && isLeapYear(year) ? 29 : lengths[month - 1];
}

/// In 400 years, after which the calendar begins anew.
constexpr std::int64_t daysOfEra = 146097;
/// From the first of March of the year 0, with which the first era begins.
constexpr std::int64_t daysFromFirstEraTo1970 = 719468;

/// The number of days from 1970-01-01 to a date, below 0 for an earlier one.
/// @param month 1 to 12.
/// @param day any; one beyond the month counts on.
constexpr std::int64_t daysSince1970(int year, int month, int day) noexcept
{
    // Years here begin with March, so that the day that some of them lack is their last one.
    const std::int64_t marchYear = std::int64_t{year} - (month <= 2 ? 1 : 0);
    const std::int64_t era = (marchYear >= 0 ? marchYear : marchYear - 399) / 400;
    const std::int64_t yearOfEra = marchYear - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * daysOfEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear -
           daysFromFirstEraTo1970;
}

/// The milliseconds from the beginning of 1970 to a date and time, all of whose parts are in range.
std::int64_t millisecondsSince1970(const CivilTime & time) noexcept;

/// The date and time so many milliseconds after the beginning of 1970, or before it.
/// @param milliseconds of a year that has four digits or five.
CivilTime civilTime(std::int64_t milliseconds) noexcept;

/// The day of the week of a date, 0 for Sunday.
int dayOfWeek(int year, int month, int day) noexcept;

/// Breaks seconds since 1970 down in UTC, as the system itself does it.
/// @param time receives the result; all zeros where the system refuses a year so far away.
/// @return whether it did not.
bool breakDownUtc(std::int64_t seconds, std::tm & time) noexcept;

} // namespace qvplatform
