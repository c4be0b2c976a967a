#include "VontalBase/json/JSONSerializable.h"

#include "json/bindingsupport.h"

#include <gtest/gtest.h>
#include <vector>

// Copies of bound objects.

namespace
{

using jsontest::copyOf;
using jsontest::make;
using jsontest::MortalField;
using jsontest::read;
using jsontest::readBadly;
using qvjson::JSONSerializable;

/// A class that can be copied.
class Copied : public JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (isDeclared)
            return;
        isDeclared = true;
        jsonFieldAdd("a", &a);
        jsonFieldAdd("list", &list);
    }

    using JSONSerializable::jsonFieldAdd;
    using JSONSerializable::parseInt;
    using JSONSerializable::parseKey;
    using JSONSerializable::parserBeginArray;
    using JSONSerializable::parserEndArray;

    int a = 1;
    std::vector<int> list;
    bool isDeclared = false;
};

TEST(JsonCopies, KeepSettingTheMembersOfTheSource)
{
    const auto source = make<Copied>();
    read(*source, "{\"a\":2}");
    const auto copy = copyOf(*source);
    EXPECT_EQ(copy->a, 2);
    read(*copy, "{\"a\":3}");
    EXPECT_EQ(source->a, 3);
    EXPECT_EQ(copy->a, 2);
    Vontal::u8string json;
    EXPECT_TRUE(copy->toJson(json));
    EXPECT_EQ(json, "{\"a\":3,\"list\":[]}");

    const auto assigned = make<Copied>();
    read(*assigned, "{\"a\":9}");
    static_cast<Copied &>(*assigned) = *source;
    read(*assigned, "{\"a\":4}");
    EXPECT_EQ(source->a, 4);
    EXPECT_EQ(assigned->a, 3);
}

TEST(JsonCopies, TakeTheStateOfTheParseAlong)
{
    const auto source = make<Copied>();
    EXPECT_TRUE(source->jsonBeginParse());
    EXPECT_TRUE(source->parseKey("a"));
    const auto copy = copyOf(*source);
    EXPECT_FALSE(copy->jsonBeginParse());
    EXPECT_TRUE(copy->parseInt("5", 1));
    EXPECT_EQ(source->a, 5);
    EXPECT_TRUE(copy->jsonEndParse());
    // The source has a state of its own.
    EXPECT_FALSE(source->jsonEndParse());
    const auto assigned = make<Copied>();
    EXPECT_TRUE(assigned->jsonBeginParse());
    static_cast<Copied &>(*assigned) = *source;
    EXPECT_TRUE(assigned->jsonBeginParse());
}

TEST(JsonCopies, KnowThatAListIsOpen)
{
    const auto source = make<Copied>();
    EXPECT_TRUE(source->jsonBeginParse());
    EXPECT_TRUE(source->parseKey("list"));
    const auto before = copyOf(*source);
    EXPECT_TRUE(source->parserBeginArray());
    const auto within = copyOf(*source);
    const auto assigned = make<Copied>();
    static_cast<Copied &>(*assigned) = *source;
    EXPECT_TRUE(source->parserEndArray());

    // In a list of its own, where a further one would be within it.
    for (const auto & copy : {within, assigned})
    {
        EXPECT_FALSE(copy->parserBeginArray());
        EXPECT_TRUE(copy->parseInt("1", 1));
        EXPECT_TRUE(copy->parserEndArray());
        EXPECT_TRUE(copy->jsonEndParse());
    }
    EXPECT_EQ(source->list, (std::vector<int>{1, 1}));
    EXPECT_TRUE(before->parserBeginArray());
    EXPECT_FALSE(before->parserBeginArray());
    EXPECT_TRUE(source->list.empty());
}

TEST(JsonCopies, KeepTheFieldsAliveThatTheyShare)
{
    int deaths = 0;
    int ofAll = 0;
    int ofLast = 0;
    qvbase::Reference<Copied> last;
    {
        const auto source = make<Copied>();
        source->isDeclared = true;
        source->jsonFieldAdd(new MortalField(JSONSerializable::FieldInt, "all", &ofAll, deaths));
        last = copyOf(*source);
        const auto second = copyOf(*source);
        last->jsonFieldAdd(new MortalField(JSONSerializable::FieldInt, "last", &ofLast, deaths));
        // Only the list of fields is each one's own.
        readBadly(*second, "{\"last\":1}", "Failed to parse key: last");
    }
    EXPECT_EQ(deaths, 0);
    read(*last, "{\"all\":1,\"last\":2}");
    EXPECT_EQ(ofAll, 1);
    EXPECT_EQ(ofLast, 2);
    last = nullptr;
    EXPECT_EQ(deaths, 2);
}

} // namespace
