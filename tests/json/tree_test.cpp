#include "VontalBase/json/Item.h"

#include "json/CountingItem.h"
#include "json/jsonsupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>

namespace
{

using jsontest::copyOf;
using jsontest::CountingItem;
using jsontest::ItemReference;
using jsontest::make;
using jsontest::makeBool;
using jsontest::makeInt;
using jsontest::makeString;
using jsontest::movedFrom;
using qvjson::Array;
using qvjson::Item;
using qvjson::Object;
using qvjson::Type;
using qvjson::ValueBool;
using qvjson::ValueInt;
using qvjson::ValueNull;
using qvjson::ValueString;

using namespace std::string_literals;

// ---------------------------------------------------------------------------------------------------
// Types

TEST(JsonItem, TypesHaveTheirNumbersIn32Bits)
{
    static_assert(sizeof(Type) == 4);
    EXPECT_EQ(qvjson::TypeNull, 0U);
    EXPECT_EQ(qvjson::TypeObject, 1U);
    EXPECT_EQ(qvjson::TypeArray, 2U);
    EXPECT_EQ(qvjson::TypeString, 3U);
    EXPECT_EQ(qvjson::TypeInt, 4U);
    EXPECT_EQ(qvjson::TypeReserved, 5U);
    EXPECT_EQ(qvjson::TypeBool, 6U);
}

template <class Node>
constexpr bool isMadeThroughTheWrapperOnly =
    std::is_abstract_v<Node> && !std::is_default_constructible_v<Node> && std::is_base_of_v<Item, Node> &&
    std::is_default_constructible_v<qvbase::ReferencedImpl<Node>>;

TEST(JsonItem, ConcreteNodesAreMadeThroughTheWrapperOnly)
{
    static_assert(std::is_abstract_v<Item>);
    static_assert(std::is_base_of_v<qvbase::ReferencedObject, Item>);
    static_assert(isMadeThroughTheWrapperOnly<Object>);
    static_assert(isMadeThroughTheWrapperOnly<Array>);
    static_assert(isMadeThroughTheWrapperOnly<ValueString>);
    static_assert(isMadeThroughTheWrapperOnly<ValueInt>);
    static_assert(isMadeThroughTheWrapperOnly<ValueBool>);
    static_assert(isMadeThroughTheWrapperOnly<ValueNull>);
}

/// Everything that an item answers about itself.
struct Answers
{
    Type type;
    bool isValue;
    bool givesBool;
    bool givesInt;
    bool givesString;
};

/// Asks every getter and conversion, and checks that a refused argument stays as it was.
void expectAnswers(Item & item, const Answers & expected)
{
    EXPECT_EQ(item.getType(), expected.type);
    EXPECT_EQ(item.isValue(), expected.isValue);
    for (const bool before : {false, true})
    {
        bool value = before;
        EXPECT_EQ(item.getBool(value), expected.givesBool);
        if (!expected.givesBool)
        {
            EXPECT_EQ(value, before);
        }
    }
    int number = 77;
    EXPECT_EQ(item.getInt(number), expected.givesInt);
    std::int64_t wideNumber = 78;
    EXPECT_EQ(item.getInt64(wideNumber), expected.givesInt);
    if (!expected.givesInt)
    {
        EXPECT_EQ(number, 77);
        EXPECT_EQ(wideNumber, 78);
    }
    Vontal::u8string string = "before";
    EXPECT_EQ(item.getString(string), expected.givesString);
    if (!expected.givesString)
    {
        EXPECT_EQ(string, "before");
    }

    // Behind one and the same item, whatever the type of the pointer.
    const auto isSame = [&item](auto * converted, bool should)
    {
        EXPECT_EQ(static_cast<Item *>(converted), should ? &item : nullptr);
    };
    isSame(static_cast<Array *>(item), expected.type == qvjson::TypeArray);
    isSame(static_cast<Object *>(item), expected.type == qvjson::TypeObject);
    isSame(static_cast<ValueBool *>(item), expected.type == qvjson::TypeBool);
    isSame(static_cast<ValueInt *>(item), expected.type == qvjson::TypeInt);
    isSame(static_cast<ValueNull *>(item), expected.type == qvjson::TypeNull);
    isSame(static_cast<ValueString *>(item), expected.type == qvjson::TypeString);
}

TEST(JsonItem, AnswersByItsTypeAndConvertsNothing)
{
    expectAnswers(*make<Object>(), {qvjson::TypeObject, false, false, false, false});
    expectAnswers(*make<Array>(), {qvjson::TypeArray, false, false, false, false});
    expectAnswers(*makeString("1"), {qvjson::TypeString, true, false, false, true});
    expectAnswers(*makeString("true"), {qvjson::TypeString, true, false, false, true});
    expectAnswers(*makeInt("1"), {qvjson::TypeInt, true, false, true, false});
    expectAnswers(*makeBool(true), {qvjson::TypeBool, true, true, false, false});
}

TEST(JsonItem, KeepsNullFromBeingAValue)
{
    expectAnswers(*make<ValueNull>(), {qvjson::TypeNull, false, false, false, false});
}

TEST(JsonItem, ParsedNodesAnswerLikeBuiltOnes)
{
    const ItemReference root = jsontest::parsed("[{},[],\"1\",1,true,null]");
    Array & array = *static_cast<Array *>(*root);
    const Answers answers[] = {
        {qvjson::TypeObject, false, false, false, false},
        {qvjson::TypeArray, false, false, false, false},
        {qvjson::TypeString, true, false, false, true},
        {qvjson::TypeInt, true, false, true, false},
        {qvjson::TypeBool, true, true, false, false},
        {qvjson::TypeNull, false, false, false, false},
    };
    for (unsigned int i = 0; i < 6; ++i)
    {
        SCOPED_TRACE(i);
        ItemReference item;
        ASSERT_TRUE(array.getItem(i, item));
        expectAnswers(*item, answers[i]);
    }
}

TEST(JsonItem, IsAValueFromThreeToSix)
{
    for (std::uint32_t number = 0; number <= 8; ++number)
    {
        SCOPED_TRACE(number);
        CountingItem item(static_cast<Type>(number));
        EXPECT_EQ(item.getType(), static_cast<Type>(number));
        EXPECT_EQ(item.isValue(), number >= 3 && number <= 6);
    }
    CountingItem reserved;
    expectAnswers(reserved, {qvjson::TypeReserved, true, false, false, false});
}

TEST(JsonItem, TypesBeyondTheKnownOnesAreTakenForNoneOfThem)
{
    for (const std::uint32_t number : {7U, 0xFFU, 0x100U, 0x102U, 0xFFFEU, 0xFFFFU, 0x10000U, 0x10001U,
             0x10002U, 0x10006U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU})
    {
        SCOPED_TRACE(number);
        CountingItem item(static_cast<Type>(number));
        EXPECT_GE(item.getType(), 7U);
        expectAnswers(item, {item.getType(), false, false, false, false});
        EXPECT_FALSE(make<ValueNull>()->equals(&item));
        EXPECT_FALSE(make<Array>()->equals(&item));
        EXPECT_FALSE(make<Object>()->equals(&item));
    }
}

/// A node of the library that counts its references, and is not destroyed by the last release.
template <class Node>
class Counted : public Node
{
public:
    void addRef() override
    {
        ++count;
    }
    void release() override
    {
        --count;
    }

