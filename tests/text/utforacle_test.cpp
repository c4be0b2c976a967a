#include "text/utforacle.h"
#include "text/wide.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using Characters = std::vector<char32_t>;

TEST(UtfOracle, DecodesOneCharacterOfEachLength)
{
    EXPECT_EQ(utforacle::decodeUtf8(""), Characters());
    EXPECT_EQ(utforacle::decodeUtf8("A"), Characters{U'A'});
    EXPECT_EQ(utforacle::decodeUtf8("\xC3\xA9"), Characters{0xE9});
    EXPECT_EQ(utforacle::decodeUtf8("\xE2\x82\xAC"), Characters{0x20AC});
    EXPECT_EQ(utforacle::decodeUtf8("\xF0\x9F\x98\x80"), Characters{0x1F600});
    EXPECT_EQ(utforacle::decodeUtf8("\xF4\x8F\xBF\xBF"), Characters{0x10FFFF});
}

TEST(UtfOracle, TakesTheLongestIllFormedStart)
{
    EXPECT_EQ(utforacle::decodeUtf8("\xF1\x80\x80\x41"), (Characters{0xFFFD, U'A'}));
    EXPECT_EQ(utforacle::decodeUtf8("\xE0\x80\x41"), (Characters{0xFFFD, 0xFFFD, U'A'}));
    EXPECT_EQ(utforacle::decodeUtf8("\xFF"), Characters{0xFFFD});
}

TEST(UtfOracle, EncodesWhatItDecodes)
{
    EXPECT_EQ(utforacle::encodeUtf8({U'A', 0xE9, 0x20AC, 0x1F600}), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(utforacle::encodeUtf8({0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0x10000}),
        "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80");
    EXPECT_EQ(utforacle::encodeUtf16({U'A', 0xFFFF, 0x10000, 0x10FFFF}),
        wideUnits({u'A', 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF}));
}

TEST(UtfOracle, JoinsSurrogatePairsAndReplacesLoneOnes)
{
    EXPECT_EQ(utforacle::decodeUtf16(wide(u"\U0001F600")), Characters{0x1F600});
    EXPECT_EQ(utforacle::decodeUtf16(wideUnits({0xD83D})), Characters{0xFFFD});
    EXPECT_EQ(utforacle::decodeUtf16(wideUnits({0xDE00, 0xD83D})), (Characters{0xFFFD, 0xFFFD}));
}

} // namespace
