#include "VontalBase/disk/files.h"

#include "disk/disksupport.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using testsupport::TempDirectory;
using Vontal::u8string;

/// UTF-16 with the low byte first, and its mark in front.
std::string utf16(std::u16string_view text)
{
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text)
    {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

void expectText(const char * label, const std::string & bytes, const std::string & expected)
{
    SCOPED_TRACE(label);
    const TempDirectory directory;
    directory.write("file", bytes);
    u8string out = "before";
    EXPECT_TRUE(qvdisk::readUnicodeTextFile(pathOf(directory, "file"), out));
    EXPECT_EQ(out, expected);
    directory.remove("file");
}

TEST(ReadUnicodeTextFile, TakesTheEncodingFromTheFirstBytes)
{
    const struct
    {
        const char * label;
        std::string bytes;
        std::string expected;
    } rows[] = {
        {"an empty file", "", ""},
        {"one byte", "a", "a"},
        {"one byte of a mark", "\xFF", "\xFF"},
        {"two bytes of the other mark", "\xEF\xBB", "\xEF\xBB"},
        {"UTF-16", utf16(u"A"), "A"},
        {"UTF-16 without text", utf16(u""), ""},
        {"UTF-16 outside ASCII", utf16(u"\u00E9\u6771\U0001F600"), "\xC3\xA9\xE6\x9D\xB1\xF0\x9F\x98\x80"},
        {"UTF-16 up to its first zero", utf16(std::u16string_view(u"a\0b", 3)), "a"},
        {"UTF-16 with a single zero byte", utf16(u"\u0100a"),
            "\xC4\x80"
            "a"},
        {"UTF-16 with half a unit at the end", utf16(u"ab") + "c", "ab"},
        {"half a unit alone",
            "\xFF\xFE"
            "c",
            ""},
        {"an unpaired surrogate", utf16(std::u16string{u'a', u'\xD800', u'b'}),
            "a\xEF\xBF\xBD"
            "b"},
        {"a mark within UTF-16", utf16(u"a\uFEFF"), "a\xEF\xBB\xBF"},
        {"UTF-8 with its mark", "\xEF\xBB\xBF\xC3\xA9", "\xC3\xA9"},
        {"the mark of UTF-8 alone", "\xEF\xBB\xBF", ""},
        {"the second of two marks stays", "\xEF\xBB\xBF\xEF\xBB\xBF", "\xEF\xBB\xBF"},
        {"UTF-8 up to its first zero byte",
            std::string("\xEF\xBB\xBF"
                        "a\0b",
                6),
            "a"},
        {"no mark", "\xC3\xA9\r\n", "\xC3\xA9\r\n"},
        {"no mark, up to the first zero byte", std::string("a\0b", 3), "a"},
        {"bytes that are no UTF-8 stay", "\xE9 \xFF", "\xE9 \xFF"},
    };
    for (const auto & row : rows)
        expectText(row.label, row.bytes, row.expected);
}

TEST(ReadUnicodeTextFile, KeepsTakingUtf16WithTheHighByteFirstForBytesAsTheyStand)
{
    expectText("FE FF", std::string("\xFE\xFF\0A", 4), "\xFE\xFF");
}

TEST(ReadUnicodeTextFile, ConvertsLongTextWithoutASeam)
{
    // Pairs begin at odd places, so that a piece of any even length would cut one.
    std::u16string text = u"a";
    std::string expected = "a";
    for (int i = 0; i < 50'000; ++i)
    {
        text += u"\U0001F600";
        expected += "\xF0\x9F\x98\x80";
    }
    expectText("pairs", utf16(text), expected);
    expectText("pairs at even places", utf16(text.substr(1)), expected.substr(1));
    expectText("an unpaired half at the end", utf16(text.substr(0, text.size() - 1)),
        expected.substr(0, expected.size() - 4) + "\xEF\xBF\xBD");
    const std::u16string halves(40'000, u'\xD800');
    std::string replaced;
    for (std::size_t i = 0; i < halves.size(); ++i)
        replaced += "\xEF\xBF\xBD";
    expectText("nothing but halves", utf16(halves), replaced);
    std::u16string withZero(40'000, u'x');
    withZero[30'000] = u'\0';
    expectText("a zero far in", utf16(withZero), std::string(30'000, 'x'));
}

TEST(ReadUnicodeTextFile, LeavesTheTextAloneWhereItCannotOpen)
{
    const TempDirectory directory;
    u8string out = "before";
    EXPECT_FALSE(qvdisk::readUnicodeTextFile(pathOf(directory, "none"), out));
    EXPECT_FALSE(qvdisk::readUnicodeTextFile(pathOf(directory), out));
    EXPECT_EQ(out, "before");
}

} // namespace
