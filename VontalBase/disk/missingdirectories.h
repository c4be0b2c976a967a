/// @internal
/// @file
/// Making the directories of a path whose beginning is known.
#pragma once

#include <cstddef>
#include <string>

namespace qvdisk
{

/// Makes the missing directories of a path, as `createDirectories` does.
/// @param known how many code units of @p path name a directory that this gave true for before, up to a
///     separator; 0 for none. That part is not looked at again.
bool createMissingDirectories(const std::wstring & path, std::size_t known);

} // namespace qvdisk
