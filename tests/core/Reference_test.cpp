#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"

#include "core/CountedObject.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImpl;
using qvbase::ReferencedObject;

static_assert(!std::is_polymorphic_v<Reference<Shape>>);
static_assert(sizeof(Reference<Shape>) == sizeof(Shape *), "one field, the raw pointer");
static_assert(
    std::is_same_v<Reference<Shape>, Reference<Shape, Shape>>, "the second parameter has a default");
static_assert(std::is_convertible_v<Shape *, Reference<Shape>>);
static_assert(std::is_convertible_v<Reference<Noted>, Reference<Shape>>, "from derived to base");
static_assert(!std::is_convertible_v<Reference<Shape>, Reference<Noted>>, "and not back");
static_assert(!std::is_assignable_v<Reference<Noted> &, Reference<Shape>>);
static_assert(std::is_nothrow_move_constructible_v<Reference<Shape>>);

static_assert(std::is_abstract_v<ReferencedObject> && sizeof(ReferencedObject) == sizeof(void *));
static_assert(
    !std::has_virtual_destructor_v<ReferencedObject>, "a derived class declares it in its own place");
static_assert(!std::is_destructible_v<ReferencedObject>, "nobody deletes through the interface");

TEST(ReferencedObject, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(testsupport::virtualSlot(&ReferencedObject::addRef), 0U);
    EXPECT_EQ(testsupport::virtualSlot(&ReferencedObject::release), 1U);
    static_assert(std::is_same_v<decltype(std::declval<Shape &>().addRef()), void>);
    static_assert(std::is_same_v<decltype(std::declval<Shape &>().release()), void>);
}

class ReferenceOrder : public testing::Test
{
protected:
    std::string log;
    Noted a{"a", log};
    Noted b{"b", log};
};

TEST_F(ReferenceOrder, IsNullByDefaultAndCallsNothing)
{
    {
        const Reference<Noted> reference;
        EXPECT_EQ(reference.get(), nullptr);
        EXPECT_TRUE(reference == nullptr);
        EXPECT_FALSE(reference);
        const Reference<Noted> copy(reference);
        EXPECT_EQ(copy.get(), nullptr);
        const Reference<Noted> ofNull(static_cast<Noted *>(nullptr));
        EXPECT_EQ(ofNull.get(), nullptr);
    }
    EXPECT_EQ(log, "");
}

TEST_F(ReferenceOrder, CountsOnceFromARawPointerAndOnceBack)
{
    {
        const Reference<Noted> reference(&a);
        EXPECT_EQ(log, "+a ");
        EXPECT_EQ(a.count, 1);
        EXPECT_EQ(reference.get(), &a);
        EXPECT_TRUE(reference);
    }
    EXPECT_EQ(log, "+a -a ");
}

TEST_F(ReferenceOrder, HoldsThePointerBeforeItCounts)
{
    alignas(Reference<Noted>) std::byte place[sizeof(Reference<Noted>)] = {};
    auto * const reference = reinterpret_cast<Reference<Noted> *>(place);
    Noted * seen = nullptr;
    a.onAddRef = [&]
    {
        seen = reference->get();
    };
    new (place) Reference<Noted>(&a);
    EXPECT_EQ(seen, &a);
    a.onAddRef = nullptr;
    std::destroy_at(reference);
}

TEST_F(ReferenceOrder, CountsOnceMoreForACopy)
{
    {
        const Reference<Noted> reference(&a);
        const Reference<Noted> copy(reference);
        EXPECT_EQ(copy.get(), &a);
        EXPECT_EQ(a.count, 2);
    }
    EXPECT_EQ(log, "+a +a -a -a ");
}

TEST_F(ReferenceOrder, LetsTheOldTargetGoBeforeItTakesTheNew)
{
    Reference<Noted> reference(&a);
    log.clear();
    EXPECT_EQ(&(reference = &b), &reference);
    EXPECT_EQ(log, "-a +b ");
    EXPECT_EQ(reference.get(), &b);

    log.clear();
    const Reference<Noted> other(&a);
    log.clear();
    reference = other;
    EXPECT_EQ(log, "-b +a ");
    EXPECT_EQ(a.count, 2);
}

TEST_F(ReferenceOrder, TakesTheNewTargetWhereThereWasNone)
{
    Reference<Noted> reference;
    reference = &a;
    EXPECT_EQ(log, "+a ");
    EXPECT_EQ(reference.get(), &a);
}

