#include "VontalBase/platform/computername.h"
#include "VontalBase/platform/gates.h"

#include "support/HostName.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(PlatformComputerName, BeginsWithTheNameOfTheHost)
{
    std::string name("before");
    ASSERT_TRUE(qvplatform::readComputerName(name));
    for (char & c : name)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    ASSERT_NE(testsupport::hostName(), "");
    EXPECT_EQ(name.substr(0, std::min(name.find('.'), name.size())), testsupport::hostName());
    EXPECT_NE(name.back(), '.');
    EXPECT_EQ(name.find("(none)"), std::string::npos);
}

TEST(PlatformComputerName, IsNotTouchedWhereTheSystemRefuses)
{
    std::string name("before");
    qvplatform::armGates({"computer name", 1, 1});
    EXPECT_FALSE(qvplatform::readComputerName(name));
    qvplatform::disarmGates();
    EXPECT_EQ(name, "before");
}

} // namespace
