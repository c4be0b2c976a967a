// Trees that are used from within the end of one of their items.

#include "VontalBase/json/JSONTreeParser.h"

#include "json/CountingItem.h"
#include "json/jsonsupport.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace
{

using jsontest::copyOf;
using jsontest::CountingItem;
using jsontest::ItemReference;
using jsontest::make;
using jsontest::makeInt;
using jsontest::parsed;
using jsontest::printed;
using qvjson::Array;
using qvjson::Item;
using qvjson::JSONTreeParser;
using qvjson::Object;

/// Does something when its last reference goes.
class ActingItem : public Item
{
public:
    explicit ActingItem(std::function<void()> action = {})
        : Item(qvjson::TypeReserved), atEnd(std::move(action))
    {
    }

    void addRef() override
    {
        ++count;
    }
    void release() override
    {
        if (--count == 0 && atEnd)
            std::exchange(atEnd, nullptr)();
    }
    bool equals(Item const *) const override
    {
        return false;
    }

    int count = 0;
    std::function<void()> atEnd;
};

// ---------------------------------------------------------------------------------------------------
// Writing to an object while an item of it is let go

TEST(JsonReentrancy, TheFormerItemMayAddToTheObject)
{
    // Every form of an object, and from each into the next.
    for (const int count : {0, 1, 3, 30, 31, 60})
    {
        SCOPED_TRACE(count);
        CountingItem present;
        CountingItem added;
        ActingItem former;
        {
            const auto object = make<Object>();
            for (int i = 0; i < count; ++i)
                object->add("present " + std::to_string(i), nullptr);
            object->add("k", &former);
            former.atEnd = [&object, &added]
            {
                for (int i = 0; i < 40; ++i)
                    object->add("added " + std::to_string(i), &added);
            };
            object->add("k", &present);
            jsontest::ItemMap items;
            object->getItems(items);
            EXPECT_EQ(items.size(), static_cast<std::size_t>(count) + 41);
            EXPECT_EQ(items["k"].get(), &present);
            EXPECT_EQ(items["added 39"].get(), &added);
            items.clear();
            EXPECT_EQ(present.count, 1);
            EXPECT_EQ(added.count, 40);
        }
        EXPECT_EQ(present.count, 0);
        EXPECT_EQ(added.count, 0);
    }
}

TEST(JsonReentrancy, TheOuterWriteStandsWhereTheFormerItemWritesToItsOwnKey)
{
    CountingItem between;
    CountingItem last;
    ActingItem former;
    {
        const auto object = make<Object>();
        object->add("k", &former);
        former.atEnd = [&object, &between]
        {
            object->add("k", &between);
        };
        object->add("k", &last);
        ItemReference item;
        EXPECT_TRUE(object->getItem("k", item));
        EXPECT_EQ(item.get(), &last);
        item = nullptr;
        EXPECT_EQ(between.count, 0);
        EXPECT_EQ(last.count, 1);
    }
    EXPECT_EQ(last.count, 0);
}

TEST(JsonReentrancy, TheFormerItemMayUseThePendingKey)
{
    const std::string key = "a key of more than fifteen bytes";
    CountingItem between;
    CountingItem last;
    ActingItem former;
    {
        const auto object = make<Object>();
        object->add(key, &former);
        former.atEnd = [&object, &between]
        {
            EXPECT_FALSE(object->addKey("another"));
            EXPECT_TRUE(object->add(&between));
            EXPECT_FALSE(object->add(&between));
        };
        EXPECT_TRUE(object->addKey(key));
        EXPECT_TRUE(object->add(&last));
        EXPECT_FALSE(object->add(&last));
        ItemReference item;
        EXPECT_TRUE(object->getItem(key, item));
        EXPECT_EQ(item.get(), &last);
        item = nullptr;
        EXPECT_EQ(between.count, 0);
        EXPECT_EQ(last.count, 1);
    }
    EXPECT_EQ(last.count, 0);
}

// ---------------------------------------------------------------------------------------------------
// Within the destruction of a tree

/// A container with an item between two others, in each form that a container has.
std::vector<ItemReference> containersOf(Item & before, Item & item, Item & behind)
{
    const auto array = make<Array>();
    array->add(&before);
    array->add(&item);
    array->add(&behind);
    const auto small = make<Object>();
    small->add("a", &before);
    small->add("b", &item);
    small->add("c", &behind);
    const auto large = make<Object>();
    for (int i = 0; i < 40; ++i)
        large->add(std::to_string(i), nullptr);
    large->add("a", &before);
    large->add("b", &item);
    large->add("c", &behind);
    const auto nested = make<Array>();
    const auto inner = make<Array>();
    inner->add(&item);
    nested->add(&before);
    nested->add(inner);
    nested->add(&behind);
    const ItemReference ofParse = parsed("{\"k\":[1,{\"l\":2}]}");
    Object & root = *static_cast<Object *>(*ofParse);
    root.add("a", &before);
    root.add("b", &item);
    root.add("c", &behind);
    return {ItemReference(array), ItemReference(small), ItemReference(large), ItemReference(nested), ofParse};
}

/// Lets a container of each form go that holds an item which does something at its end.
void actWithinDestruction(const std::function<void()> & action)
{
    for (std::size_t form = 0; form < 5; ++form)
    {
        SCOPED_TRACE(form);
        CountingItem before;
        CountingItem behind;
        ActingItem acting;
        {
            ItemReference container = containersOf(before, acting, behind)[form];
            ASSERT_EQ(acting.count, 1);
            acting.atEnd = action;
            container = nullptr;
        }
        EXPECT_EQ(acting.count, 0);
        EXPECT_FALSE(acting.atEnd) << "nothing was done";
        EXPECT_EQ(before.count, 0);
        EXPECT_EQ(behind.count, 0);
    }
}

TEST(JsonReentrancy, TreesAreReadPrintedAndComparedWithinADestruction)
{
    actWithinDestruction(
        []
        {
            const std::string json = "{\"a\":[1,{\"b\":\"text of more than twenty bytes\"}],\"c\":[[],{}]}";
            const ItemReference tree = parsed(json);
            EXPECT_EQ(printed(tree), json);
            EXPECT_TRUE(tree->equals(parsed(json)));
        });
}

TEST(JsonReentrancy, AnotherTreeMayGoWithinADestruction)
{
    CountingItem others;
    actWithinDestruction(
        [&others]
        {
            const auto array = make<Array>();
            const auto object = make<Object>();
            array->add(object);
            for (int i = 0; i < 40; ++i)
            {
                array->add(&others);
                object->add(std::to_string(i), &others);
            }
        });
    EXPECT_EQ(others.count, 0);
}

TEST(JsonReentrancy, TheEndOfOneTreeMayBeTheEndOfManyBehindIt)
{
    // Each tree holds the item that lets the next one go.
    constexpr std::size_t count = 1000;
    std::vector<ItemReference> trees(count);
    std::vector<ActingItem> items(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        const auto array = make<Array>();
        array->add(&items[i]);
        trees[i] = array;
        items[i].atEnd = [&trees, i]
        {
            if (i + 1 < trees.size())
                trees[i + 1] = nullptr;
        };
    }
    trees[0] = nullptr;
    for (const ActingItem & item : items)
        EXPECT_EQ(item.count, 0);
}

TEST(JsonReentrancy, APartThatIsTakenAtTheLastMomentLivesOn)
{
    ItemReference taken;
    ActingItem acting;
    {
        ItemReference part = parsed("[1,\"text of more than twenty bytes\"]");
        Item * const raw = part;
        acting.atEnd = [&taken, raw]
        {
            taken = raw;
        };
        const auto array = make<Array>();
        array->add(&acting);
        array->add(part);
        part = nullptr;
    }
    EXPECT_EQ(acting.count, 0);
    EXPECT_EQ(printed(taken), "[1,\"text of more than twenty bytes\"]");
}

// ---------------------------------------------------------------------------------------------------
// Changing the tree of a parse that goes on

Array & arrayOf(const ItemReference & item)
{
    return *static_cast<Array *>(*item);
}

Object & objectOf(const ItemReference & item)
{
    return *static_cast<Object *>(*item);
}

TEST(JsonTreeInTheMaking, ArraysTakeWhatIsAddedBetween)
{
    JSONTreeParser parser;
    ASSERT_TRUE(parser.parserBeginArray());
    arrayOf(parser.root()).add(makeInt("1"));
    EXPECT_TRUE(parser.parseInt("2", 1));
    arrayOf(parser.root()).add(makeInt("3"));
    arrayOf(parser.root()).add(makeInt("4"));
    EXPECT_TRUE(parser.parseInt("5", 1));
    EXPECT_TRUE(parser.parseInt("6", 1));
    EXPECT_TRUE(parser.parserEndArray());
    arrayOf(parser.root()).add(makeInt("7"));
    EXPECT_EQ(printed(parser.root()), "[1,2,3,4,5,6,7]");
}

TEST(JsonTreeInTheMaking, ObjectsTakeWhatIsAddedBetweenAndTheLastWriteWins)
{
    CountingItem replaced;
    {
        JSONTreeParser parser;
        ASSERT_NE(parser.parserBeginObject(), nullptr);
        objectOf(parser.root()).add("b", &replaced);
        objectOf(parser.root()).add("z", makeInt("1"));
        EXPECT_TRUE(parser.parseKey("b"));
        EXPECT_TRUE(parser.parseInt("2", 1));
        EXPECT_TRUE(parser.parseKey("a"));
        EXPECT_TRUE(parser.parseInt("3", 1));
        EXPECT_EQ(printed(parser.root()), "{\"a\":3,\"b\":2,\"z\":1}");
        EXPECT_EQ(replaced.count, 0);
        objectOf(parser.root()).add("a", makeInt("4"));
        EXPECT_TRUE(parser.parserEndObject());
        EXPECT_EQ(printed(parser.root()), "{\"a\":4,\"b\":2,\"z\":1}");
    }
    EXPECT_EQ(replaced.count, 0);
}

TEST(JsonTreeInTheMaking, AKeyThatIsPendingByHandCounts)
{
    JSONTreeParser parser;
    ASSERT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(objectOf(parser.root()).addKey("by hand"));
    EXPECT_FALSE(parser.parseKey("parsed"));
    EXPECT_TRUE(parser.parseInt("1", 1));
    EXPECT_FALSE(parser.parseInt("2", 1));
    EXPECT_TRUE(parser.parseKey("parsed"));
    EXPECT_TRUE(parser.parseInt("3", 1));
    EXPECT_EQ(printed(parser.root()), "{\"by hand\":1,\"parsed\":3}");
}

TEST(JsonTreeInTheMaking, AContainerThatIsTakenOutGoesOn)
{
    JSONTreeParser parser;
    ASSERT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_TRUE(parser.parseInt("1", 1));
    ItemReference inner;
    ASSERT_TRUE(objectOf(parser.root()).getItem("a", inner));
    objectOf(parser.root()).add("a", nullptr);
    EXPECT_TRUE(parser.parseInt("2", 1));
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_EQ(printed(inner), "[1,2]");
    EXPECT_TRUE(parser.parseKey("b"));
    // Nobody but the parser holds this one on.
    EXPECT_TRUE(parser.parserBeginArray());
    objectOf(parser.root()).add("b", makeInt("3"));
    EXPECT_TRUE(parser.parseInt("4", 1));
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_TRUE(parser.parserEndObject());
    objectOf(parser.root()).add("a", makeInt("5"));
    EXPECT_EQ(printed(parser.root()), "{\"a\":5,\"b\":3}");
}

TEST(JsonTreeInTheMaking, CopiesShareWhatComesLater)
{
    JSONTreeParser parser;
    ASSERT_TRUE(parser.parserBeginArray());
    const auto copy = copyOf<Array>(arrayOf(parser.root()));
    EXPECT_TRUE(parser.parseInt("1", 1));
    copy->add(makeInt("2"));
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_EQ(printed(copy.get()), "[2,1]");
    EXPECT_EQ(printed(parser.root()), "[2,1]");
}

} // namespace
