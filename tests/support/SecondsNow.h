/// @file
/// The time in seconds by the exact clock, which `std::time` may lag behind.
#pragma once

#include <chrono>
#include <ctime>

namespace testsupport
{

/// Seconds since 1970 by the exact clock. `std::time` may lag behind it by a tick, and with it by a second.
inline std::time_t secondsNow()
{
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

} // namespace testsupport
