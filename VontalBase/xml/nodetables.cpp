#include "VontalBase/xml/nodetables.h"

#include "VontalBase/platform/DirectXml.h"
#include "VontalBase/xml/XMLDocPtr.h"

namespace qvxml
{

Node * NodeSet::nodeOf(
    const NodeOwner & owner, IXMLDOMElement & element, const qvplatform::DirectXml * direct)
{
    if (Node * const known = owner.elements->find(element, direct))
        return known;
    XMLNodeImpl & node = made.make(owner.document, &element, direct);
    try
    {
        owner.elements->enter(node, element, direct);
    }
    catch (...)
    {
        made.removeLast();
        throw;
    }
    return &node;
}

Node * ElementTable::find(IXMLDOMElement & element, const qvplatform::DirectXml * direct)
{
    if (direct != nullptr && direct->note(element).owner == this)
        return static_cast<Node *>(direct->note(element).value);
    Node * const * const known = others.find(&element);
    return known != nullptr ? *known : nullptr;
}

void ElementTable::enter(Node & node, IXMLDOMElement & element, const qvplatform::DirectXml * direct)
{
    // Where there is no short way nothing can be noted.
    if (direct != nullptr)
    {
        qvplatform::ElementNote & note = direct->note(element);
        if (note.owner == nullptr)
            element.AddRef();
        if (note.owner == nullptr || note.owner == this)
        {
            note = {this, &node};
            return;
        }
    }
    if (others.insert(&element, &node))
        element.AddRef();
    else
        *others.find(&element) = &node;
}

} // namespace qvxml
