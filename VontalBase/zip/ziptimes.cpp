#include "VontalBase/zip/ziptimes.h"

#include "VontalBase/platform/clock.h"

#include <algorithm>
#include <limits>

namespace zip
{

namespace
{

using qvplatform::CivilTime;
using qvplatform::fileTimeUnitsPerMillisecond;
using qvplatform::millisecondsFrom1601To1970;

constexpr std::int64_t aMinute = 60'000;

constexpr int firstCountedYear = 1970;
constexpr int lastCountedYear = 2037;
constexpr int firstDosYear = 1980;
constexpr int lastDosYear = 2107;

} // namespace

CivilTime civilTimeOf(std::uint64_t fileTime) noexcept
{
    constexpr std::uint64_t latest = std::numeric_limits<std::int64_t>::max();
    const auto units = static_cast<std::int64_t>(std::min(fileTime, latest));
    return qvplatform::civilTime(units / fileTimeUnitsPerMillisecond - millisecondsFrom1601To1970);
}

std::uint64_t fileTimeOf(const CivilTime & time) noexcept
{
    return static_cast<std::uint64_t>(
        (qvplatform::millisecondsSince1970(time) + millisecondsFrom1601To1970) * fileTimeUnitsPerMillisecond);
}

std::int64_t localMinusUtc() noexcept
{
    // The two clocks are read one behind the other, so that the difference is not a round one.
    const std::int64_t utc = qvplatform::millisecondsSince1970(qvplatform::utcNow());
    const std::int64_t difference = qvplatform::millisecondsSince1970(qvplatform::localNow()) - utc;
    const std::int64_t half = difference < 0 ? -aMinute / 2 : aMinute / 2;
    return (difference + half) / aMinute * aMinute * fileTimeUnitsPerMillisecond;
}

std::uint64_t shifted(std::uint64_t fileTime, std::int64_t units) noexcept
{
    if (units < 0)
    {
        const std::uint64_t back = std::uint64_t{0} - static_cast<std::uint64_t>(units);
        return fileTime < back ? 0 : fileTime - back;
    }
    const auto forth = static_cast<std::uint64_t>(units);
    constexpr std::uint64_t latest = std::numeric_limits<std::uint64_t>::max();
    return latest - fileTime < forth ? latest : fileTime + forth;
}

std::uint64_t localFileTimeNow() noexcept
{
    return fileTimeOf(qvplatform::localNow());
}

std::uint32_t secondsOfLocalFileTime(std::uint64_t localFileTime) noexcept
{
    CivilTime time = civilTimeOf(localFileTime);
    if (time.year < firstCountedYear)
    {
        time.year = firstCountedYear;
        time.month = 1;
        time.day = 1;
    }
    else if (time.year > lastCountedYear)
    {
        time.year = lastCountedYear;
        time.month = 12;
        time.day = 31;
    }
    return static_cast<std::uint32_t>(qvplatform::secondsOfStandardTime(time));
}

std::uint32_t dosDateOf(std::uint64_t fileTime) noexcept
{
    CivilTime time = civilTimeOf(fileTime);
    if (time.year < firstDosYear)
        time = {firstDosYear, 1, 1, 0, 0, 0, 0};
    else if (time.year > lastDosYear)
        time = {lastDosYear, 12, 31, 23, 59, 58, 0};
    const int date = (time.year - firstDosYear) << 9 | time.month << 5 | time.day;
    const int timeOfDay = time.hour << 11 | time.minute << 5 | time.second / 2;
    return static_cast<std::uint32_t>(date) << 16U | static_cast<std::uint32_t>(timeOfDay);
}

std::uint64_t fileTimeOfDosDate(std::uint32_t dosDate) noexcept
{
    const auto bits = [&](unsigned int lowest, unsigned int count)
    {
        return static_cast<int>(dosDate >> lowest & ((1U << count) - 1U));
    };
    const CivilTime time = {
        firstDosYear + bits(25, 7), bits(21, 4), bits(16, 5), bits(11, 5), bits(5, 6), 2 * bits(0, 5), 0};
    const bool isDate = time.day >= 1 && time.day <= qvplatform::daysInMonth(time.year, time.month);
    const bool isTimeOfDay = time.hour < 24 && time.minute < 60 && time.second < 60;
    return isDate && isTimeOfDay ? fileTimeOf(time) : 0;
}

std::uint64_t fileTimeOfSeconds(std::int32_t seconds) noexcept
{
    return static_cast<std::uint64_t>(
        (seconds + qvplatform::secondsFrom1601To1970) * qvplatform::fileTimeUnitsPerSecond);
}

} // namespace zip
