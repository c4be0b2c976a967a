#include "support/NativeHandles.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace testsupport
{

void OwnedHandle::close() noexcept
{
    if (m_handle == nullptr)
        return;
#ifdef _WIN32
    CloseHandle(m_handle);
#else
    ::close(static_cast<int>(reinterpret_cast<std::intptr_t>(m_handle)));
#endif
    m_handle = nullptr;
}

#ifdef _WIN32

namespace
{

std::wstring wide(const std::string & path)
{
    return std::filesystem::path(std::u8string(path.begin(), path.end())).wstring();
}

constexpr std::int64_t unitsOfSecond = 10'000'000;
constexpr std::int64_t secondsTo1970 = 11'644'473'600;

std::int64_t secondsOf(const FILETIME & time)
{
    const auto units =
        static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    return units / unitsOfSecond - secondsTo1970;
}

FILETIME timeOf(std::int64_t seconds)
{
    const auto units = static_cast<std::uint64_t>((seconds + secondsTo1970) * unitsOfSecond);
    return {static_cast<DWORD>(units & 0xFFFFFFFFU), static_cast<DWORD>(units >> 32)};
}

} // namespace

OwnedHandle openHandle(const std::string & path, HandleAccess access)
{
    DWORD rights = (access != HandleAccess::Write ? GENERIC_READ : 0) |
                   (access != HandleAccess::Read ? GENERIC_WRITE : 0);
    if (access == HandleAccess::Append)
        rights = FILE_APPEND_DATA;
    const HANDLE handle = CreateFileW(wide(path).c_str(), rights,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        access == HandleAccess::Read ? OPEN_EXISTING : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(handle, INVALID_HANDLE_VALUE) << path;
    return OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

OwnedHandle openDirectory(const std::string & path)
{
    const HANDLE handle =
        CreateFileW(wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    EXPECT_NE(handle, INVALID_HANDLE_VALUE) << path;
    return OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

HandlePipe::HandlePipe()
{
    HANDLE from = nullptr;
    HANDLE to = nullptr;
    EXPECT_TRUE(CreatePipe(&from, &to, nullptr, 1U << 20U));
    readEnd = OwnedHandle(from);
    writeEnd = OwnedHandle(to);
}

std::string readToEnd(NativeHandle handle)
{
    std::string bytes;
    std::array<char, 65536> piece{};
    DWORD count = 0;
    while (ReadFile(handle, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) && count > 0)
        bytes.append(piece.data(), count);
    return bytes;
}

bool writeToHandle(NativeHandle handle, const std::string & bytes)
{
    DWORD count = 0;
    return WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) &&
           count == bytes.size();
}

std::uint64_t handlePosition(NativeHandle handle)
{
    LARGE_INTEGER place = {};
    EXPECT_TRUE(SetFilePointerEx(handle, LARGE_INTEGER{}, &place, FILE_CURRENT));
    return static_cast<std::uint64_t>(place.QuadPart);
}

void setHandlePosition(NativeHandle handle, std::uint64_t position)
{
    LARGE_INTEGER place = {};
    place.QuadPart = static_cast<LONGLONG>(position);
    EXPECT_TRUE(SetFilePointerEx(handle, place, nullptr, FILE_BEGIN));
}

TimesOfFile timesOfFile(const std::string & path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    EXPECT_TRUE(GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &data)) << path;
    return {
        secondsOf(data.ftLastAccessTime), secondsOf(data.ftLastWriteTime), secondsOf(data.ftCreationTime)};
}

void setTimesOfFile(const std::string & path, const TimesOfFile & times)
{
    const HANDLE handle = CreateFileW(wide(path).c_str(), FILE_WRITE_ATTRIBUTES,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    const FILETIME created = timeOf(times.created);
    const FILETIME accessed = timeOf(times.accessed);
    const FILETIME changed = timeOf(times.changed);
    EXPECT_TRUE(SetFileTime(handle, &created, &accessed, &changed)) << path;
    CloseHandle(handle);
}

#else

namespace
{

int descriptorOf(NativeHandle handle)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

OwnedHandle owned(int descriptor)
{
    return OwnedHandle(descriptor < 0 ? nullptr : reinterpret_cast<void *>(std::intptr_t{descriptor}));
}

} // namespace

OwnedHandle openHandle(const std::string & path, HandleAccess access)
{
    int flags = O_RDONLY;
    if (access != HandleAccess::Read)
        flags = (access == HandleAccess::ReadWrite ? O_RDWR : O_WRONLY) | O_CREAT;
    if (access == HandleAccess::Append)
        flags |= O_APPEND;
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0666);
    EXPECT_GE(descriptor, 0) << path;
    return owned(descriptor);
}

OwnedHandle openDirectory(const std::string & path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_GE(descriptor, 0) << path;
    return owned(descriptor);
}

HandlePipe::HandlePipe()
{
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    // An ordinary pipe does as well where that is refused, if somebody reads it.
    fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
    readEnd = owned(ends[0]);
    writeEnd = owned(ends[1]);
}

std::string readToEnd(NativeHandle handle)
{
    std::string bytes;
    std::array<char, 65536> piece{};
    ssize_t count = 0;
    while ((count = read(descriptorOf(handle), piece.data(), piece.size())) > 0)
        bytes.append(piece.data(), static_cast<std::size_t>(count));
    return bytes;
}

bool writeToHandle(NativeHandle handle, const std::string & bytes)
{
    return write(descriptorOf(handle), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

std::uint64_t handlePosition(NativeHandle handle)
{
    const off_t place = lseek(descriptorOf(handle), 0, SEEK_CUR);
    EXPECT_GE(place, 0);
    return static_cast<std::uint64_t>(place);
}

void setHandlePosition(NativeHandle handle, std::uint64_t position)
{
    EXPECT_GE(lseek(descriptorOf(handle), static_cast<off_t>(position), SEEK_SET), 0);
}

TimesOfFile timesOfFile(const std::string & path)
{
    struct statx status
    {
    };
    EXPECT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &status), 0) << path;
    const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    return {status.stx_atime.tv_sec, status.stx_mtime.tv_sec,
        hasBirth ? status.stx_btime.tv_sec : status.stx_mtime.tv_sec};
}

void setTimesOfFile(const std::string & path, const TimesOfFile & times)
{
    const std::array<timespec, 2> both = {{{times.accessed, 0}, {times.changed, 0}}};
    EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), both.data(), 0), 0) << path;
}

#endif

} // namespace testsupport
