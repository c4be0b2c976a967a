#include "VontalBase/disk/AutoDeleteFile.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/temporaryfiles.h"

#include "disk/disksupport.h"
#include "support/ChildProcess.h"
#include "support/NativePaths.h"
#include "support/SecondsNow.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <thread>

namespace
{

using testsupport::TempDirectory;
using testsupport::TemporaryPlace;
using Vontal::u8string;

namespace fs = std::filesystem;

/// The name in a path of the library.
std::string leaf(const std::string & path)
{
    return path.substr(path.find_last_of("\\/") + 1);
}

std::string leaf(const std::wstring & path)
{
    return leaf(u8string(path.c_str()));
}

TEST(CreateTempFile, NamesTheFileByPrefixTimeAndSuffix)
{
    const TempDirectory directory;
    const struct
    {
        const char * label;
        const wchar_t * prefix;
        const wchar_t * suffix;
        const char * expected;
    } rows[] = {
        {"plain", L"report", L"txt", "report-#.txt"},
        {"a prefix that ends in a dash", L"report-", L"txt", "report-#.txt"},
        {"a suffix with its dot", L"report", L".txt", "report-#.txt"},
        {"no prefix", L"", L"txt", "#.txt"},
        {"no suffix", L"a", L"", "a-#"},
        {"neither", L"", L"", "#"},
        {"ten characters are cleaned", L":?*<>\"'|/\\", L"", "__________-#"},
        {"others are not", L"a b.c", L"", "a b.c-#"},
        {"a suffix with a dot further in", L"a", L"b.c", "a-#.b.c"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::wstring out = L"before";
        ASSERT_TRUE(qvdisk::createTempFile(wide(pathOf(directory)), row.prefix, row.suffix, out));
        EXPECT_EQ(out.substr(0, out.find_last_of(L"\\/") + 1), wide(pathOf(directory) + "\\"));
        EXPECT_THAT(leaf(out), HasForm(row.expected));
        EXPECT_EQ(directory.read(leaf(out)), "") << "an empty file";
        directory.clear();
    }
}

TEST(CreateTempFile, PutsTheSecondsIntoTheName)
{
    const TempDirectory directory;
    const std::time_t before = testsupport::secondsNow();
    std::wstring out;
    ASSERT_TRUE(qvdisk::createTempFile(wide(pathOf(directory)), L"a", L"", out));
    const std::time_t after = testsupport::secondsNow();
    const long long named = std::stoll(leaf(out).substr(2));
    EXPECT_GE(named, before);
    EXPECT_LE(named, after);
    directory.clear();
}

TEST(CreateTempFile, CountsAttemptsWhereANameIsTaken)
{
    const TempDirectory directory;
    std::wstring first;
    std::wstring second;
    // The next second may begin in between.
    do
    {
        directory.clear();
        ASSERT_TRUE(qvdisk::createTempFile(wide(pathOf(directory)), L"a", L"txt", first));
        ASSERT_TRUE(qvdisk::createTempFile(wide(pathOf(directory)), L"a", L"txt", second));
    } while (leaf(first).substr(0, 12) != leaf(second).substr(0, 12));
    std::string expected = leaf(first);
    expected.insert(expected.size() - 4, "-1");
    EXPECT_EQ(leaf(second), expected);
    directory.clear();
}

TEST(CreateTempFile, UsesTheTemporaryDirectoryWhereNoneIsNamed)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    std::wstring out;
    ASSERT_TRUE(qvdisk::createTempFile(L"", L"first", L"x", out));
    EXPECT_EQ(directory.read(leaf(out)), "");
    ASSERT_TRUE(qvdisk::createTempFile(std::wstring(L"second"), std::wstring(L"x"), out));
    EXPECT_EQ(directory.read(leaf(out)), "");
    u8string out8;
    ASSERT_TRUE(qvdisk::createTempFile(u8string("third"), u8string("x"), out8));
    EXPECT_EQ(directory.read(leaf(out8)), "");
    ASSERT_TRUE(qvdisk::createTempFile(u8string(), u8string("fourth"), u8string("x"), out8));
    EXPECT_THAT(leaf(out8), HasForm("fourth-#.x"));
    EXPECT_EQ(directory.read(leaf(out8)), "");
    directory.clear();
}

TEST(CreateTempFile, HandsTheNameToAnOwner)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    directory.write("old", "");
    {
        qvdisk::AutoDeleteFile file(pathOf(directory, "old"));
        ASSERT_TRUE(qvdisk::createTempFile(pathOf(directory), u8string("a"), u8string("x"), file));
        EXPECT_FALSE(directory.contains("old")) << "what it held is deleted";
        EXPECT_THAT(leaf(file.get()), HasForm("a-#.x"));
        const std::string first = leaf(file.get());
        EXPECT_TRUE(directory.contains(first));
        ASSERT_TRUE(qvdisk::createTempFile(u8string("b"), u8string("x"), file));
        EXPECT_FALSE(directory.contains(first));
        EXPECT_THAT(leaf(file.get()), HasForm("b-#.x"));
        const std::wstring second = file.get();
        EXPECT_FALSE(qvdisk::createTempFile(pathOf(directory, "none"), u8string("c"), u8string("x"), file));
        EXPECT_EQ(file.get(), second) << "a failure leaves it as it was";
        EXPECT_TRUE(directory.contains(leaf(second)));
    }
}

