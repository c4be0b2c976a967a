// The four conversions that know the ANSI code page, which is 1252 on every system that the tests run on.

#include "VontalBase/text/conversions.h"
#include "VontalBase/text/u8string.h"

#include "text/bothforms.h"
#include "text/utforacle.h"
#include "text/wide.h"

#include <array>
#include <gtest/gtest.h>
#include <map>
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
    expectBothForms(
        ansi, wide(expected), [](std::wstring & to, const auto & from) { return c_acpu16(to, from); });
    expectBothForms(ansi, utforacle::utf8FromWide(wide(expected)),
        [](std::string & to, const auto & from) { return c_acpu8(to, from); });
}

/// Both overloads of the two conversions into the code page.
void expectIntoAnsi(const std::wstring & units, const std::string & expected)
{
    expectBothForms(units, expected, [](std::string & to, const auto & from) { return c_u16acp(to, from); });
    expectBothForms(utforacle::utf8FromWide(units), expected,
        [](std::string & to, const auto & from) { return c_u8acp(to, from); });
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
    {"B", u"\u212C\uFF22", 'B'},
    {"b", u"\u0180\uFF42", 'b'},
    {"C", u"\u0106\u0108\u010A\u010C\u2102\u212D\uFF23", 'C'},
    {"c", u"\u0107\u0109\u010B\u010D\uFF43", 'c'},
    {"D", u"\u010E\uFF24", 'D'},
    {"d", u"\u010F\u0111\u03B4\uFF44", 'd'},
    {"D with a stroke is the Icelandic letter", u"\u0110\u0189", 0xD0},
    {"E", u"\u0112\u0114\u0116\u0118\u011A\u2107\u2130\uFF25", 'E'},
    {"e", u"\u0113\u0115\u0117\u0119\u011B\u03B5\u212E\u212F\uFF45", 'e'},
    {"F", u"\u03A6\u2131\uFF26", 'F'},
    {"f", u"\u03C6\uFF46", 'f'},
    {"F with a hook is the sign of the florin", u"\u0191\u0192", 0x83},
    {"G", u"\u011C\u011E\u0120\u0122\u01E4\u01E6\u0393\uFF27", 'G'},
    {"g", u"\u011D\u011F\u0121\u0123\u01E5\u01E7\u0261\u210A\uFF47", 'g'},
    {"H", u"\u0124\u0126\u210B\u210C\u210D\uFF28", 'H'},
    {"h", u"\u0125\u0127\u04BB\u210E\uFF48", 'h'},
    {"I", u"\u0128\u012A\u012C\u012E\u0130\u0197\u01CF\u2110\u2111\uFF29", 'I'},
    {"i", u"\u0129\u012B\u012D\u012F\u0131\u01D0\uFF49", 'i'},
    {"J", u"\u0134\uFF2A", 'J'},
    {"j", u"\u0135\u01F0\uFF4A", 'j'},
    {"K", u"\u0136\u01E8\u212A\uFF2B", 'K'},
    {"k", u"\u0137\u01E9\uFF4B", 'k'},
    {"L", u"\u0139\u013B\u013D\u0141\u2112\uFF2C", 'L'},
    {"l", u"\u013A\u013C\u013E\u0142\u019A\u2113\uFF4C", 'l'},
    {"M", u"\u2133\uFF2D", 'M'},
    {"m", u"\uFF4D", 'm'},
    {"N", u"\u0143\u0145\u0147\u2115\uFF2E", 'N'},
    {"n, the superscript and the intersection", u"\u0144\u0146\u0148\u207F\u2229\uFF4E", 'n'},
    {"O", u"\u014C\u014E\u0150\u019F\u01A0\u01D1\u01EA\u01EC\u03A9\uFF2F", 'O'},
    {"o", u"\u014D\u014F\u0151\u01A1\u01D2\u01EB\u01ED\u2134\uFF4F", 'o'},
    {"the ligature OE", u"\u0152", 0x8C},
    {"the ligature oe", u"\u0153", 0x9C},
    {"P and the peseta", u"\u20A7\u2118\u2119\uFF30", 'P'},
    {"p", u"\u03C0\uFF50", 'p'},
    {"Q", u"\u211A\uFF31", 'Q'},
    {"q", u"\uFF51", 'q'},
    {"R", u"\u0154\u0156\u0158\u211B\u211C\u211D\uFF32", 'R'},
    {"r", u"\u0155\u0157\u0159\uFF52", 'r'},
    {"S", u"\u015A\u015C\u015E\u03A3\uFF33", 'S'},
    {"s", u"\u015B\u015D\u015F\u03C3\uFF53", 's'},
    {"S with a caron", u"\u0160", 0x8A},
    {"s with a caron", u"\u0161", 0x9A},
    {"beta becomes sharp s", u"\u03B2", 0xDF},
    {"T", u"\u0162\u0164\u0166\u01AE\u0398\uFF34", 'T'},
    {"t", u"\u0163\u0165\u0167\u01AB\u03C4\uFF54", 't'},
    {"U", u"\u0168\u016A\u016C\u016E\u0170\u0172\u01AF\u01D3\u01D5\u01D7\u01D9\u01DB\uFF35", 'U'},
    {"u", u"\u0169\u016B\u016D\u016F\u0171\u0173\u01B0\u01D4\u01D6\u01D8\u01DA\u01DC\uFF55", 'u'},
    {"V", u"\uFF36", 'V'},
    {"v, and the root sign", u"\u221A\uFF56", 'v'},
    {"W", u"\u0174\uFF37", 'W'},
    {"w", u"\u0175\uFF57", 'w'},
    {"X", u"\uFF38", 'X'},
    {"x", u"\uFF58", 'x'},
    {"Y", u"\u0176\uFF39", 'Y'},
    {"y", u"\u0177\uFF59", 'y'},
    {"Y with two dots", u"\u0178", 0x9F},
    {"Z", u"\u0179\u017B\u2124\u2128\uFF3A", 'Z'},
    {"z", u"\u017A\u017C\u01B6\uFF5A", 'z'},
    {"Z with a caron", u"\u017D", 0x8E},
    {"z with a caron", u"\u017E", 0x9E},
    {"mu becomes the micro sign", u"\u03BC", 0xB5},
    {"the Angstrom sign becomes its letter", u"\u212B", 0xC5},
    {"the empty set becomes its letter", u"\u2205", 0xD8},
    {"0", u"\u2080\uFF10", '0'},
    {"1", u"\u2081\uFF11", '1'},
    {"2", u"\u2082\uFF12", '2'},
    {"3", u"\u2083\uFF13", '3'},
    {"4", u"\u2074\u2084\uFF14", '4'},
    {"5", u"\u2075\u2085\uFF15", '5'},
    {"6", u"\u2076\u2086\uFF16", '6'},
    {"7", u"\u2077\u2087\uFF17", '7'},
    {"8, infinity among them", u"\u2078\u2088\u221E\uFF18", '8'},
    {"9", u"\u2089\uFF19", '9'},
    {"blanks of all widths", u"\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u3000", ' '},
    {"exclamation marks and the click of that form", u"\u01C3\uFF01", '!'},
    {"double quotes, seconds and their accent", u"\u02BA\u030E\uFF02", '"'},
    {"number sign", u"\uFF03", '#'},
    {"dollar", u"\uFF04", '$'},
    {"percent signs", u"\u066A\uFF05", '%'},
    {"ampersand", u"\uFF06", '&'},
    {"primes", u"\u02B9\u02BC\u02C8\u2032\uFF07", '\''},
    {"upper halves of integrals and opening brackets", u"\u2320\uFF08", '('},
    {"lower halves of integrals and closing brackets", u"\u2321\uFF09", ')'},
    {"asterisks", u"\u2217\uFF0A", '*'},
    {"corners and crossings of lines", u"\u250C\u2510\u2514\u2518\u251C\u253C", '+'},
    {"corners of double lines", u"\u2552\u2553\u2554\u2555\u2556\u2557\u2558\u2559\u255A\u255B\u255C\u255D",
        '+'},
    {"crossings of double lines, and plus", u"\u256A\u256B\u256C\uFF0B", '+'},
    {"comma", u"\uFF0C", ','},
    {"hyphens and the minus sign", u"\u2010\u2011\u2212\uFF0D", '-'},
    {"level lines", u"\u2500\u252C\u2534\u2550\u2564\u2565\u2566\u2567\u2568\u2569", '-'},
    {"full stop", u"\uFF0E", '.'},
    {"fraction slashes", u"\u2044\u2215\uFF0F", '/'},
    {"colons", u"\u0589\u2236\uFF1A", ':'},
    {"semicolons and the Greek question mark", u"\u037E\uFF1B", ';'},
    {"opening angle brackets", u"\u2329\u3008\uFF1C", '<'},
    {"equality of many kinds", u"\u2017\u2261\u2264\u2265\uFF1D", '='},
    {"closing angle brackets", u"\u232A\u3009\uFF1E", '>'},
    {"at", u"\uFF20", '@'},
    {"opening square brackets", u"\u301A\uFF3B", '['},
    {"backslashes", u"\u2216\uFF3C", '\\'},
    {"closing square brackets", u"\u301B\uFF3D", ']'},
    {"circumflexes and arrow heads", u"\u02C4\u0302\u2303\uFF3E", '^'},
    {"lines below", u"\u02CD\u0331\u0332\u2584\uFF3F", '_'},
    {"grave accents and the reversed prime", u"\u02CB\u0300\u2035\uFF40", '`'},
    {"opening brace", u"\uFF5B", '{'},
    {"upright strokes", u"\u01C0\u2223\u2758\uFF5C", '|'},
    {"closing brace", u"\uFF5D", '}'},
    {"tildes", u"\u0303\u223C\uFF5E", '~'},
    {"the euro", u"\u20AC", 0x80},
    {"low single quote", u"\u201A", 0x82},
    {"low double quote", u"\u201E", 0x84},
    {"ellipsis", u"\u2026", 0x85},
    {"dagger", u"\u2020", 0x86},
    {"double dagger", u"\u2021", 0x87},
    {"circumflex as a letter", u"\u02C6", 0x88},
    {"per mille", u"\u2030", 0x89},
    {"opening single angle quote", u"\u2039", 0x8B},
    {"opening single quote", u"\u2018", 0x91},
    {"closing single quote", u"\u2019", 0x92},
    {"opening double quote", u"\u201C", 0x93},
    {"closing double quote", u"\u201D", 0x94},
    {"bullet", u"\u2022", 0x95},
    {"the shorter dash", u"\u2013", 0x96},
    {"the longer dash", u"\u2014", 0x97},
    {"the small tilde, and almost equal", u"\u02DC\u2248", 0x98},
    {"trade mark", u"\u2122", 0x99},
    {"closing single angle quote", u"\u203A", 0x9B},
    {"the colon sign becomes the cent", u"\u20A1", 0xA2},
    {"the lira becomes the pound", u"\u20A4", 0xA3},
    {"the sun becomes the currency sign", u"\u263C", 0xA4},
    {"upright lines", u"\u2302\u2502\u2524\u2551\u255E\u255F\u2560\u2561\u2562\u2563", 0xA6},
    {"blocks", u"\u2588\u258C\u2590\u2591\u2592\u2593\u25A0", 0xA6},
    {"two dots above", u"\u0308", 0xA8},
    {"opening double angle quotes", u"\u226A\u300A", 0xAB},
    {"the reversed not sign", u"\u2310", 0xAC},
    {"lines above", u"\u02C9\u0304\u0305\u2580", 0xAF},
    {"rings and the superscript zero", u"\u02DA\u030A\u2070\u2218", 0xB0},
    {"minus or plus", u"\u2213", 0xB1},
    {"acute accents", u"\u02CA\u0301", 0xB4},
    {"dots in the middle", u"\u2024\u2219\u22C5\u30FB", 0xB7},
    {"the cedilla below", u"\u0327", 0xB8},
    {"closing double angle quotes", u"\u226B\u300B", 0xBB},
};

