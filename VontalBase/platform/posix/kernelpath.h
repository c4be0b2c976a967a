/// @internal
/// @file
/// Paths as the kernel takes them.
#pragma once

#include <string>
#include <string_view>

namespace qvplatform
{

/// The path with `/` for each `\`, up to its first zero byte. The one place where that is done.
std::string withSlashes(std::string_view path);

/// A path of the library, ready for the calls of the kernel that take an open directory and a path.
///
/// The kernel takes paths up to a certain length. Of a longer one all directories but the last few are opened
/// one behind the other, and the last one is held open as long as the object lives.
class KernelPath
{
public:
    /// A wide path; one that begins with a drive or a share names nothing.
    explicit KernelPath(const std::wstring & path);
    /// The bytes of a path.
    explicit KernelPath(const std::string & path);
    KernelPath(const KernelPath &) = delete;
    KernelPath & operator=(const KernelPath &) = delete;
    ~KernelPath();

    /// The directory that `name` starts from, or the sign for the working directory.
    [[nodiscard]] int directory() const noexcept
    {
        return m_directory;
    }

    /// What is left of the path. Empty, which is the name of nothing, where the path can name nothing.
    [[nodiscard]] const char * name() const noexcept
    {
        return m_path.c_str() + m_start;
    }

    /// All of the path.
    [[nodiscard]] const std::string & text() const noexcept
    {
        return m_path;
    }

private:
    void shorten();
    void close() noexcept;

    std::string m_path;
    std::size_t m_start = 0;
    int m_directory;
};

} // namespace qvplatform
