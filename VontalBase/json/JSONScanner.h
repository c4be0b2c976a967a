/// @internal
/// @file
/// The scanner: JSON text in, events out.
///
/// It accepts just what a table of states by classes of byte would. It keeps no tree and does not recurse.
#pragma once

#include "VontalBase/json/JSONTokens.h"
#include "VontalBase/json/ModeStack.h"
#include "VontalBase/text/numberscan.h"

#include <string_view>

namespace qvjson
{

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
        return m_tokens.open() && m_modes.open();
    }

    /// Scans the whole text. @return false if it was refused, by the scanner or by the sink.
    bool scan(std::string_view text);

private:
    using Place = JSONTokens::Place;

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
    Place key(Place p);
    Place string(Place p);
    bool flush();

    Place skipWhite(Place p) const noexcept
    {
        return m_tokens.skipWhite(p);
    }
    bool isEnd(Place p) const noexcept
    {
        return m_tokens.isEnd(p);
    }
    Place refuse() noexcept
    {
        return m_tokens.refuse();
    }
    Place goOn(Place p, bool isGood) noexcept
    {
        return m_tokens.goOn(p, isGood);
    }

    Sink & m_sink;
    JSONTokens m_tokens;
    ModeStack m_modes;
};

template <class Sink>
bool JSONScanner<Sink>::scan(std::string_view text)
{
    Stand stand{m_tokens.begin(text), State::Top};
    while (stand.p != nullptr)
    {
        stand.p = skipWhite(stand.p);
        if (isEnd(stand.p))
            return true;
        stand = next(stand);
    }
    return !m_tokens.isRefused();
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
    p = key(p + 1);
    if (p == nullptr)
        return {p, State::Colon};
    p = skipWhite(p);
    return isEnd(p) ? Stand{p, State::Colon} : colon(p);
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::colon(Place p)
{
    if (*p != ':')
        return {refuse(), State::Colon};
    p = skipWhite(p + 1);
    return isEnd(p) ? Stand{p, State::Value} : value(p, false);
}

template <class Sink>
inline typename JSONScanner<Sink>::Stand JSONScanner<Sink>::value(Place p, bool mayClose)
{
    switch (*p)
    {
    case '"':
        return {string(p + 1), State::AfterValue};
    case '{':
        return beginObject(p);
    case '[':
        return beginArray(p);
    case 't':
        return {m_tokens.word(p, "rue", Pending::True), State::AfterValue};
    case 'f':
        return {m_tokens.word(p, "alse", Pending::False), State::AfterValue};
    case 'n':
        return {m_tokens.word(p, "ull", Pending::Null), State::AfterValue};
    default:
        break;
    }
    if (Vontal::isDecimalDigit(*p) || *p == '-')
        return {m_tokens.number(p), State::AfterValue};
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
    if (isEnd(p))
        return {p, isInObject ? State::Key : State::Value};
    return isInObject ? member(p, false) : value(p, false);
}

template <class Sink>
inline bool JSONScanner<Sink>::flush()
{
    switch (m_tokens.takePending())
    {
    case Pending::None:
        return true;
    case Pending::Integer:
        return m_sink.integer(m_tokens.takeText());
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

/// From behind its first quote on, like a string.
template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::key(Place p)
{
    p = m_tokens.string(p);
    return p == nullptr ? p : goOn(p, m_sink.key(m_tokens.takeText()));
}

template <class Sink>
inline typename JSONScanner<Sink>::Place JSONScanner<Sink>::string(Place p)
{
    p = m_tokens.string(p);
    return p == nullptr ? p : goOn(p, m_sink.string(m_tokens.takeText()));
}

} // namespace qvjson
