/// @file
/// Whole files at a time.
///
/// All functions report by their results, and why the system refused is not told but by the one `save` that
/// takes a text for it. None throws but by `std::bad_alloc` and `std::length_error`, and by what the stream
/// of a `save` throws. Any thread may call them. A file that is open for writing through the library, in this
/// process or another, is refused; one that is being read cannot be written. Paths in `std::string` are in
/// the encoding of the system's narrow functions, which is the ANSI code page on Windows and the plain bytes
/// elsewhere.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace Vontal
{
class u8string;
}

namespace qvbase
{
class InputStream;
}

namespace qvdisk
{

/// The size of a file in bytes; a link counts as what it leads to. Of what is not a regular file the number
/// means nothing.
/// @return -1 where the path, or a link that it names, leads to nothing, and where the system does not tell.
VONTALBASE_API std::int64_t getFileSize(const std::string & path);
/// The same for another kind of text.
VONTALBASE_API std::int64_t getFileSize(const std::wstring & path);
/// The same for another kind of text.
VONTALBASE_API std::int64_t getFileSize(const Vontal::u8string & path);

/// Whether there is something of a name, or something that a pattern matches: the last part of the path may
/// hold `*` and `?`. A link counts, wherever it leads.
///
/// Kept: unlike in the other forms, a path that ends in `\` is never found.
VONTALBASE_API bool fileExists(const std::string & path);
/// Whether there is something of a name, or something that a pattern matches: the last part of the path may
/// hold `*` and `?`. A link counts, wherever it leads. One `\` at the end of the path does not matter.
VONTALBASE_API bool fileExists(const std::wstring & path);
/// The same for another kind of text.
VONTALBASE_API bool fileExists(const Vontal::u8string & path);

/// Whether a name, or the first thing that a pattern matches, is a directory or a link to one.
///
/// Kept: a path that ends in a separator, the root of a drive among them, gives false; `File::isDirectory`
/// knows better.
VONTALBASE_API bool isDirectory(const Vontal::u8string & path);

/// Appends the bytes of a file to @p out.
///
/// Kept: a read that fails ends the file quietly, and the result is true all the same.
///
/// @return false, with @p out left alone, if the file cannot be opened.
VONTALBASE_API bool readRawFile(const Vontal::u8string & path, std::string & out);

/// Reads text, in the encoding that its first bytes tell: behind FF FE it is UTF-16 with the low byte first,
/// behind EF BB BF UTF-8, and without either of these UTF-8 as it stands. The text ends at its first zero
/// character.
///
/// Kept: FE FF tells nothing, and no other encoding is ever tried.
///
/// @param path the file.
/// @param out is replaced.
/// @return false, with @p out left alone, if the file cannot be opened.
VONTALBASE_API bool readUnicodeTextFile(const Vontal::u8string & path, Vontal::u8string & out);

/// Writes the bytes of a text as they stand: neither line ends nor marks are added or changed.
/// @return whether all of it was written. After a failure what was written stays.
VONTALBASE_API bool writeTextFile(const Vontal::u8string & path, const std::string & text);

/// Writes bytes.
/// @param path the file.
/// @param data null makes the result false, and nothing is touched.
/// @param size in bytes; 0 makes an empty file.
/// @return whether all of it was written. After a failure what was written stays.
VONTALBASE_API bool writeBinaryData(const Vontal::u8string & path, const char * data, unsigned int size);

/// Writes to a file what a stream gives until its end.
/// @param stream must not be null; it is not closed.
/// @param path the file.
/// @return whether the stream was read to its end and all of it was written. After a failure what was written
///     stays.
VONTALBASE_API bool save(qvbase::InputStream * stream, const Vontal::u8string & path);

/// Writes to a file what the buffer of a stream gives until its end. The state of the stream is not asked for
/// and does not change.
/// @param stream may be null, which is a failure.
/// @param path the file.
/// @param error a failure appends its place and what went wrong, which begins with "Wrong parameter",
///     "Cannot create file" or "Cannot write file".
/// @return whether all of it was written. After a failure what was written stays.
VONTALBASE_API bool save(std::istream * stream, const Vontal::u8string & path, std::string & error);

/// Deletes a file, also a read-only one. A link is deleted as a link. Directories are refused.
VONTALBASE_API bool deleteFile(const std::wstring & path);
/// The same for another kind of text.
VONTALBASE_API bool deleteFile(const Vontal::u8string & path);

/// Copies the bytes of a file; neither its attributes nor its times.
///
/// The target is emptied as soon as it could be opened, also where the source could not.
///
/// @return whether all of it was copied. After a failure a part of the target may stay.
VONTALBASE_API bool copy(const Vontal::u8string & source, const Vontal::u8string & target);

/// Appends the MD5 digest of a file to @p digest as 32 lower-case hexadecimal digits.
///
/// Kept: for an empty file, and for one whose size is a multiple of 65536, the result is true and nothing is
/// appended.
///
/// @return whether the file could be read to its end; nothing is appended otherwise.
VONTALBASE_API bool countMD5sum(const Vontal::u8string & path, Vontal::u8string & digest);

} // namespace qvdisk
