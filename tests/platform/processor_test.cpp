#include "VontalBase/platform/processor.h"

#include <gtest/gtest.h>

namespace
{

TEST(Processor, AgreesWithTheCompilersRuntime)
{
    EXPECT_EQ(qvplatform::canPickBytes(), __builtin_cpu_supports("ssse3") != 0);
}

} // namespace
