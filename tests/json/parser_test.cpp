#include "VontalBase/json/JSONParserAcceptor.h"
#include "VontalBase/json/jsonparse.h"

#include "json/LoggingAcceptor.h"
#include "json/jsonsupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using jsontest::expectFailures;
using jsontest::ItemReference;
using jsontest::LoggingAcceptor;
using jsontest::shown;
using jsontest::text;
using qvjson::jsonParse;
using qvjson::JSONParserAcceptor;

using namespace std::string_literals;

// ---------------------------------------------------------------------------------------------------
// The accepted language

struct AcceptedRow
{
    const char * label;
    std::string text;
    const char * log;
};

TEST(JsonParser, AcceptsAndTellsInOrder)
{
    const AcceptedRow rows[] = {
        {"nothing at all", "", ""},
        {"white space alone", " \t\n\r", ""},
        {"an empty object", "{}", "begin object\nend object\nend child\n"},
        {"an empty array", "[]", "begin array\nend array\n"},
        {"white space within", " [ \n\t] \r", "begin array\nend array\n"},
        {"white space round every token", " { \"a\" : 1 , \"b\" : [ true , false ] } ",
            "begin object\nkey 1 a\nint 1 1\nkey 1 b\nbegin array\ntrue\nfalse\nend array\nend object\n"
            "end child\n"},
        {"spaces and line feeds behind the end", "{}  \n\n ", "begin object\nend object\nend child\n"},
        {"a number", "[0]", "begin array\nint 1 0\nend array\n"},
        {"a negative zero", "[-0]", "begin array\nint 2 -0\nend array\n"},
        {"digits of any number, as they stand", "[123456789012345678901234567890]",
            "begin array\nint 30 123456789012345678901234567890\nend array\n"},
        {"a blank behind a number", "[1 ]", "begin array\nint 1 1\nend array\n"},
        {"words", "[true,false,null]", "begin array\ntrue\nfalse\nnull\nend array\n"},
        {"an empty string", "[\"\"]", "begin array\nstring 0 \nend array\n"},
        {"an empty key", "{\"\":1}", "begin object\nkey 0 \nint 1 1\nend object\nend child\n"},
        {"a key twice", "{\"a\":1,\"a\":2}",
            "begin object\nkey 1 a\nint 1 1\nkey 1 a\nint 1 2\nend object\nend child\n"},
        {"nested arrays", "[[],[[]]]",
            "begin array\nbegin array\nend array\nbegin array\nbegin array\nend array\nend array\nend "
            "array\n"},
        {"nested objects", "{\"a\":{\"b\":{}}}",
            "begin object\nkey 1 a\nbegin object\nkey 1 b\nbegin object\nend object\nend child\nend object\n"
            "end child\nend object\nend child\n"},
        {"a string behind an object is no key", "[{},\"x\"]",
            "begin array\nbegin object\nend object\nend child\nstring 1 x\nend array\n"},
        {"0x7F is an ordinary byte", "[\"\x7F\"]", "begin array\nstring 1 \x7F\nend array\n"},
        {"a star within a string", "[\"/*#*/\"]", "begin array\nstring 5 /*#*/\nend array\n"},
        {"a key with an escape", "{\"\\u0041\\n\":1}",
            "begin object\nkey 2 A\n\nint 1 1\nend object\nend child\n"},
    };
    for (const AcceptedRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text(row.text), &acceptor, record));
        EXPECT_EQ(acceptor.log, row.log);
        EXPECT_EQ(record.first, nullptr);
    }
}

struct RefusedRow
{
    const char * label;
    std::string text;
    /// What had been told by then.
    const char * log;
    /// The nearest text that is taken.
    std::string neighbour;
};

