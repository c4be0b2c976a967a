/// @internal
/// @file
/// What the patterns of a POSIX locale lack: a long date, and a time without seconds.
///
/// The patterns are those of `wcsftime`. `std::bad_alloc` may leave the functions.
#pragma once

#include <string>
#include <string_view>

namespace qvplatform
{

/// A pattern of a long date: the words of `dateAndTime` in which no time of day stands, with the names of
/// months and days unshortened.
/// @param dateAndTime the locale's pattern for both together.
/// @return `%x` if there is no date in it.
std::wstring longDateOf(std::wstring_view dateAndTime);

/// The pattern `time` without its seconds and what belongs to them.
/// @param time the locale's pattern for a time of day.
/// @param halfDayTime what `%r` in it stands for; empty where the locale has none.
std::wstring timeWithoutSeconds(std::wstring_view time, std::wstring_view halfDayTime);

} // namespace qvplatform
