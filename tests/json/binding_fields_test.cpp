#include "VontalBase/json/JSONSerializable.h"

#include "json/bindingsupport.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// The operations of a bound class one by one, and its fields.

namespace
{

using jsontest::Everything;
using jsontest::make;
using jsontest::MortalField;
using jsontest::printed;
using jsontest::read;
using jsontest::readBadly;
using jsontest::text;
using qvjson::JSONSerializable;

using namespace std::string_literals;

// ---------------------------------------------------------------------------------------------------
// The operations one by one

TEST(JsonBoundAcceptor, TakesNothingWhileParsingIsOff)
{
    const auto object = make<Everything>();
    object->jsonFieldsDeclare();
    EXPECT_FALSE(object->parseKey("flag"));
    EXPECT_FALSE(object->parseInt("1", 1));
    EXPECT_FALSE(object->parseString("x", 1));
    EXPECT_FALSE(object->parseBool(true));
    EXPECT_FALSE(object->parseNull());
    EXPECT_FALSE(object->parserBeginArray());
    EXPECT_FALSE(object->parserEndArray());
    EXPECT_FALSE(object->parserEndObject());
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_TRUE(object->parserEndChildObject(nullptr));
    EXPECT_EQ(object->parserBeginObject(), static_cast<qvjson::JSONParserAcceptor *>(object.get()));
    EXPECT_EQ(object->ends, 0);
}

TEST(JsonBoundAcceptor, TakesOnlyAKeyOrTheEndBehindTheBeginning)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_FALSE(object->jsonBeginParse());
    EXPECT_FALSE(object->parseInt("1", 1));
    EXPECT_FALSE(object->parseString("x", 1));
    EXPECT_FALSE(object->parseBool(true));
    EXPECT_FALSE(object->parseNull());
    EXPECT_FALSE(object->parserBeginArray());
    EXPECT_FALSE(object->parserEndArray());
    EXPECT_FALSE(object->parserEndChildObject(nullptr));
    EXPECT_EQ(object->parserBeginObject(), nullptr);
    EXPECT_FALSE(object->parseKey("unknown"));
    EXPECT_TRUE(object->parserEndObject());
    // That has ended the parse, without a call of onParseEnd.
    EXPECT_FALSE(object->parserEndObject());
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_EQ(object->ends, 0);
}

TEST(JsonBoundAcceptor, AValueClosesItsField)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("number"));
    EXPECT_FALSE(object->parseKey("flag"));
    EXPECT_FALSE(object->parseBool(true));
    EXPECT_FALSE(object->parseInt("x", 1));
    EXPECT_TRUE(object->parseInt("5", 1));
    EXPECT_FALSE(object->parseInt("6", 1));
    EXPECT_EQ(object->number, 5);
    EXPECT_TRUE(object->parseKey("flag"));
    EXPECT_TRUE(object->parseBool(true));
    EXPECT_TRUE(object->parseKey("string"));
    EXPECT_TRUE(object->parseString("ab\0c", 4));
    EXPECT_EQ(object->string, "ab\0c"s);
    EXPECT_TRUE(object->jsonEndParse());
    EXPECT_EQ(object->ends, 1);
}

TEST(JsonBoundAcceptor, KeepsTheEndOfAnArrayClosingAnyField)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("number"));
    EXPECT_TRUE(object->parserEndArray());
    EXPECT_TRUE(object->parseKey("ints"));
    EXPECT_TRUE(object->parseInt("1", 1));
    EXPECT_TRUE(object->parserEndArray());
    EXPECT_TRUE(object->parseKey("flag"));
    EXPECT_EQ(object->numbers, (std::vector<int>{1}));
}

