/// @internal
/// @file
/// What a document knows of its nodes.
#pragma once

#include "VontalBase/xml/NodeArena.h"
#include "VontalBase/xml/PointerTable.h"

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
    /// Of those that have their node noted at themselves the elements that were given a node. The node may
    /// have been replaced, or be in the other table.
    PointerTable<IXMLDOMElement, bool> noted;
    /// Those that have it not.
    PointerTable<IXMLDOMElement, Node *> others;
};

} // namespace qvxml
