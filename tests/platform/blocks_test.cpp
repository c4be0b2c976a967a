#include "VontalBase/platform/blocks.h"
#include "VontalBase/platform/gates.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

TEST(PlatformBlocks, AreZeroAndMayBeWritten)
{
    for (const std::size_t size : {qvplatform::leastBlock, qvplatform::leastBlock + 1, std::size_t{1} << 22})
    {
        auto * const block = static_cast<unsigned char *>(qvplatform::takeBlock(size));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + size, [](unsigned char byte) { return byte == 0; }));
        std::fill(block, block + size, static_cast<unsigned char>(7));
        qvplatform::giveBlock(block, size);
    }
}

TEST(PlatformBlocks, MayBeNone)
{
    qvplatform::giveBlock(nullptr, qvplatform::leastBlock);
    EXPECT_EQ(qvplatform::takeBlock(std::size_t{1} << 60), nullptr);
    qvplatform::armGates({"memory block"});
    EXPECT_EQ(qvplatform::takeBlock(qvplatform::leastBlock), nullptr);
    qvplatform::disarmGates();
}

} // namespace
