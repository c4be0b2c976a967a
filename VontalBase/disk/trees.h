/// @internal
/// @file
/// Removing directories with what is in them.
///
/// Links are removed as links; what they lead to is never touched. The stack does not grow with the depth of
/// a tree, nor does the number of open directories beyond a limit.
#pragma once

#include <string>

namespace qvdisk
{

/// Removes everything in a directory, in the order of the system, up to the first failure.
/// @param directory a path; a link is followed. An empty one is refused.
bool removeContent(const std::wstring & directory);

/// Removes a directory with everything in it; a link as a link. An empty path is refused.
bool removeTree(const std::wstring & directory);

/// Removes an empty directory, also a read-only one.
bool removeOneDirectory(const std::wstring & directory);

} // namespace qvdisk