TEST(JsonBoundAcceptor, TheEndOfAChildClosesItsFieldButForLists)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("raw"));
    EXPECT_TRUE(object->parserEndChildObject(nullptr));
    EXPECT_TRUE(object->parseKey("number"));
    EXPECT_TRUE(object->parserEndChildObject(nullptr));
    EXPECT_TRUE(object->parseKey("objects"));
    EXPECT_TRUE(object->parserEndChildObject(nullptr));
    EXPECT_FALSE(object->parseKey("flag"));
    EXPECT_TRUE(object->parserEndArray());
    EXPECT_TRUE(object->parseKey("provider"));
    EXPECT_TRUE(object->parserEndChildObject(nullptr));
    EXPECT_FALSE(object->parseKey("flag"));
    EXPECT_TRUE(object->parserEndArray());
    EXPECT_TRUE(object->parseKey("tree"));
    // There is no parser of a tree, and so no root.
    EXPECT_FALSE(object->parserEndChildObject(nullptr));
}

TEST(JsonBoundAcceptor, TakesNothingWhileATreeIsRead)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("tree"));
    qvjson::JSONParserAcceptor * const child = object->parserBeginObject();
    ASSERT_NE(child, nullptr);
    EXPECT_NE(child, static_cast<qvjson::JSONParserAcceptor *>(object.get()));
    EXPECT_FALSE(object->parseKey("flag"));
    EXPECT_FALSE(object->parseInt("1", 1));
    EXPECT_FALSE(object->parseNull());
    EXPECT_FALSE(object->parserBeginArray());
    EXPECT_FALSE(object->parserEndArray());
    EXPECT_FALSE(object->parserEndObject());
    EXPECT_EQ(object->parserBeginObject(), nullptr);
    EXPECT_TRUE(child->parseKey("a"));
    EXPECT_TRUE(child->parseBool(true));
    EXPECT_TRUE(child->parserEndObject());
    EXPECT_TRUE(object->parserEndChildObject(child));
    EXPECT_EQ(printed(object->tree.get()), "{\"a\":true}");
    EXPECT_TRUE(object->parseKey("flag"));
    EXPECT_TRUE(object->parseBool(true));
    EXPECT_TRUE(object->jsonEndParse());
}

TEST(JsonBoundAcceptor, KeepsTheParseEndedByAnObjectThatEndsWithinAField)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("number"));
    EXPECT_FALSE(object->parserEndObject());
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("flag"));
}

TEST(JsonBoundAcceptor, BeginningClearsTheFieldThatWasOpen)
{
    const auto object = make<Everything>();
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("ints"));
    EXPECT_TRUE(object->parserBeginArray());
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_TRUE(object->parseKey("ints"));
    EXPECT_TRUE(object->parserBeginArray());
    EXPECT_TRUE(object->parserEndArray());
    EXPECT_TRUE(object->jsonEndParse());
}

TEST(JsonBoundAcceptor, EndParseGivesTheAnswerOfOnParseEnd)
{
    const auto object = make<Everything>();
    object->endsWell = false;
    EXPECT_TRUE(object->jsonBeginParse());
    EXPECT_FALSE(object->jsonEndParse());
    EXPECT_EQ(object->ends, 1);
    // The parse is over all the same.
    EXPECT_TRUE(object->jsonBeginParse());
}

// ---------------------------------------------------------------------------------------------------
// Fields

TEST(JsonFields, TypesHaveTheirNumbers)
{
    EXPECT_EQ(JSONSerializable::FieldBool, 0U);
    EXPECT_EQ(JSONSerializable::FieldInt, 1U);
    EXPECT_EQ(JSONSerializable::FieldULong, 2U);
    EXPECT_EQ(JSONSerializable::FieldInt64, 3U);
    EXPECT_EQ(JSONSerializable::FieldString, 4U);
    EXPECT_EQ(JSONSerializable::FieldStringSet, 5U);
    EXPECT_EQ(JSONSerializable::FieldStringVector, 6U);
    EXPECT_EQ(JSONSerializable::FieldIntVector, 7U);
    EXPECT_EQ(JSONSerializable::FieldInt64Vector, 8U);
    EXPECT_EQ(JSONSerializable::FieldTree, 9U);
    EXPECT_EQ(JSONSerializable::FieldRawObject, 10U);
    EXPECT_EQ(JSONSerializable::FieldReferencedObject, 11U);
    EXPECT_EQ(JSONSerializable::FieldObjectVector, 12U);
    EXPECT_EQ(JSONSerializable::FieldArrayProvider, 13U);
    EXPECT_EQ(JSONSerializable::FieldRefObj, 14U);
    static_assert(std::has_virtual_destructor_v<JSONSerializable::JSONField>);
    static_assert(sizeof(JSONSerializable::JSONField::type) == 4);
}

