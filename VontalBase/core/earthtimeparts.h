/// @internal
/// @file
/// What the sources of `EarthTime` share.
#pragma once

#include "VontalBase/text/integers.h"

#include <cstdint>

namespace qvbase
{

constexpr Vontal::long32 millisecondsOfSecond = 1000;
constexpr Vontal::long32 millisecondsOfMinute = 60 * millisecondsOfSecond;
constexpr Vontal::long32 millisecondsOfHour = 60 * millisecondsOfMinute;
constexpr Vontal::long32 millisecondsOfDay = 24 * millisecondsOfHour;

/// The low bits of a number that may not fit.
constexpr short low16(std::int64_t value) noexcept
{
    return static_cast<short>(value);
}

/// The low bits of a number that may not fit.
constexpr Vontal::long32 low32(std::int64_t value) noexcept
{
    return static_cast<Vontal::long32>(value);
}

} // namespace qvbase
