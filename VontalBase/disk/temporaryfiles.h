/// @file
/// Files and directories with names of their own.
///
/// A file is named by a prefix, the time in seconds, the number of the attempt and a suffix, such as
/// `report-1763035509-1.txt`, and lies on the disk, empty, when its name is given out: no two calls, in this
/// process or in others, ever get one name. Who does away with it is the caller's affair; `AutoDeleteFile`
/// does it.
///
/// Where a function gives false, its last argument is left alone. None throws but by `std::bad_alloc`. Any
/// thread may call them.
#pragma once

#include "VontalBase/export.h"

#include <string>

namespace Vontal
{
class u8string;
}

namespace qvdisk
{

class AutoDeleteFile;

/// Makes an empty file with a new name.
/// @param directory where; empty for the system's directory for temporary files.
/// @param prefix what the name begins with; each of `: ? * < > | / \`, the double quote and the apostrophe in
///     it becomes "_". A "-" is put behind it unless it is empty or ends in one.
/// @param suffix what the name ends in, as it stands. A "." is put in front of it unless it is empty or
///     begins with one.
/// @param out receives the path.
/// @return false if no file could be made in 100000 attempts, as in a directory that does not exist.
VONTALBASE_API bool createTempFile(const std::wstring & directory, const std::wstring & prefix,
    const std::wstring & suffix, std::wstring & out);
/// The same in the system's directory for temporary files.
VONTALBASE_API bool createTempFile(
    const std::wstring & prefix, const std::wstring & suffix, std::wstring & out);
/// The same in UTF-8.
VONTALBASE_API bool createTempFile(const Vontal::u8string & directory, const Vontal::u8string & prefix,
    const Vontal::u8string & suffix, Vontal::u8string & out);
/// The same; @p out deletes the file that it holds and holds the new one.
VONTALBASE_API bool createTempFile(const Vontal::u8string & directory, const Vontal::u8string & prefix,
    const Vontal::u8string & suffix, AutoDeleteFile & out);
/// The same in the system's directory for temporary files.
VONTALBASE_API bool createTempFile(
    const Vontal::u8string & prefix, const Vontal::u8string & suffix, Vontal::u8string & out);
/// The same in the system's directory for temporary files; @p out deletes the file that it holds and holds
/// the new one.
VONTALBASE_API bool createTempFile(
    const Vontal::u8string & prefix, const Vontal::u8string & suffix, AutoDeleteFile & out);

/// Makes a copy of a file with a new name in the system's directory for temporary files. It has the time of
/// the source's last change, and is read-only if the source is.
/// @param prefix as for `createTempFile`; the suffix is the extension of @p source.
/// @param source the path of the file to copy.
/// @param out receives the path of the copy.
/// @return false, with no file left, if it could not be made.
VONTALBASE_API bool createTempFileCopy(
    const std::wstring & prefix, const std::wstring & source, std::wstring & out);
/// Makes a copy of the bytes of a file with a new name.
/// @param directory where; empty for the system's directory for temporary files.
/// @param prefix as for `createTempFile`; the suffix is the extension of @p source.
/// @param source the path of the file to copy.
/// @param out receives the path of the copy.
/// @return false, with no file left, if it could not be made.
VONTALBASE_API bool createTempFileCopy(const Vontal::u8string & directory, const Vontal::u8string & prefix,
    const Vontal::u8string & source, Vontal::u8string & out);

/// Makes a directory with a new name in the system's directory for temporary files.
///
/// Kept: the name is not built like that of a file: behind the prefix and the time in seconds stand a "." and
/// a number from `rand`, which the library does not seed, and the prefix is not cleaned.
///
/// @param prefix what the name begins with. A "-" is put behind it unless it is empty or ends in one.
/// @param out receives the path, without a separator at its end.
/// @return false if none could be made in 1000 attempts.
VONTALBASE_API bool createTempDir(const Vontal::u8string & prefix, Vontal::u8string & out);

} // namespace qvdisk
