#include "VontalBase/platform/gates.h"
#include "VontalBase/utils/uuid.h"

#include <gtest/gtest.h>

namespace
{

TEST(GenerateUuid, LeavesItsTextAloneWhereTheSystemRefuses)
{
    Vontal::u8string text = "before";
    platform::armGates({"make uuid", 1, 1});
    EXPECT_FALSE(qvutils::generateUUID(text));
    platform::disarmGates();
    EXPECT_EQ(text, "before");
}

} // namespace
