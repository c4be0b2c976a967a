/// @internal
/// @file
/// The scanner: JSON text in, events out.
///
/// It accepts just what a table of states by classes of byte would, and skips runs of white space and of
/// ordinary string bytes sixteen at a time. It keeps no tree and does not recurse. The place in the text goes
/// from step to step by value, so that it stays in a register.
#pragma once

#include "VontalBase/json/ModeStack.h"
#include "VontalBase/json/StringBlock.h"
#include "VontalBase/json/TextBuffer.h"
#include "VontalBase/text/utf.h"

#include <bit>
#include <cstddef>
#include <cstdint>
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

constexpr bool isDigit(unsigned char byte) noexcept
{
    return byte >= '0' && byte <= '9';
}

/// The value of a hexadecimal digit, or 16 for anything else.
constexpr unsigned int hexValue(unsigned char byte) noexcept
{
    if (isDigit(byte))
        return byte - static_cast<unsigned int>('0');
    const unsigned int letter = byte | 0x20U;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : 16;
}

/// Scans one text. The sink has an operation for each event, which answers whether to go on: `beginArray`,
/// `beginObject`, `endArray`, `endObject`, `real`, `boolean(bool)`, `null`, and with the text
/// `integer(text)`, `string(text)`, `key(text)`, each a view of bytes with a zero byte behind it.
template <class Sink>
class JSONScanner
{
public:
    explicit JSONScanner(Sink & sink) noexcept : m_sink(sink)
    {
    }

    /// Takes the first memory. @return false if there is none.
    bool open() noexcept
    {
        return m_text.open() && m_modes.open();
    }

    /// Scans the whole text. @return false if it was refused, by the scanner or by the sink.
    bool scan(std::string_view text);

private:
    /// A place in the text, or null where the scan has stopped.
    using Place = const unsigned char *;

    /// What is awaited between two tokens.
    enum class State : unsigned char
    {
        Top,
        AfterValue,
        ObjectOpen,
        Key,
        Colon,
        Value,
        ArrayOpen
    };

    /// Where the scan stands between two tokens.
    struct Stand
    {
        Place p;
        State state;
    };

    Stand next(Stand stand);
    Stand afterValue(Place p);
    Stand member(Place p, bool mayClose);
    Stand colon(Place p);
    Stand value(Place p, bool mayClose);
    Stand beginArray(Place p);
    Stand beginObject(Place p);
    Stand endArray(Place p);
    Stand endObject(Place p);
    Stand comma(Place p);
    Place number(Place p);
    Place fraction(Place p);
    Place exponent(Place p);
    Place word(Place p, const char * rest, Pending pending);
    template <bool IsKey>
    Place string(Place p);
    template <bool IsKey>
    Place longString(Place p);
    template <bool IsKey>
    bool deliver(std::string_view text);
    Place ordinaryBytes(Place p);
    Place multibyteBytes(Place p);
    Place lastBytes(Place p, unsigned int due);
    Place escape(Place p);
    Place unicodeEscape(Place p);
    Place hexUnit(Place p, unsigned int & unit);
    bool flush();

    Place skipWhite(Place p) const noexcept;
    Place skipWhiteRun(Place p) const noexcept;
    Place skipDigits(Place p) const noexcept;

    std::size_t left(Place p) const noexcept
    {
        return static_cast<std::size_t>(m_end - p);
    }
    Place refuse() noexcept
    {
        m_isRefused = true;
        return nullptr;
    }
    /// The text ends within a token, which is no failure.
    static Place endWithin() noexcept
    {
        return nullptr;
    }
    /// Stops at a refusal of the sink or a want of memory.
    Place goOn(Place p, bool isGood) noexcept
    {
        return isGood ? p : refuse();
    }

    Sink & m_sink;
    Place m_end = nullptr;
    TextBuffer m_text;
    ModeStack m_modes;
    Pending m_pending = Pending::None;
    bool m_isRefused = false;
};

