#include "VontalBase/platform/posix/xmloperations.h"

#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/comvariants.h"
#include "VontalBase/platform/posix/xmldocument.h"
#include "VontalBase/platform/posix/xmllists.h"
#include "VontalBase/platform/posix/xmltext.h"
#include "VontalBase/platform/posix/xmlwriting.h"

#include <string>

namespace qvplatform
{

namespace
{

bool isNamed(const xmlNode * node) noexcept
{
    return node->type == XML_ELEMENT_NODE || node->type == XML_ATTRIBUTE_NODE || node->type == XML_PI_NODE;
}

/// Whether a node has a text of its own.
bool hasOwnText(const xmlNode * node) noexcept
{
    return node->type != XML_ELEMENT_NODE && node->type != XML_DOCUMENT_NODE;
}

HRESULT giveNothing(BSTR * string) noexcept
{
    if (string == nullptr)
        return E_INVALIDARG;
    *string = nullptr;
    return S_FALSE;
}

/// The name of what has none of its own.
const char * kindName(xmlElementType type) noexcept
{
    switch (type)
    {
    case XML_TEXT_NODE:
        return "#text";
    case XML_CDATA_SECTION_NODE:
        return "#cdata-section";
    case XML_COMMENT_NODE:
        return "#comment";
    default:
        return "#document";
    }
}

/// Whether a node may become a child at all.
bool fitsInto(const xmlNode * parent, const xmlNode * node) noexcept
{
    switch (node->type)
    {
    case XML_ELEMENT_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
        return hasBelow(parent);
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
        return parent->type == XML_ELEMENT_NODE;
    default:
        return false;
    }
}

bool isAtOrAbove(const xmlNode * upper, const xmlNode * lower) noexcept
{
    for (; lower != nullptr; lower = lower->parent)
    {
        if (lower == upper)
            return true;
    }
    return false;
}

/// Why a node must not become a child; S_OK where it may.
/// @param replaced the child that goes for it, or null.
HRESULT checkInsertion(const xmlNode * parent, const xmlNode * node, const xmlNode * replaced) noexcept
{
    if (node->doc != parent->doc || !fitsInto(parent, node))
        return E_FAIL;
    // Without anything below it, it can be above nothing but itself.
    if (node == parent || (hasBelow(node) && node->children != nullptr && isAtOrAbove(node, parent)))
        return E_FAIL;
    if (parent->type == XML_DOCUMENT_NODE && node->type == XML_ELEMENT_NODE)
    {
        const xmlNode * const present = Tree::of(parent).documentElement();
        if (present != nullptr && present != node && present != replaced)
            return E_FAIL;
    }
    return S_OK;
}

/// Moves a node, whose object there is, to its new place.
HRESULT moveTo(const NodePlace & place, xmlNode * node, xmlNode * before) noexcept
{
    NodeData & data = *static_cast<NodeData *>(node->_private);
    if (node->parent != nullptr && placeNow(data).fragment == place.fragment)
    {
        unlink(node);
        link(place.node, node, before);
        return S_OK;
    }
    if (node->parent != nullptr && !detach(node))
        return E_OUTOFMEMORY;
    link(place.node, node, before);
    mergeFragment(placeNow(data).fragment, *place.fragment);
    return S_OK;
}

HRESULT shareAs(IXMLDOMNode * node, IXMLDOMNode ** shared) noexcept
{
    if (shared != nullptr)
    {
        node->AddRef();
        *shared = node;
    }
    return S_OK;
}

/// All text below a node.
std::string textBelow(const xmlNode * top)
{
    std::string text;
    for (const xmlNode * node = top; node != nullptr; node = nextInWalk(const_cast<xmlNode *>(node), top))
    {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)
            text += contentOf(node);
    }
    return text;
}

HRESULT giveVariant(std::string_view text, VARIANT * value) noexcept
{
    BSTR string = nullptr;
    const HRESULT result = giveString(text, &string);
    if (FAILED(result))
        return result;
    value->vt = VT_BSTR;
    value->bstrVal = string;
    return S_OK;
}

} // namespace