    int count = 3;
};

template <class Node>
void expectNoCountByConversions()
{
    Counted<Node> node;
    EXPECT_EQ(static_cast<Node *>(static_cast<Item &>(node)), &node);
    expectAnswers(node, {node.getType(), node.isValue(), node.getType() == qvjson::TypeBool,
                            node.getType() == qvjson::TypeInt, node.getType() == qvjson::TypeString});
    EXPECT_EQ(node.count, 3);
}

TEST(JsonItem, ConversionsOfNoClassChangeACount)
{
    expectNoCountByConversions<Array>();
    expectNoCountByConversions<Object>();
    expectNoCountByConversions<ValueBool>();
    expectNoCountByConversions<ValueInt>();
    expectNoCountByConversions<ValueNull>();
    expectNoCountByConversions<ValueString>();
}

TEST(JsonItem, ConversionsChangeNoCount)
{
    CountingItem item;
    item.count = 3;
    EXPECT_EQ(static_cast<Array *>(item), nullptr);
    EXPECT_EQ(static_cast<Object *>(item), nullptr);
    EXPECT_EQ(static_cast<ValueBool *>(item), nullptr);
    EXPECT_EQ(static_cast<ValueInt *>(item), nullptr);
    EXPECT_EQ(static_cast<ValueNull *>(item), nullptr);
    EXPECT_EQ(static_cast<ValueString *>(item), nullptr);
    EXPECT_EQ(item.count, 3);
}

// ---------------------------------------------------------------------------------------------------
// Leaves

TEST(JsonValueInt, StartsAsZero)
{
    const auto value = make<ValueInt>();
    EXPECT_EQ(value->getInt64(), 0);
    EXPECT_EQ(value->getInt(), 0);
    EXPECT_EQ(value->getULong(), 0U);
}

TEST(JsonValueInt, GivesTheLow32BitsUnchecked)
{
    struct Row
    {
        const char * digits;
        std::int64_t value;
        int low;
        std::uint32_t unsignedLow;
    };
    const Row rows[] = {
        {"0", 0, 0, 0},
        {"1", 1, 1, 1},
        {"-1", -1, -1, 4294967295},
        {"2147483647", 2147483647, 2147483647, 2147483647},
        {"2147483648", 2147483648, -2147483647 - 1, 2147483648},
        {"-2147483648", -2147483648LL, -2147483647 - 1, 2147483648},
        {"-2147483649", -2147483649LL, 2147483647, 2147483647},
        {"4294967295", 4294967295, -1, 4294967295},
        {"4294967296", 4294967296, 0, 0},
        {"5000000000", 5000000000, 705032704, 705032704},
        {"-5000000000", -5000000000, -705032704, 3589934592},
        {"9223372036854775807", 9223372036854775807, -1, 4294967295},
        {"-9223372036854775807", -9223372036854775807, 1, 1},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.digits);
        const auto value = makeInt(row.digits);
        EXPECT_EQ(value->getInt64(), row.value);
        EXPECT_EQ(value->getInt(), row.low);
        EXPECT_EQ(value->getULong(), row.unsignedLow);
        int low = 3;
        EXPECT_TRUE(static_cast<Item &>(*value).getInt(low));
        EXPECT_EQ(low, row.low);
        std::int64_t whole = 3;
        EXPECT_TRUE(static_cast<Item &>(*value).getInt64(whole));
        EXPECT_EQ(whole, row.value);
    }
}

