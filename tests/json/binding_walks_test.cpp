#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/JSONSerializableFactory.h"

#include "json/bindingsupport.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// Applications that do more than they are asked for while the fields are walked over, and parts of them that
// are missing or come to nothing.

namespace
{

using jsontest::BoundReference;
using jsontest::Everything;
using jsontest::fill;
using jsontest::Inner;
using jsontest::InnerFactory;
using jsontest::make;
using jsontest::printedJson;
using jsontest::read;
using jsontest::readBadly;
using qvjson::JSONPrinter;
using qvjson::JSONSerializable;
using qvjson::Object;

using namespace std::string_literals;

// ---------------------------------------------------------------------------------------------------
// Fields that are declared in the middle of a walk

/// Makes objects, lists and holders that do something whenever they are asked for.
class BusyFactory : public InnerFactory
{
public:
    bool createObject(BoundReference & out) override
    {
        atWork();
        return InnerFactory::createObject(out);
    }

    std::function<void()> atWork;
};

/// A class with an object that somebody makes, and with many more members from the time when it is made.
class Growing : public JSONSerializable
{
public:
    Growing() : factory(new qvbase::ReferencedImpl<BusyFactory>), extra(100, 1)
    {
        factory->atWork = [this]
        {
            grow();
        };
    }
    Growing(const Growing &) = delete;
    Growing & operator=(const Growing &) = delete;

    void jsonFieldsDeclare() override
    {
        if (std::exchange(isDeclared, true))
            return;
        jsonFieldAdd("made", &made, factory);
        jsonFieldAdd("last", &last);
    }
    void grow()
    {
        if (std::exchange(isGrown, true))
            return;
        for (std::size_t i = 0; i < extra.size(); ++i)
            jsonFieldAdd("extra " + std::to_string(i), &extra[i]);
    }

    qvbase::Reference<BusyFactory> factory;
    BoundReference made;
    int last = 0;
    std::vector<int> extra;
    bool isDeclared = false;
    bool isGrown = false;
};

std::string withExtras(const std::string & beginning, int value)
{
    std::string json = beginning;
    for (int i = 0; i < 100; ++i)
        json += ",\"extra " + std::to_string(i) + "\":" + std::to_string(value);
    return json + "}";
}

TEST(JsonWalks, FieldsDeclaredWhileATextIsReadAreTaken)
{
    const auto object = make<Growing>();
    read(*object, withExtras("{\"made\":{\"n\":5},\"last\":6", 7));
    EXPECT_EQ(jsontest::numberOf(object->made), 5);
    EXPECT_EQ(object->last, 6);
    EXPECT_EQ(object->extra, std::vector<int>(100, 7));
}

TEST(JsonWalks, FieldsDeclaredWhileATreeIsReadAreTaken)
{
    const auto object = make<Growing>();
    EXPECT_TRUE(fill(*object, withExtras("{\"made\":{\"n\":5},\"last\":6", 7)));
    EXPECT_EQ(object->last, 6);
    EXPECT_EQ(object->extra, std::vector<int>(100, 7));
    // And they are asked for in the same walk.
    const auto other = make<Growing>();
    EXPECT_FALSE(fill(*other, "{\"made\":{\"n\":5},\"last\":6}"));
    EXPECT_EQ(other->last, 6);
}

/// An object that does something when it is printed.
class BusyInner : public Inner
{
public:
    using Inner::toJson;
    bool toJson(JSONPrinter * printer, bool wrap) override
    {
        EXPECT_TRUE(wrap);
        atWork();
        return Inner::toJson(printer, wrap);
    }

