#include "VontalBase/zip/ziputfield.h"

#include "zip/ArchiveBuilder.h"
#include "zip/utfield_oracle.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using namespace ziptest;

/// A field in a block of memory that ends with it.
std::string timesOf(const std::vector<unsigned char> & extra)
{
    return describe(zip::findUtTimes(extra));
}

TEST(UtField, HoldsTheTimesThatItsFlagsTell)
{
    const std::string none = "modification none, access none, creation none";
    struct Row
    {
        std::vector<unsigned char> extra;
        std::string expected;
    };
    const Row rows[] = {
        {{}, none},
        {{'U', 'T', 9, 0}, none},
        {{'U', 'T', 9, 0, 7}, none},
        {{'U', 'T', 9, 0, 1, 1, 2, 3}, none},
        {{'U', 'T', 9, 0, 1, 1, 2, 3, 4}, "modification 67305985, access none, creation none"},
        {{'U', 'T', 9, 0, 2, 1, 0, 0, 0, 2, 0, 0, 0}, "modification none, access 1, creation none"},
        {{'U', 'T', 9, 0, 3, 1, 0, 0, 0, 2, 0, 0, 0}, "modification 1, access 2, creation none"},
        {{'U', 'T', 9, 0, 7, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 128},
            "modification 1, access 2, creation -2147483645"},
        {{'U', 'T', 9, 0, 5, 1, 0, 0, 0, 255, 255, 255, 255}, "modification 1, access none, creation -1"},
        {{'U', 'X', 0, 0, 'U', 'T', 9, 0, 1, 1, 0, 0, 0}, "modification 1, access none, creation none"},
        {{'U', 'X', 0xFC, 0, 'U', 'T', 9, 0, 1, 1, 0, 0, 0}, none},
        {{'U', 'X', 0xFD, 'U', 'T', 9, 0, 1, 1, 0, 0, 0}, none},
    };
    for (const Row & row : rows)
        EXPECT_EQ(timesOf(row.extra), row.expected);
}

TEST(UtField, IsFoundAsThePlainSearchFindsItWhateverLengthStandsInFront)
{
    for (int low = 0; low < 256; ++low)
    {
        for (const std::size_t behind : {0U, 4U, 60U, 140U})
        {
            const std::string field = std::string("zz") + static_cast<char>(low) +
                                      std::string(1 + behind, '\0') + "UT" + number(9, 2) + "\7" +
                                      number(1, 4) + number(2, 4) + number(3, 4);
            std::vector<unsigned char> extra(field.begin(), field.end());
            while (!extra.empty())
            {
                EXPECT_EQ(timesOf(extra), describe(utTimesPlainly(extra))) << low << ", " << extra.size();
                extra.pop_back();
                extra.shrink_to_fit();
            }
        }
    }
}

TEST(UtField, IsFoundAsThePlainSearchFindsItInAnyBytes)
{
    std::uint32_t state = 2463534242U;
    const auto random = [&](std::uint32_t limit)
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state % limit;
    };
    const unsigned char likely[] = {'U', 'T', 0, 1, 4, 0x7F, 0x80, 0xFC, 0xFD, 0xFF, 7};
    for (int run = 0; run < 20'000; ++run)
    {
        std::vector<unsigned char> extra(random(40));
        for (unsigned char & byte : extra)
            byte = likely[random(sizeof likely)];
        ASSERT_EQ(timesOf(extra), describe(utTimesPlainly(extra)));
    }
}

} // namespace