TEST(CreateTempFile, LeavesTheArgumentAloneWhereNoFileCanBeMade)
{
    const TempDirectory directory;
    std::wstring out = L"before";
    EXPECT_FALSE(qvdisk::createTempFile(wide(pathOf(directory, "none")), L"a", L"", out));
    EXPECT_EQ(out, L"before");
    u8string out8 = "before";
    EXPECT_FALSE(qvdisk::createTempFile(pathOf(directory, "none"), u8string("a"), u8string(), out8));
    EXPECT_EQ(out8, "before");
}

constexpr int filesOfAChild = 200;

VONTALBASE_TEST_CHILD(makesTemporaryFiles, arguments)
{
    for (int i = 0; i < filesOfAChild; ++i)
    {
        u8string out;
        if (!qvdisk::createTempFile(u8string(arguments.at(0)), u8string("p"), u8string("t"), out))
            return 3;
        std::printf("%s\n", out.c_str());
    }
    return 0;
}

TEST(CreateTempFile, NeverGivesTwoProcessesOneName)
{
    const TempDirectory directory;
    testsupport::ChildResult results[2];
    std::thread other([&] { results[1] = testsupport::runChild("makesTemporaryFiles", {directory.text()}); });
    results[0] = testsupport::runChild("makesTemporaryFiles", {directory.text()});
    other.join();
    std::set<std::string> names;
    for (const testsupport::ChildResult & result : results)
    {
        ASSERT_EQ(result.exitCode, 0) << result.standardError;
        std::istringstream lines(result.standardOutput);
        for (std::string line; std::getline(lines, line);)
            names.insert(line);
    }
    EXPECT_EQ(names.size(), 2U * filesOfAChild);
    directory.clear();
}

TEST(CreateTempFileCopy, CopiesIntoTheTemporaryDirectory)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    const std::string source = directory.write("source.tar.gz", std::string(100'000, 'x'));
    const auto longAgo = fs::last_write_time(source) - std::chrono::hours(1000);
    fs::last_write_time(source, longAgo);
    std::wstring out;
    ASSERT_TRUE(qvdisk::createTempFileCopy(L"a", wide(source), out));
    EXPECT_THAT(leaf(out), HasForm("a-#.gz"));
    EXPECT_EQ(directory.read(leaf(out)), std::string(100'000, 'x'));
    EXPECT_EQ(fs::last_write_time(directory.path() / leaf(out)), longAgo);
    directory.clear();
}

TEST(CreateTempFileCopy, CopiesTheBytesIntoADirectory)
{
    const TempDirectory directory;
    const std::string source = directory.write("source.x", "12345");
    u8string out;
    ASSERT_TRUE(qvdisk::createTempFileCopy(pathOf(directory), u8string("a'"), u8string(source), out));
    EXPECT_THAT(leaf(out), HasForm("a_-#.x"));
    EXPECT_EQ(directory.read(leaf(out)), "12345");
    directory.clear();
}

TEST(CreateTempFileCopy, CopiesAReadOnlyFileWithThatOnlyWhereTheSystemCopies)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    const std::string source = directory.write("source.x", "12345");
    testsupport::setReadOnly(source, true);
    std::wstring out;
    EXPECT_TRUE(qvdisk::createTempFileCopy(L"a", wide(source), out));
    EXPECT_EQ(directory.read(leaf(out)), "12345");
    EXPECT_EQ(testsupport::isReadOnly(directory.text(leaf(out))), testsupport::copiesStayReadOnly());
    u8string out8;
    EXPECT_TRUE(qvdisk::createTempFileCopy(pathOf(directory), u8string("b"), u8string(source), out8));
    EXPECT_EQ(directory.read(leaf(out8)), "12345");
    EXPECT_FALSE(testsupport::isReadOnly(directory.text(leaf(out8)))) << "the bytes alone";
    EXPECT_TRUE(testsupport::isReadOnly(source));
    EXPECT_TRUE(qvdisk::deleteFile(out)) << "whoever has to delete it can do so";
    EXPECT_TRUE(qvdisk::deleteFile(out8));
    testsupport::setReadOnly(source, false);
    directory.clear();
}

TEST(CreateTempFileCopy, CopiesAnEmptyFile)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    const std::string source = directory.write("source", "");
    std::wstring out;
    EXPECT_TRUE(qvdisk::createTempFileCopy(L"a", wide(source), out));
    EXPECT_THAT(leaf(out), HasForm("a-#"));
    EXPECT_EQ(directory.read(leaf(out)), "");
    directory.clear();
}

TEST(CreateTempFileCopy, UsesTheTemporaryDirectoryWhereNoneIsNamed)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    const std::string source = directory.write("source.x", "12345");
    u8string out;
    EXPECT_TRUE(qvdisk::createTempFileCopy(u8string(), u8string("a"), u8string(source), out));
    EXPECT_EQ(out, pathOf(directory, leaf(out)));
    EXPECT_EQ(directory.read(leaf(out)), "12345");
    directory.clear();
}

