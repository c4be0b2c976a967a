#include "VontalBase/platform/handles.h"
#include "VontalBase/platform/processes.h"

#include "support/ResourceSnapshot.h"

#include <gtest/gtest.h>

namespace
{

using qvplatform::isHandle;
using qvplatform::OwnedHandle;

TEST(OwnedHandle, HoldsNoneAtFirst)
{
    const OwnedHandle handle;
    EXPECT_EQ(handle.get(), qvplatform::invalidHandle());
}

TEST(OwnedHandle, ClosesWhatItHolds)
{
    const auto use = []
    {
        OwnedHandle reading;
        OwnedHandle writing;
        EXPECT_TRUE(qvplatform::makePipe(reading.receive(), writing.receive(), 1024));
        EXPECT_TRUE(isHandle(reading.get()));
        EXPECT_TRUE(isHandle(writing.get()));
    };
    use();
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 100; ++i)
        use();
    EXPECT_LE(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
}

} // namespace
