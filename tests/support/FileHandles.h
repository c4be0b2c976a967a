/// @file
/// Open files and pipes in the form in which the zip functions take them: the system's own handles on
/// Windows, descriptors elsewhere.
#pragma once

#include <cstdint>
#include <string>

namespace testsupport
{

/// An open file or the end of a pipe, closed in the end. Paths are UTF-8, as the system writes them.
class FileHandle
{
public:
    FileHandle() noexcept = default;
    FileHandle(FileHandle && other) noexcept;
    FileHandle & operator=(FileHandle && other) noexcept;
    ~FileHandle();

    /// A file that exists; others may write to it meanwhile. A failure fails the test.
    static FileHandle forReading(const std::string & path);
    /// A new file, or an emptied one, that can be read as well. A failure fails the test.
    static FileHandle forWriting(const std::string & path);
    /// A file that exists, from its beginning. A failure fails the test.
    static FileHandle forChanging(const std::string & path);

    /// What the zip functions take.
    [[nodiscard]] void * get() const noexcept
    {
        return m_handle;
    }

    void close() noexcept;

    /// In bytes from the beginning of a file.
    void seek(std::uint64_t position) const;
    [[nodiscard]] std::uint64_t position() const;

    void write(const std::string & bytes) const;

    /// All bytes up to the end of the file, or until nobody can write to the pipe any more.
    [[nodiscard]] std::string readRest() const;

private:
    friend struct Pipe;

    explicit FileHandle(void * handle) noexcept : m_handle(handle)
    {
    }

    void * m_handle = nullptr;
};

/// Both ends of a pipe. A failure fails the test.
struct Pipe
{
    Pipe();

    FileHandle readEnd;
    FileHandle writeEnd;
};

/// In units of 100 nanoseconds since 1601, in UTC.
struct FileTimes
{
    /// The change where the system keeps no such time, or lets nobody set it.
    std::uint64_t created = 0;
    std::uint64_t accessed = 0;
    std::uint64_t changed = 0;
};

/// The times of a file. A failure fails the test.
FileTimes timesOf(const std::string & path);

} // namespace testsupport
