#include "VontalBase/json/JSONSerializable.h"

#include "json/bindingsupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

// From a tree into the members.

namespace
{

using jsontest::Everything;
using jsontest::fill;
using jsontest::ItemReference;
using jsontest::make;
using jsontest::numberOf;
using qvjson::Object;

using namespace std::string_literals;

/// Every member, without the closing brace, so that a later value can replace one of them.
const std::string members =
    "{\"flag\":true,\"number\":-7,\"ulong\":8,\"wide\":9,\"string\":\"t\\u0000x\",\"set\":[\"b\",\"a\",\"b\"]"
    ","
    "\"list\":[\"b\",\"a\",\"b\"],\"ints\":[1,-2],\"wides\":[5000000000,-1],\"tree\":{\"a\":[1]},"
    "\"raw\":{\"n\":1},\"referenced\":{\"n\":2},\"objects\":[{\"n\":3},{\"n\":4}],"
    "\"provider\":[{\"n\":5},{\"n\":6}],\"holder\":{\"n\":7}";

/// All members, with one of them replaced.
bool fillWith(Everything & object, const std::string & key, const std::string & value)
{
    return fill(object, members + ",\"" + key + "\":" + value + "}");
}

TEST(JsonFromTree, SetsMembersOfMostTypes)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(fill(*object, members + "}"));
    EXPECT_TRUE(object->flag);
    EXPECT_EQ(object->number, -7);
    EXPECT_EQ(object->string, "t\0x"s);
    EXPECT_EQ(object->stringSet, (std::set<Vontal::u8string>{"a", "b"}));
    EXPECT_EQ(object->strings, (std::vector<Vontal::u8string>{"b", "a", "b"}));
    EXPECT_EQ(object->numbers, (std::vector<int>{1, -2}));
    EXPECT_EQ(object->wideNumbers, (std::vector<std::int64_t>{5000000000, -1}));
    EXPECT_EQ(jsontest::printed(object->tree.get()), "{\"a\":[1]}");
    ASSERT_NE(object->raw, nullptr);
    EXPECT_EQ(numberOf(object->raw), 1);
    ASSERT_EQ(object->provider->elements.size(), 2U);
    EXPECT_EQ(object->provider->elements[0]->number, 5);
    EXPECT_EQ(object->provider->elements[1]->number, 6);
    EXPECT_EQ(object->provider->log, "clear\ncreate\ncreate\n");
    ASSERT_NE(object->holder->object.get(), nullptr);
    EXPECT_EQ(object->holder->object->number, 7);
    EXPECT_EQ(object->holder->log, "create\n");
    EXPECT_EQ(object->declarations, 1);
    EXPECT_EQ(object->ends, 1);
}

TEST(JsonFromTree, KeepsLeavingUnsignedLongAnd64BitMembersAlone)
{
    const auto object = make<Everything>();
    object->unsignedNumber = 100;
    object->wideNumber = 200;
    EXPECT_TRUE(fill(*object, members + "}"));
    EXPECT_EQ(object->unsignedNumber, 100U);
    EXPECT_EQ(object->wideNumber, 200);
    // Whatever stands there.
    EXPECT_TRUE(fillWith(*object, "ulong", "\"text\""));
    EXPECT_TRUE(fillWith(*object, "wide", "[]"));
    EXPECT_TRUE(fillWith(*object, "wide", "null"));
    EXPECT_EQ(object->wideNumber, 200);
    // Through text they are taken.
    VontalException record;
    EXPECT_TRUE(object->fromJson("{\"wide\":5000000000,\"ulong\":3}", record));
    EXPECT_EQ(object->wideNumber, 5000000000);
    EXPECT_EQ(object->unsignedNumber, 3U);
}

