/// @internal
/// @file
/// Where extracted items go: files with their directories, and handles.
#pragma once

#include "VontalBase/platform/handles.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zip
{

/// Makes a directory and those above it, of which none need exist. No failure is told.
/// @param root what stands in front of the path; empty for none being known, and then nothing is made.
void makeDirectories(const std::wstring & root, std::wstring_view path);

/// The directory part of the name of a file that is to be made: all in front of its last separator.
/// @return empty where there is none, or where the name might lead out of the directory that it is to be in.
std::wstring_view safeDirectoryPart(std::wstring_view name) noexcept;

/// What an item is written to: a file that is closed in the end, or somebody's handle.
class Output
{
public:
    /// A handle that stays open.
    explicit Output(qvplatform::Handle handle) noexcept;
    /// A new file, or an emptied one.
    /// @param attributes as for `qvplatform::createForWriting`.
    Output(const std::wstring & path, std::uint32_t attributes);
    Output(const Output &) = delete;
    Output & operator=(const Output &) = delete;
    ~Output();

    [[nodiscard]] bool isOpen() const noexcept;

    /// What is written to; it stays this one's.
    [[nodiscard]] qvplatform::Handle handle() const noexcept
    {
        return m_handle;
    }

    bool write(const void * data, std::size_t size) noexcept;

    /// Closes a file, and leaves a handle that is somebody's open.
    /// @return false where the system tells only now that it did not take everything.
    bool close() noexcept;

    /// Dates a file of the disk; what else there is stays as it is. No failure is told.
    void setTimes(std::uint64_t created, std::uint64_t accessed, std::uint64_t changed) noexcept;

private:
    bool isDiskFile() noexcept;

    qvplatform::Handle m_handle;
    bool m_isOwned;
    /// Empty until somebody asks.
    std::optional<bool> m_isDiskFile;
};

} // namespace zip
