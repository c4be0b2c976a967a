#include "VontalBase/platform/posix/xmlnodes.h"

#include "VontalBase/platform/posix/xmldocument.h"

#include <memory>
#include <new>

namespace qvplatform
{

namespace
{

template <class Object>
IXMLDOMNode * place(void * room, xmlNode * node, Fragment * fragment) noexcept
{
    return new (room) Object(node, fragment);
}

IXMLDOMNode * makeObject(void * room, xmlNode * node, Fragment * fragment) noexcept
{
    switch (node->type)
    {
    case XML_ELEMENT_NODE:
        return place<ElementObject>(room, node, fragment);
    case XML_ATTRIBUTE_NODE:
        return place<AttributeObject>(room, node, fragment);
    case XML_CDATA_SECTION_NODE:
        return place<SectionObject>(room, node, fragment);
    case XML_COMMENT_NODE:
        return place<CommentObject>(room, node, fragment);
    case XML_PI_NODE:
        return place<InstructionObject>(room, node, fragment);
    default:
        return place<TextObject>(room, node, fragment);
    }
}

template <class Object>
IXMLDOMNode * sharedObject(NodeData * data) noexcept
{
    Object * const object = static_cast<Object *>(data);
    ++object->references;
    return object;
}

/// The object that a node has already, with one more reference.
IXMLDOMNode * existingObject(const xmlNode * node) noexcept
{
    NodeData * const data = static_cast<NodeData *>(node->_private);
    switch (node->type)
    {
    case XML_ELEMENT_NODE:
        return sharedObject<ElementObject>(data);
    case XML_ATTRIBUTE_NODE:
        return sharedObject<AttributeObject>(data);
    case XML_CDATA_SECTION_NODE:
        return sharedObject<SectionObject>(data);
    case XML_COMMENT_NODE:
        return sharedObject<CommentObject>(data);
    case XML_PI_NODE:
        return sharedObject<InstructionObject>(data);
    default:
        return sharedObject<TextObject>(data);
    }
}

} // namespace

HRESULT giveNode(xmlNode * node, Fragment * fragment, IXMLDOMNode ** object) noexcept
{
    if (object == nullptr)
        return E_INVALIDARG;
    *object = nullptr;
    if (node == nullptr)
        return S_FALSE;
    if (node->type == XML_DOCUMENT_NODE)
        return giveDocument(*fragment->tree, object);
    if (node->_private != nullptr)
    {
        *object = existingObject(node);
        return S_OK;
    }
    void * const room = fragment->tree->allocateObject();
    if (room == nullptr)
        return E_OUTOFMEMORY;
    *object = makeObject(room, node, fragment);
    return S_OK;
}

HRESULT giveNewNode(xmlNode * node, IXMLDOMNode ** object) noexcept
{
    *object = nullptr;
    if (node == nullptr)
        return E_OUTOFMEMORY;
    std::unique_ptr<Fragment> fragment(new (std::nothrow) Fragment);
    if (fragment)
    {
        fragment->tree = &Tree::of(node);
        fragment->root = node;
        if (giveNode(node, fragment.get(), object) == S_OK)
        {
            static_cast<void>(fragment.release());
            // It ends with its objects. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
            return S_OK;
        }
    }
    freeNode(node);
    return E_OUTOFMEMORY;
}

} // namespace qvplatform
