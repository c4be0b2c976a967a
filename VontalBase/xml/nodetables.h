/// @internal
/// @file
/// What a document knows of its nodes.
#pragma once

#include "VontalBase/xml/NodeBlocks.h"
#include "VontalBase/xml/PointerTable.h"

struct IXMLDOMElement;

namespace qvplatform
{
class DirectXml;
}

namespace qvxml
{

class Node;

class XMLDocPtr;
struct ElementTable;

/// A document with its elements.
struct NodeOwner
{
    XMLDocPtr * document;
    ElementTable * elements;
};

/// The nodes that a document owns.
struct NodeSet
{
    /// The node of an element, made where there is none.
    /// @param direct the short way to the element, or null.
    Node * nodeOf(const NodeOwner & owner, IXMLDOMElement & element, const qvplatform::DirectXml * direct);

    /// Those that it has made.
    NodeBlocks made;
    /// Those that it was given.
    PointerTable<Node, bool> given;
};

/// The node of each element, with a reference on the element.
struct ElementTable
{
    /// The node of an element, or null.
    Node * find(IXMLDOMElement & element, const qvplatform::DirectXml * direct);
    /// Makes a node the one of an element.
    void enter(Node & node, IXMLDOMElement & element, const qvplatform::DirectXml * direct);

    /// Of those that have their node noted at themselves the elements that were given a node. The node may
    /// have been replaced, or be in the other table.
    PointerTable<IXMLDOMElement, bool> noted;
    /// Those that have it not.
    PointerTable<IXMLDOMElement, Node *> others;
};

} // namespace qvxml
