#include "VontalBase/core/ListenerContainer.h"

#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>
#include <vector>

namespace
{

using List = std::vector<int *>;

/// Lets the list be read.
class Container : public qvbase::ListenerContainer<int>
{
public:
    using ListenerContainer::getListeners;
};

static_assert(std::has_virtual_destructor_v<qvbase::ListenerContainer<int>>);

/// Three listeners, of which nothing but the addresses counts.
class ListenerContainer : public testing::Test
{
protected:
    int first = 1;
    int second = 2;
    int third = 3;
    Container container;
};

TEST_F(ListenerContainer, IsEmptyAtFirst)
{
    EXPECT_EQ(container.getListeners(), List());
    EXPECT_EQ(testsupport::virtualSlots<qvbase::ListenerContainer<int>>(), testsupport::slotsOfDestructor);
}

TEST_F(ListenerContainer, KeepsTheOrderOfRegistration)
{
    for (int * const listener : {&third, &first, &second})
        container.registerListener(listener);
    EXPECT_EQ(container.getListeners(), (List{&third, &first, &second}));
}

TEST_F(ListenerContainer, HoldsAListenerAsOftenAsItWasRegistered)
{
    for (int * const listener : {&first, &second, &first})
        container.registerListener(listener);
    EXPECT_EQ(container.getListeners(), (List{&first, &second, &first}));
    container.unregisterListener(&first);
    EXPECT_EQ(container.getListeners(), (List{&second, &first})) << "the first entry goes";
    container.unregisterListener(&first);
    EXPECT_EQ(container.getListeners(), List{&second});
}

TEST_F(ListenerContainer, IgnoresListenersThatItHasNot)
{
    container.unregisterListener(&first);
    EXPECT_EQ(container.getListeners(), List());
    container.registerListener(&first);
    container.unregisterListener(&second);
    EXPECT_EQ(container.getListeners(), List{&first});
}

TEST_F(ListenerContainer, CopiesItsList)
{
    container.registerListener(&first);
    Container copy(container);
    Container assigned;
    assigned.registerListener(&third);
    assigned = container;
    copy.registerListener(&second);
    EXPECT_EQ(container.getListeners(), List{&first});
    EXPECT_EQ(copy.getListeners(), (List{&first, &second}));
    EXPECT_EQ(assigned.getListeners(), List{&first});
}

TEST_F(ListenerContainer, LeavesTheListenersAloneWhenItGoes)
{
    // The memory checks see a second deletion.
    const auto owned = std::make_unique<int>(5);
    {
        Container gone;
        gone.registerListener(owned.get());
    }
    EXPECT_EQ(*owned, 5);
}

} // namespace
