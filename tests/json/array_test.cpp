#include "VontalBase/json/Array.h"

#include "json/CountingItem.h"
#include "json/jsonsupport.h"
#include "support/IntendedLeak.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace
{

using jsontest::copyOf;
using jsontest::CountingItem;
using jsontest::ItemReference;
using jsontest::make;
using jsontest::makeBool;
using jsontest::makeInt;
using jsontest::makeString;
using qvjson::Array;
using qvjson::Item;
using qvjson::Object;
using qvjson::ValueNull;

using ArrayReference = qvbase::Reference<Array>;
using ObjectReference = qvbase::Reference<Object>;

TEST(JsonArray, StartsEmpty)
{
    const auto array = make<Array>();
    EXPECT_EQ(array->getLength(), 0U);
    static_assert(std::is_same_v<decltype(array->getLength()), std::uint64_t>);
    ItemReference item = makeBool(true);
    Item * const before = item;
    EXPECT_FALSE(array->getItem(0, item));
    EXPECT_EQ(item.get(), before);
}

TEST(JsonArray, KeepsElementsInTheOrderOfAdding)
{
    const auto array = make<Array>();
    std::vector<ItemReference> added;
    for (unsigned int i = 0; i < 1000; ++i)
    {
        const auto value = makeInt(std::to_string(i));
        added.emplace_back(value);
        array->add(value);
        ASSERT_EQ(array->getLength(), i + 1);
    }
    for (unsigned int i = 0; i < 1000; ++i)
    {
        ItemReference item;
        ASSERT_TRUE(array->getItem(i, item));
        EXPECT_EQ(item.get(), added[i].get());
    }
}

TEST(JsonArray, AddCountsTheItemAndDestructionLetsItGo)
{
    std::string log;
    CountingItem a(log, "a");
    CountingItem b(log, "b");
    {
        const auto array = make<Array>();
        array->add(&a);
        array->add(&b);
        array->add(nullptr);
        EXPECT_EQ(log, "+a +b ");
        EXPECT_EQ(array->getLength(), 3U);
        log.clear();
    }
    EXPECT_EQ(log.size(), 6U);
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(b.count, 0);
}

TEST(JsonArray, TakesOneItemManyTimes)
{
    CountingItem item;
    {
        const auto array = make<Array>();
        for (int i = 1; i <= 100; ++i)
        {
            array->add(&item);
            EXPECT_EQ(item.count, i);
        }
        EXPECT_EQ(array->getLength(), 100U);
    }
    EXPECT_EQ(item.count, 0);
}

TEST(JsonArray, GetItemReplacesTheReference)
{
    std::string log;
    CountingItem element(log, "element");
    CountingItem old(log, "old");
    const auto array = make<Array>();
    array->add(&element);
    ItemReference item = &old;
    log.clear();
    EXPECT_TRUE(array->getItem(0, item));
    EXPECT_EQ(item.get(), &element);
    EXPECT_EQ(old.count, 0);
    EXPECT_EQ(element.count, 2);
}

TEST(JsonArray, KeepsStoringANullElementAlthoughItSaysFalse)
{
    CountingItem old;
    const auto array = make<Array>();
    array->add(nullptr);
    ItemReference item = &old;
    EXPECT_FALSE(array->getItem(0, item));
    EXPECT_EQ(item.get(), nullptr);
    EXPECT_EQ(old.count, 0);

    ArrayReference arrayOut = make<Array>();
    EXPECT_FALSE(array->getArray(0, arrayOut));
    EXPECT_EQ(arrayOut.get(), nullptr);
    ObjectReference objectOut = make<Object>();
    EXPECT_FALSE(array->getObject(0, objectOut));
    EXPECT_EQ(objectOut.get(), nullptr);
}

TEST(JsonArray, LeavesTheReferenceWhereTheIndexIsNotBelowTheLength)
{
    const auto array = make<Array>();
    for (int i = 0; i < 3; ++i)
        array->add(makeInt("1"));
    const ItemReference kept = makeBool(true);
    const ArrayReference keptArray = make<Array>();
    const ObjectReference keptObject = make<Object>();
    for (const unsigned int index : {3U, 4U, 5U, std::numeric_limits<unsigned int>::max()})
    {
        SCOPED_TRACE(index);
        ItemReference item = kept;
        EXPECT_FALSE(array->getItem(index, item));
        EXPECT_EQ(item.get(), kept.get());
        ArrayReference arrayOut = keptArray;
        EXPECT_FALSE(array->getArray(index, arrayOut));
        EXPECT_EQ(arrayOut.get(), keptArray.get());
        ObjectReference objectOut = keptObject;
        EXPECT_FALSE(array->getObject(index, objectOut));
        EXPECT_EQ(objectOut.get(), keptObject.get());
        int number = 5;
        EXPECT_FALSE(array->getInt(index, number));
        EXPECT_EQ(number, 5);
        std::int64_t wideNumber = 6;
        EXPECT_FALSE(array->getInt64(index, wideNumber));
        EXPECT_EQ(wideNumber, 6);
        Vontal::u8string text = "before";
        EXPECT_FALSE(array->getString(index, text));
        EXPECT_EQ(text, "before");
    }
    ItemReference item;
    EXPECT_TRUE(array->getItem(2, item));
}

TEST(JsonArray, KeepsHandingOutContainersWithoutATestOfTheirType)
{
    const auto array = make<Array>();
    const auto string = makeString("no container");
    array->add(string);
    ArrayReference arrayOut;
    EXPECT_TRUE(array->getArray(0, arrayOut));
    EXPECT_EQ(static_cast<void *>(static_cast<Item *>(arrayOut.get())), static_cast<Item *>(string.get()));
    EXPECT_EQ(static_cast<Item *>(arrayOut.get())->getType(), qvjson::TypeString);
    ObjectReference objectOut;
    EXPECT_TRUE(array->getObject(0, objectOut));
    EXPECT_EQ(static_cast<Item *>(objectOut.get()), static_cast<Item *>(string.get()));
    EXPECT_EQ(static_cast<Item *>(objectOut.get())->getType(), qvjson::TypeString);
}

TEST(JsonArray, HandsOutContainers)
{
    const ItemReference root = jsontest::parsed("[[1],{\"a\":2}]");
    Array & array = *static_cast<Array *>(*root);
    ArrayReference inner;
    ASSERT_TRUE(array.getArray(0, inner));
    EXPECT_EQ(inner->getLength(), 1U);
    ObjectReference object;
    ASSERT_TRUE(array.getObject(1, object));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"a\":2}");
}

