/// @internal
/// @file
/// The objects of nodes.
#pragma once

#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/xmldirect.h"
#include "VontalBase/platform/posix/xmloperations.h"
#include "VontalBase/platform/posix/xmlstylesheets.h"
#include "VontalBase/platform/posix/xmltext.h"
#include "VontalBase/platform/posix/xmltree.h"

#include <libxml/tree.h>

namespace qvplatform
{

/// The operations of a node. `Derived` tells the place of its node by `place()`.
template <class Interface, class Derived>
class NodeOperations : public WithoutMembers<Interface>
{
public:
    HRESULT STDMETHODCALLTYPE get_nodeName(BSTR * name) override
    {
        return nodeName(here(), name);
    }
    HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT * value) override
    {
        return nodeValue(here(), value);
    }
    HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) override
    {
        return setNodeValue(here(), value);
    }
    HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType * type) override
    {
        return nodeType(here(), type);
    }
    HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode ** parent) override
    {
        return parentNode(here(), parent);
    }
    HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList ** children) override
    {
        return childNodes(here(), this, children);
    }
    HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode ** child) override
    {
        return firstChild(here(), child);
    }
    HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode ** child) override
    {
        return lastChild(here(), child);
    }
    HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode ** sibling) override
    {
        return previousSibling(here(), sibling);
    }
    HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode ** sibling) override
    {
        return nextSibling(here(), sibling);
    }
    HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap ** attributes) override
    {
        return attributesOf(here(), this, attributes);
    }
    HRESULT STDMETHODCALLTYPE insertBefore(
        IXMLDOMNode * node, VARIANT child, IXMLDOMNode ** inserted) override
    {
        return insertChild(here(), node, child, inserted);
    }
    HRESULT STDMETHODCALLTYPE replaceChild(
        IXMLDOMNode * node, IXMLDOMNode * child, IXMLDOMNode ** replaced) override
    {
        return replaceChildNode(here(), node, child, replaced);
    }
    HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode * child, IXMLDOMNode ** removed) override
    {
        return removeChildNode(here(), child, removed);
    }
    HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode * node, IXMLDOMNode ** appended) override
    {
        return insertChild(here(), node, VARIANT{}, appended);
    }
    HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL * answer) override
    {
        return hasChildren(here(), answer);
    }
    HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument ** document) override
    {
        return ownerDocument(here(), document);
    }
    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode ** clone) override
    {
        return cloneOf(here(), deep, clone);
    }
    HRESULT STDMETHODCALLTYPE get_text(BSTR * text) override
    {
        return nodeText(here(), text);
    }
    HRESULT STDMETHODCALLTYPE put_text(BSTR text) override
    {
        return setNodeText(here(), text);
    }
    HRESULT STDMETHODCALLTYPE get_xml(BSTR * xml) override
    {
        return nodeXml(here(), xml);
    }
    HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR * uri) override
    {
        return namespaceOf(here(), uri);
    }
    HRESULT STDMETHODCALLTYPE get_prefix(BSTR * prefix) override
    {
        return prefixOfNode(here(), prefix);
    }
    HRESULT STDMETHODCALLTYPE get_baseName(BSTR * name) override
    {
        return baseNameOf(here(), name);
    }
    HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode * stylesheet, VARIANT target) override
    {
        return transformInto(here(), stylesheet, target);
    }

private:
    NodePlace here() noexcept
    {
        return static_cast<Derived *>(this)->place();
    }
};

/// An object of a node other than a document. It lies in the pool of the node's tree. `Bases` are the
/// interfaces between the one that it offers and `IXMLDOMNode`.
template <class Interface, class Derived, class... Bases>
class NodeObject : public NodeOperations<Interface, Derived>, public NodeData
{
public:
    NodeObject(xmlNode * own, Fragment * ownFragment) noexcept
    {
        node = own;
        fragment = ownFragment;
        own->_private = static_cast<NodeData *>(this);
        ++ownFragment->objects;
        ++ownFragment->pointers;
        ownFragment->tree->addReference();
    }
    NodeObject(const NodeObject &) = delete;
    NodeObject & operator=(const NodeObject &) = delete;

    [[nodiscard]] NodePlace place() noexcept
    {
        return placeNow(*this);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        if (iid == nodePlaceId)
        {
            *object = &placeNow(*this);
            return S_OK;
        }
        if (iid == idOf<Interface>() || iid == idOf<IXMLDOMNode>() || iid == idOf<IUnknown>() ||
            iid == idOf<IDispatch>() || (... || (iid == idOf<Bases>())))
        {
            ++references;
            *object = static_cast<Interface *>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references;
        if (left == 0)
            end();
        return left;
    }

protected:
    ~NodeObject() = default;

private:
    void end() noexcept
    {
        static_assert(sizeof(Derived) <= Tree::objectSize);
        Fragment * const left = placeNow(*this).fragment;
        Tree * const tree = left->tree;
        node->_private = nullptr;
        Derived * const self = static_cast<Derived *>(this);
        self->~Derived();
        tree->freeObject(self);
        leaveFragment(left);
    }
};

template <class Interface, class Derived, class... Bases>
class CharacterDataObject : public NodeObject<Interface, Derived, IXMLDOMCharacterData, Bases...>
{
public:
    using NodeObject<Interface, Derived, IXMLDOMCharacterData, Bases...>::NodeObject;

