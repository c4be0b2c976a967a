#include "VontalBase/json/jsonparse.h"

#include "json/jsonsupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

// Parsing into a tree.

namespace
{

using jsontest::expectFailures;
using jsontest::ItemReference;
using jsontest::text;
using qvjson::jsonParse;

TEST(JsonParserIntoTree, FillsTheReference)
{
    ItemReference root = jsontest::makeBool(true);
    VontalException record;
    EXPECT_TRUE(jsonParse("{\"b\":[1,\"x\",true,false,null,{}],\"a\":-5}", root, record));
    EXPECT_EQ(root->getType(), qvjson::TypeObject);
    EXPECT_EQ(jsontest::printed(root), "{\"a\":-5,\"b\":[1,\"x\",true,false,null,{}]}");
    EXPECT_EQ(record.first, nullptr);
}

TEST(JsonParserIntoTree, FailsWithItsMessagesAndLeavesTheReference)
{
    struct Row
    {
        const char * label;
        std::string text;
        std::vector<std::string> failures;
    };
    const std::vector<std::string> scanner = {"Failed to parse JSON", "Failed to parse data"};
    const Row rows[] = {
        {"nothing", "", {"JSON without single root object"}},
        {"white space", " \n\t\r", {"JSON without single root object"}},
        {"a number", "5", scanner},
        {"a string", "\"x\"", scanner},
        {"an odd byte", "[?", scanner},
        {"a second root", "{} {}", scanner},
        {"a real number", "{\"a\":1.5}",
            {"Unexpected parser state", "Failed to parse JSON", "Failed to parse data"}},
        {"twenty nines", "[99999999999999999999]",
            {"Failed to parse int: 99999999999999999999", "Failed to parse JSON", "Failed to parse data"}},
        {"the integer behind the greatest", "[9223372036854775808]",
            {"Failed to parse int: 9223372036854775808", "Failed to parse JSON", "Failed to parse data"}},
        {"the least integer", "[-9223372036854775808]",
            {"Failed to parse int: -9223372036854775808", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and a number", "{\"\":1}",
            {"Failed to parse int: 1", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and a string", "{\"\":\"v\"}",
            {"Failed to parse string: v", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and true", "{\"\":true}",
            {"Failed to parse bool", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and false", "{\"\":false}",
            {"Failed to parse false", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and null", "{\"\":null}",
            {"Failed to parse NULL", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and an array", "{\"\":[]}",
            {"Failed to begin parse array", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key and an object", "{\"\":{}}",
            {"Failed to create new object", "Failed to parse JSON", "Failed to parse data"}},
        {"an empty key in an inner object", "[{\"a\":{\"\":1}}]",
            {"Failed to parse int: 1", "Failed to parse JSON", "Failed to parse data"}},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        const ItemReference before = jsontest::makeBool(true);
        ItemReference root = before;
        VontalException record;
        EXPECT_FALSE(jsonParse(text(row.text), root, record));
        EXPECT_EQ(root.get(), before.get());
        expectFailures(record, row.failures);
    }
}

TEST(JsonParserIntoTree, ReadsIntegersOf64BitsAndKeepsMissingSomeOverflows)
{
    const std::pair<const char *, std::int64_t> rows[] = {
        {"0", 0},
        {"-0", 0},
        {"7", 7},
        {"-7", -7},
        {"2147483647", 2147483647},
        {"2147483648", 2147483648},
        {"-2147483649", -2147483649},
        {"5000000000", 5000000000},
        {"9223372036854775807", 9223372036854775807},
        {"-9223372036854775807", -9223372036854775807},
        // Kept: a number too large is taken as its low 64 bits where those are above what was read before.
        {"22000000000000000000", 3553255926290448384},
        {"-22000000000000000000", -3553255926290448384},
    };
    for (const auto & [digits, value] : rows)
    {
        SCOPED_TRACE(digits);
        const ItemReference root = jsontest::parsed('[' + std::string(digits) + ']');
        std::int64_t read = 1;
        EXPECT_TRUE(static_cast<qvjson::Array *>(*root)->getInt64(0, read));
        EXPECT_EQ(read, value);
    }
}

TEST(JsonParserIntoTree, LaterValueOfAKeyStands)
{
    EXPECT_EQ(jsontest::printed(jsontest::parsed("{\"a\":1,\"b\":2,\"a\":[3]}")), "{\"a\":[3],\"b\":2}");
    EXPECT_EQ(jsontest::printed(jsontest::parsed("{\"a\":[3],\"a\":1}")), "{\"a\":1}");
    EXPECT_EQ(jsontest::printed(jsontest::parsed("{\"a\":1,\"a\":2,\"a\":3,\"a\":4}")), "{\"a\":4}");

    // The same among so many keys that the object takes another form.
    std::string json = "{";
    std::string expected = "{";
    for (int i = 0; i < 100; ++i)
    {
        const std::string key = "\"k" + std::to_string(100 + i) + '"';
        json += key + ":" + std::to_string(i) + ",";
        expected += (i == 0 ? "" : ",") + key + ":" + std::to_string(i == 50 ? -1 : i);
    }
    EXPECT_EQ(jsontest::printed(jsontest::parsed(json + "\"k150\":-1}")), expected + "}");
}

TEST(JsonParserIntoTree, KeepsAnEmptyKeyUnusableButHarmless)
{
    // A truncated text may hold the key itself.
    const ItemReference root = jsontest::parsed("{\"a\":1,\"\":");
    EXPECT_EQ(jsontest::printed(root), "{\"a\":1}");
    EXPECT_FALSE(static_cast<qvjson::Object *>(*root)->add(jsontest::makeBool(true)));
}

TEST(JsonParserIntoTree, KeepsTheTreeOfTruncatedText)
{
    const std::pair<const char *, const char *> rows[] = {
        {"[", "[]"},
        {"[1,2", "[1]"},
        {"[1,2,", "[1,2]"},
        {"[true", "[]"},
        {"[\"x\"", "[\"x\"]"},
        {"[\"x", "[]"},
        {"[[1],[2", "[[1],[]]"},
        {"{", "{}"},
        {"{\"a", "{}"},
        {"{\"a\"", "{}"},
        {"{\"a\":1", "{}"},
        {"{\"a\":1,", "{\"a\":1}"},
        {"{\"a\":{\"b\":[1,{\"c\":2,\"d\":3", "{\"a\":{\"b\":[1,{\"c\":2}]}}"},
    };
    for (const auto & [json, expected] : rows)
    {
        SCOPED_TRACE(json);
        EXPECT_EQ(jsontest::printed(jsontest::parsed(json)), expected);
    }
}

TEST(JsonParserIntoTree, KeepsThePendingKeyOfTruncatedText)
{
    const ItemReference root = jsontest::parsed("{\"a\":1");
    qvjson::Object * const object = *root;
    ItemReference item;
    EXPECT_FALSE(object->getItem("a", item));
    EXPECT_FALSE(object->addKey("b"));
    EXPECT_TRUE(object->add(jsontest::makeInt("7")));
    EXPECT_EQ(jsontest::printed(root), "{\"a\":7}");
    EXPECT_TRUE(object->addKey("b"));

    // In the outer objects no key is pending: it went with the inner one.
    const ItemReference nested = jsontest::parsed("{\"a\":{\"b\":");
    EXPECT_FALSE(static_cast<qvjson::Object *>(*nested)->add(jsontest::makeInt("7")));
    qvbase::Reference<qvjson::Object> inner;
    EXPECT_TRUE(static_cast<qvjson::Object *>(*nested)->getObject("a", inner));
    EXPECT_TRUE(inner->add(jsontest::makeInt("8")));
    EXPECT_EQ(jsontest::printed(nested), "{\"a\":{\"b\":8}}");
}

TEST(JsonParserIntoTree, TakesOutAsTheHolderOfTheTree)
{
    VontalException record;
    ItemReference root;
    {
        ItemReference inner;
        EXPECT_TRUE(jsonParse("[[1,2],[3]]", inner, record));
        root = inner;
    }
    ItemReference child;
    EXPECT_TRUE(static_cast<qvjson::Array *>(*root)->getItem(0, child));
    // A part outlives its tree.
    root = nullptr;
    EXPECT_EQ(jsontest::printed(child), "[1,2]");
    // And the tree itself may be parsed into again.
    EXPECT_TRUE(jsonParse("[]", child, record));
    EXPECT_EQ(jsontest::printed(child), "[]");
}

} // namespace
