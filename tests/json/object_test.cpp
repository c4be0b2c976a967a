#include "VontalBase/json/Object.h"

#include "json/CountingItem.h"
#include "json/jsonsupport.h"
#include "support/IntendedLeak.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace
{

using jsontest::copyOf;
using jsontest::CountingItem;
using jsontest::ItemMap;
using jsontest::ItemReference;
using jsontest::make;
using jsontest::makeBool;
using jsontest::makeInt;
using jsontest::makeString;
using jsontest::text;
using qvjson::Array;
using qvjson::Item;
using qvjson::Object;
using qvjson::ValueNull;

using ArrayReference = qvbase::Reference<Array>;
using ObjectReference = qvbase::Reference<Object>;

using namespace std::string_literals;

TEST(JsonObject, StartsEmpty)
{
    const auto object = make<Object>();
    ItemMap items = {{"before", makeBool(true)}};
    object->getItems(items);
    EXPECT_TRUE(items.empty());
    ItemReference item;
    EXPECT_FALSE(object->getItem("", item));
}

TEST(JsonObject, AddCountsTheItemAndDestructionLetsItGo)
{
    CountingItem a;
    CountingItem b;
    {
        const auto object = make<Object>();
        object->add("a", &a);
        object->add("b", &b);
        object->add("null", nullptr);
        EXPECT_EQ(a.count, 1);
        EXPECT_EQ(b.count, 1);
        object->add("again", &a);
        EXPECT_EQ(a.count, 2);
    }
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(b.count, 0);
}

TEST(JsonObject, LastWriteToAKeyWinsAndTheOldItemIsLetGoFirst)
{
    std::string log;
    CountingItem first(log, "first");
    CountingItem second(log, "second");
    const auto object = make<Object>();
    object->add("k", &first);
    EXPECT_EQ(log, "+first ");
    log.clear();
    object->add("k", &second);
    EXPECT_EQ(log, "-first +second ");
    ItemMap items;
    object->getItems(items);
    EXPECT_EQ(items.size(), 1U);
    EXPECT_EQ(items["k"].get(), &second);
    items.clear();

    log.clear();
    object->add("k", nullptr);
    EXPECT_EQ(log, "-second ");
    object->add("k", &first);
    EXPECT_EQ(log, "-second +first ");
    EXPECT_EQ(first.count, 1);
    EXPECT_EQ(second.count, 0);
}

TEST(JsonObject, TakesAnEmptyKeyWithItsItem)
{
    const auto object = make<Object>();
    object->add("", makeInt("1"));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"\":1}");
}

// ---------------------------------------------------------------------------------------------------
// The pending key

TEST(JsonObject, AddsUnderThePendingKey)
{
    const auto object = make<Object>();
    CountingItem item;
    EXPECT_TRUE(object->addKey("a"));
    EXPECT_TRUE(object->add(&item));
    EXPECT_EQ(item.count, 1);
    ItemReference got;
    EXPECT_TRUE(object->getItem("a", got));
    EXPECT_EQ(got.get(), &item);
    got = nullptr;
    // The key is used up.
    EXPECT_FALSE(object->add(&item));
    EXPECT_EQ(item.count, 1);
    EXPECT_TRUE(object->addKey("a"));
    EXPECT_TRUE(object->add(nullptr));
    EXPECT_EQ(item.count, 0);
    EXPECT_TRUE(object->getItem("a", got));
}

TEST(JsonObject, AddWithoutAPendingKeyStoresNothing)
{
    const auto object = make<Object>();
    CountingItem item;
    EXPECT_FALSE(object->add(&item));
    EXPECT_EQ(item.count, 0);
    ItemMap items;
    object->getItems(items);
    EXPECT_TRUE(items.empty());
}

TEST(JsonObject, ASecondKeyIsRefusedAndTheFirstStands)
{
    const auto object = make<Object>();
    EXPECT_TRUE(object->addKey("first"));
    EXPECT_FALSE(object->addKey("second"));
    EXPECT_FALSE(object->addKey("first"));
    EXPECT_FALSE(object->addKey(""));
    EXPECT_TRUE(object->add(makeInt("1")));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"first\":1}");
}

TEST(JsonObject, KeepsAnEmptyPendingKeyUnusable)
{
    const auto object = make<Object>();
    EXPECT_TRUE(object->addKey(""));
    EXPECT_FALSE(object->add(makeInt("1")));
    EXPECT_TRUE(object->addKey(""));
    EXPECT_TRUE(object->addKey("a"));
    EXPECT_TRUE(object->add(makeInt("1")));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"a\":1}");
}

