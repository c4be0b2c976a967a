// A million containers within each other, on stacks that would not hold a frame for each.

#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/JSONTreeParser.h"

#include "json/jsonsupport.h"
#include "support/SmallStackThread.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using jsontest::ItemMap;
using jsontest::ItemReference;
using jsontest::make;
using qvjson::Array;
using qvjson::jsonParse;
using qvjson::Object;

constexpr std::size_t depth = 1'000'000;

/// So many arrays within each other.
std::string nestedArrays(std::size_t levels = depth)
{
    return std::string(levels, '[') + std::string(levels, ']');
}

/// So many objects within each other, the innermost of them empty.
std::string nestedObjects(std::size_t levels = depth)
{
    std::string json;
    json.reserve(levels * 6);
    for (std::size_t i = 1; i < levels; ++i)
        json += "{\"k\":";
    json += "{}";
    return json + std::string(levels - 1, '}');
}

/// Parses a text that must be good, for which a message would be too large.
ItemReference deepTree(const std::string & json)
{
    ItemReference root;
    VontalException record;
    EXPECT_TRUE(jsonParse(jsontest::text(json), root, record));
    return root;
}

/// The node within, or null; checks that there is no other.
ItemReference within(qvjson::Item & item)
{
    if (Array * const array = item)
    {
        ItemReference element;
        array->getItem(0, element);
        EXPECT_LE(array->getLength(), 1U);
        return element;
    }
    ItemMap items;
    static_cast<Object *>(item)->getItems(items);
    EXPECT_LE(items.size(), 1U);
    return items["k"];
}

std::size_t depthOf(ItemReference item)
{
    std::size_t levels = 0;
    for (; item.get() != nullptr; ++levels)
        item = within(*item);
    return levels;
}

/// Everything that is done with a tree, done with a deep one.
void useDeepTree(const std::string & json)
{
    const ItemReference root = deepTree(json);
    const ItemReference again = deepTree(json);
    EXPECT_TRUE(root->equals(again));
    EXPECT_TRUE(jsontest::printed(root) == json);
    EXPECT_EQ(depthOf(root), depth);
    // Another one that differs in its innermost node only.
    const bool isArray = json[0] == '[';
    std::string other = json;
    other.insert(json.find(isArray ? "[]" : "{}") + 1, isArray ? "1" : "\"k\":1");
    EXPECT_FALSE(root->equals(deepTree(other)));
    EXPECT_FALSE(deepTree(other)->equals(root));
}

/// Lets a deep tree go from the outside while its middle is held, and then the middle.
void partDeepTree(const std::string & json)
{
    ItemReference root = deepTree(json);
    ItemReference middle = root;
    for (std::size_t i = 0; i < depth / 2; ++i)
        middle = within(*middle);
    root = nullptr;
    EXPECT_EQ(depthOf(middle), depth - depth / 2);
}

TEST(JsonDepth, ArraysOnASmallStack)
{
    const std::string json = nestedArrays();
    testsupport::runOnSmallStack(
        [&json]
        {
            useDeepTree(json);
            partDeepTree(json);
        });
}

TEST(JsonDepth, ObjectsOnASmallStack)
{
    const std::string json = nestedObjects();
    testsupport::runOnSmallStack(
        [&json]
        {
            useDeepTree(json);
            partDeepTree(json);
        });
}

TEST(JsonDepth, TreesBuiltByHandOnASmallStack)
{
    testsupport::runOnSmallStack(
        []
        {
            ItemReference left = make<Array>();
            ItemReference right = make<Array>();
            for (std::size_t i = 1; i < depth; ++i)
            {
                for (ItemReference * const tree : {&left, &right})
                {
                    if (i % 2 == 0)
                    {
                        const auto array = make<Array>();
                        array->add(*tree);
                        *tree = ItemReference(array);
                    }
                    else
                    {
                        const auto object = make<Object>();
                        object->add("k", *tree);
                        *tree = ItemReference(object);
                    }
                }
            }
            EXPECT_TRUE(left->equals(right));
            EXPECT_EQ(depthOf(left), depth);
        });
}

TEST(JsonDepth, TextThatEndsEarlyOrWronglyOnASmallStack)
{
    testsupport::runOnSmallStack(
        []
        {
            for (const std::string piece : {"[", "{\"k\":", "[{\"k\":"})
            {
                std::string json;
                for (std::size_t i = 0; i < depth; ++i)
                    json += piece;
                EXPECT_NE(deepTree(json).get(), nullptr);
                ItemReference root;
                VontalException record;
                EXPECT_FALSE(jsonParse(jsontest::text(json + '?'), root, record));
                EXPECT_EQ(root.get(), nullptr);
            }
        });
}

/// Has a member that takes any object.
class Holder : public qvjson::JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (!isDeclared)
            jsonFieldAdd("tree", &tree);
        isDeclared = true;
    }

    qvbase::Reference<Object> tree;
    bool isDeclared = false;
};

TEST(JsonDepth, TreesInAMemberOnASmallStack)
{
    const std::string arrays = "{\"tree\":{\"k\":" + nestedArrays(depth - 1) + "}}";
    const std::string objects = "{\"tree\":" + nestedObjects() + "}";
    testsupport::runOnSmallStack(
        [&]
        {
            for (const std::string & json : {arrays, objects})
            {
                const auto holder = make<Holder>();
                VontalException record;
                EXPECT_TRUE(holder->fromJson(jsontest::text(json), record));
                EXPECT_EQ(depthOf(holder->tree.get()), depth);
                Vontal::u8string printed;
                EXPECT_TRUE(holder->toJson(printed));
                EXPECT_TRUE(printed == json);
                // The same through a tree.
                const auto other = make<Holder>();
                EXPECT_TRUE(other->fromJson(static_cast<Object *>(*deepTree(json))));
                EXPECT_TRUE(other->tree->equals(holder->tree));
                EXPECT_TRUE(holder->fromJson("{\"tree\":null}", record));
                EXPECT_EQ(holder->tree.get(), nullptr);
                // And one that was cut short.
                const auto cut = make<Holder>();
                EXPECT_TRUE(cut->fromJson(json.data(), json.size() / 2, record));
            }
        });
}

} // namespace
