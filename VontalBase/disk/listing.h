/// @internal
/// @file
/// Searching for all that is in a directory.
#pragma once

#include "VontalBase/disk/paths.h"

#include <string>

namespace qvdisk
{

/// The pattern of all entries of a directory.
inline std::wstring allEntriesOf(std::wstring directory)
{
    addLastSlash(directory);
    directory += L'*';
    return directory;
}

} // namespace qvdisk
