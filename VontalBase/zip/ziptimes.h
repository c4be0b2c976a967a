/// @internal
/// @file
/// The times in zip archives: DOS dates, and 32-bit counts of seconds since 1970.
///
/// A file time counts 100 nanoseconds since the beginning of 1601, here either in UTC or in local time, as is
/// told. A DOS date has the date in its high 16 bits and the time of day, to two seconds, in its low ones; no
/// zone belongs to it. None of the functions fails; any thread may call them.
#pragma once

#include "VontalBase/platform/calendar.h"

#include <cstdint>

namespace zip
{

/// The date and time of day that a file time is.
qvplatform::CivilTime civilTimeOf(std::uint64_t fileTime) noexcept;

/// The file time of a date and time of day, all of whose parts are in range, from 1601 on.
std::uint64_t fileTimeOf(const qvplatform::CivilTime & time) noexcept;

/// How far the local clock is ahead of UTC at present, in units of file times; whole minutes.
std::int64_t localMinusUtc() noexcept;

/// A file time so many units later; no further than file times go.
std::uint64_t shifted(std::uint64_t fileTime, std::int64_t units) noexcept;

/// The present moment as a file time in local time.
std::uint64_t localFileTimeNow() noexcept;

/// The seconds from the beginning of 1970 in UTC to a moment that is given in local time, with daylight
/// saving taken as off. A year before 1970 counts as 1 January 1970, one after 2037 as 31 December 2037, both
/// at the same time of day.
/// @return the low 32 bits of the count, which is negative for the first hours of 1970 east of Greenwich.
std::uint32_t secondsOfLocalFileTime(std::uint64_t localFileTime) noexcept;

/// The DOS date of a file time, without regard to zones; an odd second loses one. What lies before 1980
/// becomes the first moment of that year, and what lies after 2107 the last one.
std::uint32_t dosDateOf(std::uint64_t fileTime) noexcept;

/// The file time of a DOS date, without regard to zones.
/// @return 0 where there is no such date or time of day.
std::uint64_t fileTimeOfDosDate(std::uint32_t dosDate) noexcept;

/// The file time in UTC so many seconds after the beginning of 1970 in UTC, or before it.
std::uint64_t fileTimeOfSeconds(std::int32_t seconds) noexcept;

} // namespace zip
