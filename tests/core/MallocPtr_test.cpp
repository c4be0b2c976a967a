#include "VontalBase/core/MallocPtr.h"

#include "support/Sanitizers.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>

namespace
{

using qvbase::MallocPtr;

static_assert(sizeof(MallocPtr) == sizeof(void *));
static_assert(!std::is_polymorphic_v<MallocPtr>);
static_assert(std::is_convertible_v<void *, MallocPtr>);
static_assert(std::is_convertible_v<std::uint64_t, MallocPtr>);

TEST(MallocPtr, IsNullUnlessToldOtherwise)
{
    const MallocPtr empty;
    EXPECT_EQ(empty.get(), nullptr);
    const MallocPtr null(nullptr);
    EXPECT_EQ(null.get(), nullptr);
}

TEST(MallocPtr, HoldsTheBlockThatItIsGiven)
{
    void * const block = std::malloc(10);
    const MallocPtr owner(block);
    EXPECT_EQ(owner.get(), block);
}

TEST(MallocPtr, AllocatesABlockOfItsOwn)
{
    const MallocPtr owner(std::uint64_t{1000});
    ASSERT_NE(owner.get(), nullptr);
    std::memset(owner.get(), 0x5A, 1000);
    EXPECT_EQ(static_cast<unsigned char *>(owner.get())[999], 0x5A);
}

TEST(MallocPtr, GivesItsBlockAwayOnRelease)
{
    void * const block = std::malloc(10);
    void * released = nullptr;
    {
        MallocPtr owner(block);
        released = owner.release();
        EXPECT_EQ(owner.get(), nullptr);
        EXPECT_EQ(owner.release(), nullptr) << "there is nothing left to give";
    }
    ASSERT_EQ(released, block);
    // Freed twice, if the owner had freed it as well.
    std::free(released);
}

TEST(MallocPtr, HoldsAnotherBlockOnAttach)
{
    // The first block is lost, to those who look for leaks, unless it is freed here.
    MallocPtr owner(std::malloc(10));
    void * const second = std::malloc(20);
    owner.attach(second);
    EXPECT_EQ(owner.get(), second);
    owner.attach(nullptr);
    EXPECT_EQ(owner.get(), nullptr);
    owner.attach(nullptr);
    EXPECT_EQ(owner.get(), nullptr);
}

TEST(MallocPtr, KeepsOneBlockForTwoWhenItIsCopied)
{
    MallocPtr first(std::malloc(10));
    MallocPtr second(first);
    EXPECT_EQ(second.get(), first.get());
    MallocPtr third;
    third = first;
    EXPECT_EQ(third.get(), first.get()) << "the source is not emptied";
    second.release();
    third.release();
}

TEST(MallocPtr, KeepsQuietAboutTheOldBlockWhenItIsAssigned)
{
    void * const old = std::malloc(10);
    std::memset(old, 0x5A, 10);
    MallocPtr first(old);
    MallocPtr second(std::malloc(10));
    first = second;
    EXPECT_EQ(static_cast<unsigned char *>(old)[9], 0x5A) << "it is not freed";
    std::free(old);
    second.release();
}

TEST(MallocPtr, KeepsANullBlockWhereMemoryIsShort)
{
    if (testsupport::endsAtHugeAllocations)
        GTEST_SKIP() << "the sanitizer ends the program at such an allocation";
    // volatile: the compiler knows that no block is so large.
    volatile std::uint64_t size = UINT64_MAX / 2;
    const MallocPtr owner(static_cast<std::uint64_t>(size));
    EXPECT_EQ(owner.get(), nullptr);
}

} // namespace
