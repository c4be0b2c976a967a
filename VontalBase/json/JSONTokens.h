/// @internal
/// @file
/// The tokens of JSON text.
///
/// Runs of white space and of ordinary string bytes are taken sixteen at a time. The place in the text goes
/// from step to step by value, so that it stays in a register.
#pragma once

#include "VontalBase/json/StringBlock.h"
#include "VontalBase/json/TextBuffer.h"
#include "VontalBase/text/numberscan.h"

#include <bit>
#include <cstddef>
#include <emmintrin.h>
#include <string_view>
#include <utility>

namespace qvjson
{

/// A value that was read and waits for the comma or bracket that delivers it.
enum class Pending : unsigned char
{
    None,
    Integer,
    Real,
    True,
    False,
    Null
};

constexpr bool isWhite(unsigned char byte) noexcept
{
    return byte == ' ' || byte == '\n' || byte == '\t' || byte == '\r';
}

/// Reads the tokens of one text, each from its first byte on. An operation answers the place behind the
/// token, or null where the text has to end: it is refused then, or ends within the token, which is no
/// failure.
class JSONTokens
{
public:
    /// A place in the text, or null.
    using Place = const unsigned char *;

    /// Takes the first memory. @return false if there is none.
    bool open() noexcept
    {
        return m_text.open();
    }

    /// Begins with a text. @return its front.
    Place begin(std::string_view text) noexcept
    {
        const Place front = reinterpret_cast<Place>(text.data());
        m_end = front + text.size();
        return front;
    }
    bool isEnd(Place p) const noexcept
    {
        return p == m_end;
    }

    Place refuse() noexcept
    {
        m_isRefused = true;
        return nullptr;
    }
    /// Stops at a refusal of the sink or a want of memory.
    Place goOn(Place p, bool isGood) noexcept
    {
        return isGood ? p : refuse();
    }
    bool isRefused() const noexcept
    {
        return m_isRefused;
    }

    Place skipWhite(Place p) const noexcept;
    /// Reads a number, which is then pending; if it is an integer its text can be taken.
    Place number(Place p);
    /// Reads a word, which is then pending.
    /// @param rest its letters but for the first.
    Place word(Place p, const char * rest, Pending pending);
    /// Reads a string, from behind its first quote; its text can be taken then.
    Place string(Place p);

    /// The text that was read, with a zero byte behind it. It is valid until the next token is read.
    std::string_view takeText() noexcept
    {
        return m_text.take();
    }
    Pending takePending() noexcept
    {
        return std::exchange(m_pending, Pending::None);
    }

private:
    Place skipWhiteRun(Place p) const noexcept;
    Place skipDigits(Place p) const noexcept;
    Place fraction(Place p);
    Place exponent(Place p);
    Place longString(Place p);
    Place ordinaryBytes(Place p);
    Place escape(Place p);
    Place unicodeEscape(Place p);
    Place hexUnit(Place p, unsigned int & unit);

    std::size_t left(Place p) const noexcept
    {
        return static_cast<std::size_t>(m_end - p);
    }
    /// The text ends within a token.
    static Place endWithin() noexcept
    {
        return nullptr;
    }

    Place m_end = nullptr;
    TextBuffer m_text;
    Pending m_pending = Pending::None;
    bool m_isRefused = false;
};

inline JSONTokens::Place JSONTokens::skipWhite(Place p) const noexcept
{
    // Mostly there is none, or one blank.
    if (p == m_end || *p > ' ' || !isWhite(*p))
        return p;
    ++p;
    return p == m_end || *p > ' ' ? p : skipWhiteRun(p);
}

inline JSONTokens::Place JSONTokens::skipWhiteRun(Place p) const noexcept
{
    const auto isEvery = [](__m128i bytes, char byte)
    {
        return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
    };
    for (; left(p) >= 16; p += 16)
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        const __m128i white = _mm_or_si128(_mm_or_si128(isEvery(bytes, ' '), isEvery(bytes, '\n')),
            _mm_or_si128(isEvery(bytes, '\t'), isEvery(bytes, '\r')));
        const unsigned int others = ~static_cast<unsigned int>(_mm_movemask_epi8(white)) & 0xFFFFU;
        if (others != 0)
            return p + std::countr_zero(others);
    }
    while (p != m_end && isWhite(*p))
        ++p;
    return p;
}

inline JSONTokens::Place JSONTokens::skipDigits(Place p) const noexcept
{
    while (p != m_end && Vontal::isDecimalDigit(*p))
        ++p;
    return p;
}

inline JSONTokens::Place JSONTokens::number(Place p)
{
    const Place start = p;
    p += static_cast<std::ptrdiff_t>(*p == '-');
    if (p == m_end)
        return endWithin();
    if (!Vontal::isDecimalDigit(*p))
        return refuse();
    const bool isZero = *p == '0';
    // A digit or an exponent behind a leading zero is refused by what comes after a value.
    p = isZero ? p + 1 : skipDigits(p);
    if (p != m_end && *p == '.')
        return fraction(p);
    if (p != m_end && (*p | 0x20) == 'e' && !isZero)
        return exponent(p);
    m_pending = Pending::Integer;
    return goOn(p, m_text.assign(start, static_cast<std::size_t>(p - start), left(start)));
}

inline JSONTokens::Place JSONTokens::word(Place p, const char * rest, Pending pending)
{
    for (++p; *rest != '\0'; ++rest, ++p)
    {
        if (p == m_end)
            return endWithin();
        if (*p != static_cast<unsigned char>(*rest))
            return refuse();
    }
    m_pending = pending;
    return p;
}

inline JSONTokens::Place JSONTokens::string(Place p)
{
    // Most strings are plain, and shorter than a block.
    if (left(p) >= StringBlock::size)
    {
        const StringBlock block(p);
        const unsigned int count = block.ordinaryAsciiBytes();
        if (count != StringBlock::size && p[count] == '"')
        {
            block.store(m_text.end());
            m_text.advance(count);
            return p + count + 1;
        }
    }
    return longString(p);
}

} // namespace qvjson