TEST_F(ReferenceOrder, ReleasesItsTargetAndStaysNullWhenItIsAssignedNull)
{
    Reference<Noted> reference(&a);
    log.clear();
    reference = nullptr;
    EXPECT_EQ(log, "-a ");
    EXPECT_EQ(reference.get(), nullptr);
    reference = nullptr;
    EXPECT_EQ(log, "-a ");

    reference = &b;
    log.clear();
    reference = Reference<Noted>();
    EXPECT_EQ(log, "-b ");
    EXPECT_EQ(reference.get(), nullptr);

    reference = &b;
    const Reference<Noted> null;
    log.clear();
    reference = null;
    EXPECT_EQ(log, "-b ");
    EXPECT_EQ(reference.get(), nullptr);
}

TEST_F(ReferenceOrder, ShowsItsOldTargetWhileReleaseRunsAndItsNewOneWhileAddRefRuns)
{
    Reference<Noted> reference(&a);
    Noted * duringRelease = nullptr;
    Noted * duringAddRef = nullptr;
    a.onRelease = [&]
    {
        duringRelease = reference.get();
    };
    b.onAddRef = [&]
    {
        duringAddRef = reference.get();
    };
    reference = &b;
    EXPECT_EQ(duringRelease, &a) << "cleared behind the call";
    EXPECT_EQ(duringAddRef, &b) << "stored before the call";
}

TEST_F(ReferenceOrder, IsClearedBehindTheReleaseWhateverTheReleaseStoredThere)
{
    Reference<Noted> reference(&a);
    bool once = true;
    a.onRelease = [&]
    {
        if (std::exchange(once, false))
            reference = &b;
    };
    log.clear();
    reference = nullptr;
    // The inner assignment lets `a` go a second time and takes `b`; the outer one then only clears.
    EXPECT_EQ(log, "-a -a +b ");
    EXPECT_EQ(reference.get(), nullptr);
    EXPECT_EQ(b.count, 1);
}

TEST_F(ReferenceOrder, StillShowsItsTargetWhileItIsDestroyed)
{
    Noted * duringRelease = nullptr;
    {
        const Reference<Noted> reference(&a);
        a.onRelease = [&]
        {
            duringRelease = reference.get();
        };
    }
    EXPECT_EQ(duringRelease, &a);
    EXPECT_EQ(log, "+a -a ");
}

TEST_F(ReferenceOrder, FollowsTheStepsForTheTargetThatItHolds)
{
    Reference<Noted> reference(&a);
    log.clear();
    reference = &a;
    EXPECT_EQ(log, "-a +a ") << "there is no test for the same target";
    EXPECT_EQ(reference.get(), &a);
    log.clear();
    const Reference<Noted> & same = reference;
    reference = same;
    EXPECT_EQ(log, "-a +a ");
    EXPECT_EQ(reference.get(), &a);
    EXPECT_EQ(a.count, 1);
}