TEST(JsonValueInt, KeepsWhatAFailedConversionReturned)
{
    struct Row
    {
        std::string text;
        bool isGood;
        std::int64_t value;
    };
    const Row rows[] = {
        {"12a", false, 12},
        {"", false, 0},
        {"-", false, 0},
        {"-5-", false, -5},
        {"--5", true, 5},
        {"+5", false, 0},
        {" 5", false, 0},
        {"1.5", false, 1},
        {"12\0"
         "3"s,
            false, 12},
        {"9223372036854775808", false, 922337203685477580},
        // Kept: some that do not fit are not noticed.
        {"45000000000000000000", true, 8106511852580896768},
        {"27670116110564327423", true, 9223372036854775807},
        {"-9223372036854775808", false, -922337203685477580},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.text);
        const auto value = makeInt("7");
        EXPECT_EQ(value->parseInt(row.text.data(), static_cast<unsigned int>(row.text.size())), row.isGood);
        EXPECT_EQ(value->getInt64(), row.value);
    }
    const auto value = make<ValueInt>();
    EXPECT_TRUE(value->parseInt("123456", 3));
    EXPECT_EQ(value->getInt64(), 123);
}

TEST(JsonValueBool, StartsAsFalseAndIsSet)
{
    const auto value = make<ValueBool>();
    EXPECT_FALSE(value->getValue());
    value->set(true);
    EXPECT_TRUE(value->getValue());
    value->set(false);
    EXPECT_FALSE(value->getValue());
}

