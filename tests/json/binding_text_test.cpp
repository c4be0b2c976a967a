#include "VontalBase/json/JSONSerializable.h"

#include "json/bindingsupport.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

// From text into the members.

namespace
{

using jsontest::BoundReference;
using jsontest::Everything;
using jsontest::expectFailures;
using jsontest::Inner;
using jsontest::make;
using jsontest::numberOf;
using jsontest::printed;
using jsontest::read;
using jsontest::readBadly;
using jsontest::restored;
using jsontest::scanned;
using jsontest::text;
using qvjson::JSONSerializable;

using namespace std::string_literals;

// ---------------------------------------------------------------------------------------------------
// Members of every type

const std::string everything =
    "{\"flag\":true,\"number\":-7,\"ulong\":4294967295,\"wide\":-5000000000,\"string\":\"t\\u0000x\","
    "\"set\":[\"b\",\"a\",\"b\"],\"list\":[\"b\",\"a\",\"b\"],\"ints\":[1,-2],\"wides\":[5000000000,-1],"
    "\"tree\":{\"b\":[1,{\"c\":null}],\"a\":5000000000},\"raw\":{\"n\":1},\"referenced\":{\"n\":2},"
    "\"objects\":[{\"n\":3},{\"n\":4}],\"provider\":[{\"n\":5},{},{\"n\":6}],\"holder\":{\"n\":7}}";

void expectEverything(const Everything & object)
{
    EXPECT_TRUE(object.flag);
    EXPECT_EQ(object.number, -7);
    EXPECT_EQ(object.unsignedNumber, 4294967295U);
    EXPECT_EQ(object.wideNumber, -5000000000);
    EXPECT_EQ(object.string, "t\0x"s);
    EXPECT_EQ(object.stringSet, (std::set<Vontal::u8string>{"a", "b"}));
    EXPECT_EQ(object.strings, (std::vector<Vontal::u8string>{"b", "a", "b"}));
    EXPECT_EQ(object.numbers, (std::vector<int>{1, -2}));
    EXPECT_EQ(object.wideNumbers, (std::vector<std::int64_t>{5000000000, -1}));
    ASSERT_NE(object.tree.get(), nullptr);
    EXPECT_TRUE(object.tree->equals(jsontest::parsed("{\"a\":5000000000,\"b\":[1,{\"c\":null}]}")));
    ASSERT_NE(object.raw, nullptr);
    EXPECT_EQ(numberOf(object.raw), 1);
    ASSERT_NE(object.referenced.get(), nullptr);
    EXPECT_EQ(numberOf(object.referenced), 2);
    ASSERT_EQ(object.objects.size(), 2U);
    EXPECT_EQ(numberOf(object.objects[0]), 3);
    EXPECT_EQ(numberOf(object.objects[1]), 4);
    ASSERT_EQ(object.provider->elements.size(), 3U);
    EXPECT_EQ(object.provider->elements[0]->number, 5);
    EXPECT_EQ(object.provider->elements[1]->number, 0);
    EXPECT_EQ(object.provider->elements[2]->number, 6);
    ASSERT_NE(object.holder->object.get(), nullptr);
    EXPECT_EQ(object.holder->object->number, 7);
}

TEST(JsonFromText, SetsMembersOfEveryType)
{
    const auto object = make<Everything>();
    read(*object, everything);
    expectEverything(*object);
    EXPECT_EQ(object->provider->log, "clear\nbegin provider 13\nbegin provider 13\nbegin provider 13\n");
    EXPECT_EQ(object->holder->log, "begin holder 14\n");
    EXPECT_EQ(object->ends, 1);
    EXPECT_EQ(object->declarations, 1);
}

TEST(JsonFromText, SetsThemAgainInPlaceOfWhatTheyHeld)
{
    const auto object = make<Everything>();
    read(*object, everything);
    read(*object, everything);
    expectEverything(*object);
    EXPECT_EQ(object->declarations, 2);
    EXPECT_EQ(object->ends, 2);
}

TEST(JsonFromText, TakesBytesAndLengthToo)
{
    const std::string json = "{\"number\":5}{";
    const auto object = make<Everything>();
    VontalException record;
    EXPECT_TRUE(object->fromJson(json.data(), 12, record));
    EXPECT_EQ(object->number, 5);
    EXPECT_FALSE(object->fromJson(json.data(), 13, record));
}

TEST(JsonFromText, TakesKeysInAnyOrder)
{
    // The members of the text above, each alone, from the last to the first and from the middle.
    const std::string members[] = {"\"flag\":true", "\"number\":-7", "\"ulong\":4294967295",
        "\"wide\":-5000000000", "\"string\":\"t\\u0000x\"", "\"set\":[\"b\",\"a\",\"b\"]",
        "\"list\":[\"b\",\"a\",\"b\"]", "\"ints\":[1,-2]", "\"wides\":[5000000000,-1]",
        "\"tree\":{\"b\":[1,{\"c\":null}],\"a\":5000000000}", "\"raw\":{\"n\":1}", "\"referenced\":{\"n\":2}",
        "\"objects\":[{\"n\":3},{\"n\":4}]", "\"provider\":[{\"n\":5},{},{\"n\":6}]", "\"holder\":{\"n\":7}"};
    constexpr std::size_t count = std::size(members);
    for (const std::size_t step : {1U, 2U, 4U, 7U, 14U})
    {
        for (std::size_t first = 0; first < count; ++first)
        {
            SCOPED_TRACE(std::to_string(step) + " from " + std::to_string(first));
            std::string json = "{";
            for (std::size_t i = 0; i < count; ++i)
                json += (i == 0 ? "" : ",") + members[(first + i * step) % count];
            const auto object = make<Everything>();
            read(*object, json + "}");
            expectEverything(*object);
        }
    }
}

TEST(JsonFromText, LeavesMembersThatAreNotInTheText)
{
    const auto object = make<Everything>();
    read(*object, everything);
    read(*object, "{}");
    expectEverything(*object);
    read(*object, "{\"number\":-7}");
    expectEverything(*object);
    // So does text without anything.
    read(*object, "");
    read(*object, " \n");
    expectEverything(*object);
    EXPECT_EQ(object->ends, 5);
}

TEST(JsonFromText, ALaterValueOfOneKeyReplacesTheEarlier)
{
    const auto object = make<Everything>();
    read(*object, "{\"number\":1,\"ints\":[1,2],\"tree\":{\"a\":1},\"objects\":[{}],\"provider\":[{}],"
                  "\"number\":2,\"ints\":[3],\"tree\":{\"b\":2},\"objects\":[{\"n\":1},{\"n\":2}],"
                  "\"provider\":[],\"raw\":{\"n\":1},\"raw\":null,\"referenced\":{},\"referenced\":null}");
    EXPECT_EQ(object->number, 2);
    EXPECT_EQ(object->numbers, (std::vector<int>{3}));
    EXPECT_EQ(printed(object->tree.get()), "{\"b\":2}");
    EXPECT_EQ(object->objects.size(), 2U);
    EXPECT_TRUE(object->provider->elements.empty());
    EXPECT_EQ(object->raw, nullptr);
    EXPECT_EQ(object->referenced.get(), nullptr);
}

TEST(JsonFromText, AnEmptyListEndsEmpty)
{
    const auto object = make<Everything>();
    read(*object, everything);
    read(*object, "{\"set\":[],\"list\":[],\"ints\":[],\"wides\":[],\"objects\":[],\"provider\":[]}");
    EXPECT_TRUE(object->stringSet.empty());
    EXPECT_TRUE(object->strings.empty());
    EXPECT_TRUE(object->numbers.empty());
    EXPECT_TRUE(object->wideNumbers.empty());
    EXPECT_TRUE(object->objects.empty());
    EXPECT_TRUE(object->provider->elements.empty());
}

TEST(JsonFromText, NullLetsGoOfTreesObjectsAndProviders)
{
    const auto object = make<Everything>();
    read(*object, everything);
    object->provider->log.clear();
    read(*object, "{\"tree\":null,\"raw\":null,\"referenced\":null,\"provider\":null}");
    EXPECT_EQ(object->tree.get(), nullptr);
    EXPECT_EQ(object->raw, nullptr);
    EXPECT_EQ(object->referenced.get(), nullptr);
    EXPECT_TRUE(object->provider->elements.empty());
    EXPECT_EQ(object->provider->log, "clear\n");
}

// ---------------------------------------------------------------------------------------------------
// What each type tolerates

/// The keys of the fields, by their types.
const char * const keys[] = {"flag", "number", "ulong", "wide", "string", "set", "list", "ints", "wides",
    "tree", "raw", "referenced", "objects", "provider", "holder"};

struct ToleranceRow
{
    const char * value;
    /// What follows where the field does not take it.
    const char * failure;
    /// The types that take it.
    std::set<int> takenBy;
    /// The types that take it as an element without a list, so that the object cannot end.
    std::set<int> leftOpenBy;
};

TEST(JsonFromText, TakesOnlyWhatTheFieldIsOf)
{
    const ToleranceRow rows[] = {
        {"true", "Failed to parse bool", {0}, {}},
        {"false", "Failed to parse false", {0}, {}},
        {"1", "Failed to parse int: 1", {1, 2, 3}, {7, 8}},
        {"\"x\"", "Failed to parse string: x", {4}, {5, 6}},
        {"\"1\"", "Failed to parse string: 1", {4}, {5, 6}},
        {"null", "Failed to parse NULL", {9, 10, 11, 13}, {}},
        {"[]", "Failed to begin parse array", {5, 6, 7, 8, 12, 13}, {}},
        {"{}", "Failed to create new object", {9, 10, 11, 14}, {12, 13}},
        {"1.5", "Unexpected parser state", {}, {}},
        {"1e5", "Unexpected parser state", {}, {}},
    };
    for (const ToleranceRow & row : rows)
    {
        for (int type = 0; type < 15; ++type)
        {
            const std::string json = "{\"" + std::string(keys[type]) + "\":" + row.value + "}";
            SCOPED_TRACE(json);
            const auto object = make<Everything>();
            if (row.takenBy.count(type) != 0)
                read(*object, json);
            else if (row.leftOpenBy.count(type) != 0)
                readBadly(*object, json, "Failed to finalize object");
            else
                readBadly(*object, json, row.failure);
        }
    }
}

TEST(JsonFromText, TakesOnlyElementsThatTheListIsOf)
{
    const ToleranceRow rows[] = {
        {"[true]", "Failed to parse bool", {}, {}},
        {"[false]", "Failed to parse false", {}, {}},
        {"[1]", "Failed to parse int: 1", {7, 8}, {}},
        {"[1,2,3]", "Failed to parse int: 1", {7, 8}, {}},
        {"[\"x\"]", "Failed to parse string: x", {5, 6}, {}},
        {"[{}]", "Failed to create new object", {12, 13}, {}},
        {"[{},{\"n\":1}]", "Failed to create new object", {12, 13}, {}},
        {"[1.5]", "Unexpected parser state", {}, {}},
        {"[[]]", "Failed to begin parse array", {}, {}},
        {"[[1]]", "Failed to begin parse array", {}, {}},
    };
    for (const ToleranceRow & row : rows)
    {
        for (const int type : {5, 6, 7, 8, 12, 13})
        {
            const std::string json = "{\"" + std::string(keys[type]) + "\":" + row.value + "}";
            SCOPED_TRACE(json);
            const auto object = make<Everything>();
            if (row.takenBy.count(type) != 0)
                read(*object, json);
            else
                readBadly(*object, json, row.failure);
        }
    }
}

TEST(JsonFromText, ListsRefuseNullAsAnElement)
{
    for (const char * const key : {"set", "list", "ints", "wides", "objects"})
    {
        SCOPED_TRACE(key);
        readBadly(*make<Everything>(), "{\"" + std::string(key) + "\":[null]}", "Failed to parse NULL");
    }
    // Kept: a null within a provider's list empties the list and closes its field.
    const auto object = make<Everything>();
    readBadly(*object, "{\"provider\":[{},null]}", "Failed to finalize parsed array");
    EXPECT_TRUE(object->provider->elements.empty());
}

TEST(JsonFromText, ListsFailAtTheWrongElementAndKeepWhatCame)
{
    const auto object = make<Everything>();
    readBadly(*object, "{\"ints\":[1,\"x\"]}", "Failed to parse string: x");
    EXPECT_EQ(object->numbers, (std::vector<int>{1}));
    const auto second = make<Everything>();
    readBadly(*second, "{\"list\":[\"a\",\"b\",1]}", "Failed to parse int: 1");
    EXPECT_EQ(second->strings, (std::vector<Vontal::u8string>{"a", "b"}));
    const auto third = make<Everything>();
    readBadly(*third, "{\"objects\":[{\"n\":1},{\"n\":\"x\"}]}", "Failed to parse string: x");
    EXPECT_EQ(third->objects.size(), 2U);
}

TEST(JsonFromText, AListMayComeAgainButNotWithinItself)
{
    const auto object = make<Everything>();
    read(*object, "{\"ints\":[1],\"ints\":[2]}");
    EXPECT_EQ(object->numbers, (std::vector<int>{2}));
    readBadly(*make<Everything>(), "{\"ints\":[1,[2]]}", "Failed to begin parse array");
    readBadly(*make<Everything>(), "{\"objects\":[{},[]]}", "Failed to begin parse array");
}

TEST(JsonFromText, ReadsNumbersByTheReadersOfTheirWidth)
{
    struct Row
    {
        const char * key;
        const char * digits;
        bool isGood;
        std::int64_t value;
    };
    const Row rows[] = {
        {"number", "0", true, 0},
        {"number", "-0", true, 0},
        {"number", "2147483647", true, 2147483647},
        {"number", "-2147483647", true, -2147483647},
        {"number", "2147483648", false, 0},
        {"number", "-2147483648", false, 0},
        {"number", "3000000000", false, 0},
        // Kept: the readers miss an overflow whose low bits are above what was read before.
        {"number", "5000000000", true, 705032704},
        {"ulong", "0", true, 0},
        {"ulong", "4294967295", true, 4294967295},
        {"ulong", "4294967296", false, 0},
        {"ulong", "-1", false, 0},
        {"ulong", "-0", false, 0},
        {"wide", "9223372036854775807", true, 9223372036854775807},
        {"wide", "-9223372036854775807", true, -9223372036854775807},
        {"wide", "9223372036854775808", false, 0},
        {"wide", "-9223372036854775808", false, 0},
        {"wide", "22000000000000000000", true, 3553255926290448384},
    };
    for (const Row & row : rows)
    {
        const std::string json = "{\"" + std::string(row.key) + "\":" + row.digits + "}";
        SCOPED_TRACE(json);
        const auto object = make<Everything>();
        if (!row.isGood)
        {
            readBadly(*object, json, "Failed to parse int: " + std::string(row.digits));
            continue;
        }
        read(*object, json);
        EXPECT_EQ(row.key == "number"s  ? object->number
                  : row.key == "ulong"s ? object->unsignedNumber
                                        : object->wideNumber,
            row.value);
    }
    const auto object = make<Everything>();
    read(*object, "{\"ints\":[5000000000,2147483647],\"wides\":[9223372036854775807]}");
    EXPECT_EQ(object->numbers, (std::vector<int>{705032704, 2147483647}));
    readBadly(*object, "{\"ints\":[1,3000000000]}", "Failed to parse int: 3000000000");
    readBadly(
        *make<Everything>(), "{\"wides\":[9223372036854775808]}", "Failed to parse int: 9223372036854775808");
}

TEST(JsonFromText, NamesTheKeyThatIsNotDeclared)
{
    for (const std::string key : {"other", "", "Flag", "flag ", "fla", "flag\\u0000"})
    {
        SCOPED_TRACE(key);
        const std::string named = key == "flag\\u0000" ? "flag\0"s : key;
        readBadly(*make<Everything>(), "{\"number\":5,\"" + key + "\":1}", "Failed to parse key: " + named);
    }
    // Also in an inner object; but not in a tree, which takes all of them.
    readBadly(*make<Everything>(), "{\"raw\":{\"m\":1}}", "Failed to parse key: m");
    read(*make<Everything>(), "{\"tree\":{\"m\":1}}");
}

TEST(JsonFromText, TreesFailByTheRulesOfTrees)
{
    readBadly(*make<Everything>(), "{\"tree\":{\"\":1}}", "Failed to parse int: 1");
    readBadly(*make<Everything>(), "{\"tree\":{\"a\":99999999999999999999}}",
        "Failed to parse int: 99999999999999999999");
    readBadly(*make<Everything>(), "{\"tree\":{\"a\":1.5}}", "Unexpected parser state");
    readBadly(*make<Everything>(), "{\"tree\":[{}]}", "Failed to begin parse array");
    const auto object = make<Everything>();
    read(*object, "{\"tree\":{\"a\":{\"b\":{}},\"a\":[{},{\"c\":[[]]}]},\"number\":1}");
    EXPECT_EQ(printed(object->tree.get()), "{\"a\":[{},{\"c\":[[]]}]}");
    EXPECT_EQ(object->number, 1);
}

TEST(JsonFromText, RefusesWhatIsNoObject)
{
    readBadly(*make<Everything>(), "[]", "Failed to begin parse array");
    readBadly(*make<Everything>(), "[{}]", "Failed to begin parse array");
    VontalException record;
    EXPECT_FALSE(make<Everything>()->fromJson("5", record));
    expectFailures(record, {scanned, restored});
    VontalException second;
    EXPECT_FALSE(make<Everything>()->fromJson("{} {}", second));
    expectFailures(second, {scanned, restored});
}

// ---------------------------------------------------------------------------------------------------
// Factories, providers, holders

TEST(JsonFromText, FailsWhereAFactoryRefuses)
{
    const auto prepare = [](const std::function<void(jsontest::InnerFactory &)> & change)
    {
        auto object = make<Everything>();
        change(*object->factory);
        return object;
    };
    for (const std::string & json : {"{\"raw\":{}}"s, "{\"referenced\":{}}"s, "{\"objects\":[{}]}"s})
    {
        SCOPED_TRACE(json);
        readBadly(
            *prepare([](auto & factory) { factory.isRefusing = true; }), json, "Failed to create new object");
        readBadly(*prepare([](auto & factory) { factory.isEmptyHanded = true; }), json,
            "Failed to create new object");
        // An object that is being parsed already is let go.
        const auto object = prepare([](auto & factory) { factory.isBusy = true; });
        readBadly(*object, json, "Failed to create new object");
        EXPECT_EQ(object->factory->made.size(), 1U);
        EXPECT_EQ(object->raw, nullptr);
        EXPECT_EQ(object->referenced.get(), nullptr);
        EXPECT_TRUE(object->objects.empty());
    }
}

TEST(JsonFromText, LetsTheOldObjectGoBeforeTheFactoryIsAsked)
{
    const auto object = make<Everything>();
    read(*object, "{\"raw\":{\"n\":1},\"referenced\":{\"n\":2}}");
    object->factory->isRefusing = true;
    readBadly(*object, "{\"raw\":{}}", "Failed to create new object");
    EXPECT_EQ(object->raw, nullptr);
    EXPECT_FALSE(object->jsonEndParse());
    readBadly(*object, "{\"referenced\":{}}", "Failed to create new object");
    EXPECT_EQ(object->referenced.get(), nullptr);
}

/// A class whose members of other classes have nobody to make them.
class Orphan : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        jsonFieldAdd("raw", &raw, nullptr);
        jsonFieldAdd("referenced", &referenced, nullptr);
        jsonFieldAdd("objects", &objects, nullptr);
        jsonFieldAdd("provider", std::shared_ptr<qvjson::JSONSerializableArrayProviderInterface>());
        jsonFieldAdd("holder", std::shared_ptr<qvjson::JSONRefObjInterface>());
    }

    JSONSerializable * raw = nullptr;
    BoundReference referenced;
    std::vector<BoundReference> objects;
};