NodePlace placeOf(IUnknown * object) noexcept
{
    void * found = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(nodePlaceId, &found)) || found == nullptr)
        return {};
    return *static_cast<NodePlace *>(found);
}

IUnknown * objectIn(const VARIANT & variant) noexcept
{
    const VARIANT & inner = innerVariant(variant);
    switch (inner.vt)
    {
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return inner.punkVal;
    case VT_UNKNOWN | VT_BYREF:
    case VT_DISPATCH | VT_BYREF:
        return inner.ppunkVal != nullptr ? *inner.ppunkVal : nullptr;
    default:
        return nullptr;
    }
}

TextOfVariant::TextOfVariant(const VARIANT & variant) noexcept
{
    if (variant.vt == VT_BSTR)
    {
        m_string = variant.bstrVal;
        return;
    }
    m_result = VariantChangeType(&m_converted, &variant, 0, VT_BSTR);
    if (SUCCEEDED(m_result))
        m_string = m_converted.bstrVal;
}

TextOfVariant::~TextOfVariant()
{
    VariantClear(&m_converted);
}

HRESULT nodeName(const NodePlace & place, BSTR * name) noexcept
{
    if (isNamed(place.node))
        return giveString(viewOf(place.node->name), name);
    return giveString(kindName(place.node->type), name);
}

HRESULT nodeValue(const NodePlace & place, VARIANT * value) noexcept
{
    if (value == nullptr)
        return E_INVALIDARG;
    *value = {};
    if (hasOwnText(place.node))
        return giveVariant(contentOf(place.node), value);
    value->vt = VT_NULL;
    return S_FALSE;
}

HRESULT setNodeValue(const NodePlace & place, const VARIANT & value) noexcept
{
    if (!hasOwnText(place.node))
        return E_FAIL;
    const TextOfVariant text(value);
    return FAILED(text.result()) ? text.result() : setOwnText(place, text.string());
}

HRESULT nodeType(const NodePlace & place, DOMNodeType * type) noexcept
{
    if (type == nullptr)
        return E_INVALIDARG;
    // The numbers of the kinds are the same on both sides.
    *type = static_cast<DOMNodeType>(place.node->type);
    return S_OK;
}

HRESULT parentNode(const NodePlace & place, IXMLDOMNode ** parent) noexcept
{
    const bool isAttribute = place.node->type == XML_ATTRIBUTE_NODE;
    return giveNode(isAttribute ? nullptr : place.node->parent, place.fragment, parent);
}

HRESULT childNodes(const NodePlace &, IUnknown * owner, IXMLDOMNodeList ** children) noexcept
{
    return makeNodeList(owner, children);
}

HRESULT firstChild(const NodePlace & place, IXMLDOMNode ** child) noexcept
{
    return giveNode(hasBelow(place.node) ? place.node->children : nullptr, place.fragment, child);
}

HRESULT lastChild(const NodePlace & place, IXMLDOMNode ** child) noexcept
{
    return giveNode(hasBelow(place.node) ? place.node->last : nullptr, place.fragment, child);
}

HRESULT previousSibling(const NodePlace & place, IXMLDOMNode ** sibling) noexcept
{
    const bool isAttribute = place.node->type == XML_ATTRIBUTE_NODE;
    return giveNode(isAttribute ? nullptr : place.node->prev, place.fragment, sibling);
}

HRESULT nextSibling(const NodePlace & place, IXMLDOMNode ** sibling) noexcept
{
    const bool isAttribute = place.node->type == XML_ATTRIBUTE_NODE;
    return giveNode(isAttribute ? nullptr : place.node->next, place.fragment, sibling);
}

HRESULT attributesOf(const NodePlace & place, IUnknown * owner, IXMLDOMNamedNodeMap ** attributes) noexcept
{
    if (attributes == nullptr)
        return E_INVALIDARG;
    *attributes = nullptr;
    if (place.node->type != XML_ELEMENT_NODE)
        return S_FALSE;
    return makeAttributeMap(owner, attributes);
}

