/// @internal
/// @file
/// What time it is.
///
/// The system's clock may be set back and forth. None of the functions fails; any thread may call them.
///
/// A test of internals (VONTALBASE_FAULT_GATES) can set the two clocks. The library as it is shipped has
/// nothing of that.
#pragma once

#include "VontalBase/platform/calendar.h"

#include <cstdint>

namespace qvplatform
{

/// From the beginning of 1601, from which file times count, to that of 1970.
constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;
constexpr std::int64_t millisecondsFrom1601To1970 = secondsFrom1601To1970 * 1000;

// File times are in units of 100 nanoseconds.
constexpr std::int64_t fileTimeUnitsPerSecond = 10'000'000;
constexpr std::int64_t fileTimeUnitsPerMillisecond = 10'000;

/// The present date and time in the user's time zone.
CivilTime localNow() noexcept;

/// The present date and time in UTC.
CivilTime utcNow() noexcept;

/// Whole seconds since the beginning of 1970, in UTC.
std::int64_t secondsSince1970() noexcept;

/// Units of 100 nanoseconds since the beginning of 1601, in UTC.
std::uint64_t fileTimeNow() noexcept;

/// What the system says, whatever a test has set: the local time.
CivilTime systemLocalNow() noexcept;
/// What the system says, whatever a test has set: units of 100 nanoseconds since 1601, in UTC.
std::uint64_t systemFileTimeNow() noexcept;

/// Takes up what the environment says of the process's time zone by now. Not to be called while another
/// thread changes the environment.
void refreshTimeZone() noexcept;

/// The seconds from the beginning of 1970 in UTC to a date and time in the user's time zone, taken as one
/// without daylight saving.
/// @param time all of whose parts are in range, of the years 1970 to 2037.
std::int64_t secondsOfStandardTime(const CivilTime & time) noexcept;

#ifdef VONTALBASE_FAULT_GATES

/// Makes `localNow` give this in every thread, until the next setting or `resetClocks`. The other functions
/// go on as before.
/// @param time must have all its parts in range.
void setLocalNow(const CivilTime & time) noexcept;

/// Makes `fileTimeNow`, `utcNow` and `secondsSince1970` give this moment in every thread, until the next
/// setting or `resetClocks`. Local time goes on as before.
/// @param units of 100 nanoseconds since 1601; not 0.
void setFileTimeNow(std::uint64_t units) noexcept;

/// Gives both clocks back to the system.
void resetClocks() noexcept;

#endif

} // namespace qvplatform
