/// @internal
/// @file
/// The codec between UTF-8 and UTF-16 in wide elements.
///
/// It is the same plain code on every system, because the systems' own converters disagree on how
/// many U+FFFD an ill-formed sequence gives.
#pragma once

#include "VontalBase/text/utfsteps.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Vontal
{

/// Replaces `destination` by the wide form of `source`. Zero bytes are converted like any other.
void wideFromUtf8(
    std::string_view source, std::wstring & destination, const UtfSteps & steps = bestUtfSteps());

/// Replaces `destination` by the UTF-8 form of `source`. NUL units are converted like any other.
void utf8FromWide(
    std::wstring_view source, std::string & destination, const UtfSteps & steps = bestUtfSteps());

/// Writes a code point as UTF-8, up to four bytes, and returns how many. Surrogates are written like any
/// other code point of their size.
inline std::size_t encodeUtf8(std::uint32_t codePoint, char * to) noexcept
{
    const auto tail = [codePoint](unsigned int shift)
    {
        return static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
    };
    if (codePoint < 0x80)
    {
        to[0] = static_cast<char>(codePoint);
        return 1;
    }
    if (codePoint < 0x800)
    {
        to[0] = static_cast<char>(0xC0U | (codePoint >> 6));
        to[1] = tail(0);
        return 2;
    }
    if (codePoint < 0x10000)
    {
        to[0] = static_cast<char>(0xE0U | (codePoint >> 12));
        to[1] = tail(6);
        to[2] = tail(0);
        return 3;
    }
    to[0] = static_cast<char>(0xF0U | (codePoint >> 18));
    to[1] = tail(12);
    to[2] = tail(6);
    to[3] = tail(0);
    return 4;
}

} // namespace Vontal
