#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/JSONSerializable.h"

#include "json/RefusingPrinter.h"
#include "json/bindingsupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

// From the members into text.

namespace
{

using jsontest::BoundReference;
using jsontest::Everything;
using jsontest::make;
using jsontest::printedJson;
using jsontest::RefusingPrinter;
using qvjson::JSONPrinter;
using qvjson::JSONSerializable;

using namespace std::string_literals;

TEST(JsonToText, PrintsMembersOfEveryTypeInTheOrderOfDeclaration)
{
    const auto object = make<Everything>();
    EXPECT_EQ(printedJson(*object),
        "{\"flag\":false,\"number\":0,\"ulong\":0,\"wide\":0,\"string\":\"\",\"set\":[],\"list\":[],\"ints\":"
        "[],"
        "\"wides\":[],\"tree\":null,\"raw\":null,\"referenced\":null,\"objects\":[],\"provider\":[],"
        "\"holder\":null}");
    EXPECT_EQ(object->provider->log, "size\n");
    EXPECT_EQ(object->holder->log, "get\n");

    const std::string json =
        "{\"flag\":true,\"number\":-7,\"ulong\":4294967295,\"wide\":-5000000000,\"string\":\"t\\u0000\\\"x\","
        "\"set\":[\"a\",\"b\"],\"list\":[\"b\",\"a\",\"b\"],\"ints\":[1,-2],\"wides\":[5000000000,-1],"
        "\"tree\":{\"a\":1,\"b\":[1,{\"c\":null}]},\"raw\":{\"n\":1},\"referenced\":{\"n\":2},"
        "\"objects\":[{\"n\":3},{\"n\":4}],\"provider\":[{\"n\":5},{\"n\":6}],\"holder\":{\"n\":7}}";
    VontalException record;
    ASSERT_TRUE(object->fromJson(jsontest::text(json), record));
    object->provider->log.clear();
    EXPECT_EQ(printedJson(*object), json);
    EXPECT_EQ(object->provider->log, "size\nget 0\nget 1\n");
}

TEST(JsonToText, PrintsNumbersInTheirFullWidth)
{
    const auto object = make<Everything>();
    object->number = std::numeric_limits<int>::min();
    object->unsignedNumber = std::numeric_limits<Vontal::ulong32>::max();
    object->wideNumber = std::numeric_limits<std::int64_t>::min();
    object->numbers = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
    object->wideNumbers = {
        std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    const std::string json = printedJson(*object);
    EXPECT_NE(json.find("\"number\":-2147483648,\"ulong\":4294967295,\"wide\":-9223372036854775808,"),
        std::string::npos);
    EXPECT_NE(json.find("\"ints\":[-2147483648,2147483647],"
                        "\"wides\":[-9223372036854775808,9223372036854775807],"),
        std::string::npos);
}

TEST(JsonToText, KeepsNarrowingIntegersWithinATree)
{
    const auto object = make<Everything>();
    VontalException record;
    ASSERT_TRUE(object->fromJson("{\"wide\":5000000000,\"tree\":{\"a\":5000000000}}", record));
    const std::string json = printedJson(*object);
    EXPECT_NE(json.find("\"wide\":5000000000"), std::string::npos);
    EXPECT_NE(json.find("\"tree\":{\"a\":705032704}"), std::string::npos);
}

class Fieldless : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
    }
};

TEST(JsonToText, PrintsAnObjectWithoutFields)
{
    EXPECT_EQ(printedJson(*make<Fieldless>()), "{}");
}

/// A class whose members of other classes are not there.
class Hollow : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        jsonFieldAdd("objects", static_cast<std::vector<BoundReference> *>(nullptr), nullptr);
        jsonFieldAdd("provider", std::shared_ptr<qvjson::JSONSerializableArrayProviderInterface>());
        jsonFieldAdd("holder", std::shared_ptr<qvjson::JSONRefObjInterface>());
    }
};

TEST(JsonToText, PrintsNullForWhatIsNotThere)
{
    EXPECT_EQ(printedJson(*make<Hollow>()), "{\"objects\":null,\"provider\":null,\"holder\":null}");
}