TEST(CreateTempFileCopy, CopiesNoDirectory)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    const u8string source = pathOf(directory, "source.x");
    fs::create_directory(directory.path() / "source.x");
    std::wstring out = L"before";
    EXPECT_FALSE(qvdisk::createTempFileCopy(L"a", wide(source), out));
    EXPECT_EQ(out, L"before");
    u8string out8 = "before";
    EXPECT_FALSE(qvdisk::createTempFileCopy(pathOf(directory), u8string("a"), source, out8));
    EXPECT_EQ(out8, "before");
    EXPECT_TRUE(fs::is_directory(directory.path() / "source.x"));
    directory.remove("source.x");
}

TEST(CreateTempFileCopy, LeavesNoFileWhereItFails)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    std::wstring out = L"before";
    EXPECT_FALSE(qvdisk::createTempFileCopy(L"a", wide(pathOf(directory, "none.x")), out));
    EXPECT_EQ(out, L"before");
    u8string out8 = "before";
    EXPECT_FALSE(
        qvdisk::createTempFileCopy(pathOf(directory), u8string("a"), pathOf(directory, "none.x"), out8));
    EXPECT_FALSE(qvdisk::createTempFileCopy(
        pathOf(directory, "none"), u8string("a"), pathOf(directory, "none.x"), out8));
    EXPECT_EQ(out8, "before");
}

TEST(CreateTempDir, NamesTheDirectoryByPrefixTimeAndAnotherRandomNumber)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    const struct
    {
        const char * prefix;
        const char * expected;
    } rows[] = {
        {"a", "a-#.#"},
        {"a-", "a-#.#"},
        {"", "#.#"},
        {"kept 'uncleaned'", "kept 'uncleaned'-#.#"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.prefix);
        u8string out = "before";
        ASSERT_TRUE(qvdisk::createTempDir(row.prefix, out));
        EXPECT_THAT(leaf(out), HasForm(row.expected));
        EXPECT_TRUE(fs::is_directory(directory.path() / leaf(out)));
        EXPECT_TRUE(fs::is_empty(directory.path() / leaf(out)));
        directory.clear();
    }
}

TEST(CreateTempDir, KeepsTakingTheNumberFromRand)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    std::srand(4711);
    const std::string expected = std::to_string(std::rand());
    std::srand(4711);
    u8string out;
    ASSERT_TRUE(qvdisk::createTempDir("a", out));
    EXPECT_EQ(out.substr(out.rfind('.') + 1), expected);
    directory.clear();
}

TEST(CreateTempDir, FailsWhereThereIsNoPlace)
{
    const TempDirectory directory;
    const TemporaryPlace place(directory.text());
    u8string out = "before";
    EXPECT_FALSE(qvdisk::createTempDir("none\\a", out)) << "the prefix is not cleaned";
    EXPECT_EQ(out, "before");
}

} // namespace
