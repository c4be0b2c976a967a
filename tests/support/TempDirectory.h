/// @file
/// A fresh temporary directory for one test.
#pragma once

#include <filesystem>
#include <string>

namespace testsupport
{

/// Makes a directory that nobody else has and removes it in the end. A test cleans up behind itself: what
/// is then still in the directory fails the test.
class TempDirectory
{
public:
    TempDirectory();
    TempDirectory(const TempDirectory &) = delete;
    TempDirectory & operator=(const TempDirectory &) = delete;
    ~TempDirectory();

    [[nodiscard]] const std::filesystem::path & path() const noexcept;

    /// The path in UTF-8, in the form that the system itself uses, without a final separator.
    [[nodiscard]] std::string text() const;

    /// The path of something in the directory, likewise. `name` is UTF-8.
    [[nodiscard]] std::string text(const std::string & name) const;

    /// Makes a file with these bytes, and says where it is.
    std::string write(const std::string & name, const std::string & bytes) const;

    /// The bytes of a file in the directory; the test fails if it cannot be read.
    [[nodiscard]] std::string read(const std::string & name) const;

    [[nodiscard]] bool contains(const std::string & name) const;

    /// Removes a file or an empty directory; the test fails if it is not there.
    void remove(const std::string & name) const;

    /// Removes everything in it, for tests that make whole trees.
    void clear() const;

private:
    [[nodiscard]] std::filesystem::path inside(const std::string & name) const;

    std::filesystem::path path_;
};

} // namespace testsupport
