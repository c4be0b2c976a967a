#include "VontalBase/json/JSONParserAcceptor.h"
#include "VontalBase/json/jsonparse.h"

#include "json/LoggingAcceptor.h"
#include "json/jsonsupport.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

// The acceptors' calls and refusals, and the growth of what is behind them.

namespace
{

using jsontest::expectFailures;
using jsontest::LoggingAcceptor;
using jsontest::shown;
using jsontest::text;
using qvjson::jsonParse;
using qvjson::JSONParserAcceptor;

using namespace std::string_literals;

/// Writes its calls into a log that it shares, under a name of its own; answers another acceptor for an
/// object.
class NamedAcceptor : public JSONParserAcceptor
{
public:
    NamedAcceptor(const char * name, std::string & log, NamedAcceptor * child = nullptr)
        : name_(name), log_(log), child_(child)
    {
    }

    JSONParserAcceptor * parserBeginObject() override
    {
        return write("parserBeginObject") ? child_ : nullptr;
    }
    bool parserEndChildObject(JSONParserAcceptor * child) override
    {
        return write(std::string("parserEndChildObject(") + static_cast<NamedAcceptor *>(child)->name_ + ')');
    }
    bool parserEndObject() override
    {
        return write("parserEndObject");
    }
    bool parseKey(Vontal::u8string const & key) override
    {
        return write("parseKey(\"" + key + "\")");
    }
    bool parseInt(char const * digits, unsigned int length) override
    {
        return write("parseInt(\"" + std::string(digits) + "\"," + std::to_string(length) + ')');
    }
    bool parseString(char const * bytes, unsigned int length) override
    {
        return write("parseString(\"" + std::string(bytes) + "\"," + std::to_string(length) + ')');
    }
    bool parseBool(bool value) override
    {
        return write(value ? "parseBool(true)" : "parseBool(false)");
    }
    bool parseNull() override
    {
        return write("parseNull");
    }
    bool parserBeginArray() override
    {
        return write("parserBeginArray");
    }
    bool parserEndArray() override
    {
        return write("parserEndArray");
    }

    /// The call that is refused.
    std::string refused;

private:
    bool write(const std::string & call)
    {
        log_ += name_ + ' ' + call + '\n';
        return call != refused;
    }

