#include "VontalBase/disk/paths.h"
#include "VontalBase/text/u8string.h"

#include "support/NativePaths.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace
{

using Vontal::u8string;

struct Row
{
    const char * label;
    std::string path;
    std::string expected;
};

std::wstring wide(const std::string & ascii)
{
    return {ascii.begin(), ascii.end()};
}

TEST(AddLastSlash, AppendsABackslashWhereNoneIs)
{
    const Row rows[] = {
        {"empty", "", "\\"},
        {"none", "C:\\a", "C:\\a\\"},
        {"one", "C:\\a\\", "C:\\a\\"},
        {"two", "a\\\\", "a\\\\"},
        {"kept: a slash is not enough", "a/", "a/\\"},
        {"slash in front of a backslash", "a/\\", "a/\\"},
        {"zero characters are text", std::string("a\0", 2), std::string("a\0\\", 3)},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string narrowPath = row.path;
        qvdisk::addLastSlash(narrowPath);
        EXPECT_EQ(narrowPath, row.expected);
        std::wstring widePath = wide(row.path);
        qvdisk::addLastSlash(widePath);
        EXPECT_EQ(widePath, wide(row.expected));
    }
}

TEST(RemoveLastSlash, RemovesOneSeparatorOfEitherKind)
{
    const Row rows[] = {
        {"empty", "", ""},
        {"none", "a", "a"},
        {"backslash", "a\\", "a"},
        {"slash", "a/", "a"},
        {"only the last of a run", "a\\\\", "a\\"},
        {"only the last of a mixed run", "a\\/", "a\\"},
        {"nothing but a separator", "/", ""},
        {"separators further in stay", "a\\b/c", "a\\b/c"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        u8string path = row.path;
        qvdisk::removeLastSlash(path);
        EXPECT_EQ(path, row.expected);
    }
}

void expectOfAllForms(const Row & row, std::string (*narrowForm)(const std::string &),
    std::wstring (*wideForm)(const std::wstring &), u8string (*utf8Form)(const u8string &))
{
    SCOPED_TRACE(row.label);
    EXPECT_EQ(narrowForm(row.path), row.expected);
    EXPECT_EQ(wideForm(wide(row.path)), wide(row.expected));
    EXPECT_EQ(utf8Form(row.path), row.expected);
}

TEST(ExtractLastItem, GivesWhatStandsBehindTheLastSeparator)
{
    const Row rows[] = {
        {"backslash further right", "a/b\\c", "c"},
        {"slash further right", "a\\b/c", "c"},
        {"ends in a backslash", "a\\", ""},
        {"ends in a slash", "a\\b/", ""},
        {"no separator", "abc", "abc"},
        {"empty", "", ""},
        {"nothing but a separator", "\\", ""},
        {"a colon is none", "C:a", "C:a"},
        {"zero characters are text", std::string("a\\b\0c", 5), std::string("b\0c", 3)},
    };
    for (const Row & row : rows)
        expectOfAllForms(row, qvdisk::extractLastItem, qvdisk::extractLastItem, qvdisk::extractLastItem);
}

TEST(ExtractExtension, GivesWhatBeginsWithTheLastDotOfTheName)
{
    const Row rows[] = {
        {"the last of two", "a.tar.gz", ".gz"},
        {"dot in a directory, backslash", "a.b\\c", ""},
        {"dot in a directory, slash", "a.b/c", ""},
        {"dot in a directory and in the name", "a.b\\c.d", ".d"},
        {"nothing behind the dot", "name.", "."},
        {"no dot", "name", ""},
        {"empty", "", ""},
        {"nothing but an extension", ".profile", ".profile"},
        {"nothing but an extension, in a directory", "a/.profile", ".profile"},
        {"dot, then a separator at the end", "a.b\\", ""},
        {"two dots", "..", "."},
    };
    for (const Row & row : rows)
        expectOfAllForms(row, qvdisk::extractExtension, qvdisk::extractExtension, qvdisk::extractExtension);
}

TEST(ExtractExtension, KeepsCharactersOutsideAscii)
{
    EXPECT_EQ(qvdisk::extractExtension(u8string("a.\xC3\xA9")), ".\xC3\xA9");
    EXPECT_EQ(qvdisk::extractExtension(std::wstring(L"a.\x00E9\x6771")), L".\x00E9\x6771");
}

TEST(ExtractParentDir, DropsTheLastItemAndOneSeparator)
{
    const Row rows[] = {
        {"a file", "C:\\a\\b", "C:\\a"},
        {"a final separator is all that goes", "C:\\a\\", "C:\\a"},
        {"the root of a drive", "C:\\", "C:"},
        {"no separator", "abc", ""},
        {"empty", "", ""},
        {"slashes", "/tmp/a", "/tmp"},
        {"below the root", "/a", ""},
        {"two separators", "a\\\\b", "a\\"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(qvdisk::extractParentDir(row.path), row.expected);
    }
}

TEST(NormalizeFileName, ReplacesNineCharactersAndNoOthers)
{
    EXPECT_EQ(qvdisk::normalizeFileName("a:b?c"), "a_b_c");
    EXPECT_EQ(qvdisk::normalizeFileName(""), "");
    const std::string unsafe = "<>/\\*|:?\"";
    for (int value = 0; value < 256; ++value)
    {
        SCOPED_TRACE(value);
        const char c = static_cast<char>(value);
        const bool isUnsafe = unsafe.find(c) != std::string::npos;
        EXPECT_EQ(qvdisk::normalizeFileName(u8string(&c, 1)), std::string(1, isUnsafe ? '_' : c));
    }
    EXPECT_EQ(qvdisk::normalizeFileName("\xC3\xA9*\xF0\x9F\x98\x80"), "\xC3\xA9_\xF0\x9F\x98\x80");
}

TEST(FormatFileSize, WritesAWholeNumberAndAUnit)
{
    const struct
    {
        std::int64_t size;
        const char * expected;
    } rows[] = {
        {0, "0 B"},
        {1, "1 B"},
        {1023, "1023 B"},
        {1024, "1 KB"},
        {2047, "1 KB"},
        {2048, "2 KB"},
        {1048575, "1023 KB"},
        {1048576, "1 MB"},
        {1073741823, "1023 MB"},
        {-1, "-1 B"},
        {-5000000000, "-5000000000 B"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808 B"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.size);
        std::string out = "what was here before";
        qvdisk::formatFileSize(row.size, out);
        EXPECT_EQ(out, row.expected);
    }
}

TEST(FormatFileSize, KeepsTheNumberOfMebibytesInFrontOfGB)
{
    const struct
    {
        std::int64_t size;
        const char * expected;
    } rows[] = {
        {1073741824, "1024 GB"},
        {5368709120, "5120 GB"},
        {std::numeric_limits<std::int64_t>::max(), "8796093022207 GB"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.size);
        std::string out;
        qvdisk::formatFileSize(row.size, out);
        EXPECT_EQ(out, row.expected);
    }
}

TEST(ComputePrefix, FindsTheRootAndWhetherItIsWellFormed)
{
    const struct
    {
        const wchar_t * path;
        bool isWellFormed;
        int length;
    } rows[] = {
        {L"", true, 0},
        {L"abc", true, 0},
        {L"1abc", true, 0},
        {L"C:", true, 2},
        {L"C:\\", true, 3},
        {L"C:\\\\x", true, 4},
        {L"C:x", false, 2},
        {L"\\x", false, 1},
        {L"\\\\server", false, 8},
        {L"\\\\server\\", false, 9},
        {L"\\\\server\\share", true, 14},
        {L"\\\\server\\share\\", true, 15},
        // The rest of the table of states.
        {L"\\", false, 1},
        {L"\\\\", false, 2},
        {L"\\\\\\", false, 2},
        {L"\\\\s\\\\", false, 4},
        {L"\\\\s/t\\u", true, 7},
        {L"\\\\server\\share/", true, 15},
        {L"\\\\server\\share/\\x", true, 16},
        {L"\\\\server\\/", true, 10},
        {L"C:/", true, 3},
        {L"C:/\\/x\\y", true, 5},
        {L"C:\\a\\b", true, 3},
        {L"/tmp/a", true, 0},
        {L":\\", true, 0},
        {L"a", true, 0},
        {L"a\\b", true, 0},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.path)));
        int length = -7;
        EXPECT_EQ(qvdisk::computePrefix(length, row.path), row.isWellFormed);
        EXPECT_EQ(length, row.length);
    }
}

TEST(ComputePrefix, KeepsTakingAColonAnywhereForThatOfADrive)
{
    int length = -7;
    EXPECT_FALSE(qvdisk::computePrefix(length, L"ab:c"));
    EXPECT_EQ(length, 2);
    EXPECT_TRUE(qvdisk::computePrefix(length, L"some\\file:"));
    EXPECT_EQ(length, 2);
    EXPECT_TRUE(qvdisk::computePrefix(length, L"some\\file:\\"));
    EXPECT_EQ(length, 3);
}

TEST(ComputePrefix, RefusesNullAndLeavesTheLengthAlone)
{
    int length = -7;
    EXPECT_FALSE(qvdisk::computePrefix(length, nullptr));
    EXPECT_EQ(length, -7);
}

TEST(NativePath, IsWhatOtherProgramsTake)
{
    const Row rows[] = {
        {"empty", "", ""},
        {"backslashes", "/tmp\\a\\b.txt", "/tmp/a/b.txt"},
        {"slashes", "a/b", "a/b"},
        {"text outside ASCII", "\xC3\xA9\\\xE6\x9D\xB1", "\xC3\xA9/\xE6\x9D\xB1"},
        {"ends at the first zero byte", std::string("a\\b\0\\c", 6), "a/b"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        const std::string untouched = row.path.c_str();
        EXPECT_EQ(qvdisk::nativePath(row.path), testsupport::hasDrives() ? untouched : row.expected);
    }
}

} // namespace
