#include "VontalBase/platform/posix/xmldirect.h"

#include "VontalBase/platform/posix/xmlnodes.h"
#include "VontalBase/platform/posix/xmltext.h"
#include "VontalBase/platform/posix/xmltree.h"

namespace qvplatform
{

namespace
{

ElementObject & objectOf(IXMLDOMElement & element) noexcept
{
    return static_cast<ElementObject &>(element);
}

xmlNode * elementFrom(xmlNode * node) noexcept
{
    while (node != nullptr && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

FoundElement find(xmlNode * node, Fragment * fragment, const void * owner) noexcept
{
    FoundElement found;
    if (node == nullptr)
        return found;
    // Whoever walks asks for one of these next, and memory is what a walk waits for.
    __builtin_prefetch(node->children);
    __builtin_prefetch(node->next);
    if (node->_private != nullptr)
    {
        const ElementNote & note =
            static_cast<ElementObject *>(static_cast<NodeData *>(node->_private))->note;
        if (note.owner == owner)
        {
            found.noted = note.value;
            return found;
        }
    }
    IXMLDOMNode * object = nullptr;
    if (giveNode(node, fragment, &object) == S_OK)
        found.element = static_cast<ElementObject *>(object);
    return found;
}

void begin(const xmlNode * element, ElementVisitor & visitor)
{
    visitor.begin(viewOf(element->name));
    for (xmlAttr * held = element->properties; held != nullptr; held = held->next)
        visitor.attribute(viewOf(held->name), contentOf(asNode(held)));
}

class Direct final : public DirectXml
{
public:
    FoundElement firstElement(IXMLDOMElement & parent, const void * owner) const noexcept override
    {
        const NodePlace place = objectOf(parent).place();
        return find(elementFrom(place.node->children), place.fragment, owner);
    }
    FoundElement nextElement(IXMLDOMElement & element, const void * owner) const noexcept override
    {
        const NodePlace place = objectOf(element).place();
        return find(elementFrom(place.node->next), place.fragment, owner);
    }
    std::string_view name(IXMLDOMElement & element) const noexcept override
    {
        return viewOf(objectOf(element).place().node->name);
    }
    bool attribute(
        IXMLDOMElement & element, std::string_view name, std::string_view & value) const noexcept override
    {
        xmlAttr * const found = findAttribute(objectOf(element).place().node, name);
        if (found == nullptr)
            return false;
        value = contentOf(asNode(found));
        return true;
    }
    bool text(IXMLDOMElement & element, std::string_view & text) const noexcept override
    {
        const xmlNode * const child = objectOf(element).place().node->children;
        if (child != nullptr && child->type != XML_TEXT_NODE)
            return false;
        text = child != nullptr ? contentOf(child) : std::string_view();
        return true;
    }
    void walk(IXMLDOMElement & element, ElementVisitor & visitor) const override
    {
        const xmlNode * const top = objectOf(element).place().node;
        const xmlNode * current = top;
        begin(current, visitor);
        while (current != nullptr)
        {
            const xmlNode * next = elementFrom(current->children);
            while (next == nullptr && current != top)
            {
                visitor.end();
                next = elementFrom(current->next);
                if (next == nullptr)
                    current = current->parent;
            }
            if (next != nullptr)
                begin(next, visitor);
            current = next;
        }
        visitor.end();
    }
    ElementNote & note(IXMLDOMElement & element) const noexcept override
    {
        return objectOf(element).note;
    }
};

constexpr Direct direct;

} // namespace

const DirectXml & directXml() noexcept
{
    return direct;
}

} // namespace qvplatform