TEST(JsonObject, PendingKeyStaysThroughTheOtherAdd)
{
    const auto object = make<Object>();
    EXPECT_TRUE(object->addKey("pending"));
    object->add("other", makeInt("1"));
    EXPECT_FALSE(object->addKey("another"));
    EXPECT_TRUE(object->add(makeInt("2")));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"other\":1,\"pending\":2}");
}

// ---------------------------------------------------------------------------------------------------
// Getters

TEST(JsonObject, GetItemReplacesTheReferenceAlsoByNull)
{
    CountingItem old;
    CountingItem item;
    const auto object = make<Object>();
    object->add("item", &item);
    object->add("null", nullptr);
    ItemReference got = &old;
    EXPECT_FALSE(object->getItem("absent", got));
    EXPECT_EQ(got.get(), &old);
    EXPECT_TRUE(object->getItem("item", got));
    EXPECT_EQ(got.get(), &item);
    EXPECT_EQ(old.count, 0);
    EXPECT_EQ(item.count, 2);
    EXPECT_TRUE(object->getItem("null", got));
    EXPECT_EQ(got.get(), nullptr);
    EXPECT_EQ(item.count, 1);
}

TEST(JsonObject, GetArrayAndGetObjectDoLikewise)
{
    const ItemReference root = jsontest::parsed("{\"array\":[1],\"object\":{\"a\":2}}");
    Object & object = *static_cast<Object *>(*root);
    object.add("null", nullptr);

    ArrayReference array = make<Array>();
    Array * const arrayBefore = array;
    EXPECT_FALSE(object.getArray("absent", array));
    EXPECT_EQ(array.get(), arrayBefore);
    EXPECT_TRUE(object.getArray("array", array));
    EXPECT_EQ(jsontest::printed(array.get()), "[1]");
    EXPECT_TRUE(object.getArray("null", array));
    EXPECT_EQ(array.get(), nullptr);

    ObjectReference inner = make<Object>();
    Object * const innerBefore = inner;
    EXPECT_FALSE(object.getObject("absent", inner));
    EXPECT_EQ(inner.get(), innerBefore);
    EXPECT_TRUE(object.getObject("object", inner));
    EXPECT_EQ(jsontest::printed(inner.get()), "{\"a\":2}");
    EXPECT_TRUE(object.getObject("null", inner));
    EXPECT_EQ(inner.get(), nullptr);
}

TEST(JsonObject, KeepsHandingOutContainersWithoutATestOfTheirType)
{
    const auto object = make<Object>();
    const auto string = makeString("no container");
    object->add("s", string);
    ArrayReference array;
    EXPECT_TRUE(object->getArray("s", array));
    EXPECT_EQ(static_cast<Item *>(array.get()), static_cast<Item *>(string.get()));
    EXPECT_EQ(static_cast<Item *>(array.get())->getType(), qvjson::TypeString);
    ObjectReference inner;
    EXPECT_TRUE(object->getObject("s", inner));
    EXPECT_EQ(static_cast<Item *>(inner.get()), static_cast<Item *>(string.get()));
}

TEST(JsonObject, GetValueTestsTheType)
{
    const auto object = make<Object>();
    object->add("int", makeInt("5000000000"));
    object->add("negative", makeInt("-1"));
    object->add("string", makeString("text"));
    object->add("number as string", makeString("1"));
    object->add("bool", makeBool(true));
    object->add("false", makeBool(false));
    object->add("ValueNull", make<ValueNull>());
    object->add("null", nullptr);
    object->add("array", make<Array>());
    object->add("object", make<Object>());
    for (const std::string key : {"int", "negative", "string", "number as string", "bool", "false",
             "ValueNull", "null", "array", "object", "absent"})
    {
        SCOPED_TRACE(key);
        const bool isInt = key == "int" || key == "negative";
        const int low = key == "int" ? 705032704 : key == "negative" ? -1 : 7;
        long number = 7;
        EXPECT_EQ(object->getValue(key, number), isInt);
        EXPECT_EQ(number, low);
        int narrow = 7;
        EXPECT_EQ(object->getValue(key, narrow), isInt);
        EXPECT_EQ(narrow, low);

        const bool isString = key == "string" || key == "number as string";
        Vontal::u8string string = "before";
        EXPECT_EQ(object->getValue(key, string), isString);
        EXPECT_EQ(string, key == "string" ? "text" : isString ? "1" : "before");

        const bool isBool = key == "bool" || key == "false";
        for (const bool before : {true, false})
        {
            bool flag = before;
            EXPECT_EQ(object->getValue(key, flag), isBool);
            EXPECT_EQ(flag, isBool ? key == "bool" : before);
        }
    }
}

