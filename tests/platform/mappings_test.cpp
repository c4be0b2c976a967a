#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/mappings.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using qvplatform::MemoryMapping;

bool isAll(const char * data, std::size_t from, std::size_t to, char byte)
{
    return std::all_of(data + from, data + to, [&](char found) { return found == byte; });
}

TEST(PlatformMappings, HoldNothingToBeginWith)
{
    const MemoryMapping mapping;
    EXPECT_EQ(mapping.data(), nullptr);
}

TEST(PlatformMappings, AreZerosAndKeepWhatIsInThemWhenTheyGrow)
{
    MemoryMapping mapping;
    ASSERT_TRUE(mapping.grow(1));
    EXPECT_EQ(*mapping.data(), '\0');
    *mapping.data() = 'a';
    std::size_t before = 1;
    for (const std::size_t size : {std::size_t{1}, std::size_t{2}, std::size_t{4095}, std::size_t{4096},
             std::size_t{4097}, std::size_t{100'000}, std::size_t{20'000'000}})
    {
        SCOPED_TRACE(size);
        ASSERT_TRUE(mapping.grow(size));
        EXPECT_TRUE(isAll(mapping.data(), 0, before, 'a'));
        EXPECT_TRUE(isAll(mapping.data(), before, size, '\0'));
        std::fill_n(mapping.data(), size, 'a');
        before = size;
    }
}

TEST(PlatformMappings, StayAsTheyAreWhereMemoryIsShort)
{
    MemoryMapping mapping;
    EXPECT_FALSE(mapping.grow(std::numeric_limits<std::size_t>::max() / 2));
    EXPECT_EQ(mapping.data(), nullptr);
    qvplatform::armGates({"memory mapping", 1, 1, qvplatform::GateAnswer::Fail});
    EXPECT_FALSE(mapping.grow(10));
    EXPECT_EQ(mapping.data(), nullptr);
    ASSERT_TRUE(mapping.grow(10));
    std::fill_n(mapping.data(), 10, 'a');
    const char * const data = mapping.data();
    EXPECT_FALSE(mapping.grow(std::numeric_limits<std::size_t>::max() / 2));
    qvplatform::armGates({"memory mapping", 1, 1, qvplatform::GateAnswer::Fail});
    EXPECT_FALSE(mapping.grow(20));
    qvplatform::disarmGates();
    EXPECT_EQ(mapping.data(), data);
    EXPECT_TRUE(isAll(data, 0, 10, 'a'));
}

} // namespace
