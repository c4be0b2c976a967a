#include "VontalBase/concurrency/sleep.h"

#include "support/Eventually.h"
#include "support/SignalStorm.h"

#include <chrono>
#include <gtest/gtest.h>

namespace
{

using Clock = std::chrono::steady_clock;

/// How long the call takes.
Clock::duration durationOf(unsigned int milliseconds)
{
    const Clock::time_point start = Clock::now();
    qvbase::sleep(milliseconds);
    return Clock::now() - start;
}

// The system's clock may tick a millisecond before the other one.
constexpr std::chrono::milliseconds tick{1};

TEST(Sleep, LastsAtLeastAsLongAsTold)
{
    for (const unsigned int milliseconds : {1U, 20U, 60U})
        EXPECT_GE(durationOf(milliseconds) + tick, std::chrono::milliseconds(milliseconds));
    EXPECT_GE(durationOf(1005) + tick, std::chrono::milliseconds(1005)) << "more than a second";
}

TEST(Sleep, CountsInMilliseconds)
{
    // As seconds it would be more than a minute and a half.
    EXPECT_LT(durationOf(100), testsupport::patience);
}

TEST(Sleep, OfNothingReturns)
{
    durationOf(0);
    SUCCEED();
}

TEST(Sleep, IsNotCutShortBySignals)
{
    const testsupport::SignalStorm storm;
    EXPECT_GE(durationOf(100) + tick, std::chrono::milliseconds(100));
}

} // namespace
