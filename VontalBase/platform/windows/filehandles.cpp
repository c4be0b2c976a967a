#include "VontalBase/platform/filehandles.h"

#include "VontalBase/platform/filetimeunits.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/kernelpath.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <algorithm>
#include <limits>
#include <winternl.h>

namespace qvplatform
{

namespace
{

/// What a file can be made with.
constexpr std::uint32_t settableAttributes =
    attribute::readOnly | attribute::hidden | attribute::system | attribute::archive | attribute::normal;

/// As much as is asked of the system at once.
constexpr std::size_t largestPiece = std::size_t{1} << 30;

/// The half of what is left, where a gate cuts a piece short.
DWORD pieceOf(std::size_t left, GateAnswer answer) noexcept
{
    const std::size_t piece = std::min(left, largestPiece);
    return static_cast<DWORD>(answer == GateAnswer::CutShort ? (piece + 1) / 2 : piece);
}

bool isEnd(DWORD error) noexcept
{
    return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF;
}

/// @param position where to read; null for where the handle stands.
bool readAll(Handle handle, const std::uint64_t * position, char * buffer, std::size_t size,
    std::size_t & count) noexcept
{
    GateAnswer answer = passGate("read file");
    if (answer == GateAnswer::Fail)
        return false;
    std::size_t done = 0;
    while (done < size)
    {
        OVERLAPPED place = {};
        const std::uint64_t offset = position != nullptr ? *position + done : 0;
        place.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFU);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD got = 0;
        const bool isRead = ReadFile(handle, buffer + done, pieceOf(size - done, answer), &got,
                                position != nullptr ? &place : nullptr) != FALSE;
        answer = GateAnswer::Pass;
        if (!isRead && !isEnd(GetLastError()))
        {
            if (done == 0)
                return false;
            break;
        }
        if (got == 0)
            break;
        done += got;
    }
    count = done;
    return true;
}

std::uint64_t joined(DWORD high, DWORD low) noexcept
{
    return (std::uint64_t{high} << 32) | low;
}

bool moveTo(Handle handle, LONGLONG distance, DWORD from, std::uint64_t & position) noexcept
{
    LARGE_INTEGER wanted = {};
    wanted.QuadPart = distance;
    LARGE_INTEGER place = {};
    if (!SetFilePointerEx(handle, wanted, &place, from))
        return false;
    position = static_cast<std::uint64_t>(place.QuadPart);
    return true;
}

} // namespace

Handle openForReading(const std::wstring & path)
{
    if (gateFails("open file for reading"))
        return invalidHandle();
    return CreateFileW(kernelPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
        FILE_ATTRIBUTE_NORMAL, nullptr);
}

Handle createForWriting(const std::wstring & path, std::uint32_t attributes)
{
    if (gateFails("create file for writing"))
        return invalidHandle();
    return CreateFileW(kernelPath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
        attributes & settableAttributes, nullptr);
}

Handle duplicateHandle(Handle handle) noexcept
{
    const HANDLE self = GetCurrentProcess();
    HANDLE result = nullptr;
    if (gateFails("duplicate handle") ||
        !DuplicateHandle(self, handle, self, &result, 0, FALSE, DUPLICATE_SAME_ACCESS))
    {
        return invalidHandle();
    }
    return result;
}

bool isDiskFile(Handle handle) noexcept
{
    return !gateFails("kind of file") && GetFileType(handle) == FILE_TYPE_DISK;
}

bool alwaysAppends(Handle handle) noexcept
{
    using Query = NTSTATUS(NTAPI *)(HANDLE, OBJECT_INFORMATION_CLASS, PVOID, ULONG, PULONG);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryObject")));
    PUBLIC_OBJECT_BASIC_INFORMATION information = {};
    if (query == nullptr ||
        query(handle, ObjectBasicInformation, &information, sizeof(information), nullptr) != 0)
    {
        return false;
    }
    return (information.GrantedAccess & (FILE_WRITE_DATA | FILE_APPEND_DATA)) == FILE_APPEND_DATA;
}

