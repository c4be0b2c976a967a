#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "core/CountedObject.h"
#include "support/TestSemaphore.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvbase::g_referencedObjectMutex;
using qvbase::Reference;
using qvbase::ReferencedImpl;
using qvbase::ReferencedImplMT;

static_assert(std::is_base_of_v<Circle, ReferencedImpl<Circle>>);
static_assert(std::is_base_of_v<Circle, ReferencedImplMT<Circle>>);
static_assert(!std::is_copy_constructible_v<ReferencedImpl<Circle>>);
static_assert(!std::is_copy_constructible_v<ReferencedImplMT<Circle>>);
static_assert(std::is_same_v<std::remove_reference_t<decltype(g_referencedObjectMutex)>, qvbase::ThreadMutex>,
    "one lock");

/// What holds for both wrappers.
template <class Wrapper>
class Wrappers : public testing::Test
{
};

template <template <class> class Impl>
struct WrapperOf
{
    template <class T>
    using For = Impl<T>;
};

using BothWrappers = testing::Types<WrapperOf<ReferencedImpl>, WrapperOf<ReferencedImplMT>>;
TYPED_TEST_SUITE(Wrappers, BothWrappers);

TYPED_TEST(Wrappers, MakeAnObjectThatDiesWithItsOneReference)
{
    int destructions = 0;
    {
        const Reference<Shape> reference(new typename TypeParam::template For<Circle>(destructions));
        EXPECT_EQ(destructions, 0);
    }
    EXPECT_EQ(destructions, 1);
}

TYPED_TEST(Wrappers, DestroyTheObjectExactlyOnceWhenTheCountReturnsToZero)
{
    int destructions = 0;
    Shape * const shape = new typename TypeParam::template For<Circle>(destructions);
    for (int i = 0; i < 5; ++i)
        shape->addRef();
    for (int i = 0; i < 4; ++i)
        shape->release();
    EXPECT_EQ(destructions, 0);
    shape->release();
    EXPECT_EQ(destructions, 1);
}

TYPED_TEST(Wrappers, LeaveAnObjectAloneThatWasNeverCounted)
{
    int destructions = 0;
    Shape * const shape = new typename TypeParam::template For<Circle>(destructions);
    EXPECT_EQ(destructions, 0);
    delete shape;
    EXPECT_EQ(destructions, 1);
}

TYPED_TEST(Wrappers, WrapTheCountOnAReleaseTooManyAndDeleteNothing)
{
    int destructions = 0;
    Shape * const shape = new typename TypeParam::template For<Circle>(destructions);
    shape->release();
    EXPECT_EQ(destructions, 0) << "from 0 to the greatest value";
    shape->addRef();
    shape->addRef();
    EXPECT_EQ(destructions, 0);
    shape->release();
    EXPECT_EQ(destructions, 1) << "from 1 to 0, as ever";
}

TYPED_TEST(Wrappers, MayLiveOutsideTheHeapWhereNobodyReleasesToZero)
{
    int destructions = 0;
    {
        typename TypeParam::template For<Circle> object(destructions);
        object.addRef();
    }
    EXPECT_EQ(destructions, 1);
}

/// A class with constructors of every kind of argument.
class Square : public Shape
{
public:
    Square() : made("default")
    {
    }
    explicit Square(const std::string & name) : made("copy of " + name)
    {
    }
    explicit Square(std::string && name) : made("moved " + std::move(name))
    {
    }
    Square(int & counter, std::unique_ptr<int> owned) : made("two")
    {
        counter += *owned;
    }
    std::string made;
};

TYPED_TEST(Wrappers, HaveTheConstructorsOfTheirClass)
{
    using Object = typename TypeParam::template For<Square>;
    const std::string name = "n";
    int counter = 0;
    EXPECT_EQ(Reference<Square>(new Object())->made, "default");
    EXPECT_EQ(Reference<Square>(new Object(name))->made, "copy of n");
    EXPECT_EQ(Reference<Square>(new Object(std::string("n")))->made, "moved n");
    EXPECT_EQ(Reference<Square>(new Object(counter, std::make_unique<int>(3)))->made, "two");
    EXPECT_EQ(counter, 3);
    static_assert(!std::is_convertible_v<int, Object>);
}

TYPED_TEST(Wrappers, DestroyAnObjectAndWhatItHolds)
{
    using Object = typename TypeParam::template For<Circle>;
    int outer = 0;
    int inner = 0;
    Reference<Shape> held(new Object(inner));
    auto * const holder = new Object(outer, [&held] { held = nullptr; });
    {
        const Reference<Shape> reference(holder);
    }
    EXPECT_EQ(outer, 1);
    EXPECT_EQ(inner, 1) << "a release within a destructor";
}

/// How often the calling thread holds the lock of the counts.
std::uint32_t holdsOfTheLock()
{
    return g_referencedObjectMutex.getRecursiveCounter();
}

/// Whether another thread can take the lock at this moment.
bool anotherThreadCanEnter()
{
    testsupport::TestSemaphore entered;
    std::thread other(
        [&entered]
        {
            g_referencedObjectMutex.acquire();
            g_referencedObjectMutex.release();
            entered.release();
        });
    const bool isFree = entered.tryAcquireFor(std::chrono::seconds(20));
    other.join();
    return isFree;
}