TEST(JsonArray, ValueGettersTestTheType)
{
    const auto array = make<Array>();
    array->add(makeInt("5000000000"));
    array->add(makeString("text"));
    array->add(makeBool(true));
    array->add(make<ValueNull>());
    array->add(nullptr);
    array->add(make<Array>());
    array->add(make<Object>());
    array->add(makeString("1"));
    for (unsigned int i = 0; i < 8; ++i)
    {
        SCOPED_TRACE(i);
        int number = 7;
        EXPECT_EQ(array->getInt(i, number), i == 0);
        EXPECT_EQ(number, i == 0 ? 705032704 : 7);
        std::int64_t wideNumber = 7;
        EXPECT_EQ(array->getInt64(i, wideNumber), i == 0);
        EXPECT_EQ(wideNumber, i == 0 ? 5000000000 : 7);
        Vontal::u8string text = "before";
        const bool isString = i == 1 || i == 7;
        EXPECT_EQ(array->getString(i, text), isString);
        EXPECT_EQ(text, i == 1 ? "text" : i == 7 ? "1" : "before");
    }
}

TEST(JsonArray, GettingAnElementOfAnArrayThatOnlyTheReferenceHolds)
{
    ItemReference item = jsontest::parsed("[[[[\"x\"]]]]");
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(static_cast<Array *>(*item)->getItem(0, item));
    EXPECT_EQ(item->getType(), qvjson::TypeString);
}

TEST(JsonArray, GoesOnGrowingWhenAParseHasMadeIt)
{
    const ItemReference root = jsontest::parsed("[1,2]");
    Array & array = *static_cast<Array *>(*root);
    for (int i = 3; i <= 100; ++i)
        array.add(makeInt(std::to_string(i)));
    ASSERT_EQ(array.getLength(), 100U);
    for (unsigned int i = 0; i < 100; ++i)
    {
        int value = 0;
        EXPECT_TRUE(array.getInt(i, value));
        EXPECT_EQ(value, static_cast<int>(i) + 1);
    }
}

// ---------------------------------------------------------------------------------------------------
// Copies

