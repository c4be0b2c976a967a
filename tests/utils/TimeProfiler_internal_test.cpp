#include "VontalBase/platform/clock.h"
#include "VontalBase/utils/TimeProfiler.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using qvutils::TimeProfiler;

class TimeProfilerByAClock : public testing::Test
{
protected:
    ~TimeProfilerByAClock() override
    {
        qvplatform::resetClocks();
    }
};

/// A moment of 2024 whose low half overflows soon.
constexpr std::uint64_t moment = (std::uint64_t{31'080'000} << 32) + 0xFFFFFFF0;

TEST_F(TimeProfilerByAClock, DropsTheFractionOfAMillisecond)
{
    const struct
    {
        std::uint64_t units;
        std::uint32_t expected;
    } rows[] = {
        {0, 0},
        {1, 0},
        {9999, 0},
        {10000, 1},
        {19999, 1},
        {20000, 2},
        {std::uint64_t{10000} * 4294967295U, 4294967295U},
        {std::uint64_t{10000} * 4294967296U, 0}, // cut to 32 bits
        {std::uint64_t{10000} * 4294967301U, 5},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.units);
        TimeProfiler profiler;
        qvplatform::setFileTimeNow(moment);
        profiler.start();
        qvplatform::setFileTimeNow(moment + row.units);
        EXPECT_EQ(profiler.getElapsedTime(), row.expected) << "running";
        profiler.stop();
        qvplatform::setFileTimeNow(moment + 77'777'777);
        EXPECT_EQ(profiler.getElapsedTime(), row.expected) << "stopped";
    }
}

TEST_F(TimeProfilerByAClock, TakesADifferenceBelowZeroAsUnsigned)
{
    TimeProfiler profiler;
    qvplatform::setFileTimeNow(moment);
    profiler.start();
    qvplatform::setFileTimeNow(moment - 10000);
    profiler.stop();
    // (2^64 - 10000) / 10000 = 1844674407370954, which is 3133608138 modulo 2^32.
    const std::uint64_t quotient = (std::numeric_limits<std::uint64_t>::max() - 9999) / 10000;
    EXPECT_EQ(quotient, 1844674407370954U);
    EXPECT_EQ(profiler.getElapsedTime(), 3133608138U);
}

TEST_F(TimeProfilerByAClock, MayBeStoppedWithoutRunningAndStartedAgain)
{
    TimeProfiler profiler;
    qvplatform::setFileTimeNow(moment);
    profiler.start();
    qvplatform::setFileTimeNow(moment + 10000);
    profiler.stop();
    qvplatform::setFileTimeNow(moment + 50000);
    profiler.stop();
    EXPECT_FALSE(profiler.isRunning());
    EXPECT_EQ(profiler.getElapsedTime(), 5U) << "the later stop counts";
    profiler.start();
    qvplatform::setFileTimeNow(moment + 70000);
    EXPECT_EQ(profiler.getElapsedTime(), 2U);
}

} // namespace
