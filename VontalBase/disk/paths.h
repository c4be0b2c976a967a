/// @file
/// Path names as text.
///
/// The functions take paths apart and put them together. They touch neither the disk nor any state, resolve
/// neither "." nor "..", change no letter case and make no path absolute. Paths are Windows paths on every
/// system: `\` and `/` both separate when a path is taken apart, and `\` is the one that is added. A zero
/// character is a character like any other, but for `computePrefix` and `nativePath`.
///
/// None of them fails but by `std::bad_alloc`; any thread may call them.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <string>

namespace Vontal
{
class u8string;
}

namespace qvdisk
{

/// Appends a `\` to a path that is empty or does not end in one.
///
/// Kept: only `\` counts as a last slash here, so a path that ends in `/` gets a `\` behind it, and an empty
/// path becomes a lone `\`.
VONTALBASE_API void addLastSlash(std::string & path);
/// The same for another kind of text.
VONTALBASE_API void addLastSlash(std::wstring & path);

/// Removes one `\` or `/` from the end of a path, if there is one. Of a run of them only the last goes.
VONTALBASE_API void removeLastSlash(Vontal::u8string & path);

/// The extension of a path, its dot included.
/// @return what begins with the last dot of the path; empty where there is no dot, or where a separator
///     stands behind the last one. A name that begins with its only dot is all extension.
VONTALBASE_API std::string extractExtension(const std::string & path);
/// The same for another kind of text.
VONTALBASE_API std::wstring extractExtension(const std::wstring & path);
/// The same for another kind of text.
VONTALBASE_API Vontal::u8string extractExtension(const Vontal::u8string & path);

/// The last item of a path.
/// @return what stands behind the last separator: all of a path without one, nothing of a path that ends in
///     one.
VONTALBASE_API std::string extractLastItem(const std::string & path);
/// The same for another kind of text.
VONTALBASE_API std::wstring extractLastItem(const std::wstring & path);
/// The same for another kind of text.
VONTALBASE_API Vontal::u8string extractLastItem(const Vontal::u8string & path);

/// The path without its last item and without one separator in front of that. A path that ends in a separator
/// only loses the separator.
VONTALBASE_API Vontal::u8string extractParentDir(const Vontal::u8string & path);

/// Makes text safe as the name of one file: each of the characters `<` `>` `/` `\` `*` `|` `:` `?` and the
/// double quote becomes "_". All other bytes stay, so that the length does.
VONTALBASE_API Vontal::u8string normalizeFileName(const Vontal::u8string & name);

/// Writes a size as a whole number and a unit: "B", "KB" from 1024 bytes on, "MB" from 1024 of these on.
///
/// Kept: from 1024 MB on the unit is "GB", but the number is still that of the mebibytes, so that 5 GiB read
/// "5120 GB".
///
/// @param size in bytes; negative sizes are written with "B".
/// @param out is overwritten.
VONTALBASE_API void formatFileSize(std::int64_t size, std::string & out);

/// Finds the root of a path: the part that going upward cannot remove, which is that of a drive, `C:\`, or of
/// a share, `\\server\share\`, with all separators behind it.
///
/// Kept: a colon anywhere behind a first letter is taken for that of a drive, so `ab:c` is not well formed.
///
/// Kept: what a letter is, the C locale of the process decides (`iswalpha`).
///
/// @param prefixLength receives the length of the root in elements, or how much of it had been read when the
///     path turned out not to be well formed; it is left alone where @p path is null.
/// @param path NUL-terminated, or null.
/// @return whether the root is well formed. A path without a root is, and so are `C:` and `\\server\share` at
///     their ends; one that begins with a single `\`, an unfinished share, and a drive with anything but a
///     separator behind it are not. False for null.
VONTALBASE_API bool computePrefix(int & prefixLength, const wchar_t * path);

/// The path in the form that other programs on this system take: on Windows the path itself, elsewhere with
/// `/` in the place of each `\`.
/// @param path up to its first zero byte.
VONTALBASE_API Vontal::u8string nativePath(const Vontal::u8string & path);

} // namespace qvdisk