bool readBytes(Handle handle, void * buffer, std::size_t size, std::size_t & count) noexcept
{
    return readAll(handle, nullptr, static_cast<char *>(buffer), size, count);
}

bool readBytesAt(
    Handle handle, std::uint64_t position, void * buffer, std::size_t size, std::size_t & count) noexcept
{
    return readAll(handle, &position, static_cast<char *>(buffer), size, count);
}

bool writeBytes(Handle handle, const void * data, std::size_t size, std::size_t & count) noexcept
{
    count = 0;
    GateAnswer answer = passGate("write file");
    if (answer == GateAnswer::Fail)
        return false;
    while (count < size)
    {
        DWORD written = 0;
        const bool isWritten = WriteFile(handle, static_cast<const char *>(data) + count,
                                   pieceOf(size - count, answer), &written, nullptr) != FALSE;
        answer = GateAnswer::Pass;
        count += written;
        if (!isWritten || written == 0)
            return false;
    }
    return true;
}

bool writeToDisk(Handle handle, const void * data, std::size_t size, std::size_t & count) noexcept
{
    return writeBytes(handle, data, size, count);
}

bool seekTo(Handle handle, std::uint64_t position) noexcept
{
    std::uint64_t place = 0;
    return !gateFails("seek in file") &&
           position <= static_cast<std::uint64_t>(std::numeric_limits<LONGLONG>::max()) &&
           moveTo(handle, static_cast<LONGLONG>(position), FILE_BEGIN, place);
}

bool tellPosition(Handle handle, std::uint64_t & position) noexcept
{
    return !gateFails("tell position") && moveTo(handle, 0, FILE_CURRENT, position);
}

bool cutFile(Handle handle, std::uint64_t size) noexcept
{
    FILE_END_OF_FILE_INFO end = {};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    return !gateFails("cut file") &&
           size <= static_cast<std::uint64_t>(std::numeric_limits<LONGLONG>::max()) &&
           SetFileInformationByHandle(handle, FileEndOfFileInfo, &end, sizeof(end)) != FALSE;
}

bool readFileSize(Handle handle, std::uint64_t & size) noexcept
{
    LARGE_INTEGER length = {};
    if (gateFails("size of file") || !GetFileSizeEx(handle, &length))
        return false;
    size = static_cast<std::uint64_t>(length.QuadPart);
    return true;
}

bool readFileInformation(Handle handle, FileInformation & information) noexcept
{
    BY_HANDLE_FILE_INFORMATION data = {};
    if (gateFails("file information") || !GetFileInformationByHandle(handle, &data))
        return false;
    information.attributes = data.dwFileAttributes;
    information.size = joined(data.nFileSizeHigh, data.nFileSizeLow);
    information.created = unitsOf(data.ftCreationTime);
    information.accessed = unitsOf(data.ftLastAccessTime);
    information.changed = unitsOf(data.ftLastWriteTime);
    return true;
}

bool setFileTimes(
    Handle handle, std::uint64_t created, std::uint64_t accessed, std::uint64_t changed) noexcept
{
    const FILETIME creation = fileTimeOf(created);
    const FILETIME access = fileTimeOf(accessed);
    const FILETIME change = fileTimeOf(changed);
    return !gateFails("set file times") && SetFileTime(handle, &creation, &access, &change) != FALSE;
}

Handle createNewForWriting(const std::wstring & path)
{
    if (gateFails("create new file"))
        return invalidHandle();
    return CreateFileW(
        kernelPath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool closeWritten(Handle handle) noexcept
{
    const bool isClosed = CloseHandle(handle) != FALSE;
    return !gateFails("close file") && isClosed;
}

bool replaceFile(const std::wstring & from, const std::wstring & to)
{
    return !gateFails("replace file") &&
           MoveFileExW(kernelPath(from).c_str(), kernelPath(to).c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

} // namespace qvplatform