TEST(JsonFromTree, KeepsFillingReferencedObjectsAndLettingThemGo)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(fill(*object, members + "}"));
    EXPECT_EQ(object->referenced.get(), nullptr);
    EXPECT_TRUE(object->objects.empty());
    // One for each of the types 10 and 11, and two for 12: only the factory kept them.
    ASSERT_EQ(object->factory->made.size(), 4U);
    EXPECT_EQ(object->factory->made[0]->number, 1);
    EXPECT_EQ(object->factory->made[1]->number, 2);
    EXPECT_EQ(object->factory->made[2]->number, 3);
    EXPECT_EQ(object->factory->made[3]->number, 4);
    for (const auto & inner : object->factory->made)
        EXPECT_EQ(inner->ends, 1);

    // What such a member held before, it holds still; the list of objects is emptied.
    const auto held = make<jsontest::Inner>();
    object->referenced = held;
    object->objects.emplace_back(held);
    EXPECT_TRUE(fill(*object, members + "}"));
    EXPECT_EQ(object->referenced.get(), held.get());
    EXPECT_TRUE(object->objects.empty());
}

TEST(JsonFromTree, NeedsEveryDeclaredKey)
{
    const std::string keys[] = {"flag", "number", "ulong", "wide", "string", "set", "list", "ints", "wides",
        "tree", "raw", "referenced", "objects", "provider", "holder"};
    const ItemReference whole = jsontest::parsed(members + "}");
    for (const std::string & absent : keys)
    {
        SCOPED_TRACE(absent);
        jsontest::ItemMap items;
        static_cast<Object *>(*whole)->getItems(items);
        items.erase(absent);
        const auto part = make<Object>();
        for (const auto & [key, item] : items)
            part->add(key, item);
        const auto object = make<Everything>();
        EXPECT_FALSE(object->fromJson(part.get()));
        EXPECT_EQ(object->ends, 0);
        // Fields in front of the absent one are set.
        EXPECT_EQ(object->flag, absent != "flag");
        EXPECT_EQ(object->number, absent == "flag" || absent == "number" ? 0 : -7);
    }
}

TEST(JsonFromTree, IgnoresKeysThatAreNotDeclared)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(fill(*object, members + ",\"unknown\":1,\"other\":[{}]}"));
    EXPECT_EQ(object->ends, 1);
}

struct ToleranceRow
{
    const char * value;
    /// The keys that take it, beside those of the types that take everything.
    std::set<std::string> takenBy;
};

TEST(JsonFromTree, TakesOnlyWhatTheFieldIsOf)
{
    const std::set<std::string> lists = {"set", "list", "ints", "wides", "objects", "provider"};
    const std::set<std::string> objects = {"tree", "raw", "referenced", "holder"};
    const ToleranceRow rows[] = {
        {"true", {"flag"}},
        {"false", {"flag"}},
        {"1", {"number"}},
        {"5000000000", {"number"}},
        {"\"x\"", {"string"}},
        {"\"1\"", {"string"}},
        {"null", {"tree", "raw", "referenced", "objects", "provider", "holder"}},
        {"[]", lists},
        {"[\"x\"]", {"set", "list"}},
        {"[1]", {"ints", "wides"}},
        {"[1,\"x\"]", {}},
        {"[\"x\",1]", {}},
        {"[true]", {}},
        {"[[]]", {}},
        {"[{\"n\":1}]", {"objects", "provider"}},
        {"[{\"n\":1},{}]", {}},
        {"[{\"n\":1},1]", {}},
        {"[null]", {"objects"}},
        {"[{\"n\":\"x\"}]", {}},
        {"{\"n\":1}", objects},
        {"{\"n\":1,\"unknown\":2}", objects},
        // An inner object lacks its key; a tree has none to lack.
        {"{}", {"tree"}},
        {"{\"n\":true}", {"tree"}},
    };
    const std::string keys[] = {"flag", "number", "ulong", "wide", "string", "set", "list", "ints", "wides",
        "tree", "raw", "referenced", "objects", "provider", "holder"};
    for (const ToleranceRow & row : rows)
    {
        for (const std::string & key : keys)
        {
            SCOPED_TRACE(key + ": " + row.value);
            const bool isTaken = key == "ulong" || key == "wide" || row.takenBy.count(key) != 0;
            const auto object = make<Everything>();
            EXPECT_EQ(fillWith(*object, key, row.value), isTaken);
            EXPECT_EQ(object->ends, isTaken ? 1 : 0);
        }
    }
}

