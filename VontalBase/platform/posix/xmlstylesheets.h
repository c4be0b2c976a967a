/// @internal
/// @file
/// Stylesheets.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmltree.h"

namespace qvplatform
{

/// Applies a stylesheet to the document of a node, see `IXMLDOMNode::transformNodeToObject`.
HRESULT transformInto(const NodePlace & place, IXMLDOMNode * stylesheet, const VARIANT & target) noexcept;

} // namespace qvplatform
