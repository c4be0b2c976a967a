/// @internal
/// @file
/// The scanners behind `numbers.h`, over any run of characters.
#pragma once

#include <cstddef>
#include <limits>
#include <string_view>
#include <type_traits>

namespace Vontal
{

template <class Char>
constexpr bool isDecimalDigit(Char c) noexcept
{
    return c >= Char('0') && c <= Char('9');
}

/// accumulator * 10 + digit in the width of `Int`, with wrap-around.
template <class Int, class Char>
constexpr Int pushDigit(Int accumulator, Char digit) noexcept
{
    using Unsigned = std::make_unsigned_t<Int>;
    return static_cast<Int>(
        static_cast<Unsigned>(accumulator) * 10U + static_cast<Unsigned>(digit - Char('0')));
}

/// Reads a run of digits, with nothing else among them, that is too short to wrap. Returns false for anything
/// else.
template <class Int, class Char>
constexpr bool scanShortNumber(std::basic_string_view<Char> text, Int & number) noexcept
{
    if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<Int>::digits10))
        return false;
    number = 0;
    for (const Char c : text)
    {
        if (!isDecimalDigit(c))
            return false;
        number = pushDigit(number, c);
    }
    return true;
}

/// Reads a whole number of the width and signedness of `Int`.
template <class Int, class Char>
constexpr Int scanInteger(std::basic_string_view<Char> text, bool & ok) noexcept
{
    Int accumulator = 0;
    ok = true;
    if (scanShortNumber(text, accumulator))
        return accumulator;
    accumulator = 0;
    bool negative = false;
    bool digitSeen = false;
    for (const Char c : text)
    {
        if (isDecimalDigit(c))
        {
            const Int next = pushDigit(accumulator, c);
            // Kept: only a wrap that lands below the former value is noticed.
            if (next < accumulator)
            {
                ok = false;
                break;
            }
            accumulator = next;
            digitSeen = true;
        }
        else if (std::is_signed_v<Int> && c == Char('-') && !digitSeen)
        {
            negative = !negative;
        }
        else
        {
            ok = false;
            break;
        }
    }
    if (!digitSeen)
        ok = false;
    using Unsigned = std::make_unsigned_t<Int>;
    return negative ? static_cast<Int>(Unsigned{0} - static_cast<Unsigned>(accumulator)) : accumulator;
}

} // namespace Vontal
