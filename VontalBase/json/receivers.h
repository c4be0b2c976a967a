/// @internal
/// @file
/// What the events of a scan go to.
#pragma once

#include "VontalBase/json/JSONParserAcceptor.h"
#include "VontalBase/json/TreeBuilder.h"
#include "VontalBase/text/shortbytes.h"
#include "VontalBase/text/u8string.h"

#include <array>
#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

namespace qvjson
{

/// Whether the interfaces of acceptors and nodes can tell the length of a text.
constexpr bool isTellable(std::string_view text) noexcept
{
    return text.size() <= std::numeric_limits<unsigned int>::max();
}

/// Makes keys into strings. There is one for each short length, because a string is quicker to overwrite than
/// to assign to.
class KeyString
{
public:
    KeyString()
    {
        for (std::size_t length = 0; length < m_short.size(); ++length)
            m_short[length].resize(length);
    }

    const Vontal::u8string & of(std::string_view key)
    {
        if (key.size() >= m_short.size())
        {
            m_long.assign(key);
            return m_long;
        }
        Vontal::u8string & text = m_short[key.size()];
        Vontal::copyShort(text.data(), key.data(), key.size());
        return text;
    }

private:
    std::array<Vontal::u8string, 16> m_short;
    Vontal::u8string m_long;
};

/// Gives events to a stack of acceptors.
class AcceptorStack
{
public:
    explicit AcceptorStack(JSONParserAcceptor * acceptor) : m_acceptors(1, acceptor)
    {
    }

    bool isEmpty() const noexcept
    {
        return m_acceptors.empty();
    }
    bool hasTop() const noexcept
    {
        return m_acceptors.back() != nullptr;
    }
    bool beginArray()
    {
        return top().parserBeginArray();
    }
    bool beginObject()
    {
        JSONParserAcceptor * const object = top().parserBeginObject();
        if (object == nullptr)
            return false;
        m_acceptors.push_back(object);
        return true;
    }
    bool endArray()
    {
        return top().parserEndArray();
    }
    bool endObject()
    {
        return top().parserEndObject();
    }
    /// Takes the object that has ended off, and tells the acceptor below.
    bool endChildObject()
    {
        JSONParserAcceptor * const child = m_acceptors.back();
        m_acceptors.pop_back();
        return m_acceptors.empty() || top().parserEndChildObject(child);
    }
    bool integer(std::string_view digits)
    {
        return isTellable(digits) && top().parseInt(digits.data(), static_cast<unsigned int>(digits.size()));
    }
    bool string(std::string_view text)
    {
        return isTellable(text) && top().parseString(text.data(), static_cast<unsigned int>(text.size()));
    }
    bool key(std::string_view text)
    {
        return top().parseKey(m_keys.of(text));
    }
    bool boolean(bool value)
    {
        return top().parseBool(value);
    }
    bool null()
    {
        return top().parseNull();
    }

private:
    JSONParserAcceptor & top() noexcept
    {
        return *m_acceptors.back();
    }

    std::vector<JSONParserAcceptor *> m_acceptors;
    KeyString m_keys;
};

/// Gives events to the builder of a tree, as if it were the one acceptor.
class TreeReceiver : public TreeBuilder
{
public:
    static constexpr bool isEmpty() noexcept
    {
        return false;
    }
    static constexpr bool hasTop() noexcept
    {
        return true;
    }
    static constexpr bool endChildObject() noexcept
    {
        return true;
    }
    bool integer(std::string_view digits)
    {
        return isTellable(digits) && TreeBuilder::integer(digits);
    }
    bool string(std::string_view text)
    {
        return isTellable(text) && TreeBuilder::string(text);
    }
};

} // namespace qvjson
