#include "VontalBase/json/JSONTreeParser.h"

#include "VontalBase/json/TreeBuilder.h"

namespace qvjson
{

JSONTreeParser::JSONTreeParser() : m_builder(std::make_unique<TreeBuilder>())
{
}

JSONTreeParser::~JSONTreeParser() = default;

/// Gives an event to the builder, which takes no further one if memory runs short.
template <class Event>
bool JSONTreeParser::take(Event event)
{
    try
    {
        return event(*m_builder);
    }
    catch (...)
    {
        m_builder->refuseFromNowOn();
        throw;
    }
}

JSONParserAcceptor * JSONTreeParser::parserBeginObject()
{
    return take([](TreeBuilder & builder) { return builder.beginObject(); }) ? this : nullptr;
}

bool JSONTreeParser::parserEndChildObject(JSONParserAcceptor *)
{
    return true;
}

bool JSONTreeParser::parserEndObject()
{
    return take([](TreeBuilder & builder) { return builder.endObject(); });
}

bool JSONTreeParser::parseKey(Vontal::u8string const & key)
{
    return take([&](TreeBuilder & builder) { return builder.key(key); });
}

bool JSONTreeParser::parseInt(char const * text, unsigned int length)
{
    return take([=](TreeBuilder & builder) { return builder.integer({text, length}); });
}

bool JSONTreeParser::parseString(char const * text, unsigned int length)
{
    return take([=](TreeBuilder & builder) { return builder.string({text, length}); });
}

bool JSONTreeParser::parseBool(bool value)
{
    return take([=](TreeBuilder & builder) { return builder.boolean(value); });
}

bool JSONTreeParser::parseNull()
{
    return take([](TreeBuilder & builder) { return builder.null(); });
}

bool JSONTreeParser::parserBeginArray()
{
    return take([](TreeBuilder & builder) { return builder.beginArray(); });
}

bool JSONTreeParser::parserEndArray()
{
    return take([](TreeBuilder & builder) { return builder.endArray(); });
}

const qvbase::Reference<Item> & JSONTreeParser::root()
{
    return m_builder->root();
}

} // namespace qvjson