TEST(JsonFromText, FailsWhereThereIsNobodyToMakeTheObject)
{
    for (const char * const json :
        {"{\"raw\":{}}", "{\"referenced\":{}}", "{\"objects\":[{}]}", "{\"provider\":{}}", "{\"holder\":{}}"})
    {
        SCOPED_TRACE(json);
        readBadly(*make<Orphan>(), json, "Failed to create new object");
    }
    read(*make<Orphan>(), "{\"raw\":null,\"referenced\":null,\"objects\":[]}");
    readBadly(*make<Orphan>(), "{\"provider\":[]}", "Failed to begin parse array");
}

TEST(JsonFromText, FailsWhereAProviderOrHolderRefuses)
{
    const auto object = make<Everything>();
    object->provider->isRefusing = true;
    readBadly(*object, "{\"provider\":[{}]}", "Failed to create new object");
    const auto other = make<Everything>();
    other->holder->isRefusing = true;
    readBadly(*other, "{\"holder\":{}}", "Failed to create new object");
}

TEST(JsonFromText, InnerObjectsDeclareTheirFieldsWhenTheirParseBegins)
{
    const auto object = make<Everything>();
    read(*object, "{\"raw\":{\"n\":1}}");
    EXPECT_TRUE(object->factory->made[0]->isDeclared);
    EXPECT_EQ(numberOf(object->raw), 1);
}

