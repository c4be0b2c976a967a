#include "support/FileHandles.h"

#include <array>
#include <gtest/gtest.h>
#include <utility>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <filesystem>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace testsupport
{

namespace
{

#ifdef _WIN32

std::wstring wide(const std::string & path)
{
    return std::filesystem::path(std::u8string(path.begin(), path.end())).wstring();
}

void * openFile(const std::string & path, DWORD access, DWORD creation)
{
    void * const handle = CreateFileW(wide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(handle, INVALID_HANDLE_VALUE) << path;
    return handle == INVALID_HANDLE_VALUE ? nullptr : handle;
}

std::uint64_t unitsOf(const FILETIME & time)
{
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

#else

int descriptorOf(void * handle)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

void * handleOf(int descriptor)
{
    return reinterpret_cast<void *>(static_cast<std::intptr_t>(descriptor));
}

void * openFile(const std::string & path, int flags)
{
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    EXPECT_GT(descriptor, 0) << path;
    return descriptor > 0 ? handleOf(descriptor) : nullptr;
}

std::uint64_t unitsOf(const timespec & time)
{
    return static_cast<std::uint64_t>((time.tv_sec + 11'644'473'600) * 10'000'000 + time.tv_nsec / 100);
}

#endif

} // namespace

FileHandle::FileHandle(FileHandle && other) noexcept : m_handle(std::exchange(other.m_handle, nullptr))
{
}

FileHandle & FileHandle::operator=(FileHandle && other) noexcept
{
    if (this != &other)
    {
        close();
        m_handle = std::exchange(other.m_handle, nullptr);
    }
    return *this;
}

FileHandle::~FileHandle()
{
    close();
}

#ifdef _WIN32

FileHandle FileHandle::forReading(const std::string & path)
{
    return FileHandle(openFile(path, GENERIC_READ, OPEN_EXISTING));
}

FileHandle FileHandle::forWriting(const std::string & path)
{
    return FileHandle(openFile(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS));
}

FileHandle FileHandle::forChanging(const std::string & path)
{
    return FileHandle(openFile(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING));
}

void FileHandle::close() noexcept
{
    if (m_handle != nullptr)
        CloseHandle(std::exchange(m_handle, nullptr));
}

void FileHandle::seek(std::uint64_t position) const
{
    LARGE_INTEGER place = {};
    place.QuadPart = static_cast<LONGLONG>(position);
    EXPECT_TRUE(SetFilePointerEx(m_handle, place, nullptr, FILE_BEGIN));
}

std::uint64_t FileHandle::position() const
{
    LARGE_INTEGER place = {};
    EXPECT_TRUE(SetFilePointerEx(m_handle, LARGE_INTEGER{}, &place, FILE_CURRENT));
    return static_cast<std::uint64_t>(place.QuadPart);
}

void FileHandle::write(const std::string & bytes) const
{
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(m_handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    EXPECT_EQ(written, bytes.size());
}

std::string FileHandle::readRest() const
{
    std::string bytes;
    std::array<char, 65536> piece;
    DWORD count = 0;
    while (ReadFile(m_handle, piece.data(), piece.size(), &count, nullptr) && count > 0)
        bytes.append(piece.data(), count);
    return bytes;
}

Pipe::Pipe()
{
    EXPECT_TRUE(CreatePipe(&readEnd.m_handle, &writeEnd.m_handle, nullptr, 1U << 20));
}

FileTimes timesOf(const std::string & path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    EXPECT_TRUE(GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &data)) << path;
    return {unitsOf(data.ftCreationTime), unitsOf(data.ftLastAccessTime), unitsOf(data.ftLastWriteTime)};
}

#else

FileHandle FileHandle::forReading(const std::string & path)
{
    return FileHandle(openFile(path, O_RDONLY));
}

FileHandle FileHandle::forWriting(const std::string & path)
{
    return FileHandle(openFile(path, O_RDWR | O_CREAT | O_TRUNC));
}

FileHandle FileHandle::forChanging(const std::string & path)
{
    return FileHandle(openFile(path, O_RDWR));
}

void FileHandle::close() noexcept
{
    if (m_handle != nullptr)
        ::close(descriptorOf(std::exchange(m_handle, nullptr)));
}

void FileHandle::seek(std::uint64_t position) const
{
    EXPECT_EQ(
        lseek(descriptorOf(m_handle), static_cast<off_t>(position), SEEK_SET), static_cast<off_t>(position));
}

std::uint64_t FileHandle::position() const
{
    const off_t place = lseek(descriptorOf(m_handle), 0, SEEK_CUR);
    EXPECT_GE(place, 0);
    return static_cast<std::uint64_t>(place);
}

void FileHandle::write(const std::string & bytes) const
{
    std::size_t done = 0;
    while (done < bytes.size())
    {
        const ssize_t count = ::write(descriptorOf(m_handle), bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        ASSERT_GT(count, 0);
        done += static_cast<std::size_t>(count);
    }
}

std::string FileHandle::readRest() const
{
    std::string bytes;
    std::array<char, 65536> piece;
    for (;;)
    {
        const ssize_t count = ::read(descriptorOf(m_handle), piece.data(), piece.size());
        if (count < 0 && errno == EINTR)
            continue;
        EXPECT_GE(count, 0);
        if (count <= 0)
            return bytes;
        bytes.append(piece.data(), static_cast<std::size_t>(count));
    }
}

Pipe::Pipe()
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    readEnd.m_handle = handleOf(ends[0]);
    writeEnd.m_handle = handleOf(ends[1]);
}

FileTimes timesOf(const std::string & path)
{
    struct stat status
    {
    };
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return {unitsOf(status.st_mtim), unitsOf(status.st_atim), unitsOf(status.st_mtim)};
}

#endif

} // namespace testsupport
