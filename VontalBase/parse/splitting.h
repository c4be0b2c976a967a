/// @file
/// Cutting a text at a separator.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <list>
#include <string>

namespace qvparse
{

/// Cuts a text at each separator and appends what lies between to a list.
///
/// Separators in a row count as one, and those at either end for nothing, so that no item is empty. The text
/// ends at its first zero. May be called from any thread.
///
/// @param text what is cut; an empty one has no item.
/// @param items receives the items behind those that it holds. Where `std::bad_alloc` leaves the call, it has
///     some of them.
/// @param separator one byte.
VONTALBASE_API void splitString(const std::string & text, std::list<std::string> & items, char separator);
/// Cuts a wide text as the first form does, with the same results.
/// @param text what is cut; an empty one has no item.
/// @param items receives the items behind those that it holds.
/// @param separator one wide character.
VONTALBASE_API void splitString(
    const std::wstring & text, std::list<std::wstring> & items, wchar_t separator);
/// Cuts a text in UTF-8 as the first form does, with the same results.
/// @param text what is cut; an empty one has no item.
/// @param items receives the items behind those that it holds.
/// @param separator one byte.
VONTALBASE_API void splitString(
    const Vontal::u8string & text, std::list<Vontal::u8string> & items, char separator);

} // namespace qvparse