TEST(JsonValueString, StartsEmpty)
{
    EXPECT_EQ(make<ValueString>()->getValue(), "");
}

TEST(JsonValueString, TakesBytesOfAnyKindAndLength)
{
    for (std::size_t size = 0; size <= 70; ++size)
    {
        SCOPED_TRACE(size);
        std::string bytes;
        for (std::size_t i = 0; i < size; ++i)
            bytes += static_cast<char>(i * 37);
        const auto value = makeString(bytes);
        EXPECT_EQ(value->getValue(), bytes);
        EXPECT_EQ(value->view(), bytes);
        Vontal::u8string read;
        EXPECT_TRUE(value->getString(read));
        EXPECT_EQ(read, bytes);
    }
    const std::string large(100000, '\xE4');
    EXPECT_EQ(makeString(large)->getValue(), large);
    // The length counts, and not a terminator.
    const auto value = make<ValueString>();
    value->set("abc\0def", 6);
    EXPECT_EQ(value->getValue(), "abc\0de"s);
}

TEST(JsonValueString, TakesNoBytesFromNowhere)
{
    const auto value = makeString("text");
    value->set(nullptr, 0);
    EXPECT_EQ(value->getValue(), "");
}

TEST(JsonValueString, IsSetAnew)
{
    const auto value = makeString("a text that is too long to be held within the node");
    value->set("short", 5);
    EXPECT_EQ(value->getValue(), "short");
    const std::string large(5000, 'x');
    value->set(large.data(), 5000);
    EXPECT_EQ(value->getValue(), large);
    value->set("", 0);
    EXPECT_EQ(value->getValue(), "");

    // A node that a parse made as well, whatever became of its first text.
    for (const std::size_t size : {3U, 40U, 6000U})
    {
        const ItemReference root = jsontest::parsed("[\"" + std::string(size, 'y') + "\"]");
        ItemReference item;
        ASSERT_TRUE(static_cast<Array *>(*root)->getItem(0, item));
        ValueString * const node = *item;
        EXPECT_EQ(node->getValue(), std::string(size, 'y'));
        node->set(large.data(), 5000);
        EXPECT_EQ(node->getValue(), large);
        node->set("z", 1);
        EXPECT_EQ(node->getValue(), "z");
    }
}

TEST(JsonValueString, GetValueGivesACopy)
{
    const auto value = makeString("text");
    Vontal::u8string copy = value->getValue();
    copy += "more";
    EXPECT_EQ(value->getValue(), "text");
}

// ---------------------------------------------------------------------------------------------------
// Copies of leaves

