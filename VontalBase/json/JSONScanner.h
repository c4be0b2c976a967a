/// @internal
/// @file
/// The scanner: JSON text in, events out.
///
/// It accepts just what a table of states by classes of byte would, and skips runs of white space and of
/// ordinary string bytes sixteen at a time. It keeps no tree and does not recurse.
#pragma once

#include "VontalBase/json/ModeStack.h"
#include "VontalBase/json/StringBlock.h"
#include "VontalBase/json/TextBuffer.h"
#include "VontalBase/text/utf.h"

#include <bit>
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
    /// Where the scan stands between two tokens, or how it ended.
    enum class State : unsigned char
    {
        Refused,
        EndOfText,
        Top,
        AfterValue,
        ObjectOpen,
        Key,
        Colon,
        Value,
        ArrayOpen
    };

    /// How a piece of a token came out.
    enum class Piece : unsigned char
    {
        Whole,
        Refused,
        EndOfText
    };

    State next(State state);
    State top();
    State afterValue();
    State key(bool mayClose);
    State colon();
    State value(bool mayClose);
    State beginArray();
    State beginObject();
    State endArray();
    State endObject();
    State comma();
    State number();
    State fraction();
    State exponent();
    State word(const char * rest, Pending pending);
    State string(bool isKey);
    Piece ordinaryBytes();
    Piece escape();
    Piece unicodeEscape();
    Piece hexUnit(unsigned int & unit);
    Piece digits();
    bool flush();
    void skipWhite() noexcept;

    bool atEnd() const noexcept
    {
        return m_p == m_end;
    }
    void push(unsigned int byte) noexcept
    {
        *m_text.end() = static_cast<char>(byte);
        m_text.advance(1);
    }
    /// The text of an event, with a zero byte behind it, valid until the next byte is written.
    std::string_view takeText() noexcept
    {
        m_text.terminate();
        const std::string_view text(m_text.data(), m_text.size());
        m_text.clear();
        return text;
    }
    Piece madeRoom() noexcept
    {
        return m_text.restoreSlack() ? Piece::Whole : Piece::Refused;
    }
    static State ended(Piece piece) noexcept
    {
        return piece == Piece::EndOfText ? State::EndOfText : State::Refused;
    }

    Sink & m_sink;
    const unsigned char * m_p = nullptr;
    const unsigned char * m_end = nullptr;
    TextBuffer m_text;
    ModeStack m_modes;
    Pending m_pending = Pending::None;
};

