/// @internal
/// @file
/// The system's ANSI code page.
///
/// None of the functions fails but by `std::bad_alloc`; any thread may call them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvplatform
{

/// The number of the process's ANSI code page, 1252 for instance.
std::uint32_t ansiCodePage() noexcept;

/// Replaces `destination` by the wide form of `source`, which is in the ANSI code page.
void wideFromAnsi(std::string_view source, std::wstring & destination);

/// Replaces `destination` by `source` in the ANSI code page. A unit that the code page lacks becomes its
/// best fit there, or else the code page's default character; each unit is looked up by itself, so that
/// a surrogate pair gives two default characters.
void ansiFromWide(std::wstring_view source, std::string & destination);

} // namespace qvplatform