TEST(JsonFromTree, TakesTheLow32BitsOfAnInteger)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(fillWith(*object, "number", "5000000000"));
    EXPECT_EQ(object->number, 705032704);
    EXPECT_TRUE(fillWith(*object, "ints", "[5000000000]"));
    EXPECT_EQ(object->numbers, (std::vector<int>{705032704}));
}

TEST(JsonFromTree, ListsKeepWhatCameBeforeTheWrongElement)
{
    const auto object = make<Everything>();
    object->numbers = {9, 9, 9};
    EXPECT_FALSE(fillWith(*object, "ints", "[1,2,\"x\",3]"));
    EXPECT_EQ(object->numbers, (std::vector<int>{1, 2}));
    EXPECT_FALSE(fillWith(*object, "list", "[\"a\",1]"));
    EXPECT_EQ(object->strings, (std::vector<Vontal::u8string>{"a"}));
    // The walk ended in front of the other list.
    EXPECT_EQ(object->numbers, (std::vector<int>{1, 2}));
    // What is no array leaves the list alone.
    EXPECT_FALSE(fillWith(*object, "ints", "1"));
    EXPECT_EQ(object->numbers, (std::vector<int>{1, 2}));
    EXPECT_EQ(object->strings, (std::vector<Vontal::u8string>{"b", "a", "b"}));
}

TEST(JsonFromTree, MembersSharedWithTheTree)
{
    const ItemReference tree = jsontest::parsed(members + "}");
    Object & source = *static_cast<Object *>(*tree);
    const auto object = make<Everything>();
    EXPECT_TRUE(object->fromJson(&source));
    qvbase::Reference<Object> inner;
    ASSERT_TRUE(source.getObject("tree", inner));
    EXPECT_EQ(object->tree.get(), inner.get());
}

TEST(JsonFromTree, NullPointersCountAsNull)
{
    const char * const lettingGo[] = {"tree", "raw", "referenced", "objects", "provider"};
    for (const bool isPointer : {false, true})
    {
        const auto object = make<Everything>();
        VontalException record;
        ASSERT_TRUE(object->fromJson("{\"tree\":{},\"raw\":{},\"referenced\":{},\"objects\":[{}],"
                                     "\"provider\":[{}],\"holder\":{\"n\":3}}",
            record));
        const ItemReference tree = jsontest::parsed(members + "}");
        Object & source = *static_cast<Object *>(*tree);
        const ItemReference null = isPointer ? ItemReference() : ItemReference(make<qvjson::ValueNull>());
        for (const char * const key : lettingGo)
            source.add(key, null);
        source.add("holder", null);
        const std::string log = object->holder->log;
        EXPECT_TRUE(object->fromJson(&source));
        EXPECT_EQ(object->tree.get(), nullptr);
        EXPECT_EQ(object->raw, nullptr);
        EXPECT_EQ(object->referenced.get(), nullptr);
        EXPECT_TRUE(object->objects.empty());
        EXPECT_TRUE(object->provider->elements.empty());
        // With the holder nothing happens.
        EXPECT_EQ(object->holder->log, log);
        EXPECT_EQ(object->holder->object->number, 3);
    }
    for (const char * const key : {"flag", "number", "string", "set", "list", "ints", "wides"})
    {
        SCOPED_TRACE(key);
        const ItemReference tree = jsontest::parsed(members + "}");
        static_cast<Object *>(*tree)->add(key, nullptr);
        EXPECT_FALSE(make<Everything>()->fromJson(static_cast<Object *>(*tree)));
    }
    for (const char * const key : {"ulong", "wide"})
    {
        SCOPED_TRACE(key);
        const ItemReference tree = jsontest::parsed(members + "}");
        static_cast<Object *>(*tree)->add(key, nullptr);
        EXPECT_TRUE(make<Everything>()->fromJson(static_cast<Object *>(*tree)));
    }
}

TEST(JsonFromTree, WhatIsNoObjectResetsTheTreeMember)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(fill(*object, members + "}"));
    ASSERT_NE(object->tree.get(), nullptr);
    EXPECT_FALSE(fillWith(*object, "tree", "[1]"));
    EXPECT_EQ(object->tree.get(), nullptr);
}

