#include "VontalBase/core/EarthTime.h"

#include "VontalBase/core/earthtimeparts.h"
#include "VontalBase/platform/calendar.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/filetimeunits.h"

#include <algorithm>
#include <compare>
#include <limits>

namespace qvbase
{

using Vontal::long32;

namespace
{

/// Every year has so many days here.
constexpr std::int64_t daysOfYear = 366;

std::int64_t timeOfDay(std::int64_t hour, std::int64_t minute, std::int64_t second) noexcept
{
    return ((hour * 60 + minute) * 60 + second) * millisecondsOfSecond;
}

std::int64_t secondsOf(const _FILETIME & fileTime) noexcept
{
    return static_cast<std::int64_t>(qvplatform::unitsOf(fileTime) / qvplatform::fileTimeUnitsPerSecond) -
           qvplatform::secondsFrom1601To1970;
}

EarthTime fromCivil(const qvplatform::CivilTime & civil) noexcept
{
    return {low16(civil.year), low16(civil.month), low16(civil.day),
        low32(timeOfDay(civil.hour, civil.minute, civil.second) + civil.millisecond)};
}

/// The days of a month; 0 for one that is none.
///
/// Kept: 29 for February in every year.
constexpr int lengthOfMonth(int month) noexcept
{
    return qvplatform::daysInMonth(2000, month);
}

bool isDate(const EarthTime & value) noexcept
{
    return value.day >= 1 && value.day <= lengthOfMonth(value.month);
}

std::strong_ordering compare(const EarthTime & left, const EarthTime & right) noexcept
{
    if (left.year != right.year)
        return left.year <=> right.year;
    if (left.month != right.month)
        return left.month <=> right.month;
    if (left.day != right.day)
        return left.day <=> right.day;
    return left.time <=> right.time;
}

} // namespace

EarthTime::EarthTime(short yearNumber, short monthNumber, short dayNumber, long32 milliseconds) noexcept
    : year(yearNumber), month(monthNumber), day(dayNumber), time(milliseconds)
{
}

EarthTime::EarthTime(_FILETIME * fileTime) noexcept : EarthTime(secondsOf(*fileTime))
{
}

EarthTime::EarthTime(std::int64_t seconds) noexcept
{
    std::tm brokenDown{};
    if (qvplatform::breakDownUtc(seconds, brokenDown))
        init(&brokenDown);
}

EarthTime::EarthTime(std::tm * brokenDown) noexcept
{
    init(brokenDown);
}

void EarthTime::init(std::tm * brokenDown) noexcept
{
    year = low16(std::int64_t{brokenDown->tm_year} + 1900);
    month = low16(std::int64_t{brokenDown->tm_mon} + 1);
    day = low16(brokenDown->tm_mday);
    time = low32(timeOfDay(brokenDown->tm_hour, brokenDown->tm_min, brokenDown->tm_sec));
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,misc-unconventional-assign-operator): required as it is.
void EarthTime::operator=(const EarthTime & other) noexcept
{
    year = other.year;
    month = other.month;
    day = other.day;
    time = other.time;
}

void EarthTime::setNowLocal() noexcept
{
    *this = fromCivil(qvplatform::localNow());
}

void EarthTime::setNowUtc() noexcept
{
    *this = fromCivil(qvplatform::utcNow());
}

void EarthTime::setTime(short hourNumber) noexcept
{
    if (static_cast<unsigned short>(hourNumber) <= 24)
        time = hourNumber * millisecondsOfHour;
}

void EarthTime::setTime(
    short hourNumber, short minuteNumber, short secondNumber, short milisecondNumber) noexcept
{
    // Kept: an hour beyond 24 leaves the old time, to which the rest is added.
    setTime(hourNumber);
    constexpr short limit = 59;
    std::int64_t sum = time;
    if (minuteNumber <= limit)
        sum += std::int64_t{minuteNumber} * millisecondsOfMinute;
    if (secondNumber <= limit)
        sum += std::int64_t{secondNumber} * millisecondsOfSecond;
    // Kept: the limit of seconds holds for milliseconds as well.
    if (milisecondNumber <= limit)
        sum += milisecondNumber;
    time = low32(sum);
}

void EarthTime::addHours(int hours) noexcept
{
    const std::int64_t sum = time + std::int64_t{hours} * millisecondsOfHour;
    // Kept: the end of a day is not yet the next day, and a negative time stays on its day.
    std::int64_t days = sum > millisecondsOfDay ? (sum - 1) / millisecondsOfDay : 0;
    time = static_cast<long32>(
        std::max<std::int64_t>(sum - days * millisecondsOfDay, std::numeric_limits<std::int32_t>::min()));
    while (days != 0)
    {
        // From a date on, the days come round every year.
        if (isDate(*this) && days >= daysOfYear)
        {
            year = low16(year + days / daysOfYear);
            days %= daysOfYear;
            continue;
        }
        incDay();
        --days;
    }
}

void EarthTime::incDay() noexcept
{
    const auto beginMonth = [this]
    {
        day = 1;
        if (month < 12)
        {
            ++month;
            return;
        }
        month = 1;
        year = low16(year + 1);
    };
    if (day < 29)
    {
        ++day;
    }
    else if (month == 2)
    {
        // Kept: the 29th is there in every year.
        beginMonth();
    }
    else if (day < 30)
    {
        ++day;
    }
    else if (month == 4 || month == 6 || month == 9 || month == 11)
    {
        beginMonth();
    }
    else if (day < 31)
    {
        ++day;
    }
    else
    {
        beginMonth();
    }
}

short EarthTime::hour() const noexcept
{
    return low16(time / millisecondsOfHour);
}

short EarthTime::minute() const noexcept
{
    return low16(time % millisecondsOfHour / millisecondsOfMinute);
}

short EarthTime::minutes() const noexcept
{
    return low16(time / millisecondsOfMinute);
}

short EarthTime::second() const noexcept
{
    return low16(time % millisecondsOfMinute / millisecondsOfSecond);
}

short EarthTime::milisecond() const noexcept
{
    return low16(time % millisecondsOfSecond);
}

bool EarthTime::operator==(const EarthTime & other) const noexcept
{
    return std::is_eq(compare(*this, other));
}

bool EarthTime::operator!=(const EarthTime & other) const noexcept
{
    return std::is_neq(compare(*this, other));
}

bool EarthTime::operator<(const EarthTime & other) const noexcept
{
    return std::is_lt(compare(*this, other));
}

bool EarthTime::operator<=(const EarthTime & other) const noexcept
{
    return std::is_lteq(compare(*this, other));
}

bool EarthTime::operator>(const EarthTime & other) const noexcept
{
    return std::is_gt(compare(*this, other));
}

bool EarthTime::operator>=(const EarthTime & other) const noexcept
{
    return std::is_gteq(compare(*this, other));
}

bool EarthTime::isSameDay(const EarthTime & other) const noexcept
{
    return year == other.year && month == other.month && day == other.day;
}

bool EarthTime::is_valid() const noexcept
{
    // Kept: a month that is none is not refused for itself, and only then the time is looked at.
    if (month < 1 || month > 12)
        return time <= millisecondsOfDay;
    return isDate(*this);
}

long32 EarthTime::getDayCounter() const noexcept
{
    // Kept: a leap year's offsets in every year.
    constexpr int offsets[] = {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335};
    const int offset = month >= 1 && month <= 12 ? offsets[month - 1] : 0;
    return static_cast<long32>(year * daysOfYear + offset + day);
}

int EarthTime::diffDays(const EarthTime & other) const noexcept
{
    return static_cast<int>(other.getDayCounter() - getDayCounter());
}

} // namespace qvbase
