/// @internal
/// @file
/// Lists of children and maps of attributes. They follow what happens to the node.
#pragma once

#include "VontalBase/platform/com.h"

namespace qvplatform
{

/// @param owner the object of the node, which the list keeps alive.
HRESULT makeNodeList(IUnknown * owner, IXMLDOMNodeList ** list) noexcept;
/// @param owner the object of the element, which the map keeps alive.
HRESULT makeAttributeMap(IUnknown * owner, IXMLDOMNamedNodeMap ** map) noexcept;

} // namespace qvplatform
