/// @internal
/// @file
/// Going through the elements of a document without making nodes, where that can be done.
#pragma once

#include "VontalBase/platform/DirectXml.h"

namespace qvxml
{

class Node;

/// Shows an element and those within it, in the order of the document. The depth costs memory, but no stack.
/// What the visitor throws leaves this call.
void showElements(Node & element, qvplatform::ElementVisitor & visitor);

} // namespace qvxml