TEST(JsonFromText, HoldsItsObjectsByOneReference)
{
    std::vector<qvbase::Reference<Inner>> made;
    {
        const auto object = make<Everything>();
        read(*object, "{\"raw\":{\"n\":1},\"referenced\":{\"n\":2},\"objects\":[{\"n\":3}]}");
        made = object->factory->made;
    }
    // They are alive and whole, and die with the last reference: the leak check sees to the other half.
    ASSERT_EQ(made.size(), 3U);
    EXPECT_EQ(made[0]->number, 1);
    EXPECT_EQ(made[2]->number, 3);
}

// ---------------------------------------------------------------------------------------------------
// The end of a parse

TEST(JsonFromText, CallsOnParseEndOnceForTheOutermostObjectOnly)
{
    const auto object = make<Everything>();
    read(*object, everything);
    EXPECT_EQ(object->ends, 1);
    for (const auto & inner : object->factory->made)
        EXPECT_EQ(inner->ends, 0);
    for (const auto & inner : object->provider->elements)
        EXPECT_EQ(inner->ends, 0);
    EXPECT_EQ(object->holder->object->ends, 0);
}

TEST(JsonFromText, FailsWhereOnParseEndRefuses)
{
    const auto object = make<Everything>();
    object->endsWell = false;
    VontalException record;
    EXPECT_FALSE(object->fromJson("{\"number\":5}", record));
    expectFailures(record, {"Failed to finalized parsed JSON object"});
    EXPECT_EQ(object->number, 5);
    // It is no parse that goes on.
    EXPECT_FALSE(object->jsonEndParse());
    object->endsWell = true;
    read(*object, "{\"number\":6}");
}