TEST(ReferencedImplMT, DoesNotHoldTheLockWhileADestructorRuns)
{
    int destructions = 0;
    std::uint32_t holds = 99;
    bool isFree = false;
    auto * const object = new ReferencedImplMT<Circle>(destructions,
        [&]
        {
            holds = holdsOfTheLock();
            isFree = anotherThreadCanEnter();
        });
    {
        const Reference<Shape> reference(object);
        EXPECT_EQ(holdsOfTheLock(), 0U);
    }
    EXPECT_EQ(destructions, 1);
    EXPECT_EQ(holds, 0U);
    EXPECT_TRUE(isFree);
    EXPECT_EQ(holdsOfTheLock(), 0U);
}

TEST(ReferencedImplMT, GivesTheLockBackAfterEachChange)
{
    int destructions = 0;
    Shape * const shape = new ReferencedImplMT<Circle>(destructions);
    shape->addRef();
    EXPECT_TRUE(anotherThreadCanEnter());
    shape->addRef();
    shape->release();
    EXPECT_TRUE(anotherThreadCanEnter());
    shape->release();
    EXPECT_TRUE(anotherThreadCanEnter());
    EXPECT_EQ(destructions, 1);
}

/// Whether `change`, on another thread, waits for the lock of the counts while this thread holds it.
template <class Change>
bool waitsForTheLock(const Change & change)
{
    testsupport::TestSemaphore started;
    std::atomic<bool> lockGivenBack{false};
    bool waited = false;
    g_referencedObjectMutex.acquire();
    std::thread other(
        [&]
        {
            started.release();
            change();
            waited = lockGivenBack.load();
        });
    started.acquire();
    // Time for a change that does not wait to be seen. One that waits is seen to wait whatever the time.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    lockGivenBack = true;
    g_referencedObjectMutex.release();
    other.join();
    return waited;
}

TEST(ReferencedImplMT, ChangesItsCountUnderTheLock)
{
    int destructions = 0;
    Shape * const shape = new ReferencedImplMT<Circle>(destructions);
    EXPECT_TRUE(waitsForTheLock([shape] { shape->addRef(); }));
    shape->addRef();
    EXPECT_TRUE(waitsForTheLock([shape] { shape->release(); })) << "with references left";
    EXPECT_TRUE(waitsForTheLock([shape] { shape->release(); })) << "the last one";
    EXPECT_EQ(destructions, 1);
}

TEST(ReferencedImpl, ChangesItsCountWithoutTheLock)
{
    int destructions = 0;
    Shape * const shape = new ReferencedImpl<Circle>(destructions);
    g_referencedObjectMutex.acquire();
    testsupport::TestSemaphore done;
    std::thread other(
        [&]
        {
            shape->addRef();
            shape->addRef();
            shape->release();
            shape->release();
            done.release();
        });
    EXPECT_TRUE(done.tryAcquireFor(std::chrono::seconds(20)));
    g_referencedObjectMutex.release();
    other.join();
    EXPECT_EQ(destructions, 1);
}

TEST(ReferencedImplMT, SharesOneLockAmongAllClasses)
{
    int destructions = 0;
    Square * const square = new ReferencedImplMT<Square>();
    Circle * const circle = new ReferencedImplMT<Circle>(destructions);
    EXPECT_TRUE(waitsForTheLock([square] { square->addRef(); }));
    EXPECT_TRUE(waitsForTheLock([circle] { circle->addRef(); }));
    square->release();
    circle->release();
}

TEST(ReferencedImplMT, MayBeCountedWithinItsOwnLock)
{
    int destructions = 0;
    g_referencedObjectMutex.acquire();
    {
        const Reference<Shape> reference(new ReferencedImplMT<Circle>(destructions));
        EXPECT_EQ(holdsOfTheLock(), 1U);
    }
    EXPECT_EQ(destructions, 1);
    EXPECT_EQ(holdsOfTheLock(), 1U);
    g_referencedObjectMutex.release();
}

TEST(ReferencedImplMT, IsSharedByThirtyTwoThreads)
{
    constexpr int threadCount = 32;
    constexpr int rounds = 500;
    int destructions[2] = {0, 0};
    {
        const Reference<Shape> objects[2] = {Reference<Shape>(new ReferencedImplMT<Circle>(destructions[0])),
            Reference<Shape>(new ReferencedImplMT<Circle>(destructions[1]))};
        std::vector<std::thread> threads;
        for (int i = 0; i < threadCount; ++i)
        {
            threads.emplace_back(
                [&objects]
                {
                    Reference<Shape> own;
                    for (int round = 0; round < rounds; ++round)
                    {
                        const Reference<Shape> copy(objects[round % 2]);
                        own = copy;
                        Reference<Shape> moved(std::move(own));
                        own = objects[(round + 1) % 2];
                    }
                });
        }
        for (std::thread & thread : threads)
            thread.join();
        EXPECT_EQ(destructions[0], 0);
        EXPECT_EQ(destructions[1], 0);
    }
    EXPECT_EQ(destructions[0], 1);
    EXPECT_EQ(destructions[1], 1);
}

TEST(ReferencedImplMT, IsDestroyedOnceByTheLastOfThirtyTwoThreads)
{
    constexpr int threadCount = 32;
    for (int round = 0; round < 20; ++round)
    {
        int destructions = 0;
        Shape * const shape = new ReferencedImplMT<Circle>(destructions);
        std::vector<Reference<Shape>> references(threadCount, Reference<Shape>(shape));
        std::atomic<bool> go{false};
        std::vector<std::thread> threads;
        for (Reference<Shape> & reference : references)
        {
            threads.emplace_back(
                [&reference, &go]
                {
                    while (!go)
                        std::this_thread::yield();
                    reference = nullptr;
                });
        }
        go = true;
        for (std::thread & thread : threads)
            thread.join();
        ASSERT_EQ(destructions, 1);
    }
}

} // namespace
