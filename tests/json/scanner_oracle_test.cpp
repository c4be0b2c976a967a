#include "json/scanner_oracle.h"
#include "json/scanner_states.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

// The plain scanner is held against cases written by hand before anything is held against it.

namespace
{

using jsontest::callsPlainly;
using jsontest::Event;
using jsontest::PlainScan;
using jsontest::scanPlainly;

using namespace std::string_literals;

struct Row
{
    const char * label;
    std::string text;
    std::vector<Event> events;
};

const Event arrayBegin = {jsontest::ArrayBegin, ""};
const Event arrayEnd = {jsontest::ArrayEnd, ""};
const Event objectBegin = {jsontest::ObjectBegin, ""};
const Event objectEnd = {jsontest::ObjectEnd, ""};
const Event isTrue = {jsontest::True, ""};
const Event isFalse = {jsontest::False, ""};
const Event null = {jsontest::Null, ""};

Event integer(const std::string & text)
{
    return {jsontest::Integer, text};
}
Event real(const std::string & text)
{
    return {jsontest::Real, text};
}
Event string(const std::string & text)
{
    return {jsontest::String, text};
}
Event key(const std::string & text)
{
    return {jsontest::Key, text};
}

TEST(ScannerOracle, GivesTheEventsOfWhatItAccepts)
{
    const Row rows[] = {
        {"nothing", "", {}},
        {"white space", " \t\r\n", {}},
        {"empty object", "{}", {objectBegin, objectEnd}},
        {"empty array", "[ ]", {arrayBegin, arrayEnd}},
        {"members", "{\"a\":1,\"b\":[true]}",
            {objectBegin, key("a"), integer("1"), key("b"), arrayBegin, isTrue, arrayEnd, objectEnd}},
        {"all leaves", "[1,-2.5e+3,\"x\",true,false,null]",
            {arrayBegin, integer("1"), real("-2.5e+3"), string("x"), isTrue, isFalse, null, arrayEnd}},
        {"a string behind an object is no key", "[{},\"x\"]",
            {arrayBegin, objectBegin, objectEnd, string("x"), arrayEnd}},
        {"a key behind an object is one", "{\"a\":{},\"b\":\"c\"}",
            {objectBegin, key("a"), objectBegin, objectEnd, key("b"), string("c"), objectEnd}},
        {"escapes", "[\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"]",
            {arrayBegin, string("\"\\/\x08\x0C\x0A\x0D\x09"), arrayEnd}},
        {"codes of one, two and three bytes", "[\"\\u0041\\u00e4\\u20AC\"]",
            {arrayBegin, string("A\xC3\xA4\xE2\x82\xAC"), arrayEnd}},
        {"a zero byte", "[\"a\\u0000b\"]", {arrayBegin, string("a\0b"s), arrayEnd}},
        {"a surrogate pair", "[\"\\ud83d\\ude00\"]", {arrayBegin, string("\xF0\x9F\x98\x80"), arrayEnd}},
        {"the first pair", "[\"\\ud800\\udc00\"]", {arrayBegin, string("\xF0\x90\x80\x80"), arrayEnd}},
        {"the last pair", "[\"\\udbff\\udfff\"]", {arrayBegin, string("\xF4\x8F\xBF\xBF"), arrayEnd}},
        {"a number that nothing follows is not delivered", "[1,2", {arrayBegin, integer("1")}},
        {"a string that ends is delivered", "[\"x\"", {arrayBegin, string("x")}},
        {"a string that does not end is not", "[\"x", {arrayBegin}},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        const PlainScan scan = scanPlainly(row.text);
        EXPECT_TRUE(scan.accepted);
        EXPECT_EQ(scan.events, row.events);
    }
}

TEST(ScannerOracle, GivesTheEventsInFrontOfWhatItRefuses)
{
    const Row rows[] = {
        {"a scalar", "5", {}},
        {"a string", "\"x\"", {}},
        {"a value is one step late", "[1 2]", {arrayBegin}},
        {"a comma delivers", "[1,,", {arrayBegin, integer("1")}},
        {"a comment delivers", "[1/", {arrayBegin, integer("1")}},
        {"so does a hash", "[1.5#", {arrayBegin, real("1.5")}},
        {"directly behind an exponent it does not", "[1e5#", {arrayBegin}},
        {"behind a blank it does", "[1e5 #", {arrayBegin, real("1e5")}},
        {"the wrong bracket delivers", "[1}", {arrayBegin, integer("1")}},
        {"no bracket is open", "[1]]", {arrayBegin, integer("1"), arrayEnd}},
        {"a comma at the top", "{},", {objectBegin, objectEnd}},
        {"an exponent of zero", "[0e1]", {arrayBegin}},
        {"a leading zero", "[01]", {arrayBegin}},
        {"a lone low surrogate", "[\"\\ude00\"]", {arrayBegin}},
        {"a sequence cut by the quote", "[\"\xC3\"]", {arrayBegin}},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        const PlainScan scan = scanPlainly(row.text);
        EXPECT_FALSE(scan.accepted);
        EXPECT_EQ(scan.events, row.events);
    }
}

TEST(ScannerOracle, WelcomesJustTheBytesOfEachState)
{
    for (const jsontest::ScannerState & state : jsontest::scannerStates)
    {
        SCOPED_TRACE(state.name);
        const std::string prefix(state.prefix);
        EXPECT_TRUE(scanPlainly(prefix).accepted);
        for (int byte = 0; byte < 256; ++byte)
        {
            const char character = static_cast<char>(byte);
            const bool isWelcome = state.accepted.find(character) != std::string::npos;
            EXPECT_EQ(scanPlainly(prefix + character).accepted, isWelcome) << "byte " << byte;
        }
    }
}

TEST(ScannerOracle, StopsWhereTheSinkRefuses)
{
    std::vector<int> numbers;
    const bool accepted = scanPlainly("{\"a\":[1,2]}",
        [&numbers](const Event & event)
        {
            numbers.push_back(event.number);
            return event.number != jsontest::Integer;
        });
    EXPECT_FALSE(accepted);
    EXPECT_EQ(numbers, (std::vector<int>{2, 8, 1, 5}));
}

TEST(ScannerOracle, TellsTheCallsOfAnAcceptor)
{
    const jsontest::PlainCalls calls = callsPlainly("{\"a\":-1,\"b\":[true,\"\"]}");
    EXPECT_TRUE(calls.accepted);
    EXPECT_EQ(calls.log, "begin object\nkey 1 a\nint 2 -1\nkey 1 b\nbegin array\ntrue\nstring 0 \nend array\n"
                         "end object\nend child\n");
    EXPECT_TRUE(calls.failures.empty());

    const jsontest::PlainCalls real = callsPlainly("[null,false,1.5]");
    EXPECT_FALSE(real.accepted);
    EXPECT_EQ(real.log, "begin array\nnull\nfalse\n");
    EXPECT_EQ(real.failures, (std::vector<std::string>{"Unexpected parser state", "Failed to parse JSON"}));
}

} // namespace