TEST(JsonFromText, DoesNotCallOnParseEndOfAFailedParse)
{
    const auto object = make<Everything>();
    readBadly(*object, "{\"number\":5,\"flag\":1}", "Failed to parse int: 1");
    EXPECT_EQ(object->ends, 0);
    // Nothing is undone.
    EXPECT_EQ(object->number, 5);
}

TEST(JsonFromText, StaysInTheParseThatFailedUntilItIsEnded)
{
    const auto object = make<Everything>();
    readBadly(*object, "{\"number\":5,\"flag\":1}", "Failed to parse int: 1");
    readBadly(*object, "{}", "Failed to create new object");
    EXPECT_FALSE(object->jsonBeginParse());
    // The field is still open.
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_EQ(object->ends, 0);
    read(*object, "{\"flag\":true}");
    EXPECT_TRUE(object->flag);

    const auto other = make<Everything>();
    readBadly(*other, "{\"unknown\":1}", "Failed to parse key: unknown");
    // No field is open here.
    EXPECT_TRUE(other->jsonEndParse());
    EXPECT_EQ(other->ends, 1);
    read(*other, "{}");
}

TEST(JsonFromText, KeepsTakingTruncatedTextAsGood)
{
    const auto object = make<Everything>();
    object->number = 1;
    read(*object, "{\"flag\":true,\"ints\":[1,2],\"number\":5");
    EXPECT_TRUE(object->flag);
    EXPECT_EQ(object->numbers, (std::vector<int>{1, 2}));
    // It was never delivered.
    EXPECT_EQ(object->number, 1);
    EXPECT_EQ(object->ends, 1);
    readBadly(*object, "{}", "Failed to create new object");
    EXPECT_FALSE(object->jsonEndParse());
    read(*object, "{\"number\":6}");
    EXPECT_EQ(object->number, 6);
}

