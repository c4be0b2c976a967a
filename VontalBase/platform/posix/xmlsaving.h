/// @internal
/// @file
/// From a tree to files, streams and other documents.
#pragma once

#include "VontalBase/platform/com.h"

#include <string_view>

namespace qvplatform
{

class Tree;

/// Writes a document to what a variant names, see `IXMLDOMDocument::save`.
HRESULT saveDocument(Tree & tree, const VARIANT & target) noexcept;

/// Writes bytes to a stream.
HRESULT writeToStream(ISequentialStream & stream, std::string_view bytes) noexcept;

} // namespace qvplatform
