#include "VontalBase/platform/blocks.h"
#include "VontalBase/platform/gates.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

TEST(PlatformBlocks, AreZeroAndMayBeWritten)
{
    for (const std::size_t size : {platform::leastBlock, platform::leastBlock + 1, std::size_t{1} << 22})
    {
        auto * const block = static_cast<unsigned char *>(platform::takeBlock(size));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + size, [](unsigned char byte) { return byte == 0; }));
        std::fill(block, block + size, static_cast<unsigned char>(7));
        platform::giveBlock(block, size);
    }
}

TEST(PlatformBlocks, MayBeNone)
{
    platform::giveBlock(nullptr, platform::leastBlock);
    EXPECT_EQ(platform::takeBlock(std::size_t{1} << 60), nullptr);
    platform::armGates({"memory block"});
    EXPECT_EQ(platform::takeBlock(platform::leastBlock), nullptr);
    platform::disarmGates();
}

} // namespace
