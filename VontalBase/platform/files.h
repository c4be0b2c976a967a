/// @internal
/// @file
/// Files and directories by their paths.
///
/// A wide path is one of the library's: `\` and `/` separate, and it ends at its first NUL. Where there are
/// no drives and shares, a path that begins with one, `C:\` or `\\`, names nothing. Paths may be longer than
/// what the system takes at once. Every function tells no more than whether it worked, and may be called from
/// any thread. None throws but `std::bad_alloc`.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace qvplatform
{

/// What the system says of a file.
struct FileStatus
{
    enum class Kind
    {
        Regular,
        Directory,
        /// A device, a pipe and the like.
        Other
    };

    Kind kind = Kind::Other;
    /// In bytes; of no meaning for what is not a regular file.
    std::int64_t size = 0;
    /// When it was last written to, in seconds since 1970.
    std::int64_t modificationTime = 0;
};

/// The state of what a path names; links are followed.
/// @return false, with `status` left alone, where the path names nothing.
bool readFileStatus(const std::wstring & path, FileStatus & status);

/// The same for a path in the encoding of the system's narrow functions.
bool readFileStatus(const std::string & path, FileStatus & status);

/// Whether a path names a symbolic link or what is like one, be it dangling or not. Separators at the path's
/// end do not matter.
bool isLink(const std::wstring & path);

/// Opens a stream. While it is open, nobody can open the file for writing by this function, in this process
/// or another; nor does it open while somebody has the file open for writing. A file is emptied only after
/// that is settled. Child processes do not get the stream where the system lets us choose. A directory does
/// not open.
/// @param mode as for `fopen`.
/// @return the stream, which the caller closes; null where the system or somebody else's stream refuses, or
///     where the mode means nothing.
std::FILE * openStream(const std::wstring & path, const std::string & mode);

/// Lets others open the file of a stream that is about to be closed, where that takes more than closing it: a
/// child process that another thread starts at this moment may hold the stream a little longer. What was
/// written must have been flushed.
void giveLockBack(std::FILE * stream) noexcept;

/// Writes all of the bytes and has them arrive at the system, which is done in one call where the system can
/// do that. Some may have been written where it fails.
bool writeToSystem(std::FILE * stream, const void * data, std::size_t size) noexcept;

/// Makes an empty file for this user alone, unless there is something of that name: then the result is false.
bool createNewFile(const std::wstring & path);

/// Copies the bytes of a file, the time of its last change and its being read-only or not, onto a file that
/// may exist. It fails, and the file stays, where somebody has the target open. What a failed copying has
/// written stays.
bool copyFile(const std::wstring & source, const std::wstring & target);

/// Removes a file, or a link as a link; on Windows one to a directory is for `removeDirectory`. A directory
/// is never removed.
bool removeFile(const std::wstring & path);

/// Makes one directory.
bool makeDirectory(const std::wstring & path);

/// Removes an empty directory; what links to a directory is removed as a link.
bool removeDirectory(const std::wstring & path);

/// Makes a file or directory one that may be written to by its owner. Nothing happens to what a link names.
/// On Windows it loses its other attributes too, hidden among them. No failure is reported.
void clearReadOnly(const std::wstring & path);

} // namespace qvplatform
