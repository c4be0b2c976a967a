#include "support/TempDirectory.h"

#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

namespace testsupport
{

namespace
{

namespace fs = std::filesystem;

std::string utf8(const fs::path & path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path fromUtf8(const std::string & text)
{
    return fs::path(std::u8string(text.begin(), text.end()));
}

/// The names in a directory tree, for a message.
std::string listing(const fs::path & root)
{
    std::string names;
    std::error_code ignored;
    for (auto at = fs::recursive_directory_iterator(root, ignored); at != fs::recursive_directory_iterator();
         at.increment(ignored))
    {
        names += "\n    " + utf8(at->path().lexically_relative(root));
    }
    return names;
}

/// remove_all, also where a test made something read-only.
void removeTree(const fs::path & root)
{
    std::error_code ignored;
    for (auto at = fs::recursive_directory_iterator(root, ignored); at != fs::recursive_directory_iterator();
         at.increment(ignored))
    {
        if (!at->is_symlink(ignored))
            fs::permissions(at->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
    fs::remove_all(root, ignored);
}

} // namespace

TempDirectory::TempDirectory()
{
    std::random_device random;
    const fs::path parent = fs::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt)
    {
        const std::uint64_t number = (static_cast<std::uint64_t>(random()) << 32) | random();
        fs::path candidate = parent / ("vontalbase-test-" + std::to_string(number));
        std::error_code error;
        if (fs::create_directory(candidate, error))
        {
            path_ = std::move(candidate);
            return;
        }
    }
    throw std::runtime_error("no temporary directory in " + utf8(parent));
}

TempDirectory::~TempDirectory()
{
    const std::string left = listing(path_);
    if (!left.empty())
        ADD_FAILURE() << "the test left behind in " << text() << ":" << left;
    removeTree(path_);
    std::error_code error;
    if (fs::exists(path_, error))
        ADD_FAILURE() << "cannot remove " << text();
}

const fs::path & TempDirectory::path() const noexcept
{
    return path_;
}

std::string TempDirectory::text() const
{
    return utf8(path_);
}

std::string TempDirectory::text(const std::string & name) const
{
    return utf8(inside(name));
}

std::string TempDirectory::write(const std::string & name, const std::string & bytes) const
{
    std::ofstream file(inside(name), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        ADD_FAILURE() << "cannot write " << text(name);
    return text(name);
}

std::string TempDirectory::read(const std::string & name) const
{
    std::ifstream file(inside(name), std::ios::binary);
    if (!file)
        ADD_FAILURE() << "cannot read " << text(name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool TempDirectory::contains(const std::string & name) const
{
    return fs::exists(fs::symlink_status(inside(name)));
}

void TempDirectory::remove(const std::string & name) const
{
    std::error_code error;
    if (!fs::remove(inside(name), error))
        ADD_FAILURE() << "cannot remove " << text(name) << ": "
                      << (error ? error.message() : "it is not there");
}

void TempDirectory::clear() const
{
    for (const fs::directory_entry & entry : fs::directory_iterator(path_))
        removeTree(entry.path());
}

fs::path TempDirectory::inside(const std::string & name) const
{
    return path_ / fromUtf8(name);
}

} // namespace testsupport
