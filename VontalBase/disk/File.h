/// @file
/// A path with operations.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/pstring.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace Vontal
{
class u8string;
}

namespace qvbase
{
class EarthTime;
}

namespace qvdisk
{

class FileEnumerator;
class FileReader;
class FileWriter;

/// A path with operations. It holds the path and nothing else, neither an open file nor what was learnt of
/// one, so every operation goes to the disk anew.
///
/// The path is held without one `\` at its end, so `C:\` is held as `C:`. A final `/` stays. The operations
/// on names work on the text alone.
///
/// Kept: `isFile`, `isDirectory` and `exists` take `C:` for the root of the drive; the others hand it to the
/// system as it stands.
///
/// None of the operations throws but by `std::bad_alloc`, and `getEntries` by what its enumerator throws; why
/// the system refused is not told. An object belongs to one thread at a time; two that name one file meet at
/// the disk only.
class VONTALBASE_API File
{
public:
    /// An empty path.
    File() = default;
    /// Copies what the other one has.
    File(const File &) = default;
    /// Takes a path.
    File(const std::wstring & name);
    /// Takes a path in UTF-8, up to its first zero byte.
    File(const Vontal::u8string & name);
    /// Takes a path; null gives an empty one.
    File(const wchar_t * name);
    /// Takes a path and appends to it as `append` does.
    File(const std::wstring & name, const std::wstring & child);
    /// Takes a path and appends to it as `append` does.
    File(const Vontal::u8string & name, const Vontal::u8string & child);

    /// Destroys the object and nothing else.
    virtual ~File() = default;

    /// What stands behind the last separator: all of a path without one, nothing of a path that ends in one.
    virtual Vontal::pstring getLeafName();
    /// The leaf in front of its last dot; all of a leaf without one, nothing of one that begins with its only
    /// dot.
    virtual Vontal::pstring getLeafNameBody();
    /// What begins with the last dot of the path; empty where there is none or where a separator stands
    /// behind it.
    virtual Vontal::pstring getExtension();
    /// The path in front of the leaf. Kept: unlike that of `extractParentDir`, it ends in the separator.
    virtual Vontal::pstring getParentPath();

    /// Whether the path names a regular file, or links to one.
    virtual bool isFile() const;
    /// Whether the path names a directory, or links to one. The name of a share is one, and nobody is asked.
    virtual bool isDirectory() const;
    /// Whether the path begins with two `\`.
    virtual bool isUNC() const;
    /// Whether the path names a share and nothing below it, such as `\\server\share`.
    virtual bool isUNCShareName() const;
    /// Whether the path names anything, which for a share means that it can be listed.
    virtual bool exists();

    /// Opens a stream. While it is open others can read the file but not write to it: this library refuses a
    /// second stream for writing, and one for reading beside one for writing, in the same process and between
    /// processes. A refused call never empties the file.
    /// @param mode as for `fopen`; not null.
    /// @return the stream, which the caller closes; null if the open failed.
    virtual std::FILE * open(const char * mode);
    /// Opens the file with mode "rb".
    /// @return a new object that the caller deletes; null if the open failed.
    virtual FileReader * openForRead();
    /// Opens the file with mode "wb", which empties it.
    /// @return a new object that the caller deletes; null if the open failed.
    virtual FileWriter * openForWrite();

    /// The size in bytes, as `qvdisk::getFileSize` tells it; -1 where there is none.
    virtual std::int64_t getFileSize() const;
    /// Makes one directory; those above it must be there. @return whether it was made.
    virtual bool mkdir();
    /// Tells of each entry of the directory but "." and "..", in the order of the system, one level deep.
    /// @param enumerator is told; not null.
    /// @return false if the directory could not be listed to its end, or if the enumerator stopped the walk.
    virtual bool getEntries(FileEnumerator * enumerator);
    /// Removes a file, or a directory. A link is removed as a link, and what it leads to stays.
    /// @param recursive removes first what is in a directory; without it, one that is not empty stays.
    /// @return whether it was removed; what was removed up to a failure stays removed.
    virtual bool remove(bool recursive);
    /// Whether it is a directory without entries or a file without bytes. False for anything else.
    virtual bool isEmpty() const;
    /// When the file was last written to.
    /// @param time receives the moment in UTC, in whole seconds; it is left alone where the result is false.
    virtual bool getModificationTime(qvbase::EarthTime & time) const;

    /// The path as it is held.
    const Vontal::pstring & getPath() const noexcept
    {
        return path;
    }

    /// Replaces the path.
    void setPath(const std::wstring & name);
    /// Replaces the path by one in UTF-8.
    void setPath(const Vontal::u8string & name);

    /// Appends `\`, unless the path ends in one, and then @p child.
    ///
    /// Kept: to an empty path the `\` is appended too.
    File & append(const std::wstring & child);
    /// The same with UTF-8.
    File & append(const Vontal::u8string & child);
    /// The same; null changes nothing.
    File & append(const wchar_t * child);

    /// Copies what the other one has.
    File & operator=(const File &) = default;

protected:
    /// Removes one `\` from the end of the path, unless the path is `\\`.
    void stripLastSlash();

    /// The path, in 16-bit units.
    Vontal::pstring path;
};

} // namespace qvdisk