TEST(JsonToText, ReplacesTheTextOnlyWhereItSucceeds)
{
    const auto object = make<Everything>();
    object->provider->elements.emplace_back(make<jsontest::Inner>());
    Vontal::u8string json = "before";
    object->provider->isRefusing = true;
    EXPECT_FALSE(object->toJson(json));
    EXPECT_EQ(json, "before");
    object->provider->isRefusing = false;
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(json.substr(0, 7), "{\"flag\"");
}

TEST(JsonToText, KeepsWhatWasWrittenToAStreamBeforeTheFailure)
{
    const auto object = make<Everything>();
    object->provider->elements.emplace_back(make<jsontest::Inner>());
    object->provider->isRefusing = true;
    std::ostringstream stream;
    EXPECT_FALSE(object->toJson(&stream));
    EXPECT_EQ(stream.str(),
        "{\"flag\":false,\"number\":0,\"ulong\":0,\"wide\":0,\"string\":\"\",\"set\":[],\"list\":[],\"ints\":"
        "[],"
        "\"wides\":[],\"tree\":null,\"raw\":null,\"referenced\":null,\"objects\":[],\"provider\":[");
}

TEST(JsonToText, FailsWhereATreeCannotBePrinted)
{
    const auto object = make<Everything>();
    object->tree = make<qvjson::Object>();
    object->tree->add("null", nullptr);
    Vontal::u8string json = "before";
    EXPECT_FALSE(object->toJson(json));
    EXPECT_EQ(json, "before");
}

TEST(JsonToText, RefusesANullStream)
{
    const auto object = make<Everything>();
    EXPECT_FALSE(object->toJson(static_cast<std::ostream *>(nullptr)));
}

TEST(JsonToText, KeepsSayingTrueToAStreamThatRefuses)
{
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_TRUE(make<Everything>()->toJson(&stream));
    EXPECT_EQ(stream.str(), "");
}

/// Writes a form of its own, and has its say in which of the forms is used.
class OwnForm : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
    }
    using JSONSerializable::toJson;
    bool toJson(std::basic_ostream<char> * stream) override
    {
        *stream << "own";
        return succeeds;
    }

    bool succeeds = true;
};

TEST(JsonToText, GoesThroughTheVirtualFormForStreams)
{
    const auto object = make<OwnForm>();
    Vontal::u8string json = "before";
    EXPECT_TRUE(static_cast<JSONSerializable &>(*object).toJson(json));
    EXPECT_EQ(json, "own");
    object->succeeds = false;
    json = "before";
    EXPECT_FALSE(static_cast<JSONSerializable &>(*object).toJson(json));
    EXPECT_EQ(json, "before");
}

/// An inner object that refuses to be printed.
class Unprintable : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
    }
    using JSONSerializable::toJson;
    bool toJson(JSONPrinter *, bool wrap) override
    {
        EXPECT_TRUE(wrap);
        return false;
    }
};

TEST(JsonToText, FailsWhereAnInnerObjectDoes)
{
    Vontal::u8string json;
    const auto ofRaw = make<Everything>();
    ofRaw->raw = new qvbase::ReferencedImpl<Unprintable>;
    ofRaw->raw->addRef();
    EXPECT_FALSE(ofRaw->toJson(json));
    const auto ofReferenced = make<Everything>();
    ofReferenced->referenced = make<Unprintable>();
    EXPECT_FALSE(ofReferenced->toJson(json));
    const auto ofObjects = make<Everything>();
    ofObjects->objects.emplace_back(make<Unprintable>());
    EXPECT_FALSE(ofObjects->toJson(json));
}