HRESULT insertChild(
    const NodePlace & place, IXMLDOMNode * node, const VARIANT & child, IXMLDOMNode ** inserted) noexcept
{
    if (inserted != nullptr)
        *inserted = nullptr;
    if (node == nullptr)
        return E_INVALIDARG;
    const NodePlace own = placeOf(node);
    if (own.node == nullptr)
        return E_FAIL;
    IUnknown * const reference = objectIn(child);
    const NodePlace before = placeOf(reference);
    if (reference != nullptr && (before.node == nullptr || before.node->parent != place.node ||
                                    before.node->type == XML_ATTRIBUTE_NODE))
        return E_FAIL;
    HRESULT result = checkInsertion(place.node, own.node, nullptr);
    if (SUCCEEDED(result) && own.node != before.node)
        result = moveTo(place, own.node, before.node);
    return FAILED(result) ? result : shareAs(node, inserted);
}

HRESULT replaceChildNode(
    const NodePlace & place, IXMLDOMNode * node, IXMLDOMNode * child, IXMLDOMNode ** replaced) noexcept
{
    if (replaced != nullptr)
        *replaced = nullptr;
    const NodePlace old = placeOf(child);
    if (node == nullptr)
        return removeChildNode(place, child, replaced);
    if (child == nullptr)
        return E_INVALIDARG;
    if (old.node == nullptr || old.node->parent != place.node || old.node->type == XML_ATTRIBUTE_NODE)
        return E_INVALIDARG;
    const NodePlace own = placeOf(node);
    if (own.node == nullptr)
        return E_FAIL;
    HRESULT result = checkInsertion(place.node, own.node, old.node);
    if (SUCCEEDED(result) && own.node != old.node)
    {
        xmlNode * const before = old.node->next == own.node ? own.node->next : old.node->next;
        if (!detach(old.node))
            return E_OUTOFMEMORY;
        result = moveTo(place, own.node, before);
        // Where memory is short, the old child goes back.
        if (FAILED(result))
            moveTo(place, old.node, before);
    }
    return FAILED(result) ? result : shareAs(child, replaced);
}

HRESULT removeChildNode(const NodePlace & place, IXMLDOMNode * child, IXMLDOMNode ** removed) noexcept
{
    if (removed != nullptr)
        *removed = nullptr;
    const NodePlace own = placeOf(child);
    if (own.node == nullptr || own.node->parent != place.node || own.node->type == XML_ATTRIBUTE_NODE)
        return E_INVALIDARG;
    return detach(own.node) ? shareAs(child, removed) : E_OUTOFMEMORY;
}

HRESULT hasChildren(const NodePlace & place, VARIANT_BOOL * answer) noexcept
{
    if (answer == nullptr)
        return E_INVALIDARG;
    const bool has = hasBelow(place.node) && place.node->children != nullptr;
    *answer = has ? VARIANT_TRUE : VARIANT_FALSE;
    return has ? S_OK : S_FALSE;
}

HRESULT ownerDocument(const NodePlace & place, IXMLDOMDocument ** document) noexcept
{
    if (document == nullptr)
        return E_INVALIDARG;
    *document = nullptr;
    if (place.node->type == XML_DOCUMENT_NODE)
        return S_FALSE;
    IXMLDOMNode * given = nullptr;
    const HRESULT result = giveDocument(*place.fragment->tree, &given);
    *document = static_cast<IXMLDOMDocument *>(given);
    return result;
}

HRESULT cloneOf(const NodePlace & place, VARIANT_BOOL deep, IXMLDOMNode ** clone) noexcept
{
    if (clone == nullptr)
        return E_INVALIDARG;
    *clone = nullptr;
    if (place.node->type == XML_DOCUMENT_NODE)
        return cloneDocument(*place.fragment->tree, deep != VARIANT_FALSE, clone);
    return giveNewNode(copyNode(place.node, *place.fragment->tree, deep != VARIANT_FALSE), clone);
}

