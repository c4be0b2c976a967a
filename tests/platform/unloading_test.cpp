#include "VontalBase/platform/unloading.h"

#include <gtest/gtest.h>

namespace
{

// What it says while a library is unloaded, and while a process ends, is seen in the tests of loading and of
// what outlives the static objects.
TEST(PlatformUnloading, IsNotGoingOnWhileTheProgramRuns)
{
    EXPECT_FALSE(qvplatform::isBeingUnloaded());
}

} // namespace