    std::function<void()> atWork;
};

TEST(JsonWalks, FieldsDeclaredWhileAnObjectIsPrintedArePrinted)
{
    const auto object = make<Growing>();
    const auto busy = make<BusyInner>();
    busy->atWork = [&object]
    {
        object->grow();
    };
    object->made = busy;
    EXPECT_EQ(printedJson(*object), withExtras("{\"made\":{\"n\":0},\"last\":0", 1));
}

// ---------------------------------------------------------------------------------------------------
// Printing goes through the virtual forms

/// Prints something else than its fields.
class OwnPrint : public Inner
{
public:
    using Inner::toJson;
    bool toJson(JSONPrinter * printer, bool wrap) override
    {
        return printer->printString(wrap ? "wrapped" : "bare");
    }
};

TEST(JsonWalks, StreamsTextsAndInnerObjectsArePrintedByTheVirtualForm)
{
    const auto own = make<OwnPrint>();
    std::ostringstream stream;
    EXPECT_TRUE(static_cast<JSONSerializable &>(*own).toJson(&stream));
    EXPECT_EQ(stream.str(), "\"wrapped\"");
    EXPECT_EQ(printedJson(*own), "\"wrapped\"");

    const auto object = make<Everything>();
    object->raw = own;
    object->raw->addRef();
    object->referenced = own;
    object->objects = {BoundReference(own), BoundReference(), BoundReference(own)};
    object->provider->elements = {qvbase::Reference<Inner>(own)};
    object->holder->object = own;
    const std::string json = printedJson(*object);
    const std::string expected =
        "\"raw\":\"wrapped\",\"referenced\":\"wrapped\",\"objects\":[\"wrapped\",null,\"wrapped\"],"
        "\"provider\":[\"wrapped\"],\"holder\":\"wrapped\"}";
    ASSERT_GE(json.size(), expected.size());
    EXPECT_EQ(json.substr(json.size() - expected.size()), expected);
}

TEST(JsonWalks, RefusesANullPrinter)
{
    const auto object = make<Everything>();
    EXPECT_FALSE(object->toJson(static_cast<JSONPrinter *>(nullptr), true));
    EXPECT_FALSE(object->toJson(static_cast<JSONPrinter *>(nullptr), false));
}

// ---------------------------------------------------------------------------------------------------
// Providers and holders

/// A list that says that it gives an element and gives none, or gives too few.
class OddList final : public qvjson::JSONSerializableArrayProviderInterface
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject(JSONSerializable::JSONField *) override
    {
        return nullptr;
    }
    void clear() override
    {
        log += "clear\n";
    }
    JSONSerializable * createElement() override
    {
        log += "create\n";
        return nullptr;
    }
    bool getElement(unsigned int index, BoundReference & out) override
    {
        log += "get " + std::to_string(index) + '\n';
        EXPECT_EQ(out.get(), nullptr) << "a reference for each element";
        if (index == 1)
            out = make<Inner>();
        return index < given;
    }
    void removeLastElement() override
    {
        log += "remove\n";
    }
    unsigned int getSize() override
    {
        log += "size\n";
        return 3;
    }

    unsigned int given = 3;
    std::string log;
};

/// A class with a list alone.
class WithList : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (!std::exchange(isDeclared, true))
            jsonFieldAdd("k", std::static_pointer_cast<qvjson::JSONSerializableArrayProviderInterface>(list));
    }

    std::shared_ptr<OddList> list = std::make_shared<OddList>();
    bool isDeclared = false;
};

TEST(JsonWalks, AnElementThatAProviderDoesNotHavePrintsAsNull)
{
    const auto object = make<WithList>();
    EXPECT_EQ(printedJson(*object), "{\"k\":[null,{\"n\":0},null]}");
    EXPECT_EQ(object->list->log, "size\nget 0\nget 1\nget 2\n");
}

TEST(JsonWalks, AnElementThatAProviderRefusesEndsThePrinting)
{
    const auto object = make<WithList>();
    for (unsigned int given = 0; given < 3; ++given)
    {
        SCOPED_TRACE(given);
        object->list->given = given;
        object->list->log.clear();
        std::ostringstream stream;
        EXPECT_FALSE(object->toJson(&stream));
        const char * const texts[] = {"{\"k\":[", "{\"k\":[null", "{\"k\":[null,{\"n\":0}"};
        EXPECT_EQ(stream.str(), texts[given]);
        const char * const logs[] = {"size\nget 0\n", "size\nget 0\nget 1\n", "size\nget 0\nget 1\nget 2\n"};
        EXPECT_EQ(object->list->log, logs[given]);
    }
}

TEST(JsonWalks, AProviderIsNotToldToRemoveWhatItDidNotCreate)
{
    const auto object = make<WithList>();
    EXPECT_FALSE(fill(*object, "{\"k\":[{\"n\":1}]}"));
    EXPECT_EQ(object->list->log, "clear\ncreate\n");
    for (const char * const elements : {"[null]", "[1]", "[[1]]", "[\"x\"]", "[[]]"})
    {
        SCOPED_TRACE(elements);
        object->list->log.clear();
        EXPECT_FALSE(fill(*object, "{\"k\":" + std::string(elements) + "}"));
        EXPECT_EQ(object->list->log, "clear\n");
    }
}

// ---------------------------------------------------------------------------------------------------
// Factories on the route of trees

