#include "VontalBase/platform/calendar.h"

#include <time.h>

namespace qvplatform
{

bool breakDownUtc(std::int64_t seconds, std::tm & time) noexcept
{
    time = {};
    const __time64_t moment = seconds;
    if (_gmtime64_s(&time, &moment) == 0)
        return true;
    // The system fills a refused one with -1.
    time = {};
    return false;
}

} // namespace qvplatform
