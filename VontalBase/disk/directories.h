/// @file
/// Making, listing and emptying directories.
///
/// All functions report by their results, and why the system refused is not told but by `deleteAllFiles`.
/// What was done up to a failure stays done. None throws but by `std::bad_alloc`. Any thread may call them.
///
/// No deletion leaves the directory that it is given: a link in it is removed as a link, and what it leads to
/// stays. The depth of a tree is limited by the disk alone.
#pragma once

#include "VontalBase/export.h"

#include <list>
#include <string>

namespace Vontal
{
class u8string;
}

namespace qvdisk
{

/// Makes one directory. @return whether it was made; false if it was there.
VONTALBASE_API bool createDirectory(const Vontal::u8string & path);

/// Makes a directory and all those above it that are missing.
///
/// Kept: a path that ends in a separator, or has two in a row, gives false at that place, after the
/// directories before it were made.
///
/// @param path one whose root is well formed, as `computePrefix` sees it. Where `/` is the root of all paths,
///     a path may begin with it; elsewhere, and for a single `\` everywhere, the result is false.
/// @return whether all of them are there.
VONTALBASE_API bool createDirectories(const Vontal::u8string & path);

/// Makes a directory and all those above it, as far as that goes.
///
/// Kept: only `\` separates here, and the result is true whatever happened.
///
/// @return true.
VONTALBASE_API bool createDirectories(const std::wstring & path);

/// Removes everything in a directory, in the order of the system, up to the first failure.
/// @param directory an empty path is refused.
/// @return whether everything was removed.
VONTALBASE_API bool deleteDirContent(const Vontal::u8string & directory);

/// Removes a directory and everything in it. A link to a directory is removed as a link.
/// @param directory an empty path is refused.
/// @return whether it was removed.
VONTALBASE_API bool deleteDirectory(const Vontal::u8string & directory);

/// Removes the files in a directory, in the order of the system, up to the first failure. Directories in it
/// are not removed and are such a failure; links are removed as links.
/// @param directory one that cannot be listed holds nothing to delete.
/// @param error a failure appends its place and what went wrong: "Wrong argument directory" for an empty
///     path, or "Cannot remove file: " and the path.
/// @return whether every entry that was listed is gone; a listing that breaks off counts as its end.
VONTALBASE_API bool deleteAllFiles(const std::wstring & directory, std::wstring & error);

/// Appends the names of all entries of a directory but "." and ".." to @p names, in the order of the system.
/// @param directory the directory.
/// @param names receives names without paths; what is in it stays.
/// @return false if the directory could not be listed to its end; names may have been appended by then.
VONTALBASE_API bool getDirectoryContent(
    const Vontal::u8string & directory, std::list<Vontal::u8string> & names);

} // namespace qvdisk
