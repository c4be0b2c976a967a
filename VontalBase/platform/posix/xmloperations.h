/// @internal
/// @file
/// What the node interfaces do, for nodes of whatever kind.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmltree.h"

namespace qvplatform
{

/// The object of a node, made where there is none, with a reference for the caller. A null node gives null
/// and S_FALSE.
HRESULT giveNode(xmlNode * node, Fragment * fragment, IXMLDOMNode ** object) noexcept;

/// The object of a node, as the interface that it is known to have.
template <class Interface>
HRESULT giveNodeAs(xmlNode * node, Fragment * fragment, Interface ** object) noexcept
{
    if (object == nullptr)
        return E_INVALIDARG;
    IXMLDOMNode * given = nullptr;
    const HRESULT result = giveNode(node, fragment, &given);
    *object = static_cast<Interface *>(given);
    return result;
}

/// The object of a node that was made just now, in a fragment of its own. A null node is a want of memory; on
/// failure the node is freed.
HRESULT giveNewNode(xmlNode * node, IXMLDOMNode ** object) noexcept;

template <class Interface>
HRESULT giveNewNodeAs(xmlNode * node, Interface ** object) noexcept
{
    IXMLDOMNode * given = nullptr;
    const HRESULT result = giveNewNode(node, &given);
    *object = static_cast<Interface *>(given);
    return result;
}

/// The node behind an interface; a null one for null, and for an object that is not of this service.
NodePlace placeOf(IUnknown * object) noexcept;

/// The identity by which `placeOf` asks. What it gives is a `NodePlace`, without a reference.
inline constexpr GUID nodePlaceId = {
    0x1d3e7a52, 0x6b0c, 0x4f9d, {0xa3, 0x5e, 0x71, 0x8c, 0x42, 0xd9, 0x06, 0xbf}};

/// The interface in a variant, by reference or not; null without one.
IUnknown * objectIn(const VARIANT & variant) noexcept;

/// The text in a variant; what is not text is turned into it.
class TextOfVariant
{
public:
    explicit TextOfVariant(const VARIANT & variant) noexcept;
    TextOfVariant(const TextOfVariant &) = delete;
    TextOfVariant & operator=(const TextOfVariant &) = delete;
    ~TextOfVariant();

    [[nodiscard]] HRESULT result() const noexcept
    {
        return m_result;
    }
    [[nodiscard]] BSTR string() const noexcept
    {
        return m_string;
    }

private:
    VARIANT m_converted{};
    BSTR m_string = nullptr;
    HRESULT m_result = S_OK;
};

HRESULT nodeName(const NodePlace & place, BSTR * name) noexcept;
HRESULT nodeValue(const NodePlace & place, VARIANT * value) noexcept;
HRESULT setNodeValue(const NodePlace & place, const VARIANT & value) noexcept;
HRESULT nodeType(const NodePlace & place, DOMNodeType * type) noexcept;
HRESULT parentNode(const NodePlace & place, IXMLDOMNode ** parent) noexcept;
HRESULT childNodes(const NodePlace & place, IUnknown * owner, IXMLDOMNodeList ** children) noexcept;
HRESULT firstChild(const NodePlace & place, IXMLDOMNode ** child) noexcept;
HRESULT lastChild(const NodePlace & place, IXMLDOMNode ** child) noexcept;
HRESULT previousSibling(const NodePlace & place, IXMLDOMNode ** sibling) noexcept;
HRESULT nextSibling(const NodePlace & place, IXMLDOMNode ** sibling) noexcept;
HRESULT attributesOf(const NodePlace & place, IUnknown * owner, IXMLDOMNamedNodeMap ** attributes) noexcept;
HRESULT insertChild(
    const NodePlace & place, IXMLDOMNode * node, const VARIANT & child, IXMLDOMNode ** inserted) noexcept;
HRESULT replaceChildNode(
    const NodePlace & place, IXMLDOMNode * node, IXMLDOMNode * child, IXMLDOMNode ** replaced) noexcept;
HRESULT removeChildNode(const NodePlace & place, IXMLDOMNode * child, IXMLDOMNode ** removed) noexcept;
HRESULT hasChildren(const NodePlace & place, VARIANT_BOOL * answer) noexcept;
HRESULT ownerDocument(const NodePlace & place, IXMLDOMDocument ** document) noexcept;
HRESULT cloneOf(const NodePlace & place, VARIANT_BOOL deep, IXMLDOMNode ** clone) noexcept;
HRESULT nodeText(const NodePlace & place, BSTR * text) noexcept;
HRESULT setNodeText(const NodePlace & place, BSTR text) noexcept;
HRESULT nodeXml(const NodePlace & place, BSTR * xml) noexcept;
HRESULT namespaceOf(const NodePlace & place, BSTR * uri) noexcept;
HRESULT prefixOfNode(const NodePlace & place, BSTR * prefix) noexcept;
HRESULT baseNameOf(const NodePlace & place, BSTR * name) noexcept;

/// The text that a node has itself.
HRESULT ownText(const NodePlace & place, BSTR * text) noexcept;
HRESULT setOwnText(const NodePlace & place, BSTR text) noexcept;

HRESULT attributeValue(const NodePlace & place, BSTR name, VARIANT * value) noexcept;
HRESULT setAttributeValue(const NodePlace & place, BSTR name, const VARIANT & value) noexcept;
/// @param removed the attribute; may be null.
HRESULT removeAttributeOf(const NodePlace & place, BSTR name, IXMLDOMNode ** removed) noexcept;
HRESULT attributeOf(const NodePlace & place, BSTR name, IXMLDOMNode ** attribute) noexcept;
/// @param replaced the attribute of that name until now; may be null.
HRESULT enterAttribute(const NodePlace & place, IXMLDOMNode * attribute, IXMLDOMNode ** replaced) noexcept;
HRESULT removeAttributeNodeOf(
    const NodePlace & place, IXMLDOMNode * attribute, IXMLDOMNode ** removed) noexcept;

} // namespace qvplatform