/// A class that declares fields which it is given, every time anew.
class Custom : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        for (JSONField * const field : fields)
            jsonFieldAdd(field);
        fields.clear();
    }

    std::vector<JSONField *> fields;
};

TEST(JsonFields, TakesReadyFieldsAndDestroysThem)
{
    int deaths = 0;
    int number = 0;
    Vontal::u8string string;
    {
        const auto object = make<Custom>();
        object->fields = {new MortalField(JSONSerializable::FieldInt, "a", &number, deaths),
            new MortalField(JSONSerializable::FieldString, "b", &string, deaths)};
        read(*object, "{\"b\":\"x\",\"a\":5}");
        EXPECT_EQ(number, 5);
        EXPECT_EQ(string, "x");
        Vontal::u8string json;
        EXPECT_TRUE(object->toJson(json));
        EXPECT_EQ(json, "{\"a\":5,\"b\":\"x\"}");
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 2);
}

TEST(JsonFields, AFieldOfNoKnownTypeIsRefusedEverywhere)
{
    for (const char * const value : {"true", "1", "\"x\"", "null", "[]", "{}"})
    {
        SCOPED_TRACE(value);
        int deaths = 0;
        const auto object = make<Custom>();
        object->fields = {new MortalField(15, "odd", nullptr, deaths)};
        const std::string json = "{\"odd\":" + std::string(value) + "}";
        VontalException record;
        EXPECT_FALSE(object->fromJson(text(json), record));
        const jsontest::ItemReference tree = jsontest::parsed(json);
        EXPECT_FALSE(object->fromJson(static_cast<qvjson::Object *>(*tree)));
        Vontal::u8string printed = "before";
        EXPECT_FALSE(object->toJson(printed));
        EXPECT_EQ(printed, "before");
    }
}

TEST(JsonFields, TheFirstOfFieldsWithOneKeyIsSet)
{
    int deaths = 0;
    int first = 0;
    int second = 0;
    int between = 0;
    const auto object = make<Custom>();
    object->fields = {new MortalField(JSONSerializable::FieldInt, "a", &first, deaths),
        new MortalField(JSONSerializable::FieldInt, "between", &between, deaths),
        new MortalField(JSONSerializable::FieldInt, "a", &second, deaths)};
    read(*object, "{\"a\":1,\"between\":2,\"a\":3}");
    EXPECT_EQ(first, 3);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(between, 2);
    read(*object, "{\"between\":4,\"a\":5,\"a\":6}");
    EXPECT_EQ(first, 6);
    EXPECT_EQ(second, 0);
    // Both print.
    Vontal::u8string json;
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"a\":6,\"between\":4,\"a\":0}");
}

TEST(JsonFields, AFieldAddedLaterWithAKeyThatIsThereIsNotSet)
{
    int deaths = 0;
    int first = 0;
    int second = 0;
    int other = 0;
    const auto object = make<Custom>();
    object->fields = {new MortalField(JSONSerializable::FieldInt, "a", &first, deaths),
        new MortalField(JSONSerializable::FieldInt, "b", &other, deaths)};
    read(*object, "{\"a\":1,\"b\":2}");
    object->fields = {new MortalField(JSONSerializable::FieldInt, "a", &second, deaths)};
    read(*object, "{\"b\":3,\"a\":4}");
    EXPECT_EQ(first, 4);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(other, 3);
}

/// Declares its member on every call.
class Unguarded : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        jsonFieldAdd("a", &a);
    }

    int a = 1;
};

