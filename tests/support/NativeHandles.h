/// @file
/// Open files and pipes by their handles, and the times of files, as the system itself gives them.
#pragma once

#include <cstdint>
#include <string>

namespace testsupport
{

/// An open file or the end of a pipe; on Linux a descriptor in the form of a pointer.
using NativeHandle = void *;

/// Owns a handle.
class OwnedHandle
{
public:
    OwnedHandle() noexcept = default;
    explicit OwnedHandle(NativeHandle handle) noexcept : m_handle(handle)
    {
    }
    OwnedHandle(OwnedHandle && other) noexcept : m_handle(other.m_handle)
    {
        other.m_handle = nullptr;
    }
    OwnedHandle & operator=(OwnedHandle && other) noexcept
    {
        close();
        m_handle = other.m_handle;
        other.m_handle = nullptr;
        return *this;
    }
    OwnedHandle(const OwnedHandle &) = delete;
    OwnedHandle & operator=(const OwnedHandle &) = delete;
    ~OwnedHandle()
    {
        close();
    }

    /// Null where nothing is open.
    [[nodiscard]] NativeHandle get() const noexcept
    {
        return m_handle;
    }

    void close() noexcept;

private:
    NativeHandle m_handle = nullptr;
};

enum class HandleAccess
{
    Read,
    Write,
    ReadWrite,
    /// Each write goes to the end of the file.
    Append
};

/// Opens a file, others being let to it as well; one to be written to is made where it is missing, and never
/// emptied. The test fails where that fails.
/// @param path in UTF-8.
OwnedHandle openHandle(const std::string & path, HandleAccess access);

/// Opens a directory like a file for reading. The test fails where that fails.
OwnedHandle openDirectory(const std::string & path);

/// The two ends of a new pipe, which holds a mebibyte where the system lets it.
struct HandlePipe
{
    HandlePipe();

    OwnedHandle readEnd;
    OwnedHandle writeEnd;
};

/// Reads to the end of a file or pipe.
std::string readToEnd(NativeHandle handle);

/// Writes all of the bytes. @return whether the system took them.
bool writeToHandle(NativeHandle handle, const std::string & bytes);

std::uint64_t handlePosition(NativeHandle handle);
void setHandlePosition(NativeHandle handle, std::uint64_t position);

/// In seconds since 1970, in UTC.
struct TimesOfFile
{
    std::int64_t accessed = 0;
    std::int64_t changed = 0;
    /// That of the last change where the system keeps none.
    std::int64_t created = 0;
};

TimesOfFile timesOfFile(const std::string & path);

/// Sets the times but for the creation, which stays where the system does not let it be set. The test fails
/// where that fails.
void setTimesOfFile(const std::string & path, const TimesOfFile & times);

} // namespace testsupport