TEST(JsonArray, KeepsCopiesSharingOneContainer)
{
    CountingItem item;
    {
        const auto array = make<Array>();
        array->add(&item);
        const auto copy = copyOf(*array);
        EXPECT_EQ(item.count, 1);
        EXPECT_EQ(copy->getType(), qvjson::TypeArray);
        EXPECT_EQ(copy->getLength(), 1U);
        array->add(&item);
        EXPECT_EQ(copy->getLength(), 2U);
        copy->add(nullptr);
        EXPECT_EQ(array->getLength(), 3U);
        for (int i = 0; i < 100; ++i)
            (i % 2 == 0 ? *array : *copy).add(&item);
        EXPECT_EQ(array->getLength(), 103U);
        EXPECT_EQ(copy->getLength(), 103U);
        EXPECT_TRUE(copy->equals(array));
    }
    EXPECT_EQ(item.count, 0);
}

TEST(JsonArray, CopiesOfAnEmptyArrayShareItToo)
{
    const auto array = make<Array>();
    const auto copy = copyOf(*array);
    array->add(makeInt("1"));
    EXPECT_EQ(copy->getLength(), 1U);
    const auto second = copyOf(*copy);
    second->add(makeInt("2"));
    EXPECT_EQ(array->getLength(), 2U);
}

TEST(JsonArray, SharedElementsLiveAsLongAsOneOfTheCopies)
{
    CountingItem item;
    ArrayReference copy;
    {
        const auto array = make<Array>();
        array->add(&item);
        copy = copyOf(*array);
    }
    EXPECT_EQ(item.count, 1);
    EXPECT_EQ(copy->getLength(), 1U);
    copy = nullptr;
    EXPECT_EQ(item.count, 0);
}

TEST(JsonArray, CopiesOfParsedArraysOutliveTheTree)
{
    ItemReference root = jsontest::parsed("[[1,\"a text of more than twenty bytes\",[2]]]");
    ArrayReference inner;
    ASSERT_TRUE(static_cast<Array *>(*root)->getArray(0, inner));
    const auto copy = copyOf(*inner);
    inner = nullptr;
    root = nullptr;
    EXPECT_EQ(jsontest::printed(copy.get()), "[1,\"a text of more than twenty bytes\",[2]]");
    copy->add(makeInt("3"));
    EXPECT_EQ(jsontest::printed(copy.get()), "[1,\"a text of more than twenty bytes\",[2],3]");
}

TEST(JsonArray, KeepsAssignmentSharingAndAbandoningWhatTheTargetHeld)
{
    CountingItem abandoned;
    CountingItem shared;
    ArrayReference target;
    ArrayReference keeper;
    {
        const testsupport::IntendedLeak leak;
        target = make<Array>();
        target->add(&abandoned);
        keeper = copyOf(*target);
    }
    {
        const auto source = make<Array>();
        source->add(&shared);
        static_cast<Array &>(*target) = *source;
        EXPECT_EQ(abandoned.count, 1);
        EXPECT_EQ(shared.count, 1);
        EXPECT_EQ(target->getLength(), 1U);
        target->add(nullptr);
        EXPECT_EQ(source->getLength(), 2U);
    }
    EXPECT_EQ(target->getLength(), 2U);
    EXPECT_EQ(shared.count, 1);
    // What was abandoned is still what it was.
    EXPECT_EQ(keeper->getLength(), 1U);
    EXPECT_EQ(abandoned.count, 1);
}

TEST(JsonArray, AssigningWhatIsSharedAlreadyChangesNothing)
{
    CountingItem item;
    {
        const auto array = make<Array>();
        array->add(&item);
        const auto second = copyOf(*array);
        const auto third = copyOf(*second);
        static_cast<Array &>(*second) = *array;
        static_cast<Array &>(*array) = *third;
        static_cast<Array &>(*third) = *second;
        EXPECT_EQ(item.count, 1);
        third->add(&item);
        EXPECT_EQ(array->getLength(), 2U);
        EXPECT_EQ(second->getLength(), 2U);
    }
    // Each of them has left once, and the last has let the elements go.
    EXPECT_EQ(item.count, 0);
}

TEST(JsonArray, AssigningToItselfChangesNothing)
{
    CountingItem item;
    {
        const auto array = make<Array>();
        array->add(&item);
        const Array & itself = *array;
        static_cast<Array &>(*array) = itself;
        EXPECT_EQ(array->getLength(), 1U);
        EXPECT_EQ(item.count, 1);
    }
    EXPECT_EQ(item.count, 0);
}

} // namespace