    HRESULT STDMETHODCALLTYPE get_data(BSTR * data) override
    {
        return ownText(*this, data);
    }
    HRESULT STDMETHODCALLTYPE put_data(BSTR data) override
    {
        return setOwnText(*this, data);
    }
    HRESULT STDMETHODCALLTYPE get_length(LONG * length) override
    {
        if (length == nullptr)
            return E_INVALIDARG;
        *length = static_cast<LONG>(countUnits(contentOf(this->node)));
        return S_OK;
    }
};

class TextObject final : public CharacterDataObject<IXMLDOMText, TextObject>
{
public:
    using CharacterDataObject::CharacterDataObject;
};

class SectionObject final : public CharacterDataObject<IXMLDOMCDATASection, SectionObject, IXMLDOMText>
{
public:
    using CharacterDataObject::CharacterDataObject;
};

class CommentObject final : public CharacterDataObject<IXMLDOMComment, CommentObject>
{
public:
    using CharacterDataObject::CharacterDataObject;
};

class InstructionObject final : public NodeObject<IXMLDOMProcessingInstruction, InstructionObject>
{
public:
    using NodeObject::NodeObject;

    HRESULT STDMETHODCALLTYPE get_target(BSTR * target) override
    {
        return nodeName(*this, target);
    }
    HRESULT STDMETHODCALLTYPE get_data(BSTR * data) override
    {
        return ownText(*this, data);
    }
    HRESULT STDMETHODCALLTYPE put_data(BSTR data) override
    {
        return setOwnText(*this, data);
    }
};

class AttributeObject final : public NodeObject<IXMLDOMAttribute, AttributeObject>
{
public:
    using NodeObject::NodeObject;

    HRESULT STDMETHODCALLTYPE get_name(BSTR * name) override
    {
        return nodeName(*this, name);
    }
    HRESULT STDMETHODCALLTYPE get_value(VARIANT * value) override
    {
        return nodeValue(*this, value);
    }
    HRESULT STDMETHODCALLTYPE put_value(VARIANT value) override
    {
        return setNodeValue(*this, value);
    }
};

class ElementObject final : public NodeObject<IXMLDOMElement, ElementObject>
{
public:
    using NodeObject::NodeObject;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object == nullptr || (iid != directXmlId && iid != directSelfId))
            return NodeObject::QueryInterface(iid, object);
        if (iid == directXmlId)
            *object = const_cast<DirectXml *>(&directXml());
        else
            *object = static_cast<IXMLDOMElement *>(this);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE get_tagName(BSTR * name) override
    {
        return nodeName(*this, name);
    }
    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT * value) override
    {
        return attributeValue(*this, name, value);
    }
    HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value) override
    {
        return setAttributeValue(*this, name, value);
    }
    HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) override
    {
        return removeAttributeOf(*this, name, nullptr);
    }
    HRESULT STDMETHODCALLTYPE getAttributeNode(BSTR name, IXMLDOMAttribute ** attribute) override
    {
        if (attribute == nullptr)
            return E_INVALIDARG;
        IXMLDOMNode * found = nullptr;
        const HRESULT result = attributeOf(*this, name, &found);
        *attribute = static_cast<IXMLDOMAttribute *>(found);
        return result;
    }
    HRESULT STDMETHODCALLTYPE setAttributeNode(
        IXMLDOMAttribute * attribute, IXMLDOMAttribute ** replaced) override
    {
        IXMLDOMNode * old = nullptr;
        const HRESULT result = enterAttribute(*this, attribute, replaced != nullptr ? &old : nullptr);
        if (replaced != nullptr)
            *replaced = static_cast<IXMLDOMAttribute *>(old);
        return result;
    }
    HRESULT STDMETHODCALLTYPE removeAttributeNode(
        IXMLDOMAttribute * attribute, IXMLDOMAttribute ** removed) override
    {
        IXMLDOMNode * old = nullptr;
        const HRESULT result = removeAttributeNodeOf(*this, attribute, removed != nullptr ? &old : nullptr);
        if (removed != nullptr)
            *removed = static_cast<IXMLDOMAttribute *>(old);
        return result;
    }

    ElementNote note;
};

} // namespace qvplatform