TEST(JsonParser, RefusesAndHasToldWhatCameBefore)
{
    const RefusedRow rows[] = {
        {"a number at the top", "5", "", "[5]"},
        {"a string at the top", "\"x\"", "", "[\"x\"]"},
        {"a word at the top", "true", "", "[true]"},
        {"null at the top", "null", "", "[null]"},
        {"a colon at the top", ":", "", "[]"},
        {"a closing bracket at the top", "]", "", "[]"},
        {"a second document", "{} {}", "begin object\nend object\nend child\n", "{} "},
        {"a bracket too many", "{}]", "begin object\nend object\nend child\n", "{}"},
        {"a brace too many", "[]}", "begin array\nend array\n", "[]"},
        {"a comma behind the end", "{},", "begin object\nend object\nend child\n", "{}"},
        {"a brace for a bracket", "[}", "begin array\n", "[]"},
        {"a bracket for a brace", "{]", "begin object\n", "{}"},
        {"the wrong bracket delivers the value in front of it", "[1}", "begin array\nint 1 1\n", "[1]"},
        {"the wrong brace delivers the value in front of it", "{\"a\":true]", "begin object\nkey 1 a\ntrue\n",
            "{\"a\":true}"},
        {"a trailing comma in an array", "[1,]", "begin array\nint 1 1\n", "[1,1]"},
        {"a trailing comma in an object", "{\"a\":1,}", "begin object\nkey 1 a\nint 1 1\n",
            "{\"a\":1,\"b\":1}"},
        {"a comma alone in an object", "{,}", "begin object\n", "{}"},
        {"a comma alone in an array", "[,]", "begin array\n", "[]"},
        {"two commas", "[1,,2]", "begin array\nint 1 1\n", "[1,2]"},
        {"no comma", "[1 2]", "begin array\n", "[1,2]"},
        {"no comma between strings", "[\"a\"\"b\"]", "begin array\nstring 1 a\n", "[\"a\",\"b\"]"},
        {"no comma between members", "{\"a\":1 \"b\":2}", "begin object\nkey 1 a\n", "{\"a\":1,\"b\":2}"},
        {"no colon", "{\"a\" 1}", "begin object\nkey 1 a\n", "{\"a\":1}"},
        {"two colons", "{\"a\"::1}", "begin object\nkey 1 a\n", "{\"a\":1}"},
        {"a colon in an array", "[\"a\":1]", "begin array\nstring 1 a\n", "[\"a\",1]"},
        {"no value", "{\"a\":}", "begin object\nkey 1 a\n", "{\"a\":1}"},
        {"a key and no more", "{\"a\"}", "begin object\nkey 1 a\n", "{\"a\":1}"},
        {"a number for a key", "{1:2}", "begin object\n", "{\"1\":2}"},
        {"a word for a key", "{true:2}", "begin object\n", "{\"true\":2}"},
        {"a bare key", "{a:2}", "begin object\n", "{\"a\":2}"},
        {"single quotes", "['a']", "begin array\n", "[\"a\"]"},
        {"a leading zero", "[01]", "begin array\n", "[0,1]"},
        {"a leading zero behind a minus", "[-01]", "begin array\n", "[-0]"},
        {"a plus", "[+1]", "begin array\n", "[1]"},
        {"two minuses", "[--1]", "begin array\n", "[-1]"},
        {"a minus alone", "[-]", "begin array\n", "[-1]"},
        {"a minus and a blank", "[- 1]", "begin array\n", "[-1]"},
        {"a point in front", "[.5]", "begin array\n", "[5]"},
        {"a point behind", "[1.]", "begin array\n", "[1]"},
        {"two points", "[1.5.5]", "begin array\n", "[1,5]"},
        {"an exponent without digits", "[1e]", "begin array\n", "[1]"},
        {"an exponent with a sign and no digits", "[1e+]", "begin array\n", "[1]"},
        {"two exponents", "[1e5e5]", "begin array\n", "[1]"},
        {"a fraction in an exponent", "[1e5.5]", "begin array\n", "[1]"},
        {"a letter behind a number", "[1x]", "begin array\n", "[1,\"x\"]"},
        {"a hexadecimal number", "[0x10]", "begin array\n", "[0]"},
        {"a word cut short", "[tru]", "begin array\n", "[true]"},
        {"a word that goes on", "[truee]", "begin array\n", "[true]"},
        {"a word in capitals", "[True]", "begin array\n", "[true]"},
        {"false with a letter wrong", "[fasle]", "begin array\n", "[false]"},
        {"null cut short", "[nul]", "begin array\n", "[null]"},
        {"null in capitals", "[NULL]", "begin array\n", "[null]"},
        {"NaN", "[NaN]", "begin array\n", "[null]"},
        {"Infinity", "[Infinity]", "begin array\n", "[null]"},
        {"a raw tab in a string", "[\"\t\"]", "begin array\n", "[\"\\t\"]"},
        {"a raw line feed in a string", "[\"\n\"]", "begin array\n", "[\"\\n\"]"},
        {"a raw carriage return in a string", "[\"\r\"]", "begin array\n", "[\"\\r\"]"},
        {"a raw zero byte in a string", "[\"\0\"]"s, "begin array\n", "[\"\\u0000\"]"},
        {"a raw 0x1F in a string", "[\"\x1F\"]", "begin array\n", "[\"\x20\"]"},
        {"a raw tab in a key", "{\"\t\":1}", "begin object\n", "{\"\\t\":1}"},
        {"an unknown escape", "[\"\\x\"]", "begin array\n", "[\"\\\\x\"]"},
        {"an escaped single quote", "[\"\\'\"]", "begin array\n", "[\"'\"]"},
        {"a capital U", "[\"\\U0041\"]", "begin array\n", "[\"\\u0041\"]"},
        {"a code of three digits", "[\"\\u041\"]", "begin array\n", "[\"\\u0041\"]"},
        {"a code with a wrong letter", "[\"\\u00g1\"]", "begin array\n", "[\"\\u00a1\"]"},
        {"a lone low surrogate", "[\"\\ude00\"]", "begin array\n", "[\"\\ud83d\\ude00\"]"},
        {"a lone high surrogate", "[\"\\ud83d\"]", "begin array\n", "[\"\\ud83d\\ude00\"]"},
        {"a high surrogate and a letter", "[\"\\ud83dx\"]", "begin array\n", "[\"\\ud83d\\ude00\"]"},
        {"a high surrogate and another code", "[\"\\ud83d\\u0041\"]", "begin array\n",
            "[\"\\ud83d\\ude00\"]"},
        {"a high surrogate and another escape", "[\"\\ud83d\\n\"]", "begin array\n", "[\"\\ud83d\\ude00\"]"},
        {"two high surrogates", "[\"\\ud83d\\ud83d\"]", "begin array\n", "[\"\\ud83d\\ude00\"]"},
        {"a vertical tab between tokens", "[\x0B]", "begin array\n", "[\x09]"},
        {"a form feed between tokens", "[\x0C]", "begin array\n", "[\x0D]"},
        {"a zero byte between tokens", "[\0]"s, "begin array\n", "[ ]"},
        {"a zero byte behind the end", "[]\0"s, "begin array\nend array\n", "[]"},
        {"a byte order mark", "\xEF\xBB\xBF[]", "", "[]"},
        {"a no-break space between tokens", "[\xC2\xA0]", "begin array\n", "[\x20]"},
        {"multi-byte text outside a string", "[\xC3\xA4]", "begin array\n", "[\"\xC3\xA4\"]"},
        {"a lone continuation byte", "[\"\x80\"]", "begin array\n", "[\"\xC2\x80\"]"},
        {"a lone last continuation byte", "[\"\xBF\"]", "begin array\n", "[\"\xC2\xBF\"]"},
        {"0xFE", "[\"\xFE\x80\x80\x80\x80\x80\x80\"]", "begin array\n", "[\"\xFD\x80\x80\x80\x80\x80\"]"},
        {"0xFF", "[\"\xFF\"]", "begin array\n", "[\"\x7F\"]"},
        {"a sequence cut by the quote", "[\"\xC3\"]", "begin array\n", "[\"\xC3\xA4\"]"},
        {"a sequence cut by a letter", "[\"\xE2\x82x\"]", "begin array\n", "[\"\xE2\x82\xACx\"]"},
        {"a sequence cut by an escape", "[\"\xC3\\n\"]", "begin array\n", "[\"\xC3\xA4\\n\"]"},
        {"a sequence cut by another one", "[\"\xC3\xC3\xA4\"]", "begin array\n", "[\"\xC3\xA4\xC3\xA4\"]"},
        {"a continuation byte too many", "[\"\xC3\xA4\xA4\"]", "begin array\n", "[\"\xC3\xA4\"]"},
    };
    for (const RefusedRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_FALSE(jsonParse(text(row.text), &acceptor, record));
        EXPECT_EQ(acceptor.log, row.log);
        expectFailures(record, {"Failed to parse JSON"});

        LoggingAcceptor neighbour;
        VontalException untouched;
        EXPECT_TRUE(jsonParse(text(row.neighbour), &neighbour, untouched)) << shown(row.neighbour);
        EXPECT_EQ(untouched.first, nullptr);
    }
}

