// Reading JSON text, and every failure that names this file.

#include "VontalBase/json/JSONScanner.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/TreeBuilder.h"
#include "VontalBase/json/jsonparse.h"

#include <limits>
#include <source_location>
#include <string_view>
#include <vector>

namespace qvjson
{

namespace
{

/// Adds an entry of the calling line to the record. Returns false, for the caller to return.
bool refuse(VontalException & exception, std::string_view text, std::string_view refused = {},
    const std::source_location position = std::source_location::current())
{
    Vontal::u8string whole;
    whole.append(text).append(refused);
    exception.add("qvjson", static_cast<int>(position.line()), whole);
    return false;
}

/// Whether the interfaces of acceptors and nodes can tell the length of a text.
constexpr bool isTellable(std::string_view text) noexcept
{
    return text.size() <= std::numeric_limits<unsigned int>::max();
}

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
        m_key.assign(text);
        return top().parseKey(m_key);
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
    Vontal::u8string m_key;
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

/// Turns the events of a scan into calls of a receiver, and refusals into entries of the record.
template <class Receiver>
class Dispatcher
{
public:
    Dispatcher(Receiver & receiver, VontalException & exception)
        : m_receiver(receiver), m_exception(exception)
    {
    }

    bool beginArray()
    {
        return isReady() && (m_receiver.beginArray() || refuse(m_exception, "Failed to begin parse array"));
    }

    bool beginObject()
    {
        return isReady() && (m_receiver.beginObject() || refuse(m_exception, "Failed to create new object"));
    }

    bool endArray()
    {
        return isReady() && (m_receiver.endArray() || refuse(m_exception, "Failed to finalize parsed array"));
    }

    bool endObject()
    {
        if (!isReady())
            return false;
        if (!m_receiver.endObject())
            return refuse(m_exception, "Failed to finalize object");
        return m_receiver.endChildObject() || refuse(m_exception, "Failed to finalize child object");
    }

    bool integer(std::string_view digits)
    {
        return isReady() &&
               (m_receiver.integer(digits) || refuse(m_exception, "Failed to parse int: ", digits));
    }

    /// Nothing receives real numbers.
    bool real()
    {
        return isReady() && refuse(m_exception, "Unexpected parser state");
    }

    bool string(std::string_view text)
    {
        return isReady() &&
               (m_receiver.string(text) || refuse(m_exception, "Failed to parse string: ", text));
    }

    bool key(std::string_view text)
    {
        return isReady() && (m_receiver.key(text) || refuse(m_exception, "Failed to parse key: ", text));
    }

    bool boolean(bool value)
    {
        if (!isReady())
            return false;
        return m_receiver.boolean(value) ||
               refuse(m_exception, value ? "Failed to parse bool" : "Failed to parse false");
    }

    bool null()
    {
        return isReady() && (m_receiver.null() || refuse(m_exception, "Failed to parse NULL"));
    }

private:
    bool isReady()
    {
        if (m_receiver.isEmpty())
            return refuse(m_exception, "No acceptor");
        return m_receiver.hasTop() || refuse(m_exception, "Empty acceptor");
    }

    Receiver & m_receiver;
    VontalException & m_exception;
};

template <class Receiver>
bool parse(std::string_view text, Receiver & receiver, VontalException & exception)
{
    Dispatcher<Receiver> dispatcher(receiver, exception);
    JSONScanner<Dispatcher<Receiver>> scanner(dispatcher);
    if (!scanner.open())
        return refuse(exception, "Failed to initialize parser");
    return scanner.scan(text) || refuse(exception, "Failed to parse JSON");
}

} // namespace

bool jsonParse(
    char const * data, std::uint64_t size, JSONParserAcceptor * acceptor, VontalException & exception)
{
    AcceptorStack acceptors(acceptor);
    return parse({data, size}, acceptors, exception);
}

bool jsonParse(Vontal::u8string const & text, JSONParserAcceptor * acceptor, VontalException & exception)
{
    return jsonParse(text.data(), text.size(), acceptor, exception);
}

bool jsonParse(Vontal::u8string const & text, qvbase::Reference<Item> & out, VontalException & exception)
{
    TreeReceiver tree;
    if (!parse(text, tree, exception))
        return refuse(exception, "Failed to parse data");
    if (tree.root().get() == nullptr)
        return refuse(exception, "JSON without single root object");
    out = tree.root();
    return true;
}

bool JSONSerializable::fromJson(char const * data, std::uint64_t size, VontalException & exception)
{
    jsonFieldsDeclare();
    if (!jsonParse(data, size, this, exception))
        return refuse(exception, "Failed to restore from JSON");
    return onParseEnd() || refuse(exception, "Failed to finalized parsed JSON object");
}

bool JSONSerializable::fromJson(Vontal::u8string const & text, VontalException & exception)
{
    return fromJson(text.data(), text.size(), exception);
}

} // namespace qvjson