TEST(JsonFromTree, RawMemberIsLetGoBeforeItIsMadeAnew)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(fill(*object, members + "}"));
    ASSERT_NE(object->raw, nullptr);
    EXPECT_FALSE(fillWith(*object, "raw", "{}"));
    EXPECT_EQ(object->raw, nullptr);
    EXPECT_TRUE(fill(*object, members + "}"));
    EXPECT_EQ(numberOf(object->raw), 1);
}

TEST(JsonFromTree, FailsWhereSomebodyRefuses)
{
    const auto ofFactory = make<Everything>();
    ofFactory->factory->isRefusing = true;
    EXPECT_FALSE(fill(*ofFactory, members + "}"));
    EXPECT_TRUE(ofFactory->factory->made.empty());
    const auto ofProvider = make<Everything>();
    ofProvider->provider->isRefusing = true;
    EXPECT_FALSE(fill(*ofProvider, members + "}"));
    EXPECT_EQ(ofProvider->provider->log, "clear\ncreate\n");
    const auto ofHolder = make<Everything>();
    ofHolder->holder->isRefusing = true;
    EXPECT_FALSE(fill(*ofHolder, members + "}"));
    EXPECT_EQ(ofHolder->ends, 0);
}

TEST(JsonFromTree, RefusesANullObject)
{
    const auto object = make<Everything>();
    EXPECT_FALSE(object->fromJson(static_cast<Object *>(nullptr)));
    EXPECT_EQ(object->ends, 0);
}

/// A class whose members of other classes have nobody to make or keep them.
class Orphan : public qvjson::JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (field == 0)
            jsonFieldAdd("k", &raw, nullptr);
        else if (field == 1)
            jsonFieldAdd("k", &referenced, nullptr);
        else if (field == 2)
            jsonFieldAdd("k", &objects, nullptr);
        else if (field == 3)
            jsonFieldAdd("k", std::shared_ptr<qvjson::JSONSerializableArrayProviderInterface>());
        else
            jsonFieldAdd("k", std::shared_ptr<qvjson::JSONRefObjInterface>());
    }

    int field = 0;
    JSONSerializable * raw = nullptr;
    jsontest::BoundReference referenced;
    std::vector<jsontest::BoundReference> objects;
};

TEST(JsonFromTree, FailsWhereThereIsNobodyToMakeTheObject)
{
    for (int field = 0; field <= 4; ++field)
    {
        SCOPED_TRACE(field);
        const auto orphan = make<Orphan>();
        orphan->field = field;
        const bool isList = field == 2 || field == 3;
        const ItemReference tree = jsontest::parsed(isList ? "{\"k\":[{\"n\":1}]}" : "{\"k\":{\"n\":1}}");
        EXPECT_FALSE(orphan->fromJson(static_cast<Object *>(*tree)));
        // With null there is nothing to make.
        const auto other = make<Orphan>();
        other->field = field;
        const ItemReference null = jsontest::parsed("{\"k\":null}");
        EXPECT_TRUE(other->fromJson(static_cast<Object *>(*null)));
    }
}

TEST(JsonFromTree, TheLastElementIsRemovedWhereItCannotBeFilled)
{
    const auto object = make<Everything>();
    EXPECT_FALSE(fillWith(*object, "provider", "[{\"n\":1},{\"n\":\"x\"},{\"n\":3}]"));
    EXPECT_EQ(object->provider->log, "clear\ncreate\ncreate\nremove\n");
    ASSERT_EQ(object->provider->elements.size(), 1U);
    EXPECT_EQ(object->provider->elements[0]->number, 1);
}

TEST(JsonFromTree, GivesTheAnswerOfOnParseEnd)
{
    const auto object = make<Everything>();
    object->endsWell = false;
    EXPECT_FALSE(fill(*object, members + "}"));
    EXPECT_EQ(object->ends, 1);
}

TEST(JsonFromTree, WorksWhileTextIsBeingParsed)
{
    // The two routes share no state.
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(fill(*object, members + "}"));
    EXPECT_FALSE(object->jsonBeginParse());
    EXPECT_TRUE(object->jsonEndParse());
}

} // namespace