TEST(JsonParser, KeepsRefusingAnExponentBehindZero)
{
    for (const char * const refused : {"[0e1]", "[0E1]", "[-0E5]", "[-0e+5]", "[0e]"})
    {
        SCOPED_TRACE(refused);
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_FALSE(jsonParse(text(refused), &acceptor, record));
        EXPECT_EQ(acceptor.log, "begin array\n");
        expectFailures(record, {"Failed to parse JSON"});
    }
    // With a fraction between it is a number like others, and so refused by the acceptors alone.
    LoggingAcceptor acceptor;
    VontalException record;
    EXPECT_FALSE(jsonParse("[0.0e1]", &acceptor, record));
    expectFailures(record, {"Unexpected parser state", "Failed to parse JSON"});
}

TEST(JsonParser, RefusesRealNumbersOnlyWhenTheyAreDelivered)
{
    const char * const reals[] = {"1.5", "-1.5", "0.0", "-0.5", "1e5", "1E5", "1e+5", "1e-5", "1.5e5",
        "10.25E-03", "123456789012345678901234567890.5"};
    for (const std::string real : reals)
    {
        SCOPED_TRACE(real);
        for (const std::string & closer : {","s, "]"s, " ]"s, " ,"s, "}"s})
        {
            LoggingAcceptor acceptor;
            VontalException record;
            EXPECT_FALSE(jsonParse(text("[" + real + closer), &acceptor, record));
            EXPECT_EQ(acceptor.log, "begin array\n");
            expectFailures(record, {"Unexpected parser state", "Failed to parse JSON"});
        }
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text("[" + real + " "), &acceptor, record));
        EXPECT_EQ(acceptor.log, "begin array\n");
    }
}

