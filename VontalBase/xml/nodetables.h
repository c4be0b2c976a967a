/// @internal
/// @file
/// What a document knows of its nodes.
#pragma once

#include "VontalBase/xml/NodeArena.h"
#include "VontalBase/xml/PointerTable.h"

#include <vector>

struct IXMLDOMElement;

namespace qvxml
{

class Node;

/// The nodes that a document owns.
struct NodeSet
{
    /// Those that it has made.
    NodeArena made;
    /// Those that it was given.
    PointerTable<Node, bool> given;
};

/// The node of each element, with a reference on the element.
struct ElementTable
{
    /// Elements that have their node noted at themselves.
    std::vector<IXMLDOMElement *> noted;
    /// The other ones.
    PointerTable<IXMLDOMElement, Node *> others;
};

} // namespace qvxml
