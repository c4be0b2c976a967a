#include "VontalBase/text/Decimal.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using Vontal::Decimal;

TEST(Decimal, HoldsEveryIntegerOfUpTo64Bits)
{
    EXPECT_EQ(Decimal(0).text(), "0");
    EXPECT_EQ(Decimal(-1).text(), "-1");
    EXPECT_EQ(Decimal(1'000'000).text(), "1000000");
    EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::min()).text(), "-9223372036854775808");
    EXPECT_EQ(Decimal(std::numeric_limits<std::uint64_t>::max()).text(), "18446744073709551615");
}

} // namespace
