/// @internal
/// @file
/// Elements of documents.
#pragma once

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"

namespace qvxml
{

class ComText;

using NodeReference = qvbase::ReferenceMSCom<IXMLDOMNode>;
using ElementReference = qvbase::ReferenceMSCom<IXMLDOMElement>;

/// Makes an element and appends it to @p parent, which may be the document. Null where the service refuses.
ElementReference appendElement(IXMLDOMDocument & document, IXMLDOMNode & parent, const ComText & name);

} // namespace qvxml
