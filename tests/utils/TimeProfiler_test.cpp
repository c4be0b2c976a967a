#include "VontalBase/utils/TimeProfiler.h"

#include "support/Eventually.h"

#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace
{

using qvutils::TimeProfiler;

static_assert(!std::is_polymorphic_v<TimeProfiler>);
static_assert(sizeof(TimeProfiler) == 20);
static_assert(std::is_same_v<decltype(std::declval<TimeProfiler &>().getElapsedTime()), std::uint32_t>);

TEST(TimeProfiler, IsNotRunningAtFirst)
{
    const TimeProfiler profiler;
    EXPECT_FALSE(profiler.isRunning());
}

TEST(TimeProfiler, GrowsWhileItIsRunningAndStaysWhenItIsStopped)
{
    using Clock = std::chrono::system_clock;
    TimeProfiler profiler;
    const auto before = Clock::now();
    profiler.start();
    EXPECT_TRUE(profiler.isRunning());
    EXPECT_TRUE(testsupport::eventually([&] { return profiler.getElapsedTime() >= 20; }));
    profiler.stop();
    const auto after = Clock::now();
    EXPECT_FALSE(profiler.isRunning());
    const std::uint32_t elapsed = profiler.getElapsedTime();
    EXPECT_GE(elapsed, 20U);
    EXPECT_LE(elapsed, std::chrono::duration_cast<std::chrono::milliseconds>(after - before).count() + 20);
    EXPECT_TRUE(testsupport::eventually([&] { return Clock::now() > after + std::chrono::milliseconds(5); }));
    EXPECT_EQ(profiler.getElapsedTime(), elapsed);
}

TEST(TimeProfiler, CopiesAllThatItHas)
{
    TimeProfiler running;
    running.start();
    TimeProfiler copy;
    copy = running;
    EXPECT_TRUE(copy.isRunning());
    running.stop();
    EXPECT_TRUE(copy.isRunning());
    copy = std::move(running);
    EXPECT_FALSE(copy.isRunning());
    EXPECT_EQ(copy.getElapsedTime(), running.getElapsedTime()); // NOLINT(bugprone-use-after-move)
}

} // namespace
