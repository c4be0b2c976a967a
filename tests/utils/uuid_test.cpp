#include "VontalBase/utils/uuid.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace
{

using qvutils::generateUUID;

TEST(GenerateUuid, WritesFiveGroupsOfUpperCaseDigits)
{
    for (int i = 0; i < 100; ++i)
    {
        Vontal::u8string text = "before";
        ASSERT_TRUE(generateUUID(text));
        ASSERT_EQ(text.size(), 36U) << text;
        for (std::size_t place = 0; place < text.size(); ++place)
        {
            const bool isHyphen = place == 8 || place == 13 || place == 18 || place == 23;
            const std::string allowed = isHyphen ? "-" : "0123456789ABCDEF";
            ASSERT_NE(allowed.find(text[place]), std::string::npos) << text;
        }
        ASSERT_EQ(text[14], '4') << text << ": the version";
        ASSERT_NE(std::string("89AB").find(text[19]), std::string::npos) << text << ": the variant";
    }
}

TEST(GenerateUuid, NeverGivesTheSameTwice)
{
    std::set<std::string> texts;
    for (int i = 0; i < 10'000; ++i)
    {
        Vontal::u8string text;
        ASSERT_TRUE(generateUUID(text));
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 10'000U);
}

TEST(GenerateUuid, HasEveryDigitInEveryPlaceThatIsFree)
{
    std::set<char> seen[36];
    for (int i = 0; i < 1000; ++i)
    {
        Vontal::u8string text;
        ASSERT_TRUE(generateUUID(text));
        for (std::size_t place = 0; place < 36; ++place)
            seen[place].insert(text[place]);
    }
    for (std::size_t place = 0; place < 36; ++place)
    {
        const bool isFixed = place == 8 || place == 13 || place == 18 || place == 23 || place == 14;
        EXPECT_EQ(seen[place].size(), isFixed ? 1U : place == 19 ? 4U : 16U) << place;
    }
}

} // namespace