TEST(JsonParser, RefusesCommentsAfterDeliveringWhatIsPending)
{
    struct Row
    {
        const char * label;
        std::string text;
        const char * log;
        std::vector<std::string> failures;
    };
    const std::vector<std::string> plain = {"Failed to parse JSON"};
    const std::vector<std::string> real = {"Unexpected parser state", "Failed to parse JSON"};
    const Row rows[] = {
        {"at the start", "", "", plain},
        {"behind the end", "[]", "begin array\nend array\n", plain},
        {"in an empty object", "{", "begin object\n", plain},
        {"in front of a key", "{\"a\":\"x\",", "begin object\nkey 1 a\nstring 1 x\n", plain},
        {"in front of a colon", "{\"a\"", "begin object\nkey 1 a\n", plain},
        {"in front of a value", "{\"a\":", "begin object\nkey 1 a\n", plain},
        {"in an empty array", "[", "begin array\n", plain},
        {"behind a zero", "[0", "begin array\nint 1 0\n", plain},
        {"behind an integer", "[-12", "begin array\nint 3 -12\n", plain},
        {"behind an integer and a blank", "[12 ", "begin array\nint 2 12\n", plain},
        {"behind a fraction", "[1.5", "begin array\n", real},
        {"behind a fraction and a blank", "[1.5 ", "begin array\n", real},
        {"directly behind an exponent it delivers nothing", "[1e5", "begin array\n", plain},
        {"behind an exponent and a blank", "[1e5 ", "begin array\n", real},
        {"behind true", "[true", "begin array\ntrue\n", plain},
        {"behind false", "[false", "begin array\nfalse\n", plain},
        {"behind null", "[null ", "begin array\nnull\n", plain},
        {"behind a string", "[\"x\"", "begin array\nstring 1 x\n", plain},
        {"behind a minus it is any odd byte", "[-", "begin array\n", plain},
        {"behind a point it is any odd byte", "[1.", "begin array\n", plain},
        {"within a word it is any odd byte", "[tru", "begin array\n", plain},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        for (const std::string & comment : {"// c\n"s, "/* c */"s, "# c\n"s, "/"s, "#"s})
        {
            SCOPED_TRACE(comment);
            LoggingAcceptor acceptor;
            VontalException record;
            EXPECT_FALSE(jsonParse(text(row.text + comment), &acceptor, record));
            EXPECT_EQ(acceptor.log, row.log);
            expectFailures(record, row.failures);
        }
    }
}