HRESULT nodeText(const NodePlace & place, BSTR * text) noexcept
{
    if (hasOwnText(place.node))
        return giveString(contentOf(place.node), text);
    return withoutThrowing([&] { return giveString(textBelow(place.node), text); });
}

HRESULT setNodeText(const NodePlace & place, BSTR text) noexcept
{
    if (hasOwnText(place.node))
        return setOwnText(place, text);
    if (place.node->type != XML_ELEMENT_NODE)
        return E_FAIL;
    const Bytes bytes(text);
    if (FAILED(bytes.result()))
        return bytes.result();
    xmlNode * const made = Tree::of(place.node).makeText(XML_TEXT_NODE, bytes.view());
    if (made == nullptr)
        return E_OUTOFMEMORY;
    while (place.node->children != nullptr)
    {
        if (!detach(place.node->children))
        {
            freeNode(made);
            return E_OUTOFMEMORY;
        }
    }
    link(place.node, made, nullptr);
    return S_OK;
}

HRESULT nodeXml(const NodePlace & place, BSTR * xml) noexcept
{
    if (xml == nullptr)
        return E_INVALIDARG;
    *xml = nullptr;
    return withoutThrowing(
        [&]
        {
            std::string text;
            const HRESULT result = writeNode(place.node, text);
            return FAILED(result) ? result : giveString(text, xml);
        });
}

HRESULT namespaceOf(const NodePlace & place, BSTR * uri) noexcept
{
    const xmlNode * const node = place.node;
    if (node->type != XML_ELEMENT_NODE && node->type != XML_ATTRIBUTE_NODE)
        return giveNothing(uri);
    const std::string_view name = viewOf(node->name);
    std::string_view prefix = prefixOf(name);
    // An attribute without a prefix is in no namespace; but those that declare some are.
    if (node->type == XML_ATTRIBUTE_NODE && prefix.empty())
    {
        if (name != "xmlns")
            return giveNothing(uri);
        prefix = name;
    }
    const xmlChar * const found = findNamespace(node, prefix);
    return viewOf(found).empty() ? giveNothing(uri) : giveString(viewOf(found), uri);
}

HRESULT prefixOfNode(const NodePlace & place, BSTR * prefix) noexcept
{
    const bool isNamedOne = place.node->type == XML_ELEMENT_NODE || place.node->type == XML_ATTRIBUTE_NODE;
    const std::string_view own = isNamedOne ? prefixOf(viewOf(place.node->name)) : std::string_view();
    return own.empty() ? giveNothing(prefix) : giveString(own, prefix);
}

HRESULT baseNameOf(const NodePlace & place, BSTR * name) noexcept
{
    return isNamed(place.node) ? giveString(baseOf(viewOf(place.node->name)), name) : giveNothing(name);
}

HRESULT ownText(const NodePlace & place, BSTR * text) noexcept
{
    return giveString(contentOf(place.node), text);
}

HRESULT setOwnText(const NodePlace & place, BSTR text) noexcept
{
    const Bytes bytes(text);
    if (FAILED(bytes.result()))
        return bytes.result();
    return setContent(place.node, bytes.view()) ? S_OK : E_OUTOFMEMORY;
}

HRESULT attributeValue(const NodePlace & place, BSTR name, VARIANT * value) noexcept
{
    if (name == nullptr || value == nullptr)
        return E_INVALIDARG;
    *value = {};
    const Bytes bytes(name);
    if (FAILED(bytes.result()))
        return bytes.result();
    xmlAttr * const attribute = findAttribute(place.node, bytes.view());
    if (attribute != nullptr)
        return giveVariant(contentOf(asNode(attribute)), value);
    value->vt = VT_NULL;
    return S_FALSE;
}

