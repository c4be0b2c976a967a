#include "VontalBase/platform/encoding.h"

#include "text/wide.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace
{

using qvplatform::ansiFromWide;
using qvplatform::wideFromAnsi;

TEST(PlatformEncoding, HasTheCodePage1252)
{
    EXPECT_EQ(qvplatform::ansiCodePage(), 1252U);
}

TEST(PlatformEncoding, ReplacesItsDestination)
{
    std::wstring units = L"before";
    std::string bytes = "before";
    wideFromAnsi("", units);
    ansiFromWide(L"", bytes);
    EXPECT_EQ(units, L"");
    EXPECT_EQ(bytes, "");
    wideFromAnsi("a\x80", units);
    EXPECT_EQ(units, wide(u"a\u20AC"));
    ansiFromWide(wide(u"a\u20AC"), bytes);
    EXPECT_EQ(bytes, "a\x80");
}

TEST(PlatformEncoding, ConvertsZeroBytesLikeAnyOther)
{
    std::wstring units;
    std::string bytes;
    wideFromAnsi(std::string_view("a\0\xE9", 3), units);
    EXPECT_EQ(units, wideUnits({'a', 0, 0xE9}));
    ansiFromWide(units, bytes);
    EXPECT_EQ(bytes, std::string("a\0\xE9", 3));
}

TEST(PlatformEncoding, LooksUpEachUnitByItself)
{
    std::string bytes;
    ansiFromWide(wide(u"\U0001F600"), bytes);
    EXPECT_EQ(bytes, "??");
    ansiFromWide(wideUnits({0xD800}), bytes);
    EXPECT_EQ(bytes, "?");
    ansiFromWide(wideUnits({0xDC00, 0xD800}), bytes);
    EXPECT_EQ(bytes, "??");
    ansiFromWide(L"\U0001F600", bytes);
    EXPECT_EQ(bytes, "??") << "a wide literal counts as its two units";
}

TEST(PlatformEncoding, TakesTheBestFitOrElseTheDefaultCharacter)
{
    std::string bytes;
    ansiFromWide(wide(u"\u0100\u0391\uFF21"), bytes);
    EXPECT_EQ(bytes, "A?A");
}

TEST(PlatformEncoding, ConvertsMoreThanOnePieceAtATime)
{
    // Odd lengths round a million, so that a pair would stand across any border between pieces.
    constexpr std::size_t million = 1'048'576;
    for (const std::size_t length : {million - 1, million, million + 1, 2 * million + 1})
    {
        SCOPED_TRACE(length);
        std::wstring units(length, L'a');
        units.insert(million - 2, wide(u"\U0001F600"));
        std::string expected(length, 'a');
        expected.insert(million - 2, "??");
        std::string bytes;
        ansiFromWide(units, bytes);
        EXPECT_TRUE(bytes == expected);
        std::wstring back;
        wideFromAnsi(bytes, back);
        EXPECT_TRUE(back == widened(expected));
    }
}

} // namespace