    std::string name_;
    std::string & log_;
    NamedAcceptor * child_;
};

TEST(JsonParser, CallsAcceptorsByTheProtocol)
{
    struct Row
    {
        const char * label;
        const char * text;
        const char * log;
    };
    const Row rows[] = {
        {"an object with an array", "{\"a\":1,\"b\":[true]}",
            "R parserBeginObject\nC parseKey(\"a\")\nC parseInt(\"1\",1)\nC parseKey(\"b\")\n"
            "C parserBeginArray\nC parseBool(true)\nC parserEndArray\nC parserEndObject\n"
            "R parserEndChildObject(C)\n"},
        {"a nested object goes on top", "{\"a\":{\"b\":null},\"c\":\"x\"}",
            "R parserBeginObject\nC parseKey(\"a\")\nC parserBeginObject\nD parseKey(\"b\")\nD parseNull\n"
            "D parserEndObject\nC parserEndChildObject(D)\nC parseKey(\"c\")\nC parseString(\"x\",1)\n"
            "C parserEndObject\nR parserEndChildObject(C)\n"},
        {"an array at the top goes to the first", "[1,[false]]",
            "R parserBeginArray\nR parseInt(\"1\",1)\nR parserBeginArray\nR parseBool(false)\n"
            "R parserEndArray\nR parserEndArray\n"},
        {"objects in an array begin at what holds the array", "[{},{\"a\":[{}]}]",
            "R parserBeginArray\nR parserBeginObject\nC parserEndObject\nR parserEndChildObject(C)\n"
            "R parserBeginObject\nC parseKey(\"a\")\nC parserBeginArray\nC parserBeginObject\n"
            "D parserEndObject\nC parserEndChildObject(D)\nC parserEndArray\nC parserEndObject\n"
            "R parserEndChildObject(C)\nR parserEndArray\n"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string log;
        NamedAcceptor d("D", log);
        NamedAcceptor c("C", log, &d);
        NamedAcceptor r("R", log, &c);
        VontalException record;
        EXPECT_TRUE(jsonParse(text(row.text), &r, record));
        EXPECT_EQ(log, row.log);
    }
}

TEST(JsonParser, TellsNumbersAndWordsAtTheCommaOrBracketBehindThem)
{
    const std::pair<const char *, const char *> pieces[] = {
        {"[", "R parserBeginArray\n"},
        {"1", ""},
        {"2", ""},
        {" ", ""},
        {",", "R parseInt(\"12\",2)\n"},
        {"true", ""},
        {",", "R parseBool(true)\n"},
        {"\"s\"", "R parseString(\"s\",1)\n"},
        {",", ""},
        {"null", ""},
        {"\n", ""},
        {"]", "R parseNull\nR parserEndArray\n"},
    };
    std::string json;
    std::string expected;
    for (const auto & [piece, calls] : pieces)
    {
        json += piece;
        expected += calls;
        SCOPED_TRACE(json);
        std::string log;
        NamedAcceptor r("R", log);
        VontalException record;
        EXPECT_TRUE(jsonParse(text(json), &r, record));
        EXPECT_EQ(log, expected);
    }
}

TEST(JsonParser, PutsEachRefusalIntoWords)
{
    struct Row
    {
        const char * refused;
        std::string text;
        std::string failure;
        /// The last call that was made, for it ends the parse.
        const char * lastCall;
    };
    const Row rows[] = {
        {"parserBeginArray", "{\"k\":[1]}", "Failed to begin parse array", "C parserBeginArray\n"},
        {"parserBeginObject", "{\"k\":{}}", "Failed to create new object", "C parserBeginObject\n"},
        {"parserEndArray", "{\"k\":[1]}", "Failed to finalize parsed array", "C parserEndArray\n"},
        {"parserEndObject", "{\"k\":1}", "Failed to finalize object", "C parserEndObject\n"},
        {"parserEndChildObject(D)", "{\"k\":{}}", "Failed to finalize child object",
            "C parserEndChildObject(D)\n"},
        {"parseInt(\"-12\",3)", "{\"k\":-12}", "Failed to parse int: -12", "C parseInt(\"-12\",3)\n"},
        {"parseString(\"tt\xC3\xA4\",4)", "{\"k\":\"t\\u0074\xC3\xA4\"}",
            "Failed to parse string: tt\xC3\xA4", "C parseString(\"tt\xC3\xA4\",4)\n"},
        {"parseKey(\"k\")", "{\"k\":1}", "Failed to parse key: k", "C parseKey(\"k\")\n"},
        {"parseBool(true)", "{\"k\":true}", "Failed to parse bool", "C parseBool(true)\n"},
        {"parseBool(false)", "{\"k\":false}", "Failed to parse false", "C parseBool(false)\n"},
        {"parseNull", "{\"k\":null}", "Failed to parse NULL", "C parseNull\n"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.refused);
        std::string log;
        NamedAcceptor d("D", log);
        NamedAcceptor c("C", log, &d);
        NamedAcceptor r("R", log, &c);
        c.refused = row.refused;
        VontalException record;
        EXPECT_FALSE(jsonParse(text(row.text), &r, record));
        expectFailures(record, {row.failure, "Failed to parse JSON"});
        const std::string last = row.lastCall;
        ASSERT_GE(log.size(), last.size());
        EXPECT_EQ(log.substr(log.size() - last.size()), last);

        // Nothing else is refused there.
        c.refused.clear();
        VontalException untouched;
        EXPECT_TRUE(jsonParse(text(row.text), &r, untouched));
        EXPECT_EQ(untouched.first, nullptr);
    }
}

TEST(JsonParser, RefusalAtTheOutermostObjectReadsTheSame)
{
    std::string log;
    NamedAcceptor c("C", log);
    NamedAcceptor r("R", log, &c);
    r.refused = "parserBeginObject";
    VontalException record;
    EXPECT_FALSE(jsonParse("{}", &r, record));
    expectFailures(record, {"Failed to create new object", "Failed to parse JSON"});
    EXPECT_EQ(log, "R parserBeginObject\n");

    log.clear();
    r.refused = "parserEndChildObject(C)";
    VontalException atEnd;
    EXPECT_FALSE(jsonParse("{} ", &r, atEnd));
    expectFailures(atEnd, {"Failed to finalize child object", "Failed to parse JSON"});
    EXPECT_EQ(log, "R parserBeginObject\nC parserEndObject\nR parserEndChildObject(C)\n");
}

TEST(JsonParser, RefusedValueInFrontOfAWrongBracketIsStillNamed)
{
    std::string log;
    NamedAcceptor r("R", log);
    r.refused = "parseInt(\"1\",1)";
    for (const char * const json : {"[1}", "[1/", "[1,", "[1]"})
    {
        SCOPED_TRACE(json);
        VontalException record;
        EXPECT_FALSE(jsonParse(text(json), &r, record));
        expectFailures(record, {"Failed to parse int: 1", "Failed to parse JSON"});
    }
}

/// Refuses everything that has a text.
class TextRefuser : public LoggingAcceptor
{
public:
    bool parseString(char const *, unsigned int) override
    {
        return false;
    }
    bool parseKey(Vontal::u8string const & key) override
    {
        return key.empty();
    }
};

TEST(JsonParser, KeepsBytesBehindAZeroByteInMessages)
{
    TextRefuser acceptor;
    VontalException ofString;
    EXPECT_FALSE(jsonParse("[\"a\\u0000b\"]", &acceptor, ofString));
    expectFailures(ofString, {"Failed to parse string: a\0b"s, "Failed to parse JSON"});

    VontalException ofKey;
    EXPECT_FALSE(jsonParse("{\"a\\u0000b\":1}", &acceptor, ofKey));
    expectFailures(ofKey, {"Failed to parse key: a\0b"s, "Failed to parse JSON"});

    VontalException ofEmpty;
    EXPECT_FALSE(jsonParse("{\"\":\"\"}", &acceptor, ofEmpty));
    expectFailures(ofEmpty, {"Failed to parse string: ", "Failed to parse JSON"});
}

TEST(JsonParser, GrowsItsBuffersWithoutLimit)
{
    // Round the first size of the text buffer and its doublings.
    for (const std::size_t size : {4000U, 4094U, 4095U, 4096U, 4097U, 8191U, 8192U, 8193U, 1000000U})
    {
        SCOPED_TRACE(size);
        const std::string letters(size, 'x');
        const std::string digits = "1" + std::string(size - 1, '0');
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text("[\"" + letters + "\"," + digits + "]"), &acceptor, record));
        const std::string length = std::to_string(size);
        EXPECT_TRUE(acceptor.log == "begin array\nstring " + length + ' ' + letters + "\nint " + length +
                                        ' ' + digits + "\nend array\n");
    }
    // The same through escapes and sequences alone.
    for (const std::string piece : {"\\n", "\\u20ac", "\\ud83d\\ude00", "\xE2\x82\xAC"})
    {
        SCOPED_TRACE(shown(piece));
        std::string json = "{\"";
        for (int i = 0; i < 5000; ++i)
            json += piece;
        json += "\":[]}";
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text(json), &acceptor, record));
        const std::string read = piece == "\\n"                              ? "\n"
                                 : piece.front() == '\\' && piece.size() > 6 ? "\xF0\x9F\x98\x80"
                                                                             : "\xE2\x82\xAC";
        std::string expected;
        for (int i = 0; i < 5000; ++i)
            expected += read;
        EXPECT_TRUE(acceptor.log == "begin object\nkey " + std::to_string(expected.size()) + ' ' + expected +
                                        "\nbegin array\nend array\nend object\nend child\n");
    }
}

