#include "VontalBase/platform/clock.h"

#include <ctime>

namespace qvplatform
{

namespace
{

timespec systemNow() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

/// A second in the local time of a zone.
struct BrokenDownSecond
{
    /// Whether it is this one, in the zone that the process has now.
    [[nodiscard]] bool isOf(std::time_t moment) const noexcept
    {
        return moment == second && zoneName == tzname[0] && zoneOffset == timezone;
    }

    void breakDown(std::time_t moment) noexcept
    {
        std::tm local{};
        localtime_r(&moment, &local);
        civil = {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
            local.tm_sec, 0};
        second = moment;
        zoneName = tzname[0];
        zoneOffset = timezone;
    }

    std::time_t second = -1;
    const char * zoneName = nullptr;
    long zoneOffset = 0;
    CivilTime civil;
};

} // namespace

CivilTime systemLocalNow() noexcept
{
    // Who asks for the time asks for it again soon, and breaking it down is most of the work.
    thread_local constinit BrokenDownSecond last;
    const timespec now = systemNow();
    if (!last.isOf(now.tv_sec))
        last.breakDown(now.tv_sec);
    CivilTime local = last.civil;
    local.millisecond = static_cast<int>(now.tv_nsec / 1'000'000);
    return local;
}

std::uint64_t systemFileTimeNow() noexcept
{
    const timespec now = systemNow();
    return static_cast<std::uint64_t>(
        (now.tv_sec + secondsFrom1601To1970) * fileTimeUnitsPerSecond + now.tv_nsec / 100);
}

void refreshTimeZone() noexcept
{
    tzset();
}

} // namespace qvplatform
