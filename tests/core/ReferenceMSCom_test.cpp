#include "VontalBase/core/ReferenceMSCom.h"

#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace
{

using qvbase::ReferenceMSCom;

/// Counts its references, and knows whether it was ever without one.
class Interface
{
public:
    void AddRef() // NOLINT(readability-identifier-naming): the name is COM's.
    {
        ++references;
    }
    void Release() // NOLINT(readability-identifier-naming): the name is COM's.
    {
        --references;
        wasLetGo = wasLetGo || references == 0;
    }

    int references = 0;
    bool wasLetGo = false;
};

using Pointer = ReferenceMSCom<Interface>;

static_assert(!std::is_convertible_v<Interface *, Pointer>);
static_assert(!std::is_convertible_v<Pointer, bool>);
static_assert(std::is_nothrow_move_constructible_v<Pointer>);

/// A call that gives an interface out, with a reference on it.
void give(Interface & object, Interface ** out)
{
    object.AddRef();
    *out = &object;
}

TEST(ReferenceMSCom, IsNullAtFirst)
{
    const Pointer pointer;
    EXPECT_EQ(pointer.get(), nullptr);
    EXPECT_FALSE(pointer);
    const Pointer ofNull(nullptr);
    EXPECT_FALSE(ofNull);
}

TEST(ReferenceMSCom, HoldsOneReferenceUntilItDies)
{
    Interface object;
    {
        const Pointer pointer(&object);
        EXPECT_TRUE(pointer);
        EXPECT_EQ(pointer.get(), &object);
        EXPECT_EQ(pointer->references, 1);
    }
    EXPECT_EQ(object.references, 0);
}

TEST(ReferenceMSCom, TakesAReferenceOfItsOwnWhenItCopies)
{
    Interface object;
    Interface other;
    {
        const Pointer pointer(&object);
        const Pointer copy(pointer); // NOLINT(performance-unnecessary-copy-initialization): it is the test.
        EXPECT_EQ(object.references, 2);
        Pointer assigned(&other);
        assigned = pointer;
        EXPECT_EQ(object.references, 3);
        EXPECT_EQ(other.references, 0);
        assigned = Pointer();
        EXPECT_EQ(object.references, 2);
    }
    EXPECT_EQ(object.references, 0);
}

TEST(ReferenceMSCom, TakesTheReferenceOverWhenItMoves)
{
    Interface object;
    Interface other;
    Pointer pointer(&object);
    Pointer moved(std::move(pointer));
    EXPECT_EQ(object.references, 1);
    EXPECT_FALSE(pointer); // NOLINT(bugprone-use-after-move): null is promised.
    Pointer assigned(&other);
    assigned = std::move(moved);
    EXPECT_EQ(object.references, 1);
    EXPECT_EQ(other.references, 0);
    EXPECT_FALSE(moved); // NOLINT(bugprone-use-after-move): null is promised.
    EXPECT_EQ(assigned.get(), &object);
}

TEST(ReferenceMSCom, KeepsItsObjectWhenItIsAssignedToItself)
{
    Interface object;
    Pointer pointer(&object);
    const Pointer & self = pointer;
    pointer = self;
    EXPECT_EQ(pointer.get(), &object);
    EXPECT_EQ(object.references, 1);
    EXPECT_FALSE(object.wasLetGo);
}

TEST(ReferenceMSCom, KeepsTheObjectThatItHoldsWhenThatIsAttached)
{
    Interface object;
    Interface other;
    Pointer pointer(&object);
    pointer.attach(&object);
    EXPECT_EQ(object.references, 1);
    EXPECT_FALSE(object.wasLetGo);
    pointer.attach(&other);
    EXPECT_EQ(object.references, 0);
    EXPECT_EQ(other.references, 1);
    pointer.attach(nullptr);
    EXPECT_EQ(other.references, 0);
    EXPECT_FALSE(pointer);
}

TEST(ReferenceMSCom, GivesItsReferenceAway)
{
    Interface object;
    {
        Pointer pointer(&object);
        EXPECT_EQ(pointer.detach(), &object);
        EXPECT_FALSE(pointer);
        EXPECT_EQ(pointer.detach(), nullptr);
    }
    EXPECT_EQ(object.references, 1);
}

TEST(ReferenceMSCom, ReleasesWhatItHoldsBeforeItReceives)
{
    Interface object;
    Interface other;
    {
        Pointer pointer(&object);
        Interface ** const place = pointer.receive();
        EXPECT_EQ(object.references, 0);
        EXPECT_EQ(*place, nullptr);
        give(other, place);
        EXPECT_EQ(pointer.get(), &other);
        EXPECT_EQ(other.references, 1);
        pointer.release();
        EXPECT_EQ(other.references, 0);
        pointer.release();
    }
    EXPECT_EQ(other.references, 0);
}

} // namespace
