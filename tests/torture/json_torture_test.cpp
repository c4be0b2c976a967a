// JSON with each allocation refused in turn.

#include "VontalBase/json/JSONTreeParser.h"
#include "VontalBase/json/jsonparse.h"

#include "json/boundclasses.h"
#include "json/jsonsupport.h"
#include "support/Torture.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace
{

using jsontest::Everything;
using jsontest::ItemMap;
using jsontest::ItemReference;
using jsontest::make;
using qvjson::Array;
using qvjson::Item;
using qvjson::Object;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;

/// Leaves and containers of every kind, long texts and keys, keys twice, and an object that outgrows a block.
std::string richText()
{
    std::string json = "{\"a\":[1,-5000000000,true,false,null,\"short\",\"" + std::string(60, 'm') +
                       "\"],\"b\":\"" + std::string(5000, 'l') +
                       "\",\"a key of more than fifteen bytes\":{\"c\":{\"d\":[[],{}]}}," +
                       "\"a\":{\"again\":[{\"x\":1,\"y\":2},{\"x\":3,\"y\":4}]},\"many\":{";
    for (int i = 0; i < 40; ++i)
    {
        const std::string key = i % 2 == 0 ? "k" : "a key of more than fifteen bytes ";
        json += (i == 0 ? "\"" : ",\"") + key + std::to_string(i) + "\":" + std::to_string(i);
    }
    json += "},\"deep\":" + std::string(300, '[') + std::string(300, ']');
    return json + "}";
}

TEST(JsonTorture, ParsingIntoATree)
{
    const Vontal::u8string json = richText();
    const TortureReport report = torture(
        [&json](const Fault & fault)
        {
            const ItemReference before = make<qvjson::ValueNull>();
            ItemReference root = before;
            VontalException record;
            const bool parsed = qvjson::jsonParse(json, root, record);
            EXPECT_EQ(parsed, !fault.isAllocation());
            EXPECT_EQ(root.get() == before.get(), !parsed);
            EXPECT_EQ(record.first == nullptr, parsed);
        });
    EXPECT_GT(report.faultyRuns, 20U);
}

TEST(JsonTorture, ParsingTextThatEndsEarly)
{
    const Vontal::u8string json = "[{\"a\":{\"a key of more than fifteen bytes\":[1,\"" +
                                  std::string(60, 'm') + "\",{\"b\":2,\"another key of more bytes\":";
    const TortureReport report = torture(
        [&json](const Fault & fault)
        {
            ItemReference root;
            VontalException record;
            const bool parsed = qvjson::jsonParse(json, root, record);
            EXPECT_EQ(parsed, !fault.isAllocation());
        });
    EXPECT_GT(report.faultyRuns, 5U);
}

TEST(JsonTorture, ParsingTextThatIsRefused)
{
    const Vontal::u8string json =
        "[{\"a\":[1,\"" + std::string(60, 'm') + "\",{\"b\":2}]},99999999999999999999]";
    torture(
        [&json](const Fault &)
        {
            ItemReference root;
            VontalException record;
            EXPECT_FALSE(qvjson::jsonParse(json, root, record));
            EXPECT_EQ(root.get(), nullptr);
        });
}

TEST(JsonTorture, AskingForTheTreeSoFar)
{
    torture(
        [](const Fault &)
        {
            qvjson::JSONTreeParser parser;
            const Vontal::u8string key("a key of more than fifteen bytes");
            parser.parserBeginArray();
            for (int i = 0; i < 40; ++i)
            {
                EXPECT_NE(parser.parserBeginObject(), nullptr);
                EXPECT_TRUE(parser.parseKey(key));
                if (i % 3 == 0)
                {
                    EXPECT_NE(parser.root().get(), nullptr);
                }
                EXPECT_TRUE(parser.parserBeginArray());
                EXPECT_TRUE(parser.parseString("text of more than twenty bytes", 30));
                if (i % 4 == 0)
                {
                    EXPECT_NE(parser.root().get(), nullptr);
                }
                EXPECT_TRUE(parser.parserEndArray());
                if (i % 2 == 0)
                {
                    EXPECT_TRUE(parser.parserEndObject());
                }
                else
                {
                    EXPECT_TRUE(parser.parseKey("open"));
                }
                if (i % 2 != 0)
                {
                    EXPECT_TRUE(parser.parserBeginArray());
                }
            }
            EXPECT_NE(parser.root().get(), nullptr);
        });
}

TEST(JsonTorture, BindingFromText)
{
    const Vontal::u8string json =
        "{\"flag\":true,\"number\":-7,\"ulong\":8,\"wide\":9,\"string\":\"" + std::string(60, 's') +
        "\",\"set\":[\"a\",\"" + std::string(60, 't') + "\"],\"list\":[\"" + std::string(60, 'u') +
        "\"],\"ints\":[1,2,3],\"wides\":[4,5,6],\"tree\":{\"a\":[1,{\"b\":\"" + std::string(60, 'v') +
        "\"}]},\"raw\":{\"n\":1},\"referenced\":{\"n\":2},\"objects\":[{\"n\":3},{\"n\":4}],"
        "\"provider\":[{\"n\":5},{\"n\":6}],\"holder\":{\"n\":7},\"raw\":null,\"tree\":{}}";
    const TortureReport report = torture(
        [&json](const Fault & fault)
        {
            const auto object = make<Everything>();
            VontalException record;
            const bool bound = object->fromJson(json, record);
            EXPECT_EQ(bound, !fault.isAllocation());
            EXPECT_EQ(record.first == nullptr, bound);
        });
    EXPECT_GT(report.faultyRuns, 50U);
}

TEST(JsonTorture, BindingFromATreeAndPrinting)
{
    const ItemReference tree = jsontest::parsed(
        "{\"flag\":true,\"number\":-7,\"ulong\":8,\"wide\":9,\"string\":\"a string of more than fifteen "
        "bytes\","
        "\"set\":[\"a\",\"an element of more than fifteen bytes\"],\"list\":[\"an element of more than "
        "fifteen\"],"
        "\"ints\":[1,2,3],\"wides\":[4,5,6],\"tree\":{\"a\":[1,{\"b\":null}]},\"raw\":{\"n\":1},"
        "\"referenced\":{\"n\":2},\"objects\":[{\"n\":3},{\"n\":4}],\"provider\":[{\"n\":5},{\"n\":6}],"
        "\"holder\":{\"n\":7}}");
    const TortureReport report = torture(
        [&tree](const Fault &)
        {
            const auto object = make<Everything>();
            // Here there is nothing but std::bad_alloc that an allocation could end in.
            EXPECT_TRUE(object->fromJson(static_cast<Object *>(*tree)));
            Vontal::u8string json;
            EXPECT_TRUE(object->toJson(json));
        });
    EXPECT_GT(report.faultyRuns, 50U);
}

TEST(JsonTorture, Printing)
{
    const ItemReference tree = jsontest::parsed(richText());
    const std::string whole = jsontest::printed(tree);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            std::ostringstream stream;
            qvbase::Reference<qvjson::JSONPrinter> printer;
            EXPECT_TRUE(qvjson::jsonPrinterFactory(&stream, printer));
            EXPECT_TRUE(printer->printItem(tree));
            EXPECT_TRUE(printer->printString("text"));
            // A stream that got no memory has lost some of it, and says so itself.
            if (!fault.isAllocation())
            {
                EXPECT_TRUE(std::move(stream).str() == whole + ",\"text\"");
            }
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(JsonTorture, Comparing)
{
    const ItemReference left = jsontest::parsed(richText());
    const ItemReference right = jsontest::parsed(richText());
    const TortureReport report = torture([&](const Fault &) { EXPECT_TRUE(left->equals(right)); });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(JsonTorture, BuildingArraysByHand)
{
    const TortureReport report = torture(
        [](const Fault &)
        {
            const auto array = make<Array>();
            for (unsigned int i = 0; i < 100; ++i)
            {
                const auto string = make<qvjson::ValueString>();
                string->set("text of more than twenty bytes", 30);
                array->add(string);
                array->add(nullptr);
                EXPECT_EQ(array->getLength(), 2 * i + 2);
            }
            const auto copy = jsontest::copyOf<Array>(*array);
            copy->add(make<qvjson::ValueNull>());
            EXPECT_EQ(array->getLength(), 201U);
        });
    EXPECT_GT(report.faultyRuns, 200U);
}

TEST(JsonTorture, BuildingObjectsByHand)
{
    const TortureReport report = torture(
        [](const Fault &)
        {
            const auto object = make<Object>();
            for (int i = 0; i < 60; ++i)
            {
                Vontal::u8string key = std::to_string(i * 37 % 60);
                if (i % 2 == 0)
                    key += " and more than fifteen bytes";
                if (i % 3 == 0)
                {
                    object->add(key, make<qvjson::ValueNull>());
                }
                else
                {
                    EXPECT_TRUE(object->addKey(key));
                    EXPECT_TRUE(object->add(make<qvjson::ValueBool>()));
                }
            }
            object->addKey("pending of more than fifteen bytes");
            const auto copy = jsontest::copyOf<Object>(*object);
            copy->add("another key of more than fifteen bytes", nullptr);
            ItemReference item;
            EXPECT_TRUE(object->getItem("another key of more than fifteen bytes", item));
        });
    EXPECT_GT(report.faultyRuns, 100U);
}

TEST(JsonTorture, CopyingOut)
{
    const ItemReference tree = jsontest::parsed(richText());
    const TortureReport report = torture(
        [&tree](const Fault &)
        {
            Object & object = *static_cast<Object *>(*tree);
            ItemMap items;
            object.getItems(items);
            qvbase::Reference<Object> many;
            EXPECT_TRUE(object.getObject("many", many));
            many->getItems(items);
            EXPECT_EQ(items.size(), 40U);
            Vontal::u8string string;
            EXPECT_TRUE(object.getValue("b", string));
            EXPECT_EQ(string.size(), 5000U);
        });
    EXPECT_GT(report.faultyRuns, 40U);
}

} // namespace
