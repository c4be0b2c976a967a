#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/uuid.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace
{

using qvplatform::Uuid;

bool isOfVersion4(const Uuid & uuid)
{
    return uuid.third >> 12 == 4 && uuid.rest[0] >> 6 == 2;
}

TEST(PlatformUuid, IsARandomOneOfVersion4)
{
    Uuid first;
    Uuid second;
    ASSERT_TRUE(qvplatform::makeUuid(first));
    ASSERT_TRUE(qvplatform::makeUuid(second));
    EXPECT_TRUE(isOfVersion4(first));
    EXPECT_TRUE(isOfVersion4(second));
    EXPECT_NE(first.rest, second.rest);
}

TEST(PlatformUuid, IsNotTouchedWhereTheSystemRefuses)
{
    Uuid uuid;
    uuid.first = 5;
    qvplatform::armGates({"make uuid", 1, 1});
    EXPECT_FALSE(qvplatform::makeUuid(uuid));
    qvplatform::disarmGates();
    EXPECT_EQ(uuid.first, 5U);
}

TEST(PlatformUuid, IsMadeAllTheSameOfInterruptedAndShortReads)
{
    // On systems that make it in one call there is no such gate, and the usual thing happens.
    for (const auto answer : {qvplatform::GateAnswer::Interrupt, qvplatform::GateAnswer::CutShort})
    {
        for (std::uint64_t passage = 1; passage <= 6; ++passage)
        {
            Uuid uuid;
            qvplatform::armGates({"random bytes", passage, 1, answer});
            EXPECT_TRUE(qvplatform::makeUuid(uuid));
            qvplatform::disarmGates();
            EXPECT_TRUE(isOfVersion4(uuid));
        }
    }
}

} // namespace
