// Reading JSON text, and every failure that names this file.

#include "VontalBase/json/JSONScanner.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/jsonparse.h"
#include "VontalBase/json/receivers.h"

#include <cstdint>
#include <source_location>
#include <string_view>

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