TEST(JsonObject, GetItemsCopiesTheMapAndSharesTheItems)
{
    CountingItem item;
    CountingItem old;
    const auto object = make<Object>();
    object->add("b", &item);
    object->add("a", nullptr);
    ItemMap items = {{"old", &old}};
    object->getItems(items);
    EXPECT_EQ(old.count, 0);
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items.begin()->first, "a");
    EXPECT_EQ(items["a"].get(), nullptr);
    EXPECT_EQ(items["b"].get(), &item);
    EXPECT_EQ(item.count, 2);
    // What becomes of the copy does not concern the object.
    items.clear();
    EXPECT_EQ(item.count, 1);
    ItemReference got;
    EXPECT_TRUE(object->getItem("b", got));
}

TEST(JsonObject, GettingAnItemOfAnObjectThatOnlyTheReferenceHolds)
{
    const std::string json = "{\"a\":{\"a\":{\"a\":\"x\"}}}";
    ItemReference item = jsontest::parsed(json);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(static_cast<Object *>(*item)->getItem("a", item));
    EXPECT_EQ(item->getType(), qvjson::TypeString);
    ObjectReference object = static_cast<Object *>(*jsontest::parsed(json));
    ASSERT_TRUE(object->getObject("a", object));
    ASSERT_TRUE(object->getObject("a", object));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"a\":\"x\"}");
    // A null item lets the object go as well.
    item = jsontest::parsed("{}");
    static_cast<Object *>(*item)->add("a", nullptr);
    EXPECT_TRUE(static_cast<Object *>(*item)->getItem("a", item));
    EXPECT_EQ(item.get(), nullptr);
}

TEST(JsonObject, GetItemsMayLetTheObjectItselfGo)
{
    ItemMap items;
    items["self"] = jsontest::parsed("{\"a\":1,\"b\":[2]}");
    static_cast<Object *>(*items["self"])->getItems(items);
    EXPECT_EQ(items.size(), 2U);
    EXPECT_EQ(jsontest::printed(items["b"]), "[2]");
}

// ---------------------------------------------------------------------------------------------------
// Many keys

/// Whether the object holds just what the map holds, in the same order, by every way of asking.
void expectSame(Object & object, const std::map<std::string, Item *> & expected)
{
    ItemMap items;
    object.getItems(items);
    ASSERT_EQ(items.size(), expected.size());
    auto at = expected.begin();
    for (const auto & [key, item] : items)
    {
        ASSERT_EQ(key, at->first);
        ASSERT_EQ(item.get(), at->second);
        ++at;
    }
    for (const auto & [key, item] : expected)
    {
        ItemReference got;
        ASSERT_TRUE(object.getItem(key, got));
        ASSERT_EQ(got.get(), item);
        ASSERT_FALSE(object.getItem(key + "?", got));
        ASSERT_FALSE(object.getItem(key + '\0', got));
    }
}

/// Keys of every kind: short and long, prefixes of each other, with zero bytes and bytes above 0x7F.
std::vector<std::string> manyKeys(int count)
{
    std::vector<std::string> keys;
    for (int i = 0; i < count; ++i)
    {
        const std::string number = std::to_string(i);
        switch (i % 8)
        {
        case 0:
            keys.push_back(number);
            break;
        case 1:
            keys.push_back("a key beyond fifteen bytes " + number);
            break;
        case 2:
            keys.push_back("k\0"s + number);
            break;
        case 3:
            keys.push_back("\xC3\xA4" + number);
            break;
        case 4:
            keys.push_back(std::string(static_cast<std::size_t>(i) + 1, 'p'));
            break;
        case 5:
            keys.push_back("fifteen." + std::string(7 - number.size(), '.') + number);
            break;
        case 6:
            keys.push_back("eight..." + std::string(8 - number.size(), '.') + number);
            break;
        default:
            keys.push_back(std::string(static_cast<std::size_t>(i) + 1, '\0'));
            break;
        }
    }
    return keys;
}