template <class Sink>
bool JSONScanner<Sink>::scan(std::string_view text)
{
    Stand stand{reinterpret_cast<Place>(text.data()), State::Top};
    m_end = stand.p + text.size();
    while (stand.p != nullptr)
    {
        stand.p = skipWhite(stand.p);
        if (stand.p == m_end)
            return true;
        stand = next(stand);
    }
    return !m_isRefused;
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::next(Stand stand)
{
    switch (stand.state)
    {
    case State::AfterValue:
        return afterValue(stand.p);
    case State::ObjectOpen:
        return member(stand.p, true);
    case State::Key:
        return member(stand.p, false);
    case State::Colon:
        return colon(stand.p);
    case State::Value:
        return value(stand.p, false);
    case State::ArrayOpen:
        return value(stand.p, true);
    default:
        break;
    }
    if (*stand.p == '{')
        return beginObject(stand.p);
    return *stand.p == '[' ? beginArray(stand.p) : Stand{refuse(), State::Top};
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::afterValue(Place p)
{
    switch (*p)
    {
    case ',':
        return comma(p);
    case '}':
        return endObject(p);
    case ']':
        return endArray(p);
    case '/':
    case '#':
        // A comment is refused, but only after the value in front of it has been delivered.
        flush();
        break;
    default:
        break;
    }
    return {refuse(), State::AfterValue};
}

/// A key and, as far as the text goes on, its value.
template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::member(Place p, bool mayClose)
{
    if (*p != '"')
        return mayClose && *p == '}' ? endObject(p) : Stand{refuse(), State::Key};
    p = string<true>(p + 1);
    if (p == nullptr)
        return {p, State::Colon};
    p = skipWhite(p);
    return p == m_end ? Stand{p, State::Colon} : colon(p);
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::colon(Place p)
{
    if (*p != ':')
        return {refuse(), State::Colon};
    p = skipWhite(p + 1);
    return p == m_end ? Stand{p, State::Value} : value(p, false);
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::value(Place p, bool mayClose)
{
    switch (*p)
    {
    case '"':
        return {string<false>(p + 1), State::AfterValue};
    case '{':
        return beginObject(p);
    case '[':
        return beginArray(p);
    case 't':
        return {word(p, "rue", Pending::True), State::AfterValue};
    case 'f':
        return {word(p, "alse", Pending::False), State::AfterValue};
    case 'n':
        return {word(p, "ull", Pending::Null), State::AfterValue};
    default:
        break;
    }
    if (isDigit(*p) || *p == '-')
        return {number(p), State::AfterValue};
    return mayClose && *p == ']' ? endArray(p) : Stand{refuse(), State::Value};
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::beginArray(Place p)
{
    return {goOn(p + 1, m_sink.beginArray() && m_modes.push(Mode::Array)), State::ArrayOpen};
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::beginObject(Place p)
{
    return {goOn(p + 1, m_sink.beginObject() && m_modes.push(Mode::Object)), State::ObjectOpen};
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::endArray(Place p)
{
    // The pending value goes out before the brackets are matched.
    return {goOn(p + 1, flush() && m_modes.pop(Mode::Array) && m_sink.endArray()), State::AfterValue};
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::endObject(Place p)
{
    return {goOn(p + 1, flush() && m_modes.pop(Mode::Object) && m_sink.endObject()), State::AfterValue};
}

/// A comma and, as far as the text goes on, what it announces.
template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::comma(Place p)
{
    if (!flush() || m_modes.empty())
        return {refuse(), State::AfterValue};
    const bool isInObject = m_modes.top() == Mode::Object;
    p = skipWhite(p + 1);
    if (p == m_end)
        return {p, isInObject ? State::Key : State::Value};
    return isInObject ? member(p, false) : value(p, false);
}

template <class Sink>
inline bool JSONScanner<Sink>::flush()
{
    switch (std::exchange(m_pending, Pending::None))
    {
    case Pending::None:
        return true;
    case Pending::Integer:
        return m_sink.integer(m_text.take());
    case Pending::Real:
        return m_sink.real();
    case Pending::Null:
        return m_sink.null();
    case Pending::True:
        return m_sink.boolean(true);
    default:
        return m_sink.boolean(false);
    }
}

template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::skipDigits(Place p) const noexcept
{
    while (p != m_end && isDigit(*p))
        ++p;
    return p;
}

template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::number(Place p)
{
    const Place start = p;
    p += static_cast<std::ptrdiff_t>(*p == '-');
    if (p == m_end)
        return endWithin();
    if (!isDigit(*p))
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

/// From the point on.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::fraction(Place p)
{
    ++p;
    if (p == m_end)
        return endWithin();
    if (!isDigit(*p))
        return refuse();
    p = skipDigits(p);
    if (p != m_end && (*p | 0x20) == 'e')
        return exponent(p);
    m_pending = Pending::Real;
    return p;
}

/// From the letter on.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::exponent(Place p)
{
    ++p;
    if (p != m_end && (*p == '+' || *p == '-'))
        ++p;
    if (p == m_end)
        return endWithin();
    if (!isDigit(*p))
        return refuse();
    p = skipDigits(p);
    // Directly behind an exponent a comment is any odd byte: the number is not delivered before.
    if (p != m_end && (*p == '/' || *p == '#'))
        return refuse();
    m_pending = Pending::Real;
    return p;
}

/// From the first letter on, of which `rest` are the others.
template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::word(Place p, const char * rest, Pending pending)
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

/// A key or a string, from behind its first quote.
template <class Sink>
template <bool IsKey>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::string(Place p)
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
            return goOn(p + count + 1, deliver<IsKey>(m_text.take()));
        }
    }
    return longString<IsKey>(p);
}

template <class Sink>
template <bool IsKey>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::longString(Place p)
{
    p = ordinaryBytes(p);
    while (p != nullptr && *p != '"')
    {
        p = *p == '\\' ? escape(p + 1) : refuse();
        if (p != nullptr)
            p = ordinaryBytes(p);
    }
    return p == nullptr ? p : goOn(p + 1, deliver<IsKey>(m_text.take()));
}

template <class Sink>
template <bool IsKey>
inline bool JSONScanner<Sink>::deliver(std::string_view text)
{
    if constexpr (IsKey)
        return m_sink.key(text);
    else
        return m_sink.string(text);
}

/// Copies bytes up to a quote, a backslash or a control character, which is there.
template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::ordinaryBytes(Place p)
{
    while (left(p) >= StringBlock::size)
    {
        const StringBlock block(p);
        block.store(m_text.end());
        const unsigned int count = block.ordinaryAsciiBytes();
        m_text.advance(count);
        p += count;
        if (!m_text.restoreSlack())
            return refuse();
        if (count != StringBlock::size)
            return *p < 0x80 ? p : multibyteBytes(p);
    }
    return lastBytes(p, 0);
}

/// Does what `ordinaryBytes` does, and checks the form of UTF-8.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::multibyteBytes(Place p)
{
    unsigned int due = 0;
    while (left(p) >= StringBlock::size)
    {
        const StringBlock block(p);
        block.store(m_text.end());
        const unsigned int count = block.ordinaryBytes();
        if (!block.hasForm(count + 1, due))
            return refuse();
        m_text.advance(count);
        p += count;
        if (!m_text.restoreSlack())
            return refuse();
        if (count != StringBlock::size)
            return p;
    }
    return lastBytes(p, due);
}

/// Does what `multibyteBytes` does where fewer bytes are left than a block has.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::lastBytes(Place p, unsigned int due)
{
    const StringBlock block(p, left(p));
    block.store(m_text.end());
    const unsigned int count = block.ordinaryBytes();
    const bool isEnd = count == left(p);
    if (!block.hasForm(isEnd ? count : count + 1, due))
        return refuse();
    m_text.advance(count);
    if (!m_text.restoreSlack())
        return refuse();
    return isEnd ? endWithin() : p + count;
}

/// From behind the backslash on.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::escape(Place p)
{
    if (p == m_end)
        return endWithin();
    switch (*p)
    {
    case '"':
    case '\\':
    case '/':
        m_text.push(*p);
        break;
    case 'b':
        m_text.push('\b');
        break;
    case 'f':
        m_text.push('\f');
        break;
    case 'n':
        m_text.push('\n');
        break;
    case 'r':
        m_text.push('\r');
        break;
    case 't':
        m_text.push('\t');
        break;
    case 'u':
        return unicodeEscape(p + 1);
    default:
        return refuse();
    }
    return goOn(p + 1, m_text.restoreSlack());
}

/// Reads four hexadecimal digits.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::hexUnit(Place p, unsigned int & unit)
{
    unit = 0;
    for (int i = 0; i < 4; ++i, ++p)
    {
        if (p == m_end)
            return endWithin();
        const unsigned int digit = hexValue(*p);
        if (digit > 15)
            return refuse();
        unit = unit << 4 | digit;
    }
    return p;
}

/// Reads what stands behind `\u`: one unit, or the two units of a surrogate pair.
template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::unicodeEscape(Place p)
{
    unsigned int unit = 0;
    p = hexUnit(p, unit);
    if (p == nullptr)
        return p;
    if (unit >= 0xDC00 && unit <= 0xDFFF)
        return refuse();
    if (unit >= 0xD800 && unit <= 0xDBFF)
    {
        for (const unsigned char expected : {'\\', 'u'})
        {
            if (p == m_end)
                return endWithin();
            if (*p++ != expected)
                return refuse();
        }
        unsigned int low = 0;
        p = hexUnit(p, low);
        if (p == nullptr)
            return p;
        if (low < 0xDC00 || low > 0xDFFF)
            return refuse();
        unit = 0x10000 + ((unit & 0x3FFU) << 10) + (low & 0x3FFU);
    }
    m_text.advance(Vontal::encodeUtf8(unit, m_text.end()));
    return goOn(p, m_text.restoreSlack());
}

template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::skipWhite(Place p) const noexcept
{
    // Mostly there is none, or one blank.
    if (p == m_end || *p > ' ' || !isWhite(*p))
        return p;
    ++p;
    return p == m_end || *p > ' ' ? p : skipWhiteRun(p);
}

template <class Sink>
typename JSONScanner<Sink>::Place JSONScanner<Sink>::skipWhiteRun(Place p) const noexcept
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

} // namespace qvjson