TEST(JsonParser, ReadsEscapes)
{
    struct Row
    {
        const char * label;
        std::string written;
        std::string read;
    };
    const Row rows[] = {
        {"quote", "\\\"", "\""},
        {"backslash", "\\\\", "\\"},
        {"slash", "\\/", "/"},
        {"backspace", "\\b", "\x08"},
        {"form feed", "\\f", "\x0C"},
        {"line feed", "\\n", "\x0A"},
        {"carriage return", "\\r", "\x0D"},
        {"tab", "\\t", "\x09"},
        {"all of them", "\\\"\\\\\\/\\b\\f\\n\\r\\t", "\"\\/\x08\x0C\x0A\x0D\x09"},
        {"zero", "a\\u0000b", "a\0b"s},
        {"one", "\\u0001", "\x01"},
        {"the last code of one byte", "\\u007f", "\x7F"},
        {"the first of two", "\\u0080", "\xC2\x80"},
        {"the last of two", "\\u07FF", "\xDF\xBF"},
        {"the first of three", "\\u0800", "\xE0\xA0\x80"},
        {"the last in front of the surrogates", "\\ud7ff", "\xED\x9F\xBF"},
        {"the first behind the surrogates", "\\uE000", "\xEE\x80\x80"},
        {"the last of three", "\\uffff", "\xEF\xBF\xBF"},
        {"small letters", "\\uabcd", "\xEA\xAF\x8D"},
        {"capital letters", "\\uABCD", "\xEA\xAF\x8D"},
        {"mixed letters", "\\uaBcD", "\xEA\xAF\x8D"},
        {"digits behind a code are text", "\\u00411", "A1"},
        {"a pair", "\\ud83d\\ude00", "\xF0\x9F\x98\x80"},
        {"a pair in capitals", "\\uD83D\\uDE00", "\xF0\x9F\x98\x80"},
        {"the first pair", "\\ud800\\udc00", "\xF0\x90\x80\x80"},
        {"the last pair", "\\udbff\\udfff", "\xF4\x8F\xBF\xBF"},
        {"two pairs", "\\ud83d\\ude00\\ud83d\\ude01", "\xF0\x9F\x98\x80\xF0\x9F\x98\x81"},
        {"a pair between letters", "a\\ud83d\\ude00b",
            "a\xF0\x9F\x98\x80"
            "b"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        const ItemReference array = jsontest::parsed("[\"" + row.written + "\"]");
        Vontal::u8string value;
        ASSERT_TRUE(static_cast<qvjson::Array *>(*array)->getString(0, value));
        EXPECT_EQ(value, row.read);

        const ItemReference object = jsontest::parsed("{\"k" + row.written + "\":true}");
        bool isThere = false;
        EXPECT_TRUE(static_cast<qvjson::Object *>(*object)->getValue(text("k" + row.read), isThere));
    }
}

TEST(JsonParser, ReadsEveryCodeOfTheBasicPlane)
{
    for (unsigned int code = 0; code <= 0xFFFF; ++code)
    {
        constexpr std::string_view digits = "0123456789abcdef";
        std::string written = "[\"\\u";
        for (const int shift : {12, 8, 4, 0})
            written += digits[code >> shift & 0xF];
        written += "\"]";
        std::string read;
        if (code < 0x80)
        {
            read += static_cast<char>(code);
        }
        else if (code < 0x800)
        {
            read += static_cast<char>(0xC0 | code >> 6);
            read += static_cast<char>(0x80 | (code & 0x3F));
        }
        else
        {
            read += static_cast<char>(0xE0 | code >> 12);
            read += static_cast<char>(0x80 | (code >> 6 & 0x3F));
            read += static_cast<char>(0x80 | (code & 0x3F));
        }
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;

        LoggingAcceptor acceptor;
        VontalException record;
        ASSERT_EQ(jsonParse(text(written), &acceptor, record), !isSurrogate) << written;
        if (!isSurrogate)
        {
            const std::string expected =
                "begin array\nstring " + std::to_string(read.size()) + ' ' + read + "\nend array\n";
            ASSERT_EQ(acceptor.log, expected) << written;
        }
    }
}

TEST(JsonParser, ChecksTheFormOfUtf8AndNothingElse)
{
    struct Row
    {
        const char * label;
        std::string sequence;
    };
    const Row rows[] = {
        {"two bytes", "\xC3\xA4"},
        {"an overlong zero", "\xC0\x80"},
        {"an overlong letter", "\xC1\x81"},
        {"three bytes", "\xE2\x82\xAC"},
        {"an overlong form of three", "\xE0\x80\x80"},
        {"a surrogate", "\xED\xA0\x80"},
        {"the last of three", "\xEF\xBF\xBF"},
        {"four bytes", "\xF0\x9F\x98\x80"},
        {"beyond the code space", "\xF4\x90\x80\x80"},
        {"the last of four", "\xF7\xBF\xBF\xBF"},
        {"five bytes", "\xF8\x88\x80\x80\x80"},
        {"the last of five", "\xFB\xBF\xBF\xBF\xBF"},
        {"six bytes", "\xFC\x84\x80\x80\x80\x80"},
        {"the last of six", "\xFD\xBF\xBF\xBF\xBF\xBF"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text("[\"" + row.sequence + "\"]"), &acceptor, record));
        EXPECT_EQ(acceptor.log, "begin array\nstring " + std::to_string(row.sequence.size()) + ' ' +
                                    row.sequence + "\nend array\n");
        // The same without its last byte is refused, and so it is with one more.
        const std::string cut = row.sequence.substr(0, row.sequence.size() - 1);
        EXPECT_FALSE(jsonParse(text("[\"" + cut + "\"]"), &acceptor, record));
        EXPECT_FALSE(jsonParse(text("[\"" + cut + "x\"]"), &acceptor, record));
        EXPECT_FALSE(jsonParse(text("[\"" + row.sequence + "\x80\"]"), &acceptor, record));
    }
}