TEST(JsonObject, KeepsKeysInByteOrderHoweverManyThereAre)
{
    struct Order
    {
        const char * label;
        std::function<void(std::vector<std::string> &)> arrange;
    };
    std::mt19937 random(1);
    const Order orders[] = {
        {"as made",
            [](auto &) {
            }},
        {"sorted",
            [](auto & keys)
            {
                std::sort(keys.begin(), keys.end());
            }},
        {"reverse",
            [](auto & keys)
            {
                std::sort(keys.begin(), keys.end(), std::greater<>());
            }},
        {"shuffled",
            [&random](auto & keys)
            {
                std::shuffle(keys.begin(), keys.end(), random);
            }},
        {"shuffled again",
            [&random](auto & keys)
            {
                std::shuffle(keys.begin(), keys.end(), random);
            }},
    };
    for (const Order & order : orders)
    {
        SCOPED_TRACE(order.label);
        std::vector<std::string> keys = manyKeys(200);
        order.arrange(keys);
        const auto object = make<Object>();
        std::map<std::string, Item *> expected;
        std::vector<ItemReference> items;
        for (const std::string & key : keys)
        {
            items.emplace_back(makeInt(std::to_string(items.size())));
            object->add(key, items.back());
            expected[key] = items.back();
            const bool isNearAChangeOfForm =
                expected.size() <= 2 || (expected.size() >= 30 && expected.size() <= 34);
            if (isNearAChangeOfForm)
            {
                ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
        // Every item is replaced, some by null.
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            Item * const other = i % 5 == 0 ? nullptr : items[keys.size() - 1 - i].get();
            object->add(keys[i], other);
            expected[keys[i]] = other;
        }
        ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
    }
}

TEST(JsonObject, AgreesWithAMapThroughRandomWrites)
{
    for (std::uint32_t seed = 1; seed <= 20; ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const std::vector<std::string> keys = manyKeys(20 + static_cast<int>(seed) * 3);
        CountingItem items[4];
        {
            const auto object = make<Object>();
            std::map<std::string, Item *> expected;
            for (int i = 0; i < 300; ++i)
            {
                const std::string & key = keys[random() % keys.size()];
                Item * const item = random() % 6 == 0 ? nullptr : &items[random() % 4];
                if (random() % 2 == 0 && !key.empty())
                {
                    ASSERT_TRUE(object->addKey(key));
                    ASSERT_TRUE(object->add(item));
                }
                else
                {
                    object->add(key, item);
                }
                expected[key] = item;
                if (i % 50 == 0)
                {
                    ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
                }
            }
            ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
            for (CountingItem & item : items)
            {
                const auto count = std::count_if(expected.begin(), expected.end(),
                    [&item](const auto & entry) { return entry.second == &item; });
                EXPECT_EQ(item.count, count);
            }
        }
        for (const CountingItem & item : items)
            EXPECT_EQ(item.count, 0);
    }
}

std::string keyText(const std::string & key)
{
    std::string result = "\"";
    for (const char byte : key)
    {
        if (byte == '\0')
            result += "\\u0000";
        else
            result += byte;
    }
    result += '"';
    return result;
}

TEST(JsonObject, ParsedObjectsAgreeWithAMapToo)
{
    for (const int count : {1, 2, 15, 16, 17, 31, 32, 33, 64, 65, 200, 1000})
    {
        SCOPED_TRACE(count);
        std::mt19937 random(static_cast<std::uint32_t>(count));
        std::vector<std::string> keys = manyKeys(count);
        std::shuffle(keys.begin(), keys.end(), random);
        // Some keys come again.
        for (int i = 0; i < count; i += 3)
            keys.push_back(keys[random() % keys.size()]);
        std::string json = "{";
        std::map<std::string, int> numbers;
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            json += i == 0 ? "" : ",";
            json += keyText(keys[i]);
            json += ':';
            json += std::to_string(i);
            numbers[keys[i]] = static_cast<int>(i);
        }
        // The same object twice, for the second may profit from the first.
        const ItemReference root = jsontest::parsed("[" + json + "}," + json + "}]");
        for (const unsigned int index : {0U, 1U})
        {
            ObjectReference object;
            ASSERT_TRUE(static_cast<Array *>(*root)->getObject(index, object));
            std::map<std::string, Item *> expected;
            for (const auto & [key, number] : numbers)
            {
                ItemReference item;
                ASSERT_TRUE(object->getItem(key, item));
                int value = -1;
                EXPECT_TRUE(item->getInt(value));
                EXPECT_EQ(value, number);
                expected[key] = item;
            }
            ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
            // It goes on growing.
            std::vector<ItemReference> others;
            for (const std::string & key : manyKeys(count + 40))
            {
                others.emplace_back(makeBool(true));
                object->add(key, others.back());
                expected[key] = others.back();
            }
            ASSERT_NO_FATAL_FAILURE(expectSame(*object, expected));
        }
    }
}

