#include "VontalBase/json/JSONTreeParser.h"

#include "VontalBase/json/TreeBuilder.h"

namespace qvjson
{

JSONTreeParser::JSONTreeParser() : m_builder(std::make_unique<TreeBuilder>())
{
}

JSONTreeParser::~JSONTreeParser() = default;

JSONParserAcceptor * JSONTreeParser::parserBeginObject()
{
    return m_builder->beginObject() ? this : nullptr;
}

bool JSONTreeParser::parserEndChildObject(JSONParserAcceptor *)
{
    return true;
}

bool JSONTreeParser::parserEndObject()
{
    return m_builder->endObject();
}

bool JSONTreeParser::parseKey(Vontal::u8string const & key)
{
    return m_builder->key(key);
}

bool JSONTreeParser::parseInt(char const * text, unsigned int length)
{
    return m_builder->integer({text, length});
}

bool JSONTreeParser::parseString(char const * text, unsigned int length)
{
    return m_builder->string({text, length});
}

bool JSONTreeParser::parseBool(bool value)
{
    return m_builder->boolean(value);
}

bool JSONTreeParser::parseNull()
{
    return m_builder->null();
}

bool JSONTreeParser::parserBeginArray()
{
    return m_builder->beginArray();
}

bool JSONTreeParser::parserEndArray()
{
    return m_builder->endArray();
}

const qvbase::Reference<Item> & JSONTreeParser::root()
{
    return m_builder->root();
}

} // namespace qvjson
