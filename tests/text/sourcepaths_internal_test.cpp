#include "VontalBase/text/sourcepaths.h"

#include "support/FailingAllocator.h"

#include <gtest/gtest.h>

namespace
{

TEST(TrimSourcePath, AllocatesNothing)
{
    const testsupport::FailingAllocator window;
    const char * const trimmed =
        qvbase::trimSourcePath("C:/Mirsa/Vontal/vontal.git/VontalBase/json/qvjson.cpp");
    const std::uint64_t allocations = window.allocations();
    EXPECT_EQ(allocations, 0U);
    EXPECT_STREQ(trimmed, "VontalBase/json/qvjson.cpp");
}

} // namespace