/// A class with one member that a factory makes objects for.
class MadeByFactory : public JSONSerializable
{
public:
    explicit MadeByFactory(std::uint32_t type)
        : fieldType(type), factory(new qvbase::ReferencedImpl<InnerFactory>)
    {
    }
    MadeByFactory(const MadeByFactory &) = delete;
    MadeByFactory & operator=(const MadeByFactory &) = delete;
    ~MadeByFactory() override
    {
        if (raw != nullptr)
            raw->release();
    }

    void jsonFieldsDeclare() override
    {
        if (std::exchange(isDeclared, true))
            return;
        if (fieldType == FieldRawObject)
            jsonFieldAdd("k", &raw, factory);
        else if (fieldType == FieldReferencedObject)
            jsonFieldAdd("k", &referenced, factory);
        else
            jsonFieldAdd("k", hasVector ? &objects : nullptr, factory);
    }

    std::uint32_t fieldType;
    qvbase::Reference<InnerFactory> factory;
    JSONSerializable * raw = nullptr;
    BoundReference referenced;
    std::vector<BoundReference> objects;
    bool hasVector = true;
    bool isDeclared = false;
};

const std::uint32_t madeTypes[] = {JSONSerializable::FieldRawObject, JSONSerializable::FieldReferencedObject,
    JSONSerializable::FieldObjectVector};

qvbase::Reference<MadeByFactory> makeMade(std::uint32_t type)
{
    return new qvbase::ReferencedImpl<MadeByFactory>(type);
}

TEST(JsonWalks, ATreeFailsWhereTheFactoryRefusesOrIsEmptyHanded)
{
    for (const std::uint32_t type : madeTypes)
    {
        SCOPED_TRACE(type);
        const std::string json =
            type == JSONSerializable::FieldObjectVector ? "{\"k\":[{\"n\":1}]}" : "{\"k\":{\"n\":1}}";
        const auto object = makeMade(type);
        object->factory->isRefusing = true;
        EXPECT_FALSE(fill(*object, json));
        object->factory->isRefusing = false;
        object->factory->isEmptyHanded = true;
        EXPECT_FALSE(fill(*object, json));
        EXPECT_TRUE(object->factory->made.empty());
        EXPECT_EQ(object->raw, nullptr);
        object->factory->isEmptyHanded = false;
        EXPECT_TRUE(fill(*object, json));
        ASSERT_EQ(object->factory->made.size(), 1U);
        EXPECT_EQ(object->factory->made[0]->number, 1);
        // An object that is being parsed takes a tree all the same.
        object->factory->isBusy = true;
        EXPECT_TRUE(fill(*object, json));
        EXPECT_EQ(object->factory->made[1]->number, 1);
    }
}

TEST(JsonWalks, ATreeFailsWhereWhatTheFactoryMadeDoes)
{
    for (const std::uint32_t type : madeTypes)
    {
        SCOPED_TRACE(type);
        const bool isList = type == JSONSerializable::FieldObjectVector;
        for (const std::string & bad : {"{}"s, "{\"n\":\"x\"}"s, "[1]"s, "1"s})
        {
            SCOPED_TRACE(bad);
            const auto object = makeMade(type);
            EXPECT_FALSE(fill(*object, isList ? "{\"k\":[" + bad + "]}" : "{\"k\":" + bad + "}"));
            EXPECT_EQ(object->raw, nullptr);
        }
        const auto other = makeMade(type);
        EXPECT_TRUE(fill(*other, isList ? "{\"k\":[null]}" : "{\"k\":null}"));
        EXPECT_TRUE(other->factory->made.empty());
    }
}

TEST(JsonWalks, AListOfObjectsThatIsNotThereTakesNothing)
{
    struct Row
    {
        const char * json;
        const char * failure;
        bool isGoodTree;
    };
    const Row rows[] = {
        {"{\"k\":{}}", "Failed to create new object", false},
        {"{\"k\":[]}", "Failed to begin parse array", false},
        {"{\"k\":[{\"n\":1}]}", "Failed to begin parse array", false},
        {"{\"k\":null}", "Failed to parse NULL", true},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.json);
        const auto ofText = makeMade(JSONSerializable::FieldObjectVector);
        ofText->hasVector = false;
        readBadly(*ofText, row.json, row.failure);
        EXPECT_TRUE(ofText->factory->made.empty());
        const auto ofTree = makeMade(JSONSerializable::FieldObjectVector);
        ofTree->hasVector = false;
        EXPECT_EQ(fill(*ofTree, row.json), row.isGoodTree);
        EXPECT_TRUE(ofTree->factory->made.empty());
    }
}

} // namespace