TEST(JsonLeaves, AreCopiedAndMovedLikeValues)
{
    for (const std::string & bytes : {"short"s, std::string(200, 'l')})
    {
        const auto source = makeString(bytes);
        const auto copy = copyOf<ValueString>(*source);
        source->set("other", 5);
        EXPECT_EQ(copy->getValue(), bytes);
        const auto moved = movedFrom<ValueString>(*copy);
        EXPECT_EQ(moved->getValue(), bytes);
        *source = *moved;
        EXPECT_EQ(source->getValue(), bytes);
        *copy = static_cast<ValueString &&>(*moved);
        EXPECT_EQ(copy->getValue(), bytes);
    }

    const auto number = makeInt("5000000000");
    const auto numberCopy = copyOf<ValueInt>(*number);
    EXPECT_EQ(numberCopy->getInt64(), 5000000000);
    *numberCopy = *makeInt("1");
    EXPECT_EQ(numberCopy->getInt64(), 1);
    EXPECT_EQ(number->getInt64(), 5000000000);

    const auto flag = makeBool(true);
    const auto flagCopy = copyOf<ValueBool>(*flag);
    EXPECT_TRUE(flagCopy->getValue());
    *flagCopy = *makeBool(false);
    EXPECT_FALSE(flagCopy->getValue());

    const auto nullCopy = copyOf<ValueNull>(*make<ValueNull>());
    EXPECT_EQ(nullCopy->getType(), qvjson::TypeNull);
}

TEST(JsonLeaves, CopiesOfParsedLeavesOutliveTheTree)
{
    ItemReference root = jsontest::parsed("[\"" + std::string(300, 'p') + "\",\"short\",-7]");
    Array & array = *static_cast<Array *>(*root);
    ItemReference item;
    ASSERT_TRUE(array.getItem(0, item));
    const auto large = copyOf<ValueString>(*static_cast<ValueString *>(*item));
    ASSERT_TRUE(array.getItem(1, item));
    const auto small = copyOf<ValueString>(*static_cast<ValueString *>(*item));
    ASSERT_TRUE(array.getItem(2, item));
    const auto number = copyOf<ValueInt>(*static_cast<ValueInt *>(*item));
    item = nullptr;
    root = nullptr;
    EXPECT_EQ(large->getValue(), std::string(300, 'p'));
    EXPECT_EQ(small->getValue(), "short");
    EXPECT_EQ(number->getInt64(), -7);
}

TEST(JsonLeaves, TextsMovedOutOfAParsedTreeOutliveIt)
{
    for (const std::size_t size : {3U, 30U, 300U, 6000U})
    {
        SCOPED_TRACE(size);
        const std::string bytes(size, 'q');
        ItemReference root = jsontest::parsed("[\"" + bytes + "\",\"" + bytes + "\"]");
        ItemReference item;
        ASSERT_TRUE(static_cast<Array *>(*root)->getItem(0, item));
        const auto made = movedFrom<ValueString>(*static_cast<ValueString *>(*item));
        ASSERT_TRUE(static_cast<Array *>(*root)->getItem(1, item));
        const auto assigned = makeString("before");
        static_cast<ValueString &>(*assigned) =
            static_cast<ValueString &&>(*static_cast<ValueString *>(*item));
        item = nullptr;
        root = nullptr;
        EXPECT_EQ(made->getValue(), bytes);
        EXPECT_EQ(assigned->getValue(), bytes);
    }
}

/// The leaf at a place of a parsed array.
template <class Leaf>
qvbase::Reference<Leaf> leafAt(const ItemReference & root, unsigned int index)
{
    ItemReference item;
    EXPECT_TRUE(static_cast<Array *>(*root)->getItem(index, item));
    return static_cast<Leaf *>(*item);
}

/// Copies, moves and assigns a parsed leaf in every direction, and holds what came of it against its text.
template <class Leaf>
void expectParsedLeafIsAValue(const std::string & leaf, const std::string & other)
{
    SCOPED_TRACE(leaf);
    const std::string json = "[" + leaf + "," + leaf + "," + other + "," + other + "," + leaf + "]";
    ItemReference root = jsontest::parsed(json);
    const auto first = leafAt<Leaf>(root, 0);
    const auto fromCopy = leafAt<Leaf>(root, 2);
    const auto fromMove = leafAt<Leaf>(root, 3);
    const auto copy = copyOf<Leaf>(*first);
    const auto moved = movedFrom<Leaf>(*leafAt<Leaf>(root, 1));
    // Nodes that lie elsewhere in the memory of the parse stay where they are.
    static_cast<Leaf &>(*fromCopy) = static_cast<const Leaf &>(*first);
    static_cast<Leaf &>(*fromMove) = static_cast<Leaf &&>(*leafAt<Leaf>(root, 4));
    root = nullptr;
    for (const auto & node : {first, copy, moved, fromCopy, fromMove})
        EXPECT_EQ(jsontest::printed(node.get()), leaf);
    // And one that was not parsed gives what it has to one that was.
    static_cast<Leaf &>(*copy) = *leafAt<Leaf>(jsontest::parsed("[" + other + "]"), 0);
    static_cast<Leaf &>(*first) = *copy;
    EXPECT_EQ(jsontest::printed(first.get()), other);
}