TEST_F(ReferenceOrder, MovesWithoutCounting)
{
    Reference<Noted> source(&a);
    log.clear();
    Reference<Noted> moved(std::move(source));
    EXPECT_EQ(log, "");
    EXPECT_EQ(moved.get(), &a);
    EXPECT_EQ(source.get(), nullptr); // NOLINT(bugprone-use-after-move)

    Reference<Noted> target(&b);
    log.clear();
    EXPECT_EQ(&(target = std::move(moved)), &target);
    EXPECT_EQ(log, "-b ");
    EXPECT_EQ(target.get(), &a);
    EXPECT_EQ(moved.get(), nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(a.count, 1);
    EXPECT_EQ(b.count, 0);

    Reference<Noted> & same = target;
    target = std::move(same);
    EXPECT_EQ(target.get(), &a) << "a move to itself changes nothing";
    EXPECT_EQ(a.count, 1);
}

TEST_F(ReferenceOrder, GoesFromDerivedToBase)
{
    Reference<Noted> derived(&a);
    log.clear();
    {
        const Reference<Shape> base(derived);
        EXPECT_EQ(base.get(), &a);
        EXPECT_EQ(log, "+a ");
        Reference<Shape> assigned(&b);
        log.clear();
        assigned = derived;
        EXPECT_EQ(log, "-b +a ");
        EXPECT_EQ(assigned.get(), &a);
        log.clear();
    }
    EXPECT_EQ(log, "-a -a ");
    EXPECT_EQ(a.count, 1);
}

TEST_F(ReferenceOrder, GivesAccessToItsTarget)
{
    const Reference<Noted> reference(&a);
    EXPECT_EQ(reference->name, "a");
    EXPECT_EQ((*reference).name, "a");
    Noted * const raw = reference;
    EXPECT_EQ(raw, &a);
    EXPECT_TRUE(reference == &a);
    EXPECT_TRUE(reference != &b);
    EXPECT_EQ(a.count, 1) << "looking counts nothing";
}

TEST_F(ReferenceOrder, TakesASecondParameterThatHasNoEffect)
{
    using Two = Reference<Noted, Shape>;
    static_assert(sizeof(Two) == sizeof(Noted *));
    static_assert(
        std::is_convertible_v<Two, Reference<Shape>> && std::is_convertible_v<Two, Reference<Noted>>);
    {
        Two two(&a);
        EXPECT_EQ(log, "+a ");
        Noted * const raw = two;
        EXPECT_EQ(raw, &a) << "the first parameter is what is pointed at";
        EXPECT_EQ(two->name, "a");
        log.clear();
        const Reference<Noted> one(two);
        EXPECT_EQ(log, "+a ");
        two = &b;
        EXPECT_EQ(log, "+a -a +b ");
        two = one;
        EXPECT_EQ(log, "+a -a +b -b +a ");
        log.clear();
    }
    EXPECT_EQ(log, "-a -a ");
}

/// An element of a list, which owns the rest of it.
class Link : public Shape
{
public:
    Link(std::string & log, const char * name, Link * rest) : next(rest), m_log(&log), m_name(name)
    {
    }
    ~Link() override
    {
        *m_log += m_name;
    }
    Reference<Link> next;

private:
    std::string * m_log;
    const char * m_name;
};

TEST(Reference, MovesFromWithinTheObjectThatItLetsGo)
{
    std::string log;
    auto * const third = new ReferencedImpl<Link>(log, "third ", nullptr);
    auto * const second = new ReferencedImpl<Link>(log, "second ", third);
    Reference<Link> list(new ReferencedImpl<Link>(log, "first ", second));
    list = std::move(list->next);
    EXPECT_EQ(log, "first ");
    EXPECT_EQ(list.get(), second);
    list = std::move(list->next);
    EXPECT_EQ(log, "first second ");
    EXPECT_EQ(list.get(), third);
    list = std::move(list->next);
    EXPECT_EQ(log, "first second third ");
    EXPECT_EQ(list.get(), nullptr);
}

/// An operation that hands out a shared object, in the manner of the library.
bool make(Reference<Shape> & result, int & destructions)
{
    result = new ReferencedImpl<Circle>(destructions);
    return true;
}

TEST(Reference, IsAnOutputParameter)
{
    int destructions = 0;
    Reference<Shape> shape;
    EXPECT_TRUE(make(shape, destructions));
    EXPECT_TRUE(shape);
    EXPECT_TRUE(make(shape, destructions));
    EXPECT_EQ(destructions, 1) << "the first one is gone";
    shape = nullptr;
    EXPECT_EQ(destructions, 2);
}

TEST(Reference, LetsAnObjectDieWithTheLastOfSeveral)
{
    int destructions = 0;
    Reference<Shape> first(new ReferencedImpl<Circle>(destructions));
    {
        const Reference<Shape> second(first);
        first = nullptr;
        EXPECT_EQ(destructions, 0);
    }
    EXPECT_EQ(destructions, 1);
}

TEST(Reference, StillHoldsTheDyingObjectWhileItsDestructorRuns)
{
    int destructions = 0;
    Reference<Shape> reference;
    Shape * seen = nullptr;
    auto * const object = new ReferencedImpl<Circle>(destructions, [&] { seen = reference.get(); });
    reference = object;
    reference = nullptr;
    EXPECT_EQ(seen, static_cast<Shape *>(object));
    EXPECT_EQ(destructions, 1);
}

TEST(Reference, DestroysWhatItAloneHoldsBeforeItIsAssignedAnother)
{
    int firstDestructions = 0;
    int secondDestructions = 0;
    std::string log;
    Reference<Shape> reference(new ReferencedImpl<Circle>(firstDestructions, [&] { log += "first gone "; }));
    reference = new ReferencedImpl<Circle>(secondDestructions, [&] { log += "second gone "; });
    EXPECT_EQ(log, "first gone ");
    reference = nullptr;
    EXPECT_EQ(log, "first gone second gone ");
}

} // namespace
