/// @internal
/// @file
/// Adding directory trees to archives.
#pragma once

#include "VontalBase/zip/ziphandle.h"

#include <string>

namespace zip
{

/// Adds a directory with everything in it. The stack does not grow with the depth of the tree, nor does the
/// number of open directories beyond a limit.
/// @param root where the directory is, without a separator at its end.
/// @param directory from there; the names of all items begin with it.
/// @return whether all of what is in it was added.
bool addFolderContent(HZIP archive, const std::wstring & root, const std::wstring & directory);

} // namespace zip
