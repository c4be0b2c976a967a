// What the tests of unpacking share.
#pragma once

#include "support/TempDirectory.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ziptest
{

/// Everything below a directory, in order, with `/` between components and one behind each directory.
inline std::vector<std::string> treeOf(const std::filesystem::path & root)
{
    std::vector<std::string> names;
    if (!std::filesystem::exists(root))
        return names;
    for (const auto & entry : std::filesystem::recursive_directory_iterator(root))
    {
        const std::u8string name = entry.path().lexically_relative(root).generic_u8string();
        const bool isDirectory = entry.is_directory() && !entry.is_symlink();
        names.push_back(std::string(name.begin(), name.end()) + (isDirectory ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// A directory for an archive, `a.zip`, and for what comes out of it, `out`.
class Unzipping : public testing::Test
{
protected:
    ~Unzipping() override
    {
        directory.clear();
    }

    /// What came out.
    [[nodiscard]] std::vector<std::string> tree() const
    {
        return treeOf(directory.path() / "out");
    }

    testsupport::TempDirectory directory;
    const std::string zipPath = directory.text("a.zip");
    const std::string target = directory.text("out");
};

} // namespace ziptest