TEST(JsonFromText, TruncationIsGoodAtEveryByte)
{
    // From here on a member is open at times that would take a further object as its own.
    const std::size_t objects = everything.find("\"tree\"");
    for (std::size_t size = 0; size <= everything.size(); ++size)
    {
        SCOPED_TRACE(size);
        const auto object = make<Everything>();
        read(*object, everything.substr(0, size));
        EXPECT_EQ(object->ends, 1);
        // Only the whole text, and nothing, end the parse by themselves.
        if (size == 0 || size == everything.size())
            read(*object, "{}");
        else if (size < objects)
            readBadly(*object, "{}", "Failed to create new object");
    }
}

TEST(JsonFromText, KeepsGivingFurtherTextToTheMemberThatTheLastOneLeftOpen)
{
    const auto object = make<Everything>();
    read(*object, "{\"raw\":");
    read(*object, "{\"n\":5}");
    ASSERT_NE(object->raw, nullptr);
    EXPECT_EQ(numberOf(object->raw), 5);
    readBadly(*object, "{}", "Failed to create new object");
    EXPECT_TRUE(object->jsonEndParse());
    EXPECT_EQ(object->ends, 3);
}

TEST(JsonFromText, KeepsAnObjectUnusableWhoseTreeWasCutShort)
{
    const auto object = make<Everything>();
    read(*object, "{\"tree\":{\"a\":1,");
    EXPECT_EQ(object->tree.get(), nullptr);
    // The parser of the tree is left over, and goes with the object.
    EXPECT_FALSE(object->jsonEndParse());
    readBadly(*object, "{\"number\":5}", "Failed to parse key: number");
    EXPECT_FALSE(object->jsonEndParse());
    readBadly(*object, "{}", "Failed to finalize object");
}

} // namespace
