// The four conversions that know the ANSI code page, which is 1252 on every system that the tests run on.

#include "VontalBase/text/conversions.h"
#include "VontalBase/text/u8string.h"

#include "text/utforacle.h"
#include "text/wide.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace
{

using Vontal::c_acpu16;
using Vontal::c_acpu8;
using Vontal::c_u16acp;
using Vontal::c_u8acp;

/// Both overloads of the two conversions out of the code page.
void expectOutOfAnsi(const std::string & ansi, const std::u16string & expected)
{
    std::wstring units = L"what was here before";
    EXPECT_TRUE(c_acpu16(units, ansi.c_str()));
    EXPECT_EQ(units, wide(expected));
    units.clear();
    EXPECT_TRUE(c_acpu16(units, ansi));
    EXPECT_EQ(units, wide(expected));

    const std::string expectedUtf8 = utforacle::utf8FromWide(wide(expected));
    std::string utf8 = "what was here before";
    EXPECT_TRUE(c_acpu8(utf8, ansi.c_str()));
    EXPECT_EQ(utf8, expectedUtf8);
    utf8.clear();
    EXPECT_TRUE(c_acpu8(utf8, ansi));
    EXPECT_EQ(utf8, expectedUtf8);
}

/// Both overloads of the two conversions into the code page.
void expectIntoAnsi(const std::wstring & units, const std::string & expected)
{
    std::string ansi = "what was here before";
    EXPECT_TRUE(c_u16acp(ansi, units.c_str()));
    EXPECT_EQ(ansi, expected);
    ansi.clear();
    EXPECT_TRUE(c_u16acp(ansi, units));
    EXPECT_EQ(ansi, expected);

    const std::string utf8 = utforacle::utf8FromWide(units);
    ansi = "what was here before";
    EXPECT_TRUE(c_u8acp(ansi, utf8.c_str()));
    EXPECT_EQ(ansi, expected);
    ansi.clear();
    EXPECT_TRUE(c_u8acp(ansi, utf8));
    EXPECT_EQ(ansi, expected);
}

/// The characters of the bytes 0x80 to 0x9F. The five that the code page leaves open stand for the control
/// characters of their number.
const std::u16string upperControls = u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021"
                                     u"\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
                                     u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014"
                                     u"\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";

/// The character of each byte.
char16_t characterOf(unsigned int byte)
{
    if (byte >= 0x80 && byte < 0xA0)
        return upperControls[byte - 0x80];
    return static_cast<char16_t>(byte);
}

TEST(AnsiConversions, KnowTheCharacterOfEveryByte)
{
    ASSERT_EQ(upperControls.size(), 32U);
    std::string allBytes;
    std::u16string allCharacters;
    for (unsigned int byte = 1; byte < 256; ++byte)
    {
        SCOPED_TRACE(byte);
        const std::string ansi(1, static_cast<char>(static_cast<unsigned char>(byte)));
        const std::u16string character(1, characterOf(byte));
        expectOutOfAnsi(ansi, character);
        expectIntoAnsi(wide(character), ansi);
        allBytes += ansi;
        allCharacters += character;
    }
    expectOutOfAnsi(allBytes, allCharacters);
    expectIntoAnsi(wide(allCharacters), allBytes);
}

TEST(AnsiConversions, GiveNothingForNothing)
{
    expectOutOfAnsi("", u"");
    expectIntoAnsi(L"", "");
}

TEST(AnsiConversions, EndTheirSourceAtItsFirstNul)
{
    std::wstring units;
    std::string bytes;
    EXPECT_TRUE(c_acpu16(units, std::string("a\x80\0b", 4)));
    EXPECT_EQ(units, wide(u"a\u20AC"));
    EXPECT_TRUE(c_acpu8(bytes, std::string("a\x80\0b", 4)));
    EXPECT_EQ(bytes, "a\xE2\x82\xAC");
    EXPECT_TRUE(c_u16acp(bytes, wideUnits({'a', 0x20AC, 0, 'b'})));
    EXPECT_EQ(bytes, "a\x80");
    EXPECT_TRUE(c_u8acp(bytes, std::string("a\xE2\x82\xAC\0b", 6)));
    EXPECT_EQ(bytes, "a\x80");
}

/// Characters which the code page lacks, and the one byte that all of them become.
struct FitRow
{
    const char * label;
    std::u16string_view characters;
    unsigned char byte;
};

const FitRow fitRows[] = {
    {"A", u"\u0100\u0102\u0104\u01CD\u01DE\uFF21", 'A'},
    {"a", u"\u0101\u0103\u0105\u01CE\u01DF\u03B1\uFF41", 'a'},
    {"C", u"\u0106\u0108\u010A\u010C\u2102", 'C'},
    {"c", u"\u0107\u0109\u010B\u010D", 'c'},
    {"D", u"\u010E", 'D'},
    {"d", u"\u010F\u0111\u03B4", 'd'},
    {"D with a stroke is the Icelandic letter", u"\u0110\u0189", 0xD0},
    {"E", u"\u0112\u0114\u0116\u0118\u011A\u2107\u2130", 'E'},
    {"e", u"\u0113\u0115\u0117\u0119\u011B\u212E\u212F\u03B5", 'e'},
    {"G", u"\u011C\u011E\u0120\u0122\u01E6\u0393", 'G'},
    {"g", u"\u011D\u011F\u0121\u0123\u01E7\u0261\u210A", 'g'},
    {"H", u"\u0124\u0126\u210B\u210C\u210D", 'H'},
    {"h", u"\u0125\u0127\u04BB\u210E", 'h'},
    {"I", u"\u0128\u012A\u012C\u012E\u0130\u01CF\u2110\u2111", 'I'},
    {"i", u"\u0129\u012B\u012D\u012F\u0131\u01D0", 'i'},
    {"J", u"\u0134", 'J'},
    {"j", u"\u0135\u01F0", 'j'},
    {"K", u"\u0136\u01E8\u212A", 'K'},
    {"L", u"\u0139\u013B\u013D\u0141\u2112", 'L'},
    {"l", u"\u013A\u013C\u013E\u0142\u019A\u2113", 'l'},
    {"N", u"\u0143\u0145\u0147\u2115", 'N'},
    {"n", u"\u0144\u0146\u0148\u207F\u2229", 'n'},
    {"O", u"\u014C\u014E\u0150\u01A0\u01D1\u01EA\u03A9", 'O'},
    {"o", u"\u014D\u014F\u0151\u01A1\u01D2\u01EB\u2134", 'o'},
    {"R", u"\u0154\u0156\u0158\u211C\u211D", 'R'},
    {"S", u"\u015A\u015C\u015E\u03A3", 'S'},
    {"s", u"\u015B\u015D\u015F\u03C3", 's'},
    {"T", u"\u0162\u0164\u0166\u0398", 'T'},
    {"t", u"\u0163\u0165\u0167\u03C4", 't'},
    {"U", u"\u0168\u016A\u016C\u016E\u0170\u0172\u01D3\u01D5\u01DB", 'U'},
    {"u", u"\u0169\u016B\u016D\u016F\u0171\u0173\u01D4\u01D6\u01DC", 'u'},
    {"W", u"\u0174", 'W'},
    {"y", u"\u0177", 'y'},
    {"Z", u"\u0179\u017B\u2124\u2128", 'Z'},
    {"z", u"\u017A\u017C\u01B6", 'z'},
    {"beta becomes sharp s", u"\u03B2", 0xDF},
    {"mu becomes the micro sign", u"\u03BC", 0xB5},
    {"the Angstrom sign becomes its letter", u"\u212B", 0xC5},
    {"blanks of all widths", u"\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u3000", ' '},
    {"hyphens and the minus sign", u"\u2010\u2011\u2212", '-'},
    {"primes", u"\u2032\u02B9\u02BC\u02C8", '\''},
    {"fraction slashes", u"\u2044\u2215", '/'},
    {"subscript zero", u"\u2080", '0'},
    {"subscript nine", u"\u2089", '9'},
    {"superscript four", u"\u2074", '4'},
    {"infinity becomes an eight", u"\u221E", '8'},
    {"the root sign becomes a v", u"\u221A", 'v'},
    {"double angle quotes", u"\u226A\u300A", 0xAB},
    {"dots in the middle", u"\u2219\u22C5\u30FB", 0xB7},
    {"the first fullwidth form", u"\uFF01", '!'},
    {"the last fullwidth form", u"\uFF5E", '~'},
};

TEST(AnsiConversions, TakeTheBestFitForWhatTheCodePageLacks)
{
    for (const FitRow & row : fitRows)
    {
        SCOPED_TRACE(row.label);
        const std::string expected(row.characters.size(), static_cast<char>(row.byte));
        expectIntoAnsi(wide(row.characters), expected);
    }
}

TEST(AnsiConversions, FitEveryFullwidthFormToItsLetter)
{
    for (unsigned int c = 0xFF01; c <= 0xFF5E; ++c)
    {
        std::string ansi;
        c_u16acp(ansi, wideUnits({c}));
        EXPECT_EQ(ansi, std::string(1, static_cast<char>(c - 0xFF01 + '!'))) << std::hex << c;
    }
}

TEST(AnsiConversions, GiveTheDefaultCharacterWhereNothingFits)
{
    struct Row
    {
        const char * label;
        std::wstring units;
        const char * ansi;
    };
    const Row rows[] = {
        {"a Chinese character", wide(u"\u4E2D"), "?"},
        {"Greek capital alpha, though alpha has a fit", wide(u"\u0391"), "?"},
        {"Cyrillic", wide(u"\u0416\u0436"), "??"},
        {"letters of Latin Extended-A without a fit", wide(u"\u0132\u0138\u013F\u0149\u014A\u017F"),
            "??????"},
        {"the figure space, beside blanks that fit", wide(u"\u2006\u2007\u2008"), " ??"},
        {"a zero-width space", wide(u"\u200B"), "?"},
        {"the replacement character", wide(u"\uFFFD"), "?"},
        {"the byte order mark", wide(u"\uFEFF"), "?"},
        {"private use", wide(u"\uE000"), "?"},
        {"the neighbours of the fullwidth forms", wide(u"\uFF00\uFF5F"), "??"},
        {"among characters that are there", wide(u"a\u4E2D\u20ACb"),
            "a?\x80"
            "b"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        expectIntoAnsi(row.units, row.ansi);
    }
}

TEST(AnsiConversions, GiveADefaultCharacterForEachHalfOfASurrogatePair)
{
    expectIntoAnsi(wide(u"a\U0001F600b"), "a??b");
    std::string ansi;
    EXPECT_TRUE(c_u16acp(ansi, L"a\U0001F600b"));
    EXPECT_EQ(ansi, "a??b");
}

TEST(AnsiConversions, GiveADefaultCharacterForASurrogateAlone)
{
    std::string ansi;
    EXPECT_TRUE(c_u16acp(ansi, wideUnits({'a', 0xD800, 'b', 0xDC00})));
    EXPECT_EQ(ansi, "a?b?");
}

TEST(AnsiConversions, GiveADefaultCharacterForEachIllFormedSequence)
{
    std::string ansi;
    EXPECT_TRUE(c_u8acp(ansi, "a\xFF\xE2\x82z\xC3\xA9"));
    EXPECT_EQ(ansi, "a??z\xE9");
}

TEST(AnsiConversions, MayHaveTheirSourceAsDestination)
{
    std::string text = "caf\xE9 \x80 and more than fits into a short string";
    const std::string ansi = text;
    EXPECT_TRUE(c_acpu8(text, text));
    EXPECT_EQ(text, "caf\xC3\xA9 \xE2\x82\xAC and more than fits into a short string");
    EXPECT_TRUE(c_u8acp(text, text));
    EXPECT_EQ(text, ansi);

    EXPECT_TRUE(c_acpu8(text, text.c_str()));
    EXPECT_TRUE(c_u8acp(text, text.c_str() + 3));
    EXPECT_EQ(text, ansi.substr(3));
    EXPECT_TRUE(c_acpu8(text, text.c_str() + text.size()));
    EXPECT_EQ(text, "");

    Vontal::u8string own = "\xE9";
    EXPECT_TRUE(c_acpu8(own, own));
    EXPECT_EQ(own, "\xC3\xA9");
}

TEST(AnsiConversions, KeepTextOfEveryLength)
{
    std::string ansi;
    std::u16string characters;
    for (unsigned int length = 0; length <= 300; ++length)
    {
        SCOPED_TRACE(length);
        expectOutOfAnsi(ansi, characters);
        expectIntoAnsi(wide(characters), ansi);
        const unsigned int byte = 0x41 + length * 7 % 0xBE;
        ansi.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
        characters.push_back(characterOf(byte));
    }
}

TEST(AnsiConversions, KeepTextOfMillionsOfCharacters)
{
    // Longer than any piece that a converter could be called with at a time, with a pair across each border.
    std::wstring units;
    std::string expected;
    for (std::size_t i = 0; i < 1'100'000; ++i)
    {
        units += L"a";
        units += wide(u"\U0001F600");
        expected += "a??";
    }
    std::string ansi;
    EXPECT_TRUE(c_u16acp(ansi, units));
    EXPECT_TRUE(ansi == expected);

    std::wstring back;
    EXPECT_TRUE(c_acpu16(back, std::string(3'000'001, '\x80')));
    EXPECT_TRUE(back == std::wstring(3'000'001, static_cast<wchar_t>(0x20AC)));
}

TEST(AnsiConversions, FindEveryBestFitAgain)
{
    // Whatever a unit becomes, its byte is a character of its own that comes back.
    std::string ansi;
    std::string again;
    std::wstring units;
    for (unsigned int unit = 1; unit <= 0xFFFF; ++unit)
    {
        c_u16acp(ansi, wideUnits({unit}));
        ASSERT_EQ(ansi.size(), 1U) << std::hex << unit;
        c_acpu16(units, ansi);
        c_u16acp(again, units);
        ASSERT_EQ(again, ansi) << std::hex << unit;
    }
}

} // namespace
