#include "VontalBase/platform/processor.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/text/utfsteps.h"

#include "text/utforacle.h"
#include "text/wide.h"

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using Vontal::encodeUtf8;

TEST(EncodeUtf8, WritesEveryCodePointInItsLength)
{
    std::array<char, 4> bytes = {};
    for (char32_t c = 0; c <= 0x10FFFF; ++c)
    {
        const std::size_t length = encodeUtf8(c, bytes.data());
        const std::size_t expected = c < 0x80 ? 1U : c < 0x800 ? 2U : c < 0x10000 ? 3U : 4U;
        ASSERT_EQ(length, expected) << std::hex << static_cast<std::uint32_t>(c);
        ASSERT_EQ(std::string(bytes.data(), length), utforacle::encodeUtf8({c}));
    }
}

TEST(EncodeUtf8, WritesSurrogatesLikeTheirNeighbours)
{
    std::array<char, 4> bytes = {};
    ASSERT_EQ(encodeUtf8(0xD800, bytes.data()), 3U);
    EXPECT_EQ(std::string(bytes.data(), 3), "\xED\xA0\x80");
    ASSERT_EQ(encodeUtf8(0xDFFF, bytes.data()), 3U);
    EXPECT_EQ(std::string(bytes.data(), 3), "\xED\xBF\xBF");
}

TEST(Utf, ConvertsZeroBytesLikeAnyOther)
{
    std::wstring units;
    Vontal::wideFromUtf8(std::string_view("a\0\xC3\xA9", 4), units);
    EXPECT_EQ(units, wideUnits({'a', 0, 0xE9}));
    std::string bytes;
    Vontal::utf8FromWide(wideUnits({'a', 0, 0xE9}), bytes);
    EXPECT_EQ(bytes, std::string("a\0\xC3\xA9", 4));
}

/// The inner loops that this processor can do, by name.
std::vector<std::pair<std::string, const Vontal::UtfSteps *>> steps()
{
    std::vector<std::pair<std::string, const Vontal::UtfSteps *>> all = {{"plain", &Vontal::plainUtfSteps}};
    if (qvplatform::canPickBytes())
        all.emplace_back("picking", &Vontal::pickingUtfSteps);
    return all;
}

void expectBothWays(const std::string & bytes)
{
    const std::vector<char32_t> characters = utforacle::decodeUtf8(bytes);
    const std::wstring units = utforacle::encodeUtf16(characters);
    const std::string back = utforacle::encodeUtf8(characters);
    for (const auto & [name, inner] : steps())
    {
        SCOPED_TRACE(name);
        std::wstring widened;
        Vontal::wideFromUtf8(bytes, widened, *inner);
        ASSERT_TRUE(widened == units);
        std::string narrowed;
        Vontal::utf8FromWide(units, narrowed, *inner);
        ASSERT_TRUE(narrowed == back);
    }
}

// Of one, two, three and four bytes; the smallest and the largest of each length are among them.
const std::vector<std::string> characters = {"a", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80",
    "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"};

// Just outside of what is well-formed, and cut short.
const std::vector<std::string> illFormed = {"\xC3\xC0", "\xE1\xC0\x80", "\xE1\x80\xC1", "\x80", "\xBF",
    "\xC0\x80", "\xC1\xBF", "\xC2", "\xE0\x9F\xBF", "\xE0\xA0", "\xE1\x80", "\xED\xA0\x80", "\xED\xBF\xBF",
    "\xEF\xBF", "\xEF", "\xF0\x8F\xBF\xBF", "\xF1\x80\x80", "\xF3\xBF", "\xF4\x90\x80\x80",
    "\xF5\x80\x80\x80", "\xFF", "\xC2\xC2", "\xE1\x80\xC2\x80", "\xC3\xA9\xA9", "\xE4\xB8\xAD\xAD"};

std::string repeated(const std::string & part, std::size_t times)
{
    std::string whole;
    for (std::size_t i = 0; i < times; ++i)
        whole += part;
    return whole;
}

TEST(UtfSteps, AgreeWithTheOracleWhereverAnythingIllFormedStandsInABlock)
{
    for (const std::string & filler :
        {std::string("a"), std::string("\xC3\xA9"), std::string("\xE4\xB8\xAD")})
    {
        for (const std::string & odd : illFormed)
        {
            for (std::size_t before = 0; before <= 66; ++before)
            {
                SCOPED_TRACE(
                    testing::PrintToString(odd) + " after " + std::to_string(before) + " of " + filler);
                expectBothWays(repeated(filler, before) + odd + repeated(filler, 80));
                expectBothWays(repeated(filler, before) + odd);
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(UtfSteps, AgreeWithTheOracleWhereverACharacterStandsInABlock)
{
    for (const std::string & filler : characters)
    {
        for (const std::string & other : characters)
        {
            for (std::size_t before = 0; before <= 66; ++before)
            {
                SCOPED_TRACE(other + " after " + std::to_string(before) + " of " + filler);
                expectBothWays(repeated(filler, before) + other + repeated(filler, 66 - before));
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(UtfSteps, AgreeWithTheOracleOnTextsOfAllKindsMixed)
{
    std::mt19937 random(20260229);
    for (int round = 0; round < 4000; ++round)
    {
        // In some texts ill-formed bytes are frequent, in most they are rare, and in some there are none.
        const unsigned int oddity = std::array{0U, 1U, 1U, 1U, 20U}[random() % 5];
        const std::size_t kinds = 1 + random() % characters.size();
        std::string text;
        const std::size_t size = random() % 3000;
        while (text.size() < size)
            text += random() % 100 < oddity ? illFormed[random() % illFormed.size()]
                                            : characters[random() % kinds];
        SCOPED_TRACE("round " + std::to_string(round));
        expectBothWays(text);
        if (HasFatalFailure())
            return;
    }
}

TEST(UtfSteps, ReplaceSurrogatesWithoutPartnersAtEveryPlace)
{
    for (const auto & [name, inner] : steps())
    {
        SCOPED_TRACE(name);
        for (const wchar_t surrogate : {wchar_t{0xD800}, wchar_t{0xDBFF}, wchar_t{0xDC00}, wchar_t{0xDFFF}})
        {
            for (std::size_t before = 0; before <= 20; ++before)
            {
                const std::wstring units = std::wstring(before, wchar_t{0x4E2D}) + surrogate +
                                           std::wstring(20 - before, wchar_t{0xE9});
                std::string bytes;
                Vontal::utf8FromWide(units, bytes, *inner);
                ASSERT_EQ(bytes, utforacle::utf8FromWide(units)) << before;
            }
        }
    }
}

} // namespace