TEST(JsonObject, ParsedObjectsWithKeysOfOneShapeAreNotTakenForEachOther)
{
    const std::pair<const char *, const char *> rows[] = {
        {"[{\"b\":1,\"a\":2},{\"b\":3,\"a\":4}]", "[{\"a\":2,\"b\":1},{\"a\":4,\"b\":3}]"},
        {"[{\"b\":1,\"a\":2},{\"a\":3,\"b\":4}]", "[{\"a\":2,\"b\":1},{\"a\":3,\"b\":4}]"},
        {"[{\"b\":1,\"a\":2},{\"b\":3,\"c\":4}]", "[{\"a\":2,\"b\":1},{\"b\":3,\"c\":4}]"},
        {"[{\"b\":1,\"a\":2},{\"b\":3,\"b\":4}]", "[{\"a\":2,\"b\":1},{\"b\":4}]"},
        {"[{\"b\":1,\"b\":2},{\"b\":3,\"b\":4},{\"b\":5,\"a\":6}]",
            "[{\"b\":2},{\"b\":4},{\"a\":6,\"b\":5}]"},
        {"[{\"key beyond fifteen bytes 2\":1,\"key beyond fifteen bytes 1\":2},"
         "{\"key beyond fifteen bytes 2\":3,\"key beyond fifteen bytes 0\":4}]",
            "[{\"key beyond fifteen bytes 1\":2,\"key beyond fifteen bytes 2\":1},"
            "{\"key beyond fifteen bytes 0\":4,\"key beyond fifteen bytes 2\":3}]"},
        {"[{\"b\":{\"b\":1,\"a\":2},\"a\":3},{\"b\":4,\"a\":{\"a\":5,\"b\":6}}]",
            "[{\"a\":3,\"b\":{\"a\":2,\"b\":1}},{\"a\":{\"a\":5,\"b\":6},\"b\":4}]"},
        {"[{\"a\\u0000\":1,\"a\":2},{\"a\":3,\"a\\u0000\":4}]",
            "[{\"a\":2,\"a\\u0000\":1},{\"a\":3,\"a\\u0000\":4}]"},
    };
    for (const auto & [json, expected] : rows)
    {
        SCOPED_TRACE(json);
        EXPECT_EQ(jsontest::printed(jsontest::parsed(json)), expected);
    }
}

TEST(JsonObject, ReplacingWorksInEveryForm)
{
    for (const int count : {1, 31, 32, 100})
    {
        SCOPED_TRACE(count);
        std::string log;
        CountingItem old(log, "old");
        CountingItem other(log, "other");
        const auto object = make<Object>();
        for (int i = 0; i < count; ++i)
            object->add(std::to_string(i), i == count / 2 ? &old : nullptr);
        log.clear();
        object->add(std::to_string(count / 2), &other);
        EXPECT_EQ(log, "-old +other ");
        EXPECT_EQ(old.count, 0);
        EXPECT_EQ(other.count, 1);
    }
}

// ---------------------------------------------------------------------------------------------------
// Copies

TEST(JsonObject, KeepsCopiesSharingOneMap)
{
    CountingItem item;
    {
        const auto object = make<Object>();
        object->add("a", &item);
        const auto copy = copyOf(*object);
        EXPECT_EQ(copy->getType(), qvjson::TypeObject);
        EXPECT_EQ(item.count, 1);
        copy->add("b", &item);
        object->add("c", &item);
        EXPECT_TRUE(copy->equals(object));
        for (int i = 0; i < 100; ++i)
            (i % 2 == 0 ? *object : *copy).add(std::to_string(i), &item);
        ItemMap ofObject;
        ItemMap ofCopy;
        object->getItems(ofObject);
        copy->getItems(ofCopy);
        EXPECT_EQ(ofObject.size(), 103U);
        EXPECT_EQ(ofObject, ofCopy);
    }
    EXPECT_EQ(item.count, 0);
}

TEST(JsonObject, CopiesOfAnEmptyObjectShareItToo)
{
    const auto object = make<Object>();
    const auto copy = copyOf(*object);
    object->add("a", makeInt("1"));
    EXPECT_EQ(jsontest::printed(copy.get()), "{\"a\":1}");
}

