/// @internal
/// @file
/// The case of ASCII letters, whatever the locale is.
#pragma once

#include <algorithm>
#include <string_view>

namespace Vontal
{

/// The small letter for a capital one from A to Z; anything else as it is.
constexpr char lowerAscii(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether two texts differ in nothing but the case of the letters A to Z.
constexpr bool isSameButForCase(std::string_view one, std::string_view other) noexcept
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
        [](char a, char b) { return lowerAscii(a) == lowerAscii(b); });
}

} // namespace Vontal