template <class Sink>
bool JSONScanner<Sink>::scan(std::string_view text)
{
    m_p = reinterpret_cast<const unsigned char *>(text.data());
    m_end = m_p + text.size();
    State state = State::Top;
    while (state != State::Refused && state != State::EndOfText)
    {
        skipWhite();
        if (atEnd())
            return true;
        state = next(state);
    }
    return state == State::EndOfText;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::next(State state)
{
    switch (state)
    {
    case State::Top:
        return top();
    case State::ObjectOpen:
        return key(true);
    case State::Key:
        return key(false);
    case State::Colon:
        return colon();
    case State::Value:
        return value(false);
    case State::ArrayOpen:
        return value(true);
    default:
        return afterValue();
    }
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::top()
{
    switch (*m_p)
    {
    case '{':
        return beginObject();
    case '[':
        return beginArray();
    default:
        return State::Refused;
    }
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::afterValue()
{
    switch (*m_p)
    {
    case ',':
        return comma();
    case '}':
        return endObject();
    case ']':
        return endArray();
    case '/':
    case '#':
        // A comment is refused, but only after the value in front of it has been delivered.
        flush();
        return State::Refused;
    default:
        return State::Refused;
    }
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::key(bool mayClose)
{
    if (*m_p == '"')
        return string(true);
    return mayClose && *m_p == '}' ? endObject() : State::Refused;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::colon()
{
    if (*m_p != ':')
        return State::Refused;
    ++m_p;
    return State::Value;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::value(bool mayClose)
{
    switch (*m_p)
    {
    case '"':
        return string(false);
    case '{':
        return beginObject();
    case '[':
        return beginArray();
    case ']':
        return mayClose ? endArray() : State::Refused;
    case 't':
        return word("rue", Pending::True);
    case 'f':
        return word("alse", Pending::False);
    case 'n':
        return word("ull", Pending::Null);
    default:
        return *m_p == '-' || isDigit(*m_p) ? number() : State::Refused;
    }
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::beginArray()
{
    ++m_p;
    return m_sink.beginArray() && m_modes.push(Mode::Array) ? State::ArrayOpen : State::Refused;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::beginObject()
{
    ++m_p;
    return m_sink.beginObject() && m_modes.push(Mode::Object) ? State::ObjectOpen : State::Refused;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::endArray()
{
    ++m_p;
    // The pending value goes out before the brackets are matched.
    return flush() && m_modes.pop(Mode::Array) && m_sink.endArray() ? State::AfterValue : State::Refused;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::endObject()
{
    ++m_p;
    return flush() && m_modes.pop(Mode::Object) && m_sink.endObject() ? State::AfterValue : State::Refused;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::comma()
{
    ++m_p;
    if (!flush() || m_modes.empty())
        return State::Refused;
    return m_modes.top() == Mode::Object ? State::Key : State::Value;
}

template <class Sink>
inline bool JSONScanner<Sink>::flush()
{
    const Pending pending = std::exchange(m_pending, Pending::None);
    if (pending == Pending::None)
        return true;
    const std::string_view text = takeText();
    switch (pending)
    {
    case Pending::Integer:
        return m_sink.integer(text);
    case Pending::Real:
        return m_sink.real();
    case Pending::Null:
        return m_sink.null();
    default:
        return m_sink.boolean(pending == Pending::True);
    }
}

template <class Sink>
inline typename JSONScanner<Sink>::Piece JSONScanner<Sink>::digits()
{
    while (!atEnd() && isDigit(*m_p))
    {
        push(*m_p++);
        if (!m_text.restoreSlack())
            return Piece::Refused;
    }
    return atEnd() ? Piece::EndOfText : Piece::Whole;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::number()
{
    m_pending = Pending::Integer;
    if (*m_p == '-')
    {
        push(*m_p++);
        if (atEnd())
            return State::EndOfText;
        if (!isDigit(*m_p))
            return State::Refused;
    }
    if (*m_p == '0')
    {
        push(*m_p++);
        // A digit or an exponent behind a zero is refused by what comes after a value.
        return !atEnd() && *m_p == '.' ? fraction() : State::AfterValue;
    }
    const Piece whole = digits();
    if (whole != Piece::Whole)
        return ended(whole);
    if (*m_p == '.')
        return fraction();
    return (*m_p | 0x20) == 'e' ? exponent() : State::AfterValue;
}

template <class Sink>
typename JSONScanner<Sink>::State JSONScanner<Sink>::fraction()
{
    m_pending = Pending::Real;
    push(*m_p++);
    if (atEnd())
        return State::EndOfText;
    if (!isDigit(*m_p))
        return State::Refused;
    const Piece decimals = digits();
    if (decimals != Piece::Whole)
        return ended(decimals);
    return (*m_p | 0x20) == 'e' ? exponent() : State::AfterValue;
}

template <class Sink>
typename JSONScanner<Sink>::State JSONScanner<Sink>::exponent()
{
    m_pending = Pending::Real;
    push(*m_p++);
    if (!atEnd() && (*m_p == '+' || *m_p == '-'))
        push(*m_p++);
    if (atEnd())
        return State::EndOfText;
    if (!isDigit(*m_p))
        return State::Refused;
    const Piece power = digits();
    if (power != Piece::Whole)
        return ended(power);
    // Directly behind an exponent a comment is any odd byte: the number is not delivered before.
    return *m_p == '/' || *m_p == '#' ? State::Refused : State::AfterValue;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::word(const char * rest, Pending pending)
{
    ++m_p;
    for (; *rest != '\0'; ++rest, ++m_p)
    {
        if (atEnd())
            return State::EndOfText;
        if (*m_p != static_cast<unsigned char>(*rest))
            return State::Refused;
    }
    m_pending = pending;
    return State::AfterValue;
}

template <class Sink>
inline typename JSONScanner<Sink>::State JSONScanner<Sink>::string(bool isKey)
{
    ++m_p;
    for (;;)
    {
        Piece piece = ordinaryBytes();
        if (piece == Piece::Whole)
        {
            if (*m_p == '"')
                break;
            if (*m_p == '\\')
                piece = escape();
            else
                piece = Piece::Refused;
        }
        if (piece != Piece::Whole)
            return ended(piece);
    }
    ++m_p;
    const std::string_view text = takeText();
    if (isKey)
        return m_sink.key(text) ? State::Colon : State::Refused;
    return m_sink.string(text) ? State::AfterValue : State::Refused;
}

/// Copies bytes up to a quote, a backslash or a control character, and checks the form of their UTF-8.
template <class Sink>
inline typename JSONScanner<Sink>::Piece JSONScanner<Sink>::ordinaryBytes()
{
    unsigned int due = 0;
    for (;;)
    {
        const std::size_t left = static_cast<std::size_t>(m_end - m_p);
        const StringBlock block(m_p, left);
        block.store(m_text.end());
        const unsigned int count = block.ordinaryBytes();
        const bool isWhole = count == left;
        if (!block.hasForm(isWhole ? count : count + 1, due))
            return Piece::Refused;
        m_text.advance(count);
        m_p += count;
        if (!m_text.restoreSlack())
            return Piece::Refused;
        if (isWhole)
            return Piece::EndOfText;
        if (count != StringBlock::size)
            return Piece::Whole;
    }
}

template <class Sink>
typename JSONScanner<Sink>::Piece JSONScanner<Sink>::escape()
{
    ++m_p;
    if (atEnd())
        return Piece::EndOfText;
    const unsigned char letter = *m_p++;
    switch (letter)
    {
    case '"':
    case '\\':
    case '/':
        push(letter);
        break;
    case 'b':
        push('\b');
        break;
    case 'f':
        push('\f');
        break;
    case 'n':
        push('\n');
        break;
    case 'r':
        push('\r');
        break;
    case 't':
        push('\t');
        break;
    case 'u':
        return unicodeEscape();
    default:
        return Piece::Refused;
    }
    return madeRoom();
}

/// Reads four hexadecimal digits.
template <class Sink>
typename JSONScanner<Sink>::Piece JSONScanner<Sink>::hexUnit(unsigned int & unit)
{
    unit = 0;
    for (int i = 0; i < 4; ++i)
    {
        if (atEnd())
            return Piece::EndOfText;
        const unsigned int digit = hexValue(*m_p);
        if (digit > 15)
            return Piece::Refused;
        unit = unit << 4 | digit;
        ++m_p;
    }
    return Piece::Whole;
}

/// Reads what stands behind `\u`: one unit, or the two units of a surrogate pair.
template <class Sink>
typename JSONScanner<Sink>::Piece JSONScanner<Sink>::unicodeEscape()
{
    unsigned int unit = 0;
    Piece piece = hexUnit(unit);
    if (piece != Piece::Whole)
        return piece;
    if (unit >= 0xDC00 && unit <= 0xDFFF)
        return Piece::Refused;
    if (unit >= 0xD800 && unit <= 0xDBFF)
    {
        for (const unsigned char expected : {'\\', 'u'})
        {
            if (atEnd())
                return Piece::EndOfText;
            if (*m_p++ != expected)
                return Piece::Refused;
        }
        unsigned int low = 0;
        piece = hexUnit(low);
        if (piece != Piece::Whole)
            return piece;
        if (low < 0xDC00 || low > 0xDFFF)
            return Piece::Refused;
        unit = 0x10000 + ((unit & 0x3FFU) << 10) + (low & 0x3FFU);
    }
    m_text.advance(Vontal::encodeUtf8(unit, m_text.end()));
    return madeRoom();
}

template <class Sink>
inline void JSONScanner<Sink>::skipWhite() noexcept
{
    if (atEnd() || !isWhite(*m_p))
        return;
    ++m_p;
    const auto isEvery = [](__m128i bytes, char byte)
    {
        return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
    };
    while (m_end - m_p >= 16)
    {
        if (!isWhite(*m_p))
            return;
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(m_p));
        const __m128i white = _mm_or_si128(_mm_or_si128(isEvery(bytes, ' '), isEvery(bytes, '\n')),
            _mm_or_si128(isEvery(bytes, '\t'), isEvery(bytes, '\r')));
        const unsigned int others = ~static_cast<unsigned int>(_mm_movemask_epi8(white)) & 0xFFFFU;
        if (others != 0)
        {
            m_p += std::countr_zero(others);
            return;
        }
        m_p += 16;
    }
    while (!atEnd() && isWhite(*m_p))
        ++m_p;
}

} // namespace qvjson