// ---------------------------------------------------------------------------------------------------
// What is kept of texts that end early

TEST(JsonParser, KeepsTakingTruncatedTextAsGood)
{
    const AcceptedRow rows[] = {
        {"an object", "{", "begin object\n"},
        {"within a key", "{\"a", "begin object\n"},
        {"behind a key", "{\"a\"", "begin object\nkey 1 a\n"},
        {"behind a colon", "{\"a\":", "begin object\nkey 1 a\n"},
        {"a number that no closer follows is never told", "{\"a\":1", "begin object\nkey 1 a\n"},
        {"nor with a blank behind it", "[1 ", "begin array\n"},
        {"behind a minus", "[-", "begin array\n"},
        {"a word that no closer follows is never told", "[true", "begin array\n"},
        {"within a word", "[nu", "begin array\n"},
        {"a string is told at its quote", "[\"x\"", "begin array\nstring 1 x\n"},
        {"within a string", "[\"x", "begin array\n"},
        {"within an escape", "[\"x\\", "begin array\n"},
        {"within a code", "[\"\\u00", "begin array\n"},
        {"behind a high surrogate", "[\"\\ud83d", "begin array\n"},
        {"within a sequence", "[\"\xE2\x82", "begin array\n"},
        {"behind a comma", "[1,", "begin array\nint 1 1\n"},
        {"with brackets open", "[[{\"a\":[]",
            "begin array\nbegin array\nbegin object\nkey 1 a\nbegin array\nend array\n"},
        {"a real number that no closer follows", "[1.5", "begin array\n"},
    };
    for (const AcceptedRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        LoggingAcceptor acceptor;
        VontalException record;
        EXPECT_TRUE(jsonParse(text(row.text), &acceptor, record));
        EXPECT_EQ(acceptor.log, row.log);
        EXPECT_EQ(record.first, nullptr);
    }
}