TEST(JsonToText, EndsAtTheFirstTokenThatIsRefused)
{
    const auto object = make<Everything>();
    VontalException record;
    ASSERT_TRUE(object->fromJson(
        "{\"flag\":true,\"number\":-7,\"ulong\":8,\"wide\":9,\"string\":\"s\",\"set\":[\"a\"],\"list\":["
        "\"b\"],"
        "\"ints\":[1],\"wides\":[2],\"tree\":{\"a\":[1]},\"raw\":{\"n\":1},\"objects\":[{\"n\":3}],"
        "\"provider\":[{\"n\":5}],\"holder\":{\"n\":7}}",
        record));
    const std::vector<std::string> whole = {"{", "key flag", "true", "key number", "number -7", "key ulong",
        "number 8", "key wide", "number 9", "key string", "string s", "key set", "[", "string a", "]",
        "key list", "[", "string b", "]", "key ints", "[", "number 1", "]", "key wides", "[", "number 2", "]",
        "key tree", "item {\"a\":[1]}", "key raw", "{", "key n", "number 1", "}", "key referenced", "null",
        "key objects", "[", "{", "key n", "number 3", "}", "]", "key provider", "[", "{", "key n", "number 5",
        "}", "]", "key holder", "{", "key n", "number 7", "}", "}"};
    for (std::size_t refused = 0; refused <= whole.size(); ++refused)
    {
        SCOPED_TRACE(refused);
        const auto printer = make<RefusingPrinter>();
        printer->refused = refused;
        EXPECT_EQ(object->toJson(printer, true), refused == 0);
        const std::size_t made = refused == 0 ? whole.size() : refused;
        EXPECT_EQ(printer->calls,
            std::vector<std::string>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(made)));
    }
    const auto bare = make<RefusingPrinter>();
    EXPECT_TRUE(object->toJson(bare, false));
    EXPECT_EQ(bare->calls, std::vector<std::string>(whole.begin() + 1, whole.end() - 1));
}

TEST(JsonToText, GoesBareIntoAContainerOfTheCaller)
{
    const auto object = make<jsontest::Inner>();
    object->number = 5;
    std::ostringstream stream;
    qvbase::Reference<JSONPrinter> printer;
    ASSERT_TRUE(qvjson::jsonPrinterFactory(&stream, printer));
    printer->printObjectBegin();
    printer->printKey("first");
    printer->printInt(1);
    EXPECT_TRUE(object->toJson(printer, false));
    printer->printKey("last");
    EXPECT_TRUE(object->toJson(printer, true));
    printer->printObjectEnd();
    EXPECT_EQ(stream.str(), "{\"first\":1,\"n\":5,\"last\":{\"n\":5}}");
}

TEST(JsonToText, DeclaresTheFieldsOnEveryCall)
{
    const auto object = make<Everything>();
    Vontal::u8string json;
    EXPECT_TRUE(object->toJson(json));
    EXPECT_EQ(object->declarations, 1);
    std::ostringstream stream;
    EXPECT_TRUE(object->toJson(&stream));
    EXPECT_EQ(object->declarations, 2);
    qvbase::Reference<JSONPrinter> printer;
    ASSERT_TRUE(qvjson::jsonPrinterFactory(&stream, printer));
    EXPECT_TRUE(object->toJson(printer, false));
    EXPECT_EQ(object->declarations, 3);
}

TEST(JsonToText, ReadsBackAsItWasPrinted)
{
    const auto object = make<Everything>();
    VontalException record;
    ASSERT_TRUE(object->fromJson("{\"flag\":true,\"number\":-2147483647,\"ulong\":4294967295,"
                                 "\"wide\":9223372036854775807,\"string\":\"\\u0001\\n\\\\\xC3\xA4\","
                                 "\"set\":[\"\",\"x\"],\"list\":[\"x\",\"\"],\"ints\":[0],\"wides\":[0],"
                                 "\"tree\":{\"a\":{}},\"raw\":{\"n\":1},\"referenced\":{\"n\":2},"
                                 "\"objects\":[{\"n\":3}],\"provider\":[{\"n\":4}],\"holder\":{\"n\":5}}",
        record));
    const std::string json = printedJson(*object);
    const auto again = make<Everything>();
    ASSERT_TRUE(again->fromJson(jsontest::text(json), record)) << record.format();
    EXPECT_EQ(printedJson(*again), json);
}

} // namespace
