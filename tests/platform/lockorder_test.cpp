#include "VontalBase/platform/lockorder.h"

#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{

using qvplatform::heldLocks;
using qvplatform::LockRank;
using qvplatform::noteAcquiring;
using qvplatform::noteReleasing;

constexpr int outer = 0;
constexpr int middle = 0;
constexpr int inner = 0;

TEST(LockOrder, TakesLocksInwards)
{
    noteAcquiring(&outer, LockRank::LongRunCommand);
    noteAcquiring(&middle, LockRank::ThreadRegistry);
    noteAcquiring(&inner, LockRank::Last);
    EXPECT_EQ(heldLocks(), 3U);
    noteReleasing(&inner);
    noteReleasing(&middle);
    noteReleasing(&outer);
    EXPECT_EQ(heldLocks(), 0U);
}

TEST(LockOrder, TakesAHeldLockAgainWhereverItStands)
{
    noteAcquiring(&outer, LockRank::ExecutorOrRunner);
    noteAcquiring(&inner, LockRank::Last);
    noteAcquiring(&outer, LockRank::ExecutorOrRunner);
    EXPECT_EQ(heldLocks(), 2U);
    noteReleasing(&outer);
    noteReleasing(&inner);
    EXPECT_EQ(heldLocks(), 1U) << "the outer one is held once more";
    noteReleasing(&outer);
    EXPECT_EQ(heldLocks(), 0U);
}

TEST(LockOrder, GivesThemBackInAnyOrder)
{
    noteAcquiring(&outer, LockRank::LongRunCommand);
    noteAcquiring(&middle, LockRank::ExecutorOrRunner);
    noteReleasing(&outer);
    noteAcquiring(&inner, LockRank::Last);
    noteReleasing(&middle);
    EXPECT_EQ(heldLocks(), 1U);
    noteReleasing(&inner);
    EXPECT_EQ(heldLocks(), 0U);
}

TEST(LockOrder, KnowsNothingOfLocksThatAreNotTheLibrarys)
{
    noteAcquiring(&inner, LockRank::Last);
    noteAcquiring(&outer, LockRank::None);
    EXPECT_EQ(heldLocks(), 1U);
    noteReleasing(&outer);
    noteReleasing(&inner);
    EXPECT_EQ(heldLocks(), 0U);
}

TEST(LockOrder, IsThatOfOneThread)
{
    noteAcquiring(&inner, LockRank::Last);
    std::thread(
        []
        {
            EXPECT_EQ(heldLocks(), 0U);
            noteAcquiring(&outer, LockRank::LongRunCommand);
            noteReleasing(&outer);
        })
        .join();
    noteReleasing(&inner);
}

VONTALBASE_TEST_CHILD(takesLocksOutwards, arguments)
{
    noteAcquiring(&inner, LockRank::ThreadRegistry);
    noteAcquiring(&outer, LockRank::LongRunCommand);
    return 0;
}

VONTALBASE_TEST_CHILD(takesTwoLocksOfOneRank, arguments)
{
    noteAcquiring(&inner, LockRank::Last);
    noteAcquiring(&outer, LockRank::Last);
    return 0;
}

TEST(LockOrder, EndsAProcessThatTakesLocksOutwards)
{
    const testsupport::ChildResult child = testsupport::runChild("takesLocksOutwards");
    EXPECT_NE(child.exitCode, 0);
    EXPECT_EQ(child.standardError.substr(0, child.standardError.find_first_of("\r\n")),
        "Locks out of order: that of a long-running command while that of the thread registry is held.");
}

TEST(LockOrder, EndsAProcessThatTakesTwoLocksOfOneRank)
{
    const testsupport::ChildResult child = testsupport::runChild("takesTwoLocksOfOneRank");
    EXPECT_NE(child.exitCode, 0);
    EXPECT_EQ(child.standardError.substr(0, child.standardError.find_first_of("\r\n")),
        "Locks out of order: that of a logger or the counts while that of a logger or the counts is held.");
}

} // namespace
