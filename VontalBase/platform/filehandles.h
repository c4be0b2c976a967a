/// @internal
/// @file
/// Files by their handles, in whole bytes and without buffers.
///
/// Wide paths are as for the functions of files.h. A call that fails leaves its results as they were unless
/// told otherwise. None throws but `std::bad_alloc`, and that only where it takes a path. Each handle belongs
/// to one thread at a time.
#pragma once

#include "VontalBase/platform/handles.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvplatform
{

/// The bits of a file's attributes, with their values on Windows.
namespace attribute
{
constexpr std::uint32_t readOnly = 0x01;
constexpr std::uint32_t hidden = 0x02;
constexpr std::uint32_t system = 0x04;
constexpr std::uint32_t directory = 0x10;
constexpr std::uint32_t archive = 0x20;
constexpr std::uint32_t normal = 0x80;
} // namespace attribute

/// What the system says of an open file. Times are counts of 100 nanoseconds since 1601 in UTC; one that the
/// system does not keep is the time of the last change.
struct FileInformation
{
    std::uint32_t attributes = 0;
    /// In bytes.
    std::uint64_t size = 0;
    std::uint64_t created = 0;
    std::uint64_t accessed = 0;
    std::uint64_t changed = 0;
};

/// Opens a file that exists, for reading. While it is open nobody can open it for writing, and it does not
/// open while somebody has it open for writing. A directory does not open. What is no file, such as a named
/// pipe, does.
/// @return the handle, which the caller closes and no child process gets; `invalidHandle()` where it fails.
Handle openForReading(const std::wstring & path);

/// Makes a file, or empties one that exists, for writing. While it is open nobody else can open it by the
/// functions here and in files.h; nor does it open while somebody has it open, and then it is not emptied.
/// @param attributes of the file, from then on. Elsewhere than on Windows only `readOnly` means something.
/// @return the handle, which the caller closes and no child process gets; `invalidHandle()` where it fails.
Handle createForWriting(const std::wstring & path, std::uint32_t attributes);

/// Makes a second handle with the same rights and the same position, which no child process gets.
/// @return the handle, which the caller closes; `invalidHandle()` where the system refuses.
Handle duplicateHandle(Handle handle) noexcept;

/// Whether a handle is that of a file or directory, and not of a pipe, a terminal or the like.
bool isDiskFile(Handle handle) noexcept;

/// Whether each write goes to the end of the file, wherever the handle of a disk file stands.
bool alwaysAppends(Handle handle) noexcept;

/// Reads the bytes at the handle's position, and moves it.
/// @param count receives how many came: fewer than @p size only where the file or pipe is at its end, or
///     where the system broke off behind the first byte. 0 at the end.
/// @return false where the system refuses before the first byte.
bool readBytes(Handle handle, void * buffer, std::size_t size, std::size_t & count) noexcept;

/// The same for a position of a disk file. Where the handle stands afterwards is not settled.
bool readBytesAt(
    Handle handle, std::uint64_t position, void * buffer, std::size_t size, std::size_t & count) noexcept;

/// Writes all of the bytes at the handle's position, and moves it. Some may have been written where it fails;
/// a pipe that nobody reads is a failure and raises no signal.
/// @param count receives how many the system took, also where it fails.
bool writeBytes(Handle handle, const void * data, std::size_t size, std::size_t & count) noexcept;

/// The same for what `isDiskFile`, where no pipe need be thought of.
bool writeToDisk(Handle handle, const void * data, std::size_t size, std::size_t & count) noexcept;

/// The same where it does not matter how many they were.
inline bool writeBytes(Handle handle, const void * data, std::size_t size) noexcept
{
    std::size_t count = 0;
    return writeBytes(handle, data, size, count);
}

/// The same for a disk file.
inline bool writeToDisk(Handle handle, const void * data, std::size_t size) noexcept
{
    std::size_t count = 0;
    return writeToDisk(handle, data, size, count);
}

/// Puts the handle of a disk file at a position in bytes.
bool seekTo(Handle handle, std::uint64_t position) noexcept;

/// Where the handle of a disk file stands, in bytes.
bool tellPosition(Handle handle, std::uint64_t & position) noexcept;

/// Ends a disk file that is open for writing at a position in bytes.
bool cutFile(Handle handle, std::uint64_t size) noexcept;

/// How long a disk file is, in bytes.
bool readFileSize(Handle handle, std::uint64_t & size) noexcept;

bool readFileInformation(Handle handle, FileInformation & information) noexcept;

/// Sets the three times of a file, in counts of 100 nanoseconds since 1601. A count of 0 leaves that time as
/// it is. The time of its making stays where the system does not let it be set.
/// @return false where the system refuses.
bool setFileTimes(
    Handle handle, std::uint64_t created, std::uint64_t accessed, std::uint64_t changed) noexcept;

/// Makes a file that was not there, for writing; whatever stands at the path, be it a link that leads
/// nowhere, is left alone.
/// @return the handle, which the caller closes and no child process gets; `invalidHandle()` where it fails.
Handle createNewForWriting(const std::wstring & path);

/// Closes the handle of a file that was written.
/// @return false where the system tells only now that it could not write everything. The handle is closed
/// then too.
bool closeWritten(Handle handle) noexcept;

/// Gives a file another path on the same disk, in the place of a file that may be there. A link that is there
/// is replaced itself.
bool replaceFile(const std::wstring & from, const std::wstring & to);

} // namespace qvplatform
