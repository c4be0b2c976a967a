/// @file
/// Where relative paths begin.
#pragma once

#include <filesystem>

namespace testsupport
{

/// While the object lives, a directory is the working one.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(const std::filesystem::path & path) : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(path);
    }
    WorkingDirectory(const WorkingDirectory &) = delete;
    WorkingDirectory & operator=(const WorkingDirectory &) = delete;
    ~WorkingDirectory()
    {
        std::filesystem::current_path(m_before);
    }

private:
    std::filesystem::path m_before;
};

} // namespace testsupport
