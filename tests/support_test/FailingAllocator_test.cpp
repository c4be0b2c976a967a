#include "support/FailingAllocator.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using testsupport::AllocatingThreads;
using testsupport::FailingAllocator;
using testsupport::liveAllocations;

/// Keeps the optimiser from leaving out an allocation that nobody looks at.
void * volatile sink = nullptr;

void allocateAndFree()
{
    int * const block = new int;
    sink = block;
    delete block;
}

struct alignas(64) Aligned
{
    char bytes[64];
};

TEST(FailingAllocator, CountsTheAllocationsOfItsWindow)
{
    const FailingAllocator window;
    EXPECT_EQ(window.allocations(), 0U);
    allocateAndFree();
    allocateAndFree();
    EXPECT_EQ(window.allocations(), 2U);
    EXPECT_EQ(window.refused(), 0U);
}

TEST(FailingAllocator, RefusesTheNthAllocationAlone)
{
    const FailingAllocator window({.allocation = 2});
    allocateAndFree();
    bool refused = false;
    try
    {
        allocateAndFree();
    }
    catch (const std::bad_alloc &)
    {
        refused = true;
    }
    allocateAndFree();
    EXPECT_TRUE(refused);
    EXPECT_EQ(window.allocations(), 3U);
    EXPECT_EQ(window.refused(), 1U);
}

TEST(FailingAllocator, CanRefuseForLonger)
{
    int refused = 0;
    {
        const FailingAllocator window({.allocation = 2, .repeats = 3});
        for (int i = 0; i < 6; ++i)
        {
            try
            {
                allocateAndFree();
            }
            catch (const std::bad_alloc &)
            {
                ++refused;
            }
        }
    }
    EXPECT_EQ(refused, 3);
}

TEST(FailingAllocator, RefusesNothingAfterItsWindow)
{
    {
        const FailingAllocator window({.allocation = 1});
    }
    EXPECT_NO_THROW(allocateAndFree());
}

TEST(FailingAllocator, GivesNullWhereNoExceptionIsAllowed)
{
    const FailingAllocator window({.allocation = 1, .repeats = 3});
    int * const one = new (std::nothrow) int;
    int * const several = new (std::nothrow) int[3];
    Aligned * const aligned = new (std::nothrow) Aligned;
    const bool allNull = one == nullptr && several == nullptr && aligned == nullptr;
    EXPECT_TRUE(allNull);
    delete one;
    delete[] several;
    delete aligned;
}

/// Owns a block whose making the optimiser cannot leave out.
template <typename T>
std::unique_ptr<T> own(std::remove_extent_t<T> * block)
{
    sink = block;
    return std::unique_ptr<T>(block);
}

bool isAligned(const void * block)
{
    return reinterpret_cast<std::uintptr_t>(block) % alignof(Aligned) == 0;
}

TEST(FailingAllocator, ReplacesEveryForm)
{
    const std::int64_t before = liveAllocations();
    std::int64_t held = 0;
    std::uint64_t seen = 0;
    bool aligned = false;
    {
        const FailingAllocator window;
        const auto one = own<int>(new int);
        const auto several = own<int[]>(new int[3]);
        const auto alignedOne = own<Aligned>(new Aligned);
        const auto alignedSeveral = own<Aligned[]>(new Aligned[3]);
        const auto nothrowOne = own<int>(new (std::nothrow) int);
        const auto nothrowSeveral = own<int[]>(new (std::nothrow) int[3]);
        const auto nothrowAligned = own<Aligned>(new (std::nothrow) Aligned);
        const auto nothrowAlignedSeveral = own<Aligned[]>(new (std::nothrow) Aligned[3]);
        held = liveAllocations() - before;
        seen = window.allocations();
        aligned = isAligned(alignedOne.get()) && isAligned(alignedSeveral.get()) &&
                  isAligned(nothrowAligned.get()) && isAligned(nothrowAlignedSeveral.get());
    }
    const std::int64_t after = liveAllocations();
    EXPECT_EQ(held, 8);
    EXPECT_EQ(seen, 8U);
    EXPECT_TRUE(aligned);
    EXPECT_EQ(after, before);
}

TEST(FailingAllocator, SeesWhatTheStandardLibraryAllocates)
{
    const std::int64_t before = liveAllocations();
    {
        std::string text(100, 'x');
        std::vector<int> numbers(100);
        text.append(1000, 'y');
        EXPECT_EQ(liveAllocations() - before, 2);
    }
    EXPECT_EQ(liveAllocations(), before);

    const FailingAllocator window({.allocation = 1});
    bool refused = false;
    try
    {
        const std::string text(100, 'x');
    }
    catch (const std::bad_alloc &)
    {
        refused = true;
    }
    EXPECT_TRUE(refused);
}

TEST(FailingAllocator, SeesOnlyTheThreadThatOpenedTheWindow)
{
    // Making the thread allocates here, in both windows alike.
    std::uint64_t seen = 0;
    {
        const FailingAllocator window({.allocation = 1'000'000});
        const std::uint64_t before = window.allocations();
        std::thread([] { allocateAndFree(); }).join();
        seen = window.allocations() - before;
    }
    std::uint64_t seenOfAll = 0;
    {
        const FailingAllocator window({.allocation = 1'000'000, .threads = AllocatingThreads::All});
        const std::uint64_t before = window.allocations();
        std::thread([] { allocateAndFree(); }).join();
        seenOfAll = window.allocations() - before;
    }
    EXPECT_EQ(seenOfAll, seen + 1);
}

TEST(FailingAllocator, OverlooksWhatATestHidesFromIt)
{
    const FailingAllocator window({.allocation = 1});
    {
        const testsupport::UnseenAllocations unseen;
        EXPECT_NO_THROW(allocateAndFree());
    }
    EXPECT_EQ(window.allocations(), 0U);
}

} // namespace
