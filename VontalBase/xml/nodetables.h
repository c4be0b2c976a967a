/// @internal
/// @file
/// What a document knows of its nodes.
#pragma once

#include "VontalBase/xml/PointerTable.h"

struct IXMLDOMElement;

namespace qvxml
{

class Node;

/// The nodes that a document owns.
class NodeSet : public PointerTable<Node, bool>
{
};

/// The node of each element, with a reference on the element.
class ElementTable : public PointerTable<IXMLDOMElement, Node *>
{
};

} // namespace qvxml
