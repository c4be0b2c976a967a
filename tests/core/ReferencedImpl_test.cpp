#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "core/CountedObject.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"

#include <atomic>
#include <gtest/gtest.h>
#include <initializer_list>
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

/// A class whose constructors take what a forwarding constructor could not tell apart.
class Polygon : public Shape
{
public:
    explicit Polygon(const char * name) : made(name == nullptr ? "null" : name)
    {
    }
    Polygon(std::initializer_list<int> corners) : made("corners")
    {
        for (const int corner : corners)
            made += " " + std::to_string(corner);
    }
    Polygon(const std::vector<int> & corners, const char * name)
        : made(std::to_string(corners.size()) + (name == nullptr ? " of null" : " of a name"))
    {
    }
    std::string made;
};

TYPED_TEST(Wrappers, TakeBracesAndZeroAsTheirClassDoes)
{
    using Object = typename TypeParam::template For<Polygon>;
    EXPECT_EQ(Reference<Polygon>(new Object(0))->made, "null");
    EXPECT_EQ(Reference<Polygon>(new Object(nullptr))->made, "null");
    EXPECT_EQ(Reference<Polygon>(new Object({1, 2, 3}))->made, "corners 1 2 3");
    EXPECT_EQ(Reference<Polygon>(new Object{4, 5})->made, "corners 4 5");
    EXPECT_EQ(Reference<Polygon>(new Object({1, 2, 3}, 0))->made, "3 of null");
    EXPECT_EQ(Reference<Polygon>(new Object({}, "name"))->made, "0 of a name");
}

TYPED_TEST(Wrappers, RefuseWhatTheirClassCannotBeMadeFrom)
{
    using OfCircle = typename TypeParam::template For<Circle>;
    static_assert(std::is_constructible_v<OfCircle, int &>);
    static_assert(!std::is_default_constructible_v<OfCircle>, "the class has no such constructor");
    static_assert(!std::is_constructible_v<OfCircle, int>, "a temporary is not the reference that it takes");
    static_assert(!std::is_constructible_v<OfCircle, const int &>);
    static_assert(!std::is_constructible_v<OfCircle, int &, int>);
    static_assert(!std::is_constructible_v<OfCircle, std::string>);
    using OfSquare = typename TypeParam::template For<Square>;
    static_assert(std::is_default_constructible_v<OfSquare>);
    static_assert(std::is_constructible_v<OfSquare, const char *>);
    static_assert(!std::is_constructible_v<OfSquare, int &>);
    static_assert(!std::is_constructible_v<OfSquare, int &, std::unique_ptr<int> &>, "it is moved only");
    static_assert(!std::is_convertible_v<std::string, OfSquare>, "explicit stays explicit");
    static_assert(!std::is_copy_assignable_v<OfSquare> && !std::is_move_assignable_v<OfSquare>);
    static_assert(
        !std::is_constructible_v<OfSquare, const OfSquare &> && !std::is_constructible_v<OfSquare, OfSquare>);
}

/// Classes that end behind 8, 12 and 16 bytes.
class Bare : public Shape
{
};
class HoldsAnInt : public Shape
{
    [[maybe_unused]] int m_number = 0;
};
class HoldsAPointer : public Shape
{
    [[maybe_unused]] void * m_pointer = nullptr;
};

TYPED_TEST(Wrappers, AddOneFieldOf32BitsToTheirClass)
{
    static_assert(sizeof(Bare) == 8 && sizeof(HoldsAnInt) == 16 && sizeof(HoldsAPointer) == 16);
    static_assert(sizeof(typename TypeParam::template For<Bare>) == 16);
    static_assert(sizeof(typename TypeParam::template For<HoldsAnInt>) == 16, "there was room for 32 bits");
    static_assert(sizeof(typename TypeParam::template For<HoldsAPointer>) == 24);
}

/// Something that stands in front of the counted part of an object.
class Named
{
public:
    Named() = default;
    Named(const Named &) = delete;
    Named & operator=(const Named &) = delete;
    virtual ~Named() = default;
    std::string name = "name";
};

/// A class whose counted base is not its first one.
class NamedCircle : public Named, public Circle
{
public:
    explicit NamedCircle(int & destructions) : Circle(destructions)
    {
    }
};

TYPED_TEST(Wrappers, CountAnObjectThroughABaseAtAnOffset)
{
    using Object = typename TypeParam::template For<NamedCircle>;
    int destructions = 0;
    auto * const object = new Object(destructions);
    ASSERT_NE(static_cast<void *>(object), static_cast<void *>(static_cast<Shape *>(object)));
    Reference<Shape> base(object);
    {
        const Reference<NamedCircle> derived(object);
        const Reference<Shape> fromDerived(derived);
        EXPECT_EQ(fromDerived.get(), base.get());
        EXPECT_EQ(derived->name, "name");
        base = derived;
        EXPECT_EQ(base.get(), static_cast<Shape *>(object));
    }
    EXPECT_EQ(destructions, 0);
    base = nullptr;
    EXPECT_EQ(destructions, 1);

    const Reference<NamedCircle> null;
    EXPECT_EQ(Reference<Shape>(null).get(), nullptr) << "null has no offset";
    base = null;
    EXPECT_EQ(base.get(), nullptr);
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
    testsupport::TestSemaphore changed;
    g_referencedObjectMutex.acquire();
    std::thread other(
        [&]
        {
            change();
            changed.release();
        });
    // A change that does not wait is seen at once. One that waits is seen to wait whatever the time.
    const bool waited = !changed.tryAcquireFor(testsupport::suspicion);
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
