#include "VontalBase/platform/clock.h"

#include <ctime>

namespace platform
{

namespace
{

timespec systemNow() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

} // namespace

CivilTime systemLocalNow() noexcept
{
    const timespec now = systemNow();
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
        static_cast<int>(now.tv_nsec / 1'000'000)};
}

std::uint64_t systemFileTimeNow() noexcept
{
    const timespec now = systemNow();
    return static_cast<std::uint64_t>(
        (now.tv_sec + secondsFrom1601To1970) * fileTimeUnits + now.tv_nsec / 100);
}

} // namespace platform