// ---------------------------------------------------------------------------------------------------
// The forms of the call

TEST(JsonParser, ReadsJustTheBytesItIsGiven)
{
    const std::string bytes = "[1,2]garbage";
    LoggingAcceptor acceptor;
    VontalException record;
    EXPECT_TRUE(jsonParse(bytes.data(), 5, &acceptor, record));
    EXPECT_EQ(acceptor.log, "begin array\nint 1 1\nint 1 2\nend array\n");

    LoggingAcceptor cut;
    EXPECT_TRUE(jsonParse(bytes.data(), 3, &cut, record));
    EXPECT_EQ(cut.log, "begin array\nint 1 1\n");

    LoggingAcceptor none;
    EXPECT_TRUE(jsonParse(nullptr, 0, &none, record));
    EXPECT_EQ(none.log, "");
    EXPECT_EQ(record.first, nullptr);
}

TEST(JsonParser, FailsAtTheFirstEventWithoutAnAcceptor)
{
    JSONParserAcceptor * const nobody = nullptr;
    for (const char * const json : {"[", "{", "[1]", " {}"})
    {
        SCOPED_TRACE(json);
        VontalException record;
        EXPECT_FALSE(jsonParse(text(json), nobody, record));
        expectFailures(record, {"Empty acceptor", "Failed to parse JSON"});
    }
    VontalException record;
    EXPECT_TRUE(jsonParse("", nobody, record));
    EXPECT_TRUE(jsonParse(" \n", nobody, record));
    EXPECT_EQ(record.first, nullptr);
    EXPECT_FALSE(jsonParse("]", nobody, record));
    expectFailures(record, {"Failed to parse JSON"});
}

TEST(JsonParser, AddsBehindWhatTheRecordHolds)
{
    VontalException record;
    record.add("before", 7, "earlier");
    LoggingAcceptor acceptor;
    EXPECT_TRUE(jsonParse("[]", &acceptor, record));
    EXPECT_EQ(jsontest::textsOf(record), (std::vector<std::string>{"earlier"}));
    EXPECT_FALSE(jsonParse("[", nullptr, record));
    EXPECT_EQ(jsontest::textsOf(record),
        (std::vector<std::string>{"earlier", "Empty acceptor", "Failed to parse JSON"}));
}

} // namespace
