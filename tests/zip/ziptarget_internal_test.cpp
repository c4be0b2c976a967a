#include "VontalBase/zip/ziphandle.h"
#include "VontalBase/zip/ziptarget.h"

#include "support/NativeHandles.h"

#include <gtest/gtest.h>

namespace
{

TEST(ZipTarget, ThatIsNotOpenGoesNowhereAndTellsThat)
{
    zip::Target target;
    EXPECT_EQ(target.error(), 0U);
    EXPECT_EQ(target.seek(0), 0x2000000U);
    EXPECT_EQ(target.error(), 0x1000000U);
    EXPECT_TRUE(target.close());
}

TEST(ZipTarget, ThatIsAPipeGoesNowhereAndTellsThat)
{
    const testsupport::HandlePipe pipe;
    zip::Target target;
    ASSERT_EQ(target.open(pipe.writeEnd.get(), 0, ZipKindHandle), 0U);
    EXPECT_FALSE(target.canSeek());
    EXPECT_EQ(target.seek(0), 0x2000000U);
    EXPECT_EQ(target.error(), 0x2000000U);
}

TEST(ZipTarget, ThatIsFullMemoryGoesNotToItsEndAndTellsThat)
{
    char block[10] = {};
    zip::Target target;
    ASSERT_EQ(target.open(block, 10, ZipKindMemory), 0U);
    EXPECT_EQ(target.seek(9), 0U);
    EXPECT_EQ(target.error(), 0U);
    EXPECT_EQ(target.seek(10), 0x2000000U);
    EXPECT_EQ(target.error(), 0x30000U);
}

} // namespace