HRESULT setAttributeValue(const NodePlace & place, BSTR name, const VARIANT & value) noexcept
{
    if (name == nullptr)
        return E_INVALIDARG;
    const Bytes nameBytes(name);
    const TextOfVariant text(value);
    const Bytes valueBytes(text.string());
    for (const HRESULT result : {nameBytes.result(), text.result(), valueBytes.result()})
    {
        if (FAILED(result))
            return result;
    }
    if (xmlAttr * const present = findAttribute(place.node, nameBytes.view()))
        return setContent(asNode(present), valueBytes.view()) ? S_OK : E_OUTOFMEMORY;
    if (!isQualifiedName(nameBytes.view()))
        return E_FAIL;
    Tree & tree = *place.fragment->tree;
    const xmlChar * const interned = tree.intern(nameBytes.view());
    xmlAttr * const made = interned != nullptr ? tree.makeAttribute(interned) : nullptr;
    if (made == nullptr)
        return E_OUTOFMEMORY;
    if (!setContent(asNode(made), valueBytes.view()))
    {
        freeNode(asNode(made));
        return E_OUTOFMEMORY;
    }
    linkAttribute(place.node, made);
    return S_OK;
}

HRESULT removeAttributeOf(const NodePlace & place, BSTR name, IXMLDOMNode ** removed) noexcept
{
    if (removed != nullptr)
        *removed = nullptr;
    if (name == nullptr)
        return E_INVALIDARG;
    const Bytes bytes(name);
    if (FAILED(bytes.result()))
        return bytes.result();
    xmlAttr * const attribute = findAttribute(place.node, bytes.view());
    if (attribute == nullptr)
        return S_FALSE;
    qvbase::ReferenceMSCom<IXMLDOMNode> object;
    if (removed != nullptr)
    {
        const HRESULT result = giveNode(asNode(attribute), place.fragment, object.receive());
        if (FAILED(result))
            return result;
    }
    if (!detach(asNode(attribute)))
        return E_OUTOFMEMORY;
    if (removed != nullptr)
        *removed = object.detach();
    return S_OK;
}

HRESULT attributeOf(const NodePlace & place, BSTR name, IXMLDOMNode ** attribute) noexcept
{
    if (attribute == nullptr)
        return E_INVALIDARG;
    *attribute = nullptr;
    if (name == nullptr)
        return E_INVALIDARG;
    const Bytes bytes(name);
    if (FAILED(bytes.result()))
        return bytes.result();
    xmlAttr * const found = findAttribute(place.node, bytes.view());
    return giveNode(found != nullptr ? asNode(found) : nullptr, place.fragment, attribute);
}

HRESULT enterAttribute(const NodePlace & place, IXMLDOMNode * attribute, IXMLDOMNode ** replaced) noexcept
{
    if (replaced != nullptr)
        *replaced = nullptr;
    const NodePlace own = placeOf(attribute);
    if (own.node == nullptr || own.node->type != XML_ATTRIBUTE_NODE)
        return E_INVALIDARG;
    if (own.node->doc != place.node->doc || (own.node->parent != nullptr && own.node->parent != place.node))
        return E_FAIL;
    if (own.node->parent == place.node)
        return S_OK;
    xmlAttr * const present = findAttribute(place.node, viewOf(own.node->name));
    qvbase::ReferenceMSCom<IXMLDOMNode> object;
    if (present != nullptr)
    {
        const HRESULT result = giveNode(asNode(present), place.fragment, object.receive());
        if (FAILED(result))
            return result;
        if (!detach(asNode(present)))
            return E_OUTOFMEMORY;
    }
    Fragment * const fragment = own.fragment;
    linkAttribute(place.node, asAttribute(own.node));
    mergeFragment(fragment, *place.fragment);
    if (replaced != nullptr)
        *replaced = object.detach();
    return S_OK;
}

HRESULT removeAttributeNodeOf(
    const NodePlace & place, IXMLDOMNode * attribute, IXMLDOMNode ** removed) noexcept
{
    if (removed != nullptr)
        *removed = nullptr;
    const NodePlace own = placeOf(attribute);
    if (own.node == nullptr || own.node->type != XML_ATTRIBUTE_NODE || own.node->parent != place.node)
        return E_INVALIDARG;
    return detach(own.node) ? shareAs(attribute, removed) : E_OUTOFMEMORY;
}

} // namespace qvplatform
