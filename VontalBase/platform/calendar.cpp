#include "VontalBase/platform/calendar.h"

namespace qvplatform
{

namespace
{

constexpr std::int64_t millisecondsOfDay = 86'400'000;

/// The quotient rounded down and what it leaves.
struct Division
{
    std::int64_t quotient;
    std::int64_t remainder;
};

constexpr Division divideDown(std::int64_t value, std::int64_t divisor) noexcept
{
    const std::int64_t remainder = value % divisor;
    return remainder >= 0 ? Division{value / divisor, remainder}
                          : Division{value / divisor - 1, remainder + divisor};
}

} // namespace

std::int64_t millisecondsSince1970(const CivilTime & time) noexcept
{
    const std::int64_t seconds = (std::int64_t{time.hour} * 60 + time.minute) * 60 + time.second;
    return daysSince1970(time.year, time.month, time.day) * millisecondsOfDay + seconds * 1000 +
           time.millisecond;
}

CivilTime civilTime(std::int64_t milliseconds) noexcept
{
    const Division days = divideDown(milliseconds, millisecondsOfDay);
    // The inverse of daysSince1970: eras of 400 years, then years that begin with March.
    const Division eras = divideDown(days.quotient + daysFromFirstEraTo1970, daysOfEra);
    const std::int64_t dayOfEra = eras.remainder;
    // Without the days that leap years have on top, all years are as long.
    constexpr std::int64_t daysBeforeLeapDay = 1460;
    constexpr std::int64_t daysOfCentury = daysOfEra / 4;
    const std::int64_t withoutLeapDays =
        dayOfEra - dayOfEra / daysBeforeLeapDay + dayOfEra / daysOfCentury - dayOfEra / (daysOfEra - 1);
    const std::int64_t yearOfEra = withoutLeapDays / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
    const std::int64_t ofDay = days.remainder;

    CivilTime time;
    time.year = static_cast<int>(eras.quotient * 400 + yearOfEra + (month <= 2 ? 1 : 0));
    time.month = static_cast<int>(month);
    time.day = static_cast<int>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
    time.hour = static_cast<int>(ofDay / 3'600'000);
    time.minute = static_cast<int>(ofDay / 60'000 % 60);
    time.second = static_cast<int>(ofDay / 1000 % 60);
    time.millisecond = static_cast<int>(ofDay % 1000);
    return time;
}

int dayOfWeek(int year, int month, int day) noexcept
{
    // The first day of 1970 was a Thursday.
    return static_cast<int>(divideDown(daysSince1970(year, month, day) + 4, 7).remainder);
}

} // namespace qvplatform