TEST(JsonParser, NestsBeyondTheFirstStackSize)
{
    for (const std::size_t depth : {255U, 256U, 257U, 512U, 513U, 1000U, 5000U})
    {
        SCOPED_TRACE(depth);
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text(std::string(depth, '[') + std::string(depth, ']')), &acceptor, record));
        std::string expected;
        for (std::size_t i = 0; i < depth; ++i)
            expected += "begin array\n";
        for (std::size_t i = 0; i < depth; ++i)
            expected += "end array\n";
        EXPECT_TRUE(acceptor.log == expected);

        // Every bracket is remembered: the wrong one is found at each level.
        std::string mixed;
        for (std::size_t i = 0; i < depth; ++i)
            mixed += i % 2 == 0 ? "[" : "{\"k\":";
        std::string closers;
        for (std::size_t i = depth; i-- > 0;)
            closers += i % 2 == 0 ? ']' : '}';
        LoggingAcceptor again;
        EXPECT_TRUE(jsonParse(text(mixed + "0" + closers), &again, record));
        for (const std::size_t level : {std::size_t{0}, depth / 2, depth - 1})
        {
            std::string wrong = closers;
            wrong[level] = wrong[level] == ']' ? '}' : ']';
            VontalException failure;
            EXPECT_FALSE(jsonParse(text(mixed + "0" + wrong), &again, failure));
        }
    }
}

} // namespace
