/// @internal
/// @file
/// The system's file time as one number.
#pragma once

#include "VontalBase/platform/filetime.h"

#include <cstdint>

namespace qvplatform
{

/// The units of 100 nanoseconds since 1601 that a file time counts.
inline std::uint64_t unitsOf(const FILETIME & time) noexcept
{
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

/// The file time for such a count.
inline FILETIME fileTimeOf(std::uint64_t units) noexcept
{
    FILETIME time{};
    time.dwLowDateTime = static_cast<std::uint32_t>(units & 0xFFFFFFFFU);
    time.dwHighDateTime = static_cast<std::uint32_t>(units >> 32);
    return time;
}

} // namespace qvplatform
