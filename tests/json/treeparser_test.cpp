#include "VontalBase/json/JSONTreeParser.h"

#include "json/jsonsupport.h"
#include "json/tree_oracle.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace
{

using jsontest::printed;
using qvjson::JSONTreeParser;
using qvjson::Object;

TEST(JsonTreeParser, StartsWithoutARoot)
{
    JSONTreeParser parser;
    EXPECT_EQ(parser.root().get(), nullptr);
    EXPECT_FALSE(parser.parserEndObject());
    EXPECT_FALSE(parser.parserEndArray());
    EXPECT_FALSE(parser.parseKey("a"));
    EXPECT_TRUE(parser.parserEndChildObject(nullptr));
    EXPECT_EQ(parser.root().get(), nullptr);
}

TEST(JsonTreeParser, AnswersItselfForEveryObject)
{
    JSONTreeParser parser;
    EXPECT_EQ(parser.parserBeginObject(), &parser);
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_EQ(parser.parserBeginObject(), &parser);
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_TRUE(parser.parserEndChildObject(&parser));
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_EQ(printed(parser.root()), "{\"a\":{}}");
}

TEST(JsonTreeParser, TakesTheFirstItemAsRootWhateverItIs)
{
    JSONTreeParser ofInt;
    EXPECT_TRUE(ofInt.parseInt("12", 2));
    EXPECT_EQ(printed(ofInt.root()), "12");
    EXPECT_FALSE(ofInt.parseInt("12", 2));
    JSONTreeParser ofString;
    EXPECT_TRUE(ofString.parseString("x\0y", 3));
    EXPECT_EQ(printed(ofString.root()), "\"x\\u0000y\"");
    JSONTreeParser ofBool;
    EXPECT_TRUE(ofBool.parseBool(true));
    EXPECT_EQ(printed(ofBool.root()), "true");
    JSONTreeParser ofNull;
    EXPECT_TRUE(ofNull.parseNull());
    EXPECT_EQ(printed(ofNull.root()), "null");
    EXPECT_FALSE(ofNull.parserBeginArray());
    EXPECT_EQ(ofNull.parserBeginObject(), nullptr);
}

TEST(JsonTreeParser, RefusesASecondRoot)
{
    JSONTreeParser parser;
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_FALSE(parser.parserBeginArray());
    EXPECT_EQ(parser.parserBeginObject(), nullptr);
    EXPECT_FALSE(parser.parseInt("1", 1));
    EXPECT_FALSE(parser.parseString("", 0));
    EXPECT_FALSE(parser.parseBool(false));
    EXPECT_FALSE(parser.parseNull());
    EXPECT_FALSE(parser.parserEndArray());
    EXPECT_EQ(printed(parser.root()), "[]");
}

TEST(JsonTreeParser, EndsOnlyWhatIsOpen)
{
    JSONTreeParser parser;
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_FALSE(parser.parserEndObject());
    EXPECT_TRUE(parser.parseInt("1", 1));
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_FALSE(parser.parserEndArray());
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_TRUE(parser.parseNull());
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_FALSE(parser.parserEndObject());
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_EQ(printed(parser.root()), "[1,{\"a\":null}]");
}

TEST(JsonTreeParser, TakesKeysInObjectsOnly)
{
    JSONTreeParser parser;
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_FALSE(parser.parseKey("a"));
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_FALSE(parser.parseInt("1", 1));
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_FALSE(parser.parseKey("b"));
    EXPECT_FALSE(parser.parseKey(""));
    EXPECT_TRUE(parser.parseInt("1", 1));
    EXPECT_FALSE(parser.parseInt("1", 1));
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_EQ(printed(parser.root()), "[{\"a\":1}]");
}

TEST(JsonTreeParser, KeepsTakingAnEmptyKeyAndRefusingItsValue)
{
    JSONTreeParser parser;
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(parser.parseKey(""));
    EXPECT_FALSE(parser.parseInt("1", 1));
    EXPECT_FALSE(parser.parserBeginArray());
    EXPECT_EQ(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(parser.parseKey(""));
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_TRUE(parser.parseInt("1", 1));
    EXPECT_EQ(printed(parser.root()), "{\"a\":1}");
}

TEST(JsonTreeParser, RefusesAnIntegerThatDoesNotFitAndGoesOn)
{
    JSONTreeParser parser;
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_FALSE(parser.parseInt("99999999999999999999", 20));
    EXPECT_FALSE(parser.parseInt("x", 1));
    EXPECT_FALSE(parser.parseInt("", 0));
    EXPECT_TRUE(parser.parseInt("77", 1));
    EXPECT_EQ(printed(parser.root()), "[7]");
}

TEST(JsonTreeParser, ARefusedIntegerLeavesTheKeyPending)
{
    JSONTreeParser parser;
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_FALSE(parser.parseInt("99999999999999999999", 20));
    EXPECT_FALSE(parser.parseKey("b"));
    EXPECT_TRUE(parser.parseInt("1", 1));
    EXPECT_EQ(printed(parser.root()), "{\"a\":1}");
}

TEST(JsonTreeParser, AnObjectThatEndsBehindAKeyKeepsItPending)
{
    JSONTreeParser parser;
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(parser.parseKey("kept"));
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_FALSE(parser.parseInt("1", 1));
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_TRUE(parser.parseInt("1", 1));
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_EQ(printed(parser.root()), "[{},{\"a\":1}]");
    qvbase::Reference<Object> first;
    ASSERT_TRUE(static_cast<qvjson::Array *>(*parser.root())->getObject(0, first));
    EXPECT_FALSE(first->addKey("other"));
    EXPECT_TRUE(first->add(jsontest::makeInt("2")));
    EXPECT_EQ(printed(parser.root()), "[{\"kept\":2},{\"a\":1}]");
}

/// Asks for the root at every event, with what came by then, and passes everything on.
class AskingAcceptor : public qvjson::JSONParserAcceptor
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject() override
    {
        const bool began = parser.parserBeginObject() != nullptr;
        return ask(began) ? this : nullptr;
    }
    bool parserEndChildObject(qvjson::JSONParserAcceptor *) override
    {
        return ask(parser.parserEndChildObject(&parser));
    }
    bool parserEndObject() override
    {
        return ask(parser.parserEndObject());
    }
    bool parseKey(Vontal::u8string const & key) override
    {
        return ask(parser.parseKey(key));
    }
    bool parseInt(char const * text, unsigned int length) override
    {
        return ask(parser.parseInt(text, length));
    }
    bool parseString(char const * text, unsigned int length) override
    {
        return ask(parser.parseString(text, length));
    }
    bool parseBool(bool value) override
    {
        return ask(parser.parseBool(value));
    }
    bool parseNull() override
    {
        return ask(parser.parseNull());
    }
    bool parserBeginArray() override
    {
        return ask(parser.parserBeginArray());
    }
    bool parserEndArray() override
    {
        return ask(parser.parserEndArray());
    }

    JSONTreeParser parser;
    std::string trees;
    /// Asks at every so many events only.
    int period = 1;

private:
    bool ask(bool answer)
    {
        if (++events_ % period == 0)
            trees += printed(parser.root()) + '\n';
        return answer;
    }

    int events_ = 0;
};

TEST(JsonTreeParser, BuildsTheSameTreeWheneverItIsAsked)
{
    const std::string json =
        "{\"a\":[1,{\"b\":{},\"c\":2,\"b\":3},[4,[5],6],7],\"a\":8,\"d\":{\"e\":null,\"a\":[9,{}],"
        "\"e\":\"x\"},\"a\":{\"b\":[],\"b\":10},\"f\":[11,12,13]}";
    for (int period = 1; period <= 60; ++period)
    {
        SCOPED_TRACE(period);
        AskingAcceptor acceptor;
        acceptor.period = period;
        VontalException record;
        EXPECT_TRUE(qvjson::jsonParse(jsontest::text(json), &acceptor, record));
        EXPECT_EQ(printed(acceptor.parser.root()),
            "{\"a\":{\"b\":10},\"d\":{\"a\":[9,{}],\"e\":\"x\"},\"f\":[11,12,13]}");
    }
}

TEST(JsonTreeParser, AKeyThatWaitedWhileItWasAskedStillWaits)
{
    JSONTreeParser parser;
    EXPECT_NE(parser.parserBeginObject(), nullptr);
    EXPECT_TRUE(parser.parseKey("a"));
    EXPECT_EQ(printed(parser.root()), "{}");
    EXPECT_FALSE(parser.parseKey("b"));
    EXPECT_FALSE(parser.parseKey(""));
    EXPECT_TRUE(parser.parserBeginArray());
    EXPECT_TRUE(parser.parserEndArray());
    EXPECT_FALSE(parser.parseNull());
    EXPECT_TRUE(parser.parseKey("b"));
    EXPECT_TRUE(parser.parseNull());
    EXPECT_TRUE(parser.parserEndObject());
    EXPECT_EQ(printed(parser.root()), "{\"a\":[],\"b\":null}");
}

TEST(JsonTreeParser, ShowsTheTreeSoFarAtAnyTime)
{
    AskingAcceptor acceptor;
    VontalException record;
    EXPECT_TRUE(
        qvjson::jsonParse("{\"a\":[1,{\"b\":{},\"c\":2}],\"a\":3,\"d\":{\"d\":null}}", &acceptor, record));
    EXPECT_EQ(acceptor.trees, "{}\n"
                              "{}\n"
                              "{\"a\":[]}\n"
                              "{\"a\":[1]}\n"
                              "{\"a\":[1,{}]}\n"
                              "{\"a\":[1,{}]}\n"
                              "{\"a\":[1,{\"b\":{}}]}\n"
                              "{\"a\":[1,{\"b\":{}}]}\n"
                              "{\"a\":[1,{\"b\":{}}]}\n"
                              "{\"a\":[1,{\"b\":{}}]}\n"
                              "{\"a\":[1,{\"b\":{},\"c\":2}]}\n"
                              "{\"a\":[1,{\"b\":{},\"c\":2}]}\n"
                              "{\"a\":[1,{\"b\":{},\"c\":2}]}\n"
                              "{\"a\":[1,{\"b\":{},\"c\":2}]}\n"
                              "{\"a\":[1,{\"b\":{},\"c\":2}]}\n"
                              "{\"a\":3}\n"
                              "{\"a\":3}\n"
                              "{\"a\":3,\"d\":{}}\n"
                              "{\"a\":3,\"d\":{}}\n"
                              "{\"a\":3,\"d\":{\"d\":null}}\n"
                              "{\"a\":3,\"d\":{\"d\":null}}\n"
                              "{\"a\":3,\"d\":{\"d\":null}}\n"
                              "{\"a\":3,\"d\":{\"d\":null}}\n"
                              "{\"a\":3,\"d\":{\"d\":null}}\n");
}

TEST(JsonTreeParser, LetsThePartialTreeGoWithItself)
{
    qvbase::Reference<qvjson::Item> root;
    {
        JSONTreeParser parser;
        VontalException record;
        EXPECT_TRUE(qvjson::jsonParse("{\"a\":[1,{\"b\":2,\"c\":[\"text", &parser, record));
        root = parser.root();
        EXPECT_EQ(printed(root), "{\"a\":[1,{\"b\":2,\"c\":[]}]}");
    }
    EXPECT_EQ(printed(root), "{\"a\":[1,{\"b\":2,\"c\":[]}]}");
    {
        // Nobody asks for this one.
        JSONTreeParser parser;
        VontalException record;
        EXPECT_FALSE(qvjson::jsonParse("{\"a\":[1,{\"b\":2,\"c\":[\"text\",?", &parser, record));
    }
}

} // namespace
