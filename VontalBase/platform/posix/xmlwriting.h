/// @internal
/// @file
/// From a tree to bytes.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmltree.h"

#include <libxml/tree.h>
#include <string>

namespace qvplatform
{

/// Something in the tree cannot be written so that it could be read again.
inline constexpr HRESULT cannotBeWritten = static_cast<HRESULT>(0xC00CE508U);

/// Appends a node, in the bytes of the service; the declaration, if there is one, without its encoding.
HRESULT writeNode(const xmlNode * node, std::string & out);

/// Appends a document in the encoding that its declaration names.
HRESULT writeDocument(const Tree & tree, std::string & out);

} // namespace qvplatform
