/// @internal
/// @file
/// Dates and times in the form of the user's locale, which is the system's setting and not the one that the
/// process made for itself. It may be looked up once in a process.
///
/// The exact text is the system's. An empty text comes back where the system refuses. Any thread may call the
/// functions; `std::bad_alloc` may leave them.
#pragma once

#include <string>

namespace qvplatform
{

/// The pattern of a long date, in the system's own language of patterns; empty where it tells none.
std::wstring longDatePattern();

/// A date by a pattern from `longDatePattern`; by a pattern of the system's choice if that is empty.
/// @param year 1601 to 30827.
/// @param month 1 to 12.
/// @param day of the month.
/// @return at most 255 units.
std::wstring localeDate(int year, int month, int day, const std::wstring & pattern);

/// A time of day.
/// @param hour 0 to 23.
/// @return at most 255 units.
std::wstring localeTime(int hour, int minute, int second, bool withSeconds);

} // namespace qvplatform
