#include "VontalBase/text/integers.h"

#include <gtest/gtest.h>
#include <limits>
#include <type_traits>

namespace
{

using Vontal::long32;
using Vontal::ulong32;

static_assert(sizeof(long32) == 4 && std::is_signed_v<long32>);
static_assert(sizeof(ulong32) == 4 && std::is_unsigned_v<ulong32>);
static_assert(sizeof(long) != 4 || std::is_same_v<long32, long>, "the native type where it has the width");
static_assert(sizeof(long) != 4 || std::is_same_v<ulong32, unsigned long>);

TEST(Integers, HaveTheRangeOf32Bits)
{
    EXPECT_EQ(std::numeric_limits<long32>::max(), 2147483647);
    EXPECT_EQ(std::numeric_limits<ulong32>::max(), 4294967295U);
    EXPECT_EQ(static_cast<ulong32>(std::numeric_limits<ulong32>::max() + 1U), 0U);
}

} // namespace
