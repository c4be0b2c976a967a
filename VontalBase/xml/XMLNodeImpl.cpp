#include "VontalBase/xml/XMLNodeImpl.h"

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/DirectXml.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/platform/comquery.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/text/numbers.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/convert2double.h"
#include "VontalBase/xml/XMLDocPtr.h"
#include "VontalBase/xml/comtext.h"
#include "VontalBase/xml/elements.h"
#include "VontalBase/xml/nodetables.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace qvxml
{

namespace
{

void assignUtf8(Vontal::u8string & destination, std::wstring_view text)
{
    Vontal::c_u16u8(destination, std::wstring(text));
}

bool isOfType(IXMLDOMNode & node, DOMNodeType wanted, bool & is)
{
    DOMNodeType type = NODE_INVALID;
    if (FAILED(node.get_nodeType(&type)))
        return false;
    is = type == wanted;
    return true;
}

/// Whether a text holds half a pair of UTF-16, as three bytes that are no UTF-8.
bool hasHalfPair(std::string_view text)
{
    for (std::size_t at = text.find('\xED'); at != std::string_view::npos; at = text.find('\xED', at + 1))
    {
        if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0)
            return true;
    }
    return false;
}

bool isAscii(std::string_view text)
{
    return std::all_of(
        text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

/// Takes over a reference.
ElementReference adopt(IXMLDOMElement * element)
{
    ElementReference held;
    *held.receive() = element;
    return held;
}

/// The first element among a node and its next siblings, with a reference; null also where the service
/// refuses.
ElementReference elementFrom(NodeReference node)
{
    while (node)
    {
        bool isElement = false;
        if (!isOfType(*node.get(), NODE_ELEMENT, isElement))
            return {};
        if (isElement)
            return qvplatform::queryFor<IXMLDOMElement>(node.get());
        NodeReference next;
        if (FAILED(node->get_nextSibling(next.receive())))
            return {};
        node = std::move(next);
    }
    return {};
}

/// Appends a text to an element.
bool appendText(IXMLDOMDocument & document, IXMLDOMElement & element, const wchar_t * text)
{
    const ComText content{std::wstring_view(text)};
    qvbase::ReferenceMSCom<IXMLDOMText> created;
    NodeReference appended;
    return SUCCEEDED(document.createTextNode(content.get(), created.receive())) && created &&
           SUCCEEDED(element.appendChild(created.get(), appended.receive())) && appended;
}

/// The value of an attribute as text, whatever the service holds.
bool readValue(IXMLDOMNode & attribute, Vontal::u8string & value)
{
    ComVariant held;
    if (FAILED(attribute.get_nodeValue(held.address())))
        return false;
    if (!held.isText() && FAILED(VariantChangeType(held.address(), held.address(), 0, VT_BSTR)))
        return false;
    assignUtf8(value, held.text());
    return true;
}

} // namespace

XMLNodeImpl::XMLNodeImpl(
    XMLDocPtr * owner, IXMLDOMElement * domElement, const qvplatform::DirectXml * directWay)
    : doc(owner), element(domElement), direct(directWay)
{
    element->AddRef();
}

XMLNodeImpl::~XMLNodeImpl()
{
    element->Release();
}

bool XMLNodeImpl::walk(qvplatform::ElementVisitor & visitor) const
{
    if (direct != nullptr)
        direct->walk(*element, visitor);
    return direct != nullptr;
}

Node * XMLNodeImpl::createChild(const char * name)
{
    return createChild(name, static_cast<const wchar_t *>(nullptr));
}

Node * XMLNodeImpl::createChild(const Vontal::u8string & name)
{
    return createChild(name.c_str(), static_cast<const wchar_t *>(nullptr));
}

Node * XMLNodeImpl::createChild(const char * name, const wchar_t * text)
{
    if (name == nullptr || doc->get() == nullptr)
        return nullptr;
    const ElementReference child = appendElement(*doc->get(), *element, ComText{std::string_view(name)});
    if (!child || (text != nullptr && !appendText(*doc->get(), *child.get(), text)))
        return nullptr;
    return doc->getNode(child.get());
}

Node * XMLNodeImpl::createChild(const char * name, const Vontal::u8string & text)
{
    return createChild(name, text.c_str());
}

Node * XMLNodeImpl::createChild(const char * name, const char * text)
{
    if (text == nullptr)
        return createChild(name);
    std::wstring wide;
    Vontal::c_u8u16(wide, text);
    return createChild(name, wide.c_str());
}

IXMLDOMElement * XMLNodeImpl::getElement()
{
    return element;
}

Vontal::u8string XMLNodeImpl::getNodeName()
{
    if (direct != nullptr)
        return std::string(direct->name(*element));
    Vontal::u8string name;
    ComText text;
    if (SUCCEEDED(element->get_nodeName(text.receive())))
        assignUtf8(name, text.view());
    return name;
}

bool XMLNodeImpl::isNodeName(const char * name)
{
    if (name == nullptr)
        return false;
    return direct != nullptr ? direct->name(*element) == name : getNodeName() == name;
}

bool XMLNodeImpl::readText(ComText & text)
{
    NodeReference child;
    if (FAILED(element->get_firstChild(child.receive())))
        return false;
    if (!child)
        return true;
    bool isText = false;
    return isOfType(*child.get(), NODE_TEXT, isText) && isText && SUCCEEDED(child->get_text(text.receive()));
}

bool XMLNodeImpl::getText(Vontal::astring & text)
{
    ComText read;
    if (!readText(read))
        return false;
    text = std::wstring(read.view());
    return true;
}

bool XMLNodeImpl::getText(Vontal::u8string & text)
{
    if (std::string_view content; direct != nullptr)
    {
        if (!direct->text(*element, content))
            return false;
        if (!hasHalfPair(content))
        {
            text.assign(content);
            return true;
        }
    }
    ComText read;
    if (!readText(read))
        return false;
    assignUtf8(text, read.view());
    return true;
}

void XMLNodeImpl::getProperties(std::map<Vontal::u8string, Vontal::u8string> & properties)
{
    qvbase::ReferenceMSCom<IXMLDOMNamedNodeMap> attributes;
    Vontal::long32 count = 0;
    if (FAILED(element->get_attributes(attributes.receive())) || !attributes ||
        FAILED(attributes->get_length(&count)))
        return;
    for (Vontal::long32 i = 0; i < count; ++i)
    {
        NodeReference attribute;
        ComText name;
        Vontal::u8string value;
        if (FAILED(attributes->get_item(i, attribute.receive())) || !attribute ||
            FAILED(attribute->get_nodeName(name.receive())) || !readValue(*attribute.get(), value))
            return;
        Vontal::u8string key;
        assignUtf8(key, name.view());
        properties[key] = value;
    }
}

bool XMLNodeImpl::setText(const char * name, const ComText & value)
{
    const ComText wideName{std::string_view(name)};
    return SUCCEEDED(element->setAttribute(wideName.get(), variantOf(value)));
}

bool XMLNodeImpl::setProperty(const char * name, unsigned int value)
{
    return setProperty(name, std::to_string(value).c_str());
}

bool XMLNodeImpl::setProperty(const char * name, int value)
{
    return setProperty(name, std::to_string(value).c_str());
}

bool XMLNodeImpl::setProperty(const char * name, bool value)
{
    return setProperty(name, value ? 1U : 0U);
}

bool XMLNodeImpl::setProperty(const char * name, const wchar_t * value)
{
    return setText(name, ComText{std::wstring_view(value)});
}

bool XMLNodeImpl::setProperty(const char * name, const char * value)
{
    return setText(name, ComText{std::string_view(value)});
}

bool XMLNodeImpl::setProperty(const char * name, const Vontal::pstring & value)
{
    return setProperty(name, value.c_str());
}

bool XMLNodeImpl::setProperty(const char * name, const Vontal::astring & value)
{
    return setProperty(name, value.c_str());
}

bool XMLNodeImpl::setProperty(const char * name, const Vontal::u8string & value)
{
    return setProperty(name, value.c_str());
}

bool XMLNodeImpl::readAttribute(const char * name, ComVariant & value)
{
    const ComText wideName{std::string_view(name)};
    return SUCCEEDED(element->getAttribute(wideName.get(), value.address())) && value.isText();
}

bool XMLNodeImpl::getProperty(const char * name, bool & value)
{
    unsigned int number = 0;
    if (!getProperty(name, number))
        return false;
    value = number > 0;
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, double & value)
{
    Vontal::u8string text;
    if (!getProperty(name, text))
        return false;
    qvutils::convert2double(text.c_str(), value);
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, unsigned int & value)
{
    Vontal::u8string text;
    if (!getProperty(name, text))
        return false;
    value = Vontal::string2UInt(text);
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, int & value)
{
    Vontal::u8string text;
    if (!getProperty(name, text))
        return false;
    bool ok = false;
    value = Vontal::string2Int(text, ok);
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, Vontal::pstring & value)
{
    ComVariant held;
    if (!readAttribute(name, held))
        return false;
    value = std::wstring(held.text());
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, Vontal::astring & value)
{
    ComVariant held;
    if (!readAttribute(name, held))
        return false;
    value = std::wstring(held.text());
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, Vontal::u8string & value)
{
    if (std::string_view content; direct != nullptr)
    {
        const bool isThere = direct->attribute(*element, name, content);
        // A name that is no UTF-8 has another form in the document.
        if (!isThere && isAscii(name))
            return false;
        if (isThere && !hasHalfPair(content))
        {
            value.assign(content);
            return true;
        }
    }
    ComVariant held;
    if (!readAttribute(name, held))
        return false;
    assignUtf8(value, held.text());
    return true;
}

bool XMLNodeImpl::getProperty(const char * name, [[maybe_unused]] const Vontal::u8string & space,
    [[maybe_unused]] const Vontal::u8string & ignored, Vontal::u8string & value)
{
    return getProperty(name, value);
}

Node * XMLNodeImpl::getFirstChild(const char * name)
{
    Node * child = getFirstChild();
    while (child != nullptr && !child->isNodeName(name))
        child = child->getNextSibling();
    return child;
}

Node * XMLNodeImpl::takeNode(const qvplatform::FoundElement & found)
{
    if (found.noted != nullptr)
        return static_cast<Node *>(found.noted);
    if (found.element == nullptr)
        return nullptr;
    const ElementReference held = adopt(found.element);
    return doc->nodes->nodeOf({doc, doc->elements}, *found.element, direct);
}

Node * XMLNodeImpl::getFirstChild()
{
    if (direct != nullptr)
        return takeNode(direct->firstElement(*element, doc->elements));
    NodeReference child;
    if (FAILED(element->get_firstChild(child.receive())))
        return nullptr;
    return doc->getNode(elementFrom(std::move(child)).get());
}

Node * XMLNodeImpl::getNextSibling(const char * name)
{
    Node * sibling = getNextSibling();
    while (sibling != nullptr && !sibling->isNodeName(name))
        sibling = sibling->getNextSibling();
    return sibling;
}

Node * XMLNodeImpl::getNextSibling()
{
    if (direct != nullptr)
        return takeNode(direct->nextElement(*element, doc->elements));
    NodeReference sibling;
    if (FAILED(element->get_nextSibling(sibling.receive())))
        return nullptr;
    return doc->getNode(elementFrom(std::move(sibling)).get());
}

} // namespace qvxml
