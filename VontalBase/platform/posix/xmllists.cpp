#include "VontalBase/platform/posix/xmllists.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/xmloperations.h"

#include <cstdint>

namespace qvplatform
{

namespace
{

/// Finds the n-th of siblings, quickly where one is asked for after the other.
class Cursor
{
public:
    /// @param first the first sibling at present, which the tree has at this count of changes.
    xmlNode * seek(xmlNode * first, std::uint64_t changes, LONG index) noexcept
    {
        if (index < 0)
            return nullptr;
        if (m_node == nullptr || m_changes != changes || m_index > index)
        {
            m_node = first;
            m_index = 0;
            m_changes = changes;
        }
        while (m_node != nullptr && m_index < index && m_node->next != nullptr)
        {
            m_node = m_node->next;
            ++m_index;
        }
        return m_index == index ? m_node : nullptr;
    }

    LONG count(const xmlNode * first, std::uint64_t changes) noexcept
    {
        if (m_countedAt == changes && m_count >= 0)
            return m_count;
        m_count = 0;
        for (; first != nullptr; first = first->next)
            ++m_count;
        m_countedAt = changes;
        return m_count;
    }

private:
    xmlNode * m_node = nullptr;
    LONG m_index = 0;
    std::uint64_t m_changes = 0;
    LONG m_count = -1;
    std::uint64_t m_countedAt = 0;
};

/// What a list of children and a map of attributes have in common.
template <class Interface>
class Siblings : public CountedObject<WithoutMembers<Interface>, IDispatch>
{
public:
    explicit Siblings(IUnknown * owner) noexcept : m_owner(owner)
    {
    }

    HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode ** item) override
    {
        const NodePlace here = place();
        xmlNode * const found = m_cursor.seek(first(here.node), here.fragment->tree->changes, index);
        return giveNode(found, here.fragment, item);
    }
    HRESULT STDMETHODCALLTYPE get_length(LONG * length) override
    {
        if (length == nullptr)
            return E_INVALIDARG;
        const NodePlace here = place();
        *length = m_cursor.count(first(here.node), here.fragment->tree->changes);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode ** item) override
    {
        const HRESULT result = get_item(m_next, item);
        if (result == S_OK)
            ++m_next;
        return result;
    }
    HRESULT STDMETHODCALLTYPE reset() override
    {
        m_next = 0;
        return S_OK;
    }

protected:
    virtual xmlNode * first(xmlNode * node) const noexcept = 0;

    /// The node, which for a document changes with each loading, and where it is at present.
    [[nodiscard]] NodePlace place() const noexcept
    {
        return placeOf(m_owner.get());
    }

private:
    LONG m_next = 0;
    qvbase::ReferenceMSCom<IUnknown> m_owner;
    Cursor m_cursor;
};

class NodeList final : public Siblings<IXMLDOMNodeList>
{
public:
    using Siblings::Siblings;

protected:
    xmlNode * first(xmlNode * node) const noexcept override
    {
        return hasBelow(node) ? node->children : nullptr;
    }
};

class AttributeMap final : public Siblings<IXMLDOMNamedNodeMap>
{
public:
    using Siblings::Siblings;

    HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode ** item) override
    {
        return attributeOf(place(), name, item);
    }
    HRESULT STDMETHODCALLTYPE setNamedItem(IXMLDOMNode * item, IXMLDOMNode ** entered) override
    {
        if (entered != nullptr)
            *entered = nullptr;
        const HRESULT result = enterAttribute(place(), item, nullptr);
        if (SUCCEEDED(result) && entered != nullptr)
        {
            item->AddRef();
            *entered = item;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE removeNamedItem(BSTR name, IXMLDOMNode ** item) override
    {
        return removeAttributeOf(place(), name, item);
    }

protected:
    xmlNode * first(xmlNode * node) const noexcept override
    {
        return asNode(node->properties);
    }
};

template <class List, class Interface>
HRESULT makeList(IUnknown * owner, Interface ** list) noexcept
{
    if (list == nullptr)
        return E_INVALIDARG;
    *list = gateFails("xml list") ? nullptr : new (std::nothrow) List(owner);
    return *list != nullptr ? S_OK : E_OUTOFMEMORY;
}

} // namespace

HRESULT makeNodeList(IUnknown * owner, IXMLDOMNodeList ** list) noexcept
{
    return makeList<NodeList>(owner, list);
}

HRESULT makeAttributeMap(IUnknown * owner, IXMLDOMNamedNodeMap ** map) noexcept
{
    return makeList<AttributeMap>(owner, map);
}

} // namespace qvplatform
