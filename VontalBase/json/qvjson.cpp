// Reading JSON text, and every failure that names this file.

#include "VontalBase/json/JSONScanner.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/JSONTreeParser.h"
#include "VontalBase/json/jsonparse.h"

#include <limits>
#include <source_location>
#include <string_view>
#include <vector>

namespace qvjson
{

namespace
{

constexpr const char * sourceName = "qvjson";

/// Adds an entry of the calling line to the record.
void addFailure(VontalException & exception, const Vontal::u8string & text,
    const std::source_location position = std::source_location::current())
{
    exception.add(sourceName, static_cast<int>(position.line()), text);
}

/// Adds an entry of the calling line to the record, whose text ends with what was refused.
bool refuse(VontalException & exception, std::string_view text, std::string_view refused = {},
    const std::source_location position = std::source_location::current())
{
    Vontal::u8string whole;
    whole.append(text).append(refused);
    addFailure(exception, whole, position);
    return false;
}

/// Whether the interface can tell the length of a text of this size.
constexpr bool isTellable(std::size_t size) noexcept
{
    return size <= std::numeric_limits<unsigned int>::max();
}

/// Turns the events of a scan into calls on a stack of acceptors.
class Dispatcher
{
public:
    Dispatcher(JSONParserAcceptor * acceptor, VontalException & exception)
        : m_acceptors(1, acceptor), m_exception(exception)
    {
    }

    bool beginArray()
    {
        return hasAcceptor() &&
               (top().parserBeginArray() || refuse(m_exception, "Failed to begin parse array"));
    }

    bool beginObject()
    {
        if (!hasAcceptor())
            return false;
        JSONParserAcceptor * const object = top().parserBeginObject();
        if (object == nullptr)
            return refuse(m_exception, "Failed to create new object");
        m_acceptors.push_back(object);
        return true;
    }

    bool endArray()
    {
        return hasAcceptor() &&
               (top().parserEndArray() || refuse(m_exception, "Failed to finalize parsed array"));
    }

    bool endObject()
    {
        if (!hasAcceptor())
            return false;
        JSONParserAcceptor & object = top();
        if (!object.parserEndObject())
            return refuse(m_exception, "Failed to finalize object");
        m_acceptors.pop_back();
        if (m_acceptors.empty() || top().parserEndChildObject(&object))
            return true;
        return refuse(m_exception, "Failed to finalize child object");
    }

    bool integer(const char * text, std::size_t size)
    {
        if (!hasAcceptor())
            return false;
        if (isTellable(size) && top().parseInt(text, static_cast<unsigned int>(size)))
            return true;
        return refuse(m_exception, "Failed to parse int: ", {text, size});
    }

    /// Real numbers have no operation of the acceptor.
    bool real()
    {
        return hasAcceptor() && refuse(m_exception, "Unexpected parser state");
    }

    bool string(const char * text, std::size_t size)
    {
        if (!hasAcceptor())
            return false;
        if (isTellable(size) && top().parseString(text, static_cast<unsigned int>(size)))
            return true;
        return refuse(m_exception, "Failed to parse string: ", {text, size});
    }

    bool key(const char * text, std::size_t size)
    {
        if (!hasAcceptor())
            return false;
        m_key.assign(text, size);
        return top().parseKey(m_key) || refuse(m_exception, "Failed to parse key: ", m_key);
    }

    bool boolean(bool value)
    {
        if (!hasAcceptor())
            return false;
        return top().parseBool(value) ||
               refuse(m_exception, value ? "Failed to parse bool" : "Failed to parse false");
    }

    bool null()
    {
        return hasAcceptor() && (top().parseNull() || refuse(m_exception, "Failed to parse NULL"));
    }

private:
    JSONParserAcceptor & top() noexcept
    {
        return *m_acceptors.back();
    }

    bool hasAcceptor()
    {
        if (m_acceptors.empty())
            return refuse(m_exception, "No acceptor");
        return m_acceptors.back() != nullptr || refuse(m_exception, "Empty acceptor");
    }

    std::vector<JSONParserAcceptor *> m_acceptors;
    Vontal::u8string m_key;
    VontalException & m_exception;
};

} // namespace

bool jsonParse(
    char const * data, std::uint64_t size, JSONParserAcceptor * acceptor, VontalException & exception)
{
    Dispatcher dispatcher(acceptor, exception);
    JSONScanner<Dispatcher> scanner(dispatcher);
    if (!scanner.open())
        return refuse(exception, "Failed to initialize parser");
    return scanner.scan(data, size) || refuse(exception, "Failed to parse JSON");
}

bool jsonParse(Vontal::u8string const & text, JSONParserAcceptor * acceptor, VontalException & exception)
{
    return jsonParse(text.data(), text.size(), acceptor, exception);
}

bool jsonParse(Vontal::u8string const & text, qvbase::Reference<Item> & out, VontalException & exception)
{
    JSONTreeParser parser;
    if (!jsonParse(text, &parser, exception))
        return refuse(exception, "Failed to parse data");
    if (parser.root() == nullptr)
        return refuse(exception, "JSON without single root object");
    out = parser.root();
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
