#include "VontalBase/platform/clock.h"

#include "VontalBase/platform/filetimeunits.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <ctime>

namespace qvplatform
{

CivilTime systemLocalNow() noexcept
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

std::uint64_t systemFileTimeNow() noexcept
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return unitsOf(now);
}

void refreshTimeZone() noexcept
{
    _tzset();
}

} // namespace qvplatform
