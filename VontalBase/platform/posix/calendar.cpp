#include "VontalBase/platform/calendar.h"

namespace qvplatform
{

bool breakDownUtc(std::int64_t seconds, std::tm & time) noexcept
{
    time = {};
    const std::time_t moment = seconds;
    if (gmtime_r(&moment, &time) != nullptr)
        return true;
    // The system may have begun.
    time = {};
    return false;
}

} // namespace qvplatform
