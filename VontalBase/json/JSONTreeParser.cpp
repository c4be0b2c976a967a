#include "VontalBase/json/JSONTreeParser.h"

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueNull.h"
#include "VontalBase/json/ValueString.h"
#include "VontalBase/json/containers.h"

namespace qvjson
{

namespace
{

template <class Node>
using NodeReference = qvbase::Reference<qvbase::ReferencedImpl<Node>>;

template <class Node>
NodeReference<Node> makeNode()
{
    return new qvbase::ReferencedImpl<Node>;
}

} // namespace

JSONTreeParser::~JSONTreeParser()
{
    m_open.clear();
}

bool JSONTreeParser::attach(Item * item)
{
    if (m_root == nullptr)
    {
        m_root = item;
        return true;
    }
    if (m_open.empty())
        return false;
    Item & container = *m_open.back();
    if (container.getType() == TypeObject)
        return static_cast<Object &>(container).add(item);
    static_cast<Array &>(container).add(item);
    return true;
}

JSONParserAcceptor * JSONTreeParser::parserBeginObject()
{
    const NodeReference<Object> object = makeNode<Object>();
    if (!attach(object))
        return nullptr;
    m_open.emplace_back(object);
    return this;
}

bool JSONTreeParser::parserBeginArray()
{
    const NodeReference<Array> array = makeNode<Array>();
    if (!attach(array))
        return false;
    m_open.emplace_back(array);
    return true;
}

bool JSONTreeParser::parserEndChildObject(JSONParserAcceptor *)
{
    return true;
}

bool JSONTreeParser::endContainer(Type type)
{
    if (m_open.empty() || m_open.back()->getType() != type)
        return false;
    m_open.pop_back();
    return true;
}

bool JSONTreeParser::parserEndObject()
{
    return endContainer(TypeObject);
}

bool JSONTreeParser::parserEndArray()
{
    return endContainer(TypeArray);
}

bool JSONTreeParser::parseKey(Vontal::u8string const & key)
{
    return takeKey(key);
}

bool JSONTreeParser::takeKey(std::string_view key)
{
    if (m_open.empty() || m_open.back()->getType() != TypeObject)
        return false;
    return TreeAccess::setPendingKey(static_cast<Object &>(*m_open.back()), key);
}

bool JSONTreeParser::parseInt(char const * text, unsigned int length)
{
    const NodeReference<ValueInt> value = makeNode<ValueInt>();
    return value->parseInt(text, length) && attach(value);
}

bool JSONTreeParser::parseString(char const * text, unsigned int length)
{
    const NodeReference<ValueString> value = makeNode<ValueString>();
    value->set(text, length);
    return attach(value);
}

bool JSONTreeParser::parseBool(bool isTrue)
{
    const NodeReference<ValueBool> value = makeNode<ValueBool>();
    value->set(isTrue);
    return attach(value);
}

bool JSONTreeParser::parseNull()
{
    return attach(makeNode<ValueNull>());
}

} // namespace qvjson
