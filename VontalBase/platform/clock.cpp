#include "VontalBase/platform/clock.h"

#include <ctime>

#ifdef VONTALBASE_FAULT_GATES
#include <atomic>
#include <limits>
#endif

namespace qvplatform
{

#ifdef VONTALBASE_FAULT_GATES

namespace
{

constexpr std::int64_t notSet = std::numeric_limits<std::int64_t>::min();

// Relaxed throughout: a clock must not order the memory accesses of the threads that read it.
std::atomic<std::int64_t> localClock{notSet};
std::atomic<std::uint64_t> fileTimeClock{0};

} // namespace

void setLocalNow(const CivilTime & time) noexcept
{
    localClock.store(millisecondsSince1970(time), std::memory_order_relaxed);
}

void setFileTimeNow(std::uint64_t units) noexcept
{
    fileTimeClock.store(units, std::memory_order_relaxed);
}

void resetClocks() noexcept
{
    localClock.store(notSet, std::memory_order_relaxed);
    fileTimeClock.store(0, std::memory_order_relaxed);
}

CivilTime localNow() noexcept
{
    const std::int64_t milliseconds = localClock.load(std::memory_order_relaxed);
    return milliseconds == notSet ? systemLocalNow() : civilTime(milliseconds);
}

std::uint64_t fileTimeNow() noexcept
{
    const std::uint64_t units = fileTimeClock.load(std::memory_order_relaxed);
    return units == 0 ? systemFileTimeNow() : units;
}

#else

CivilTime localNow() noexcept
{
    return systemLocalNow();
}

std::uint64_t fileTimeNow() noexcept
{
    return systemFileTimeNow();
}

#endif

CivilTime utcNow() noexcept
{
    const auto since1601 = static_cast<std::int64_t>(fileTimeNow() / fileTimeUnitsPerMillisecond);
    return civilTime(since1601 - millisecondsFrom1601To1970);
}

std::int64_t secondsSince1970() noexcept
{
    return static_cast<std::int64_t>(fileTimeNow() / fileTimeUnitsPerSecond) - secondsFrom1601To1970;
}

std::int64_t secondsOfStandardTime(const CivilTime & time) noexcept
{
    // Some systems do not count what lies before 1970 in UTC, as the first hours of 1970 do east of it.
    constexpr std::int64_t secondsOfDay = 86400;
    const bool isFirstDay = time.year == 1970 && time.month == 1 && time.day == 1;
    std::tm fields{};
    fields.tm_year = time.year - 1900;
    fields.tm_mon = time.month - 1;
    fields.tm_mday = isFirstDay ? 2 : time.day;
    fields.tm_hour = time.hour;
    fields.tm_min = time.minute;
    fields.tm_sec = time.second;
    fields.tm_isdst = 0;
    return std::int64_t{std::mktime(&fields)} - (isFirstDay ? secondsOfDay : 0);
}

} // namespace qvplatform