TEST(JsonFields, KeepsAppendingWhereTheClassDoesNotGuard)
{
    const auto object = make<Unguarded>();
    Vontal::u8string json;
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"a\":1}");
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"a\":1,\"a\":1}");
    read(*object, "{\"a\":2}");
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"a\":2,\"a\":2,\"a\":2,\"a\":2}");
}

/// Binds the native `unsigned long`, whatever its width.
class NativeWidth : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (!isDeclared)
            jsonFieldAdd("value", &value);
        isDeclared = true;
    }

    unsigned long value = ~0UL;
    bool isDeclared = false;
};

TEST(JsonFields, KeepsUnsignedLongAt32BitsWhateverItsNativeWidth)
{
    const auto object = make<NativeWidth>();
    Vontal::u8string json;
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"value\":4294967295}");
    read(*object, "{\"value\":4294967295}");
    EXPECT_EQ(object->value, 4294967295UL);
    read(*object, "{\"value\":7}");
    EXPECT_EQ(object->value, 7UL);
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"value\":7}");
    // What is above 32 bits, where there is room for it, is not printed, and goes with the next number.
    object->value = static_cast<unsigned long>(0x500000009U);
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json, "{\"value\":9}");
    read(*object, "{\"value\":10}");
    EXPECT_EQ(object->value, 10UL);
    readBadly(*object, "{\"value\":4294967296}", "Failed to parse int: 4294967296");
    EXPECT_EQ(object->value, 10UL);
}

/// A class with one number under a key.
class OneKey : public JSONSerializable
{
public:
    explicit OneKey(std::string itsKey) : key(std::move(itsKey))
    {
    }

    void jsonFieldsDeclare() override
    {
        if (!std::exchange(isDeclared, true))
            jsonFieldAdd(text(key), &number);
    }

    std::string key;
    int number = 0;
    bool isDeclared = false;
};

TEST(JsonFields, KeysDifferInEveryByteAndInTheirLength)
{
    // The longer keys are compared by words, of which the last two overlap.
    for (std::size_t size = 0; size <= 25; ++size)
    {
        SCOPED_TRACE(size);
        std::string key;
        for (std::size_t i = 0; i < size; ++i)
            key += static_cast<char>('a' + i);
        const auto expect = [&key](const std::string & wanted, bool isFound)
        {
            const qvbase::Reference<OneKey> object = new qvbase::ReferencedImpl<OneKey>(key);
            VontalException record;
            EXPECT_EQ(object->fromJson(text("{\"" + wanted + "\":1}"), record), isFound) << wanted;
            EXPECT_EQ(object->number, isFound ? 1 : 0);
        };
        expect(key, true);
        expect(key + "x", false);
        expect(key + "\\u0000", false);
        for (std::size_t place = 0; place < size; ++place)
        {
            std::string other = key;
            other[place] = 'A';
            expect(other, false);
            expect(key.substr(0, place), false);
            expect(key.substr(place + 1), false);
        }
    }
}

TEST(JsonFields, AFieldKeepsItsFactoryProviderAndHolder)
{
    std::weak_ptr<jsontest::InnerList> provider;
    std::weak_ptr<jsontest::InnerHolder> holder;
    {
        const auto object = make<Everything>();
        object->jsonFieldsDeclare();
        provider = object->provider;
        holder = object->holder;
        const auto factory = object->factory;
        object->provider = nullptr;
        object->holder = nullptr;
        object->factory = nullptr;
        read(*object, "{\"provider\":[{\"n\":1}],\"holder\":{\"n\":2},\"referenced\":{\"n\":3}}");
        ASSERT_FALSE(provider.expired());
        ASSERT_FALSE(holder.expired());
        EXPECT_EQ(provider.lock()->elements[0]->number, 1);
        EXPECT_EQ(holder.lock()->object->number, 2);
        EXPECT_EQ(factory->made[0]->number, 3);
    }
    EXPECT_TRUE(provider.expired());
    EXPECT_TRUE(holder.expired());
}

} // namespace
