/// @internal
/// @file
/// Indentation.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmltree.h"

#include <string>

namespace qvplatform
{

struct XmlFormat
{
    bool indents = false;
    bool omitsDeclaration = false;
    bool isStandalone = false;
    std::string encoding = "UTF-16";
};

/// How deep lines are indented at most. What is nested deeper stands at that depth, or else a small document
/// could become one of any size.
inline constexpr int greatestIndentation = 256;

/// Puts each child of an element on a line of its own, with one tab a level, and gives the document its
/// declaration.
///
/// All nodes but texts of white space stay the same. An element with other text, or with
/// `xml:space="preserve"`, stays as it is with all below it. Where memory is short a part of the document may
/// have been indented.
HRESULT formatTree(Tree & tree, const XmlFormat & format);

} // namespace qvplatform