TEST(JsonLeaves, ParsedOnesAreCopiedAndMovedLikeValues)
{
    expectParsedLeafIsAValue<ValueInt>("-7", "8");
    expectParsedLeafIsAValue<ValueBool>("true", "false");
    expectParsedLeafIsAValue<ValueNull>("null", "null");
    const std::string longText(40, 'l');
    expectParsedLeafIsAValue<ValueString>("\"short\"", "\"other\"");
    expectParsedLeafIsAValue<ValueString>('"' + longText + '"', "\"short\"");
    expectParsedLeafIsAValue<ValueString>("\"short\"", '"' + longText + '"');
    expectParsedLeafIsAValue<ValueString>('"' + std::string(6000, 'm') + '"', '"' + longText + '"');
}

// ---------------------------------------------------------------------------------------------------
// Equality

TEST(JsonEquals, ComparesEveryTypeWithEveryOther)
{
    const std::string texts[] = {"null", "true", "false", "0", "1", "-1", "5000000000", "705032704", "\"\"",
        "\"1\"", "\"true\"", "\"null\"", "\"a\\u0000b\"", "\"a\\u0000c\"", "\"a\"", "\"A\"",
        "\"a text of more than twenty bytes\"", "\"a text of more than twenty bytez\"", "[]", "[1]", "[1,2]",
        "[2,1]", "[[1],2]", "[[],[]]", "[[[]]]", "[null]", "[{}]", "{}", "{\"a\":1}", "{\"a\":2}",
        "{\"b\":1}", "{\"a\":1,\"b\":1}", "{\"a\":{}}", "{\"a\":[]}", "{\"a\":null}"};
    for (const std::string & left : texts)
    {
        for (const std::string & right : texts)
        {
            SCOPED_TRACE(left + " and " + right);
            const ItemReference leftRoot = jsontest::parsed("[" + left + "]");
            const ItemReference rightRoot = jsontest::parsed("[" + right + "]");
            EXPECT_EQ(leftRoot->equals(rightRoot), left == right);
            ItemReference leftItem;
            ItemReference rightItem;
            static_cast<Array *>(*leftRoot)->getItem(0, leftItem);
            static_cast<Array *>(*rightRoot)->getItem(0, rightItem);
            EXPECT_EQ(leftItem->equals(rightItem), left == right);
        }
    }
}

TEST(JsonEquals, NothingEqualsANullPointer)
{
    EXPECT_FALSE(make<Object>()->equals(nullptr));
    EXPECT_FALSE(make<Array>()->equals(nullptr));
    EXPECT_FALSE(makeString("")->equals(nullptr));
    EXPECT_FALSE(makeInt("0")->equals(nullptr));
    EXPECT_FALSE(makeBool(false)->equals(nullptr));
    EXPECT_FALSE(make<ValueNull>()->equals(nullptr));
}

TEST(JsonEquals, AnItemEqualsItself)
{
    const ItemReference root = jsontest::parsed("{\"a\":[1,\"x\",null,{\"b\":true}]}");
    EXPECT_TRUE(root->equals(root));
    EXPECT_TRUE(make<ValueNull>()->equals(make<ValueNull>()));
}

