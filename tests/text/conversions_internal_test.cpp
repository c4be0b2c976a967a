// The start-up step of the conversions, and what becomes of the process if it failed.

#include "VontalBase/text/conversionsstart.h"

#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(ConversionsStart, NeverFails)
{
    EXPECT_TRUE(Vontal::initializeConversions());
}

TEST(ConversionsStart, SaysNothingWhereTheStepSucceeded)
{
    testing::internal::CaptureStderr();
    Vontal::requireConversions(true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

constexpr int wentOn = 5;

VONTALBASE_TEST_CHILD(hasNoConversions, arguments)
{
    Vontal::requireConversions(false);
    return wentOn;
}

TEST(ConversionsStart, EndsTheProcessWithAWordWhereTheStepFailed)
{
    const testsupport::ChildResult child = testsupport::runChild("hasNoConversions");
    ASSERT_TRUE(child.started);
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, testsupport::exitCodeOfAbort());
    std::string said = child.standardError;
    std::erase(said, '\r');
    // The system may have its own word to say about an abort.
    EXPECT_EQ(said.substr(0, 42), "Cannot initialize basic conversion object\n");
    EXPECT_EQ(child.standardOutput, "");
}

} // namespace