TEST(JsonObject, CopiesHaveAPendingKeyOfTheirOwn)
{
    const auto object = make<Object>();
    EXPECT_TRUE(object->addKey("a"));
    const auto copy = copyOf(*object);
    EXPECT_FALSE(copy->addKey("b"));
    EXPECT_TRUE(copy->add(makeInt("1")));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"a\":1}");
    // The key of the first one is still pending.
    EXPECT_FALSE(object->addKey("b"));
    EXPECT_TRUE(object->add(makeInt("2")));
    EXPECT_EQ(jsontest::printed(copy.get()), "{\"a\":2}");
}

TEST(JsonObject, SharedItemsLiveAsLongAsOneOfTheCopies)
{
    CountingItem item;
    ObjectReference copy;
    {
        const auto object = make<Object>();
        object->add("a", &item);
        copy = copyOf(*object);
    }
    EXPECT_EQ(item.count, 1);
    copy = nullptr;
    EXPECT_EQ(item.count, 0);
}

TEST(JsonObject, CopiesOfParsedObjectsOutliveTheTree)
{
    ItemReference root = jsontest::parsed("[{\"a key beyond fifteen bytes\":1,\"a\":{\"b\":2}}]");
    ObjectReference inner;
    ASSERT_TRUE(static_cast<Array *>(*root)->getObject(0, inner));
    const auto copy = copyOf(*inner);
    inner = nullptr;
    root = nullptr;
    EXPECT_EQ(jsontest::printed(copy.get()), "{\"a\":{\"b\":2},\"a key beyond fifteen bytes\":1}");
    copy->add("c", makeInt("3"));
    EXPECT_EQ(jsontest::printed(copy.get()), "{\"a\":{\"b\":2},\"a key beyond fifteen bytes\":1,\"c\":3}");
}

TEST(JsonObject, KeepsAssignmentSharingAndAbandoningWhatTheTargetHeld)
{
    CountingItem abandoned;
    CountingItem shared;
    ObjectReference target;
    ObjectReference keeper;
    {
        const testsupport::IntendedLeak leak;
        target = make<Object>();
        target->add("old", &abandoned);
        EXPECT_TRUE(target->addKey("old pending"));
        keeper = copyOf(*target);
    }
    {
        const auto source = make<Object>();
        source->add("new", &shared);
        EXPECT_TRUE(source->addKey("pending"));
        static_cast<Object &>(*target) = *source;
        EXPECT_EQ(abandoned.count, 1);
        EXPECT_EQ(shared.count, 1);
        target->add("more", nullptr);
        EXPECT_TRUE(target->equals(source));
    }
    EXPECT_TRUE(target->add(&shared));
    EXPECT_EQ(shared.count, 2);
    ItemReference item;
    EXPECT_TRUE(target->getItem("pending", item));
    EXPECT_FALSE(target->getItem("old", item));
    EXPECT_TRUE(target->getItem("new", item));
    // What was abandoned is still what it was.
    EXPECT_TRUE(keeper->getItem("old", item));
    EXPECT_EQ(item.get(), &abandoned);
}

TEST(JsonObject, AssigningWhatIsSharedAlreadyTakesThePendingKeyOnly)
{
    CountingItem item;
    {
        const auto object = make<Object>();
        object->add("a", &item);
        const auto second = copyOf(*object);
        const auto third = copyOf(*second);
        EXPECT_TRUE(object->addKey("b"));
        static_cast<Object &>(*second) = *object;
        static_cast<Object &>(*third) = *second;
        static_cast<Object &>(*object) = *third;
        EXPECT_EQ(item.count, 1);
        EXPECT_TRUE(third->add(&item));
        EXPECT_EQ(item.count, 2);
        EXPECT_TRUE(object->equals(third));
        EXPECT_TRUE(second->equals(third));
    }
    // Each of them has left once, and the last has let the items go.
    EXPECT_EQ(item.count, 0);
}

TEST(JsonObject, AssigningToItselfChangesNothing)
{
    CountingItem item;
    {
        const auto object = make<Object>();
        object->add("a", &item);
        EXPECT_TRUE(object->addKey("pending"));
        const Object & itself = *object;
        static_cast<Object &>(*object) = itself;
        EXPECT_EQ(item.count, 1);
        EXPECT_FALSE(object->addKey("other"));
    }
    EXPECT_EQ(item.count, 0);
}

} // namespace
