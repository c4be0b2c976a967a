/// @internal
/// @file
/// Single characters of UTF-8 and of wide text, well-formed or not.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Vontal
{

constexpr std::uint32_t replacementCharacter = 0xFFFD;
constexpr std::uint32_t lastCodePoint = 0x10FFFF;

/// Whether a wide element is larger than a UTF-16 unit.
constexpr bool unitsAreWide = sizeof(wchar_t) > 2;

constexpr bool isHighSurrogate(std::uint32_t unit) noexcept
{
    return (unit & 0xFFFFFC00U) == 0xD800;
}

constexpr bool isLowSurrogate(std::uint32_t unit) noexcept
{
    return (unit & 0xFFFFFC00U) == 0xDC00;
}

constexpr std::uint32_t unitValue(wchar_t unit) noexcept
{
    if constexpr (unitsAreWide)
        return static_cast<std::uint32_t>(unit);
    else
        return static_cast<std::uint16_t>(unit);
}

constexpr bool isContinuation(unsigned char byte) noexcept
{
    return (byte & 0xC0U) == 0x80;
}

/// What stands at the front of some UTF-8: a character, or U+FFFD for a maximal ill-formed sequence.
struct Decoded
{
    std::uint32_t codePoint;
    std::size_t length;
};

/// The bytes that may follow a lead byte, as the Unicode standard tabulates them.
struct SecondByteRange
{
    unsigned char first;
    unsigned char last;
};

constexpr SecondByteRange secondByteRange(unsigned char lead) noexcept
{
    switch (lead)
    {
    case 0xE0:
        return {0xA0, 0xBF};
    case 0xED:
        return {0x80, 0x9F};
    case 0xF0:
        return {0x90, 0xBF};
    case 0xF4:
        return {0x80, 0x8F};
    default:
        return {0x80, 0xBF};
    }
}

/// How many bytes the lead byte announces, or 0 if it is none.
constexpr std::size_t sequenceLength(unsigned char lead) noexcept
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2)
        return 0;
    if (lead < 0xE0)
        return 2;
    if (lead < 0xF0)
        return 3;
    return lead < 0xF5 ? 4 : 0;
}

constexpr Decoded decodeFront(const unsigned char * p, std::size_t available) noexcept
{
    const std::size_t length = sequenceLength(p[0]);
    if (length == 0)
        return {replacementCharacter, 1};
    if (length == 1)
        return {p[0], 1};
    const SecondByteRange range = secondByteRange(p[0]);
    if (available < 2 || p[1] < range.first || p[1] > range.last)
        return {replacementCharacter, 1};
    std::uint32_t codePoint = p[0] & (0x7FU >> length);
    codePoint = (codePoint << 6) | (p[1] & 0x3FU);
    for (std::size_t i = 2; i < length; ++i)
    {
        if (i >= available || !isContinuation(p[i]))
            return {replacementCharacter, i};
        codePoint = (codePoint << 6) | (p[i] & 0x3FU);
    }
    return {codePoint, length};
}

/// Writes a code point as UTF-16, one element or two. @return behind what it wrote.
inline wchar_t * writeWide(std::uint32_t codePoint, wchar_t * to) noexcept
{
    if (codePoint < 0x10000)
    {
        *to++ = static_cast<wchar_t>(codePoint);
        return to;
    }
    *to++ = static_cast<wchar_t>(0xD7C0 + (codePoint >> 10));
    *to++ = static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FFU));
    return to;
}

/// The character at the front of `p`, with U+FFFD for what is none; moves `p` behind it.
constexpr std::uint32_t takeCharacter(const wchar_t *& p, const wchar_t * end) noexcept
{
    const std::uint32_t unit = unitValue(*p++);
    if (isHighSurrogate(unit) && p != end && isLowSurrogate(unitValue(*p)))
        return 0x10000 + ((unit & 0x3FFU) << 10) + (unitValue(*p++) & 0x3FFU);
    const bool isSurrogate = isHighSurrogate(unit) || isLowSurrogate(unit);
    return isSurrogate || unit > lastCodePoint ? replacementCharacter : unit;
}

} // namespace Vontal
