#include "VontalBase/text/utf.h"

#include "text/utforacle.h"
#include "text/wide.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

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

} // namespace