TEST(JsonEquals, ComparesAll64Bits)
{
    EXPECT_FALSE(makeInt("5000000000")->equals(makeInt("705032704")));
    EXPECT_FALSE(makeInt("0")->equals(makeInt("4294967296")));
    EXPECT_TRUE(makeInt("-5000000000")->equals(makeInt("-5000000000")));
}

TEST(JsonEquals, ANullElementEqualsOnlyANullElement)
{
    const auto withNull = make<Array>();
    withNull->add(nullptr);
    const auto alsoWithNull = make<Array>();
    alsoWithNull->add(nullptr);
    const auto withValueNull = make<Array>();
    withValueNull->add(make<ValueNull>());
    EXPECT_TRUE(withNull->equals(alsoWithNull));
    EXPECT_FALSE(withNull->equals(withValueNull));
    EXPECT_FALSE(withValueNull->equals(withNull));

    const auto objectWithNull = make<Object>();
    objectWithNull->add("k", nullptr);
    const auto otherWithNull = make<Object>();
    otherWithNull->add("k", nullptr);
    const auto objectWithValueNull = make<Object>();
    objectWithValueNull->add("k", make<ValueNull>());
    EXPECT_TRUE(objectWithNull->equals(otherWithNull));
    EXPECT_FALSE(objectWithNull->equals(objectWithValueNull));
    EXPECT_FALSE(objectWithValueNull->equals(objectWithNull));
    const auto empty = make<Object>();
    EXPECT_FALSE(objectWithNull->equals(empty));
    EXPECT_FALSE(empty->equals(objectWithNull));
}

TEST(JsonEquals, ObjectsAreEqualWhateverTheOrderOfInsertion)
{
    EXPECT_TRUE(
        jsontest::parsed("{\"a\":1,\"b\":2,\"c\":3}")->equals(jsontest::parsed("{\"c\":3,\"a\":1,\"b\":2}")));
    const auto forward = make<Object>();
    const auto backward = make<Object>();
    for (int i = 0; i < 100; ++i)
    {
        forward->add(std::to_string(i), makeInt(std::to_string(i)));
        backward->add(std::to_string(99 - i), makeInt(std::to_string(99 - i)));
    }
    EXPECT_TRUE(forward->equals(backward));
    backward->add("50", makeInt("51"));
    EXPECT_FALSE(forward->equals(backward));
}

TEST(JsonEquals, ComparesObjectsOfDifferentForms)
{
    // One of them was parsed at once, the other one grew by hand.
    std::string json = "{";
    const auto grown = make<Object>();
    for (int i = 0; i < 60; ++i)
    {
        json += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\":" + std::to_string(i);
        grown->add(std::to_string(i), makeInt(std::to_string(i)));
    }
    const ItemReference parsedObject = jsontest::parsed(json + "}");
    EXPECT_TRUE(parsedObject->equals(grown));
    EXPECT_TRUE(grown->equals(parsedObject));
    grown->add("other", nullptr);
    EXPECT_FALSE(parsedObject->equals(grown));
    EXPECT_FALSE(grown->equals(parsedObject));
}

TEST(JsonEquals, DoesNotCompareThePendingKeys)
{
    const auto left = make<Object>();
    const auto right = make<Object>();
    EXPECT_TRUE(left->addKey("pending"));
    EXPECT_TRUE(left->equals(right));
    EXPECT_TRUE(right->addKey("another"));
    EXPECT_TRUE(left->equals(right));
}

TEST(JsonEquals, AsksItemsOfForeignClasses)
{
    CountingItem foreign;
    const auto left = make<Array>();
    left->add(&foreign);
    CountingItem other;
    const auto right = make<Array>();
    right->add(&other);
    EXPECT_TRUE(left->equals(right));
    const auto withInt = make<Array>();
    withInt->add(makeInt("1"));
    EXPECT_FALSE(left->equals(withInt));
    EXPECT_FALSE(withInt->equals(left));
}

} // namespace
