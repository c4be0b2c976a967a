#include "VontalBase/text/astring.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "text/bothforms.h"
#include "text/utforacle.h"
#include "text/wide.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using Vontal::c_u16u8;
using Vontal::c_u8u16;

/// Both overloads of `c_u8u16` give `expected`, also into a destination that held text.
void expectWide(const std::string & bytes, const std::wstring & expected)
{
    expectBothForms(bytes, expected, [](std::wstring & to, const auto & from) { return c_u8u16(to, from); });
}

/// Both overloads of `c_u16u8` give `expected`, also into a destination that held text.
void expectUtf8(const std::wstring & units, const std::string & expected)
{
    expectBothForms(units, expected, [](std::string & to, const auto & from) { return c_u16u8(to, from); });
}

struct Row
{
    const char * label;
    std::string utf8;
    std::u16string wide;
};

/// Text that means the same in both forms.
const Row wellFormed[] = {
    {"nothing", "", u""},
    {"ASCII", "Hello, world", u"Hello, world"},
    {"the first and last of one byte", "\x01\x7F", u"\u0001\u007F"},
    {"the first and last of two bytes", "\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
    {"the first and last of three bytes", "\xE0\xA0\x80\xEF\xBF\xBF", u"\u0800\uFFFF"},
    {"the first and last of four bytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
    {"the neighbours of the surrogates", "\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
    {"one character of each length", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", u"a\u00E9\u20AC\U0001F600"},
    {"a byte order mark is a character like any other",
        "\xEF\xBB\xBF"
        "a",
        u"\uFEFFa"},
    {"noncharacters are characters", "\xEF\xB7\x90\xEF\xBF\xBE", u"\uFDD0\uFFFE"},
    {"U+FFFD itself", "\xEF\xBF\xBD", u"\uFFFD"},
    {"composed and decomposed stay what they are",
        "\xC3\xA9"
        "e\xCC\x81",
        u"\u00E9e\u0301"},
    {"line ends stay what they are", "a\r\nb\n", u"a\r\nb\n"},
    {"all four-byte leads",
        "\xF0\xBF\xBF\xBF\xF1\x80\x80\x80\xF2\x80\x80\x80\xF3\xBF\xBF\xBF\xF4\x80\x80\x80",
        u"\U0003FFFF\U00040000\U00080000\U000FFFFF\U00100000"},
};

TEST(WideFromUtf8, ConvertsWellFormedText)
{
    for (const Row & row : wellFormed)
    {
        SCOPED_TRACE(row.label);
        expectWide(row.utf8, wide(row.wide));
    }
}

TEST(Utf8FromWide, ConvertsWellFormedText)
{
    for (const Row & row : wellFormed)
    {
        SCOPED_TRACE(row.label);
        expectUtf8(wide(row.wide), row.utf8);
    }
}

/// Each defect beside its legal neighbour. Where it ends is seen from the letter behind it.
const Row illFormed[] = {
    {"a byte that never occurs, 0xFF", "\xFF", u"\uFFFD"},
    {"a byte that never occurs, 0xFE",
        "\xFE"
        "z",
        u"\uFFFDz"},
    {"the lead 0xC0, for an overlong slash",
        "\xC0\xAF"
        "z",
        u"\uFFFD\uFFFDz"},
    {"the lead 0xC1, for an overlong letter",
        "\xC1\xBF"
        "z",
        u"\uFFFD\uFFFDz"},
    {"its neighbour, the lead 0xC2",
        "\xC2\xBF"
        "z",
        u"\u00BFz"},
    {"the lead 0xF5, beyond Unicode",
        "\xF5\x80\x80\x80"
        "z",
        u"\uFFFD\uFFFD\uFFFD\uFFFDz"},
    {"its neighbour, the lead 0xF4",
        "\xF4\x80\x80\x80"
        "z",
        u"\U00100000z"},
    {"a continuation alone, 0x80",
        "\x80"
        "z",
        u"\uFFFDz"},
    {"a continuation alone, 0xBF",
        "\xBF"
        "z",
        u"\uFFFDz"},
    {"its neighbour, 0x7F",
        "\x7F"
        "z",
        u"\u007Fz"},
    {"a continuation too many",
        "\xC3\xA9\xA9"
        "z",
        u"\u00E9\uFFFDz"},
    {"two bytes, cut by the end", "\xC3", u"\uFFFD"},
    {"two bytes, cut by a letter", "\xC3(", u"\uFFFD("},
    {"two bytes, cut by a lead", "\xC3\xC3\xA9", u"\uFFFD\u00E9"},
    {"two bytes, behind them 0xC0",
        "\xC3\xC0"
        "z",
        u"\uFFFD\uFFFDz"},
    {"three bytes, cut behind the first", "\xE2z", u"\uFFFDz"},
    {"three bytes, cut behind the second, are one", "\xE2\x82z", u"\uFFFDz"},
    {"three bytes, cut behind the second by the end", "\xE2\x82", u"\uFFFD"},
    {"three bytes, overlong",
        "\xE0\x9F\xBF"
        "z",
        u"\uFFFD\uFFFD\uFFFDz"},
    {"their neighbour",
        "\xE0\xA0\x80"
        "z",
        u"\u0800z"},
    {"three bytes, the first surrogate",
        "\xED\xA0\x80"
        "z",
        u"\uFFFD\uFFFD\uFFFDz"},
    {"their neighbour",
        "\xED\x9F\xBF"
        "z",
        u"\uD7FFz"},
    {"three bytes, the last surrogate",
        "\xED\xBF\xBF"
        "z",
        u"\uFFFD\uFFFD\uFFFDz"},
    {"their neighbour",
        "\xEE\x80\x80"
        "z",
        u"\uE000z"},
    {"a surrogate pair in six bytes", "\xED\xA0\xBD\xED\xB8\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"four bytes, cut behind the first", "\xF0z", u"\uFFFDz"},
    {"four bytes, cut behind the second, are one", "\xF0\x9Fz", u"\uFFFDz"},
    {"four bytes, cut behind the third, are one", "\xF0\x9F\x98z", u"\uFFFDz"},
    {"four bytes, cut behind the third by the end", "\xF0\x9F\x98", u"\uFFFD"},
    {"four bytes, overlong",
        "\xF0\x8F\xBF\xBF"
        "z",
        u"\uFFFD\uFFFD\uFFFD\uFFFDz"},
    {"their neighbour",
        "\xF0\x90\x80\x80"
        "z",
        u"\U00010000z"},
    {"four bytes, beyond Unicode",
        "\xF4\x90\x80\x80"
        "z",
        u"\uFFFD\uFFFD\uFFFD\uFFFDz"},
    {"their neighbour",
        "\xF4\x8F\xBF\xBF"
        "z",
        u"\U0010FFFFz"},
    {"five bytes of an old form",
        "\xF8\x88\x80\x80\x80"
        "z",
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDz"},
    {"six bytes of an old form", "\xFC\x84\x80\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
    // The examples of the Unicode standard for the replacement of maximal subparts.
    {"Unicode: overlong forms", "\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
    {"Unicode: surrogates", "\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
    {"Unicode: other ill-formed sequences", "\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
    {"Unicode: truncated sequences", "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA"},
    {"Unicode: a mixture", "\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
        u"a\uFFFD\uFFFD\uFFFDb\uFFFDc\uFFFD\uFFFDd"},
};

TEST(WideFromUtf8, ReplacesEachMaximalIllFormedSequenceByOneReplacementCharacter)
{
    for (const Row & row : illFormed)
    {
        SCOPED_TRACE(row.label);
        expectWide(row.utf8, wide(row.wide));
        expectWide("sixteen letters." + row.utf8, widened("sixteen letters.") + wide(row.wide));
    }
}

TEST(WideFromUtf8, AgreesWithTheOracleOnEverySequenceOfTellingBytes)
{
    static const unsigned char telling[] = {0x01, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1,
        0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
    std::string bytes(4, '\0');
    std::wstring alone;
    std::wstring followed;
    const auto put = [&bytes](std::size_t at, unsigned char byte)
    {
        bytes[at] = static_cast<char>(byte);
    };
    for (const unsigned char first : telling)
    {
        for (const unsigned char second : telling)
        {
            for (const unsigned char third : telling)
            {
                for (const unsigned char fourth : telling)
                {
                    put(0, first);
                    put(1, second);
                    put(2, third);
                    put(3, fourth);
                    const std::wstring expected = utforacle::wideFromUtf8(bytes);
                    c_u8u16(alone, bytes);
                    c_u8u16(followed, bytes + "sixteen letters.");
                    // What is cut at the end of the text is cut just so by a letter.
                    ASSERT_EQ(alone, expected) << testing::PrintToString(bytes);
                    ASSERT_EQ(followed, expected + L"sixteen letters.") << testing::PrintToString(bytes);
                }
            }
        }
    }
}

struct WideRow
{
    const char * label;
    std::wstring units;
    std::string utf8;
};

TEST(Utf8FromWide, ReplacesEachUnpairedSurrogateByOneReplacementCharacter)
{
    const WideRow rows[] = {
        {"the first high one alone", wideUnits({0xD800}), "\xEF\xBF\xBD"},
        {"the last high one alone", wideUnits({0xDBFF}), "\xEF\xBF\xBD"},
        {"the first low one alone", wideUnits({0xDC00}), "\xEF\xBF\xBD"},
        {"the last low one alone", wideUnits({0xDFFF}), "\xEF\xBF\xBD"},
        {"their neighbour below", wideUnits({0xD7FF}), "\xED\x9F\xBF"},
        {"their neighbour above", wideUnits({0xE000}), "\xEE\x80\x80"},
        {"a high one before a letter", wideUnits({0xD83D, 'z'}), "\xEF\xBF\xBDz"},
        {"a low one before a letter", wideUnits({0xDE00, 'z'}), "\xEF\xBF\xBDz"},
        {"a pair", wideUnits({0xD83D, 0xDE00, 'z'}), "\xF0\x9F\x98\x80z"},
        {"a pair in the wrong order", wideUnits({0xDE00, 0xD83D, 'z'}), "\xEF\xBF\xBD\xEF\xBF\xBDz"},
        {"two high ones and a low one", wideUnits({0xD83D, 0xD83D, 0xDE00}), "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {"a high one and two low ones", wideUnits({0xD83D, 0xDE00, 0xDE00}), "\xF0\x9F\x98\x80\xEF\xBF\xBD"},
        {"two pairs", wideUnits({0xD800, 0xDC00, 0xDBFF, 0xDFFF}), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    };
    for (const WideRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        expectUtf8(row.units, row.utf8);
        expectUtf8(L"sixteen letters." + row.units, "sixteen letters." + row.utf8);
    }
}

TEST(Utf8FromWide, TakesWideLiterals)
{
    expectUtf8(L"caf\u00E9 \U0001F600", "caf\xC3\xA9 \xF0\x9F\x98\x80");
    expectUtf8(L"\U0010FFFF", "\xF4\x8F\xBF\xBF");
}

TEST(Utf8FromWide, ReplacesElementsBeyondUnicodeWhereTheyExist)
{
    if (sizeof(wchar_t) == 2)
        GTEST_SKIP() << "a wide element has 16 bits on this system";
    expectUtf8(wideUnits({0x10FFFF, 'z'}), "\xF4\x8F\xBF\xBFz");
    expectUtf8(wideUnits({0x110000, 'z'}), "\xEF\xBF\xBDz");
    expectUtf8(wideUnits({0x7FFFFFFF, 'z'}), "\xEF\xBF\xBDz");
    expectUtf8(wideUnits({0x80000041, 'z'}), "\xEF\xBF\xBDz");
    expectUtf8(wideUnits({0xD83D, 0x1F600}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

TEST(Conversions, EndTheirSourceAtItsFirstNul)
{
    const std::string bytes("ab\0cd", 5);
    std::wstring units;
    EXPECT_TRUE(c_u8u16(units, bytes));
    EXPECT_EQ(units, L"ab");
    EXPECT_TRUE(c_u8u16(units, std::string("\0ab", 3)));
    EXPECT_EQ(units, L"");

    std::string utf8;
    EXPECT_TRUE(c_u16u8(utf8, wideUnits({'a', 0xE9, 0, 'c'})));
    EXPECT_EQ(utf8, "a\xC3\xA9");
    EXPECT_TRUE(c_u16u8(utf8, wideUnits({0, 'a'})));
    EXPECT_EQ(utf8, "");

    EXPECT_TRUE(c_u8u16(units, std::string("\xE2\x82\0\xAC", 4)));
    EXPECT_EQ(units, wide(u"\uFFFD")) << "a character cut by the NUL";
}

TEST(Conversions, TakeAllStringClassesAsSourceAndDestination)
{
    Vontal::astring astring;
    Vontal::pstring pstring;
    EXPECT_TRUE(c_u8u16(astring, Vontal::u8string("\xC3\xA9")));
    EXPECT_TRUE(c_u8u16(pstring, Vontal::u8string("\xC3\xA9")));
    EXPECT_EQ(astring, wide(u"\u00E9"));
    EXPECT_EQ(pstring, wide(u"\u00E9"));
    Vontal::u8string utf8;
    EXPECT_TRUE(c_u16u8(utf8, astring));
    EXPECT_EQ(utf8, "\xC3\xA9");
    EXPECT_TRUE(c_u16u8(utf8, pstring));
    EXPECT_EQ(utf8, "\xC3\xA9");
}

/// An odd character, and what stands for it in the other form.
struct Odd
{
    const char * label;
    std::string utf8;
    std::u16string wide;
};

const Odd odds[] = {
    {"two bytes", "\xC3\xA9", u"\u00E9"},
    {"three bytes", "\xE2\x82\xAC", u"\u20AC"},
    {"four bytes", "\xF0\x9F\x98\x80", u"\U0001F600"},
    {"three bytes at the edge of a range", "\xEF\xBF\xBF", u"\uFFFF"},
};

const Odd brokenOdds[] = {
    {"a byte that never occurs", "\xFF", u"\uFFFD"},
    {"a character cut short", "\xF0\x9F\x98", u"\uFFFD"},
    {"a surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
};

/// ASCII text of `length` letters, the one at `position` replaced by something odd.
template <class Text>
Text withOdd(const Text & letters, std::size_t length, std::size_t position, const Text & odd)
{
    Text text = letters.substr(0, position);
    text += odd;
    text.append(letters, 0, length - position - 1);
    return text;
}

TEST(Conversions, KeepTextOfEveryLengthWithAnOddCharacterAtEachPlace)
{
    std::string letters;
    for (std::size_t i = 0; i < 300; ++i)
        letters.push_back(static_cast<char>('a' + i % 26));
    const std::wstring wideLetters = widened(letters);
    std::wstring units;
    std::string utf8;
    for (std::size_t length = 1; length <= 300; ++length)
    {
        for (std::size_t at = 0; at < length; ++at)
        {
            const Odd & odd = odds[(length + at) % std::size(odds)];
            const std::string source = withOdd(letters, length, at, odd.utf8);
            const std::wstring expected = withOdd(wideLetters, length, at, wide(odd.wide));
            c_u8u16(units, source);
            ASSERT_EQ(units, expected) << odd.label << " at " << at << " of " << length;
            c_u16u8(utf8, expected);
            ASSERT_EQ(utf8, source) << odd.label << " at " << at << " of " << length;

            const Odd & broken = brokenOdds[(length + at) % std::size(brokenOdds)];
            c_u8u16(units, withOdd(letters, length, at, broken.utf8));
            ASSERT_EQ(units, withOdd(wideLetters, length, at, wide(broken.wide)))
                << broken.label << " at " << at << " of " << length;
        }
    }
}

TEST(Conversions, KeepLettersAloneOfEveryLength)
{
    for (std::size_t length = 0; length <= 300; ++length)
    {
        const std::string letters(length, 'k');
        SCOPED_TRACE(length);
        expectWide(letters, widened(letters));
        expectUtf8(widened(letters), letters);
    }
}

TEST(Conversions, KeepAnOddCharacterRoundEveryPowerOfTwo)
{
    std::wstring units;
    std::string utf8;
    for (std::size_t power = 512; power <= 65536; power *= 2)
    {
        const std::size_t length = power + 100;
        const std::string letters(length, 'm');
        const std::wstring wideLetters(length, L'm');
        for (std::size_t at = power - 80; at < power + 20; ++at)
        {
            for (const Odd & odd : odds)
            {
                const std::string source = withOdd(letters, length, at, odd.utf8);
                const std::wstring expected = withOdd(wideLetters, length, at, wide(odd.wide));
                c_u8u16(units, source);
                ASSERT_TRUE(units == expected) << odd.label << " at " << at;
                c_u16u8(utf8, expected);
                ASSERT_TRUE(utf8 == source) << odd.label << " at " << at;
            }
        }
    }
}

TEST(Conversions, KeepLongRunsOfOneCharacterOfEachLength)
{
    for (const Odd & odd : odds)
    {
        SCOPED_TRACE(odd.label);
        for (std::size_t count = 1; count < 20'000; count = count * 3 / 2 + 1)
        {
            std::string bytes;
            std::wstring expected;
            for (std::size_t i = 0; i < count; ++i)
            {
                bytes += odd.utf8;
                expected += wide(odd.wide);
            }
            std::wstring units;
            std::string back;
            c_u8u16(units, bytes);
            ASSERT_TRUE(units == expected) << count;
            c_u16u8(back, units);
            ASSERT_TRUE(back == bytes) << count;
        }
    }
}

TEST(Conversions, BringEveryCodePointBackAlone)
{
    std::wstring units;
    std::string back;
    for (char32_t c = 1; c <= 0x10FFFF; ++c)
    {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        const std::string bytes = utforacle::encodeUtf8({c});
        c_u8u16(units, bytes);
        ASSERT_EQ(units, utforacle::encodeUtf16({c})) << std::hex << static_cast<std::uint32_t>(c);
        c_u16u8(back, units);
        ASSERT_EQ(back, bytes) << std::hex << static_cast<std::uint32_t>(c);
    }
}

TEST(Conversions, BringAllCodePointsBackInOneText)
{
    std::vector<char32_t> all;
    for (char32_t c = 1; c <= 0x10FFFF; ++c)
    {
        if (c < 0xD800 || c > 0xDFFF)
            all.push_back(c);
    }
    const std::string bytes = utforacle::encodeUtf8(all);
    std::wstring units;
    c_u8u16(units, bytes);
    EXPECT_TRUE(units == utforacle::encodeUtf16(all));
    std::string back;
    c_u16u8(back, units);
    EXPECT_TRUE(back == bytes);
}

TEST(Utf8FromWide, ReplacesEverySurrogateThatIsAlone)
{
    std::string utf8;
    for (unsigned int unit = 0xD800; unit <= 0xDFFF; ++unit)
    {
        c_u16u8(utf8, wideUnits({'a', unit, 'b'}));
        ASSERT_EQ(utf8, "a\xEF\xBF\xBD"
                        "b")
            << std::hex << unit;
    }
}

/// Whether each of the six conversions gives what it must, once.
bool allSixAreRight()
{
    const std::string utf8 = "sixteen letters. \xE2\x82\xAC \xF0\x9F\x98\x80 \xFF";
    const std::wstring wideText = wide(u"sixteen letters. \u20AC \U0001F600 \uFFFD");
    std::wstring units;
    std::string bytes;
    bool isRight = c_u8u16(units, utf8) && units == wideText;
    isRight &=
        c_u16u8(bytes, wideText) && bytes == "sixteen letters. \xE2\x82\xAC \xF0\x9F\x98\x80 \xEF\xBF\xBD";
    isRight &= Vontal::c_acpu8(bytes, "sixteen letters. \x80 \xE9") &&
               bytes == "sixteen letters. \xE2\x82\xAC \xC3\xA9";
    isRight &= Vontal::c_u8acp(bytes, utf8) && bytes == "sixteen letters. \x80 ?? ?";
    isRight &= Vontal::c_acpu16(units, "sixteen letters. \x80 \xE9") &&
               units == wide(u"sixteen letters. \u20AC \u00E9");
    isRight &= Vontal::c_u16acp(bytes, wideText) && bytes == "sixteen letters. \x80 ?? ?";
    return isRight;
}

TEST(Conversions, MayRunOnManyThreadsAtOnce)
{
    ASSERT_TRUE(allSixAreRight()) << "on one thread";
    std::vector<std::thread> threads;
    std::array<int, 8> wrong = {};
    for (int & own : wrong)
    {
        threads.emplace_back(
            [&own]
            {
                for (int i = 0; i < 500; ++i)
                    own += allSixAreRight() ? 0 : 1;
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(std::count(wrong.begin(), wrong.end(), 0), 8);
}

static_assert(
    std::is_polymorphic_v<Vontal::Conversions> && std::has_virtual_destructor_v<Vontal::Conversions>);
static_assert(sizeof(Vontal::Conversions) == sizeof(void *), "no data");

TEST(ConversionsObject, IsMadeAndDestroyedWithoutAWord)
{
    testing::internal::CaptureStderr();
    {
        const Vontal::Conversions own;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
