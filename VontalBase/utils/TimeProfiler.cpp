#include "VontalBase/utils/TimeProfiler.h"

#include "VontalBase/platform/clock.h"

namespace qvutils
{

namespace
{

std::uint64_t unitsOf(const FILETIME & time) noexcept
{
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

} // namespace

void TimeProfiler::start() noexcept
{
    m_running = true;
    getTime(m_startTime);
}

void TimeProfiler::stop() noexcept
{
    getTime(m_stopTime);
    m_running = false;
}

std::uint32_t TimeProfiler::getElapsedTime() noexcept
{
    if (!m_running)
        return getElapsedTime(m_startTime, m_stopTime);
    FILETIME now{};
    getTime(now);
    return getElapsedTime(m_startTime, now);
}

void TimeProfiler::getTime(FILETIME & out) noexcept
{
    const std::uint64_t units = qvplatform::fileTimeNow();
    out.dwLowDateTime = static_cast<std::uint32_t>(units);
    out.dwHighDateTime = static_cast<std::uint32_t>(units >> 32);
}

std::uint32_t TimeProfiler::getElapsedTime(FILETIME & from, FILETIME & to) noexcept
{
    return static_cast<std::uint32_t>(
        (unitsOf(to) - unitsOf(from)) / qvplatform::fileTimeUnitsPerMillisecond);
}

} // namespace qvutils