/// How many of the units 0x0100 to 0xFFFF become something else than a question mark.
constexpr std::size_t unitsThatFit = 468;

TEST(AnsiConversions, TakeTheBestFitForWhatTheCodePageLacks)
{
    for (const FitRow & row : fitRows)
    {
        SCOPED_TRACE(row.label);
        const std::string expected(row.characters.size(), static_cast<char>(row.byte));
        expectIntoAnsi(wide(row.characters), expected);
    }
}

TEST(AnsiConversions, FitNoUnitBesidesThoseOfTheTable)
{
    std::map<unsigned int, char> expected;
    for (const FitRow & row : fitRows)
    {
        for (const char16_t character : row.characters)
        {
            const bool isNew = expected.emplace(character, static_cast<char>(row.byte)).second;
            EXPECT_TRUE(isNew) << "twice in the table: " << std::hex << static_cast<unsigned int>(character);
        }
    }
    EXPECT_EQ(expected.size(), unitsThatFit);
    std::string ansi;
    for (unsigned int unit = 0x0100; unit <= 0xFFFF; ++unit)
    {
        const auto fit = expected.find(unit);
        c_u16acp(ansi, wideUnits({unit}));
        EXPECT_EQ(ansi, std::string(1, fit == expected.end() ? '?' : fit->second)) << std::hex << unit;
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

TEST(AnsiConversions, TakeElementsAbove16BitsWhereTheyExist)
{
    if (sizeof(wchar_t) == 2)
        GTEST_SKIP() << "a wide element has 16 bits on this system";
    struct Row
    {
        const char * label;
        std::wstring units;
        const char * ansi;
    };
    const Row rows[] = {
        {"the first code point outside the plane counts as the pair that it is", wideUnits({0x10000}), "??"},
        {"its low bits are those of an A", wideUnits({0x10041}), "??"},
        {"the last code point", wideUnits({0x10FFFF}), "??"},
        {"beyond Unicode stands one replacement character", wideUnits({0x110000, 'z'}), "?z"},
        {"the highest element", wideUnits({0xFFFFFFFF, 'z'}), "?z"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string ansi = "what was here before";
        EXPECT_TRUE(c_u16acp(ansi, row.units.c_str()));
        EXPECT_EQ(ansi, row.ansi);
        EXPECT_TRUE(c_u16acp(ansi, row.units));
        EXPECT_EQ(ansi, row.ansi);
    }
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
