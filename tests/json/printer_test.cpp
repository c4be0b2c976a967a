#include "VontalBase/json/JSONPrinter.h"

#include "json/CountingItem.h"
#include "json/RefusingPrinter.h"
#include "json/jsonsupport.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

namespace
{

using jsontest::CountingItem;
using jsontest::ItemReference;
using jsontest::make;
using jsontest::makeBool;
using jsontest::makeInt;
using jsontest::makeString;
using jsontest::text;
using qvjson::Array;
using qvjson::Item;
using qvjson::JSONPrinter;
using qvjson::jsonPrinterFactory;
using qvjson::Object;
using qvjson::ValueNull;

using PrinterReference = qvbase::Reference<JSONPrinter>;

using namespace std::string_literals;

/// What some tokens give; each of them must say true.
std::string printedBy(const std::function<void(JSONPrinter &)> & tokens)
{
    std::ostringstream stream;
    PrinterReference printer;
    EXPECT_TRUE(jsonPrinterFactory(&stream, printer));
    tokens(*printer);
    return stream.str();
}

// ---------------------------------------------------------------------------------------------------
// The factory

TEST(JsonPrinterFactory, RefusesANullStreamAndLeavesTheReference)
{
    PrinterReference printer;
    EXPECT_FALSE(jsonPrinterFactory(nullptr, printer));
    EXPECT_EQ(printer.get(), nullptr);
    std::ostringstream stream;
    EXPECT_TRUE(jsonPrinterFactory(&stream, printer));
    JSONPrinter * const before = printer;
    ASSERT_NE(before, nullptr);
    EXPECT_FALSE(jsonPrinterFactory(nullptr, printer));
    EXPECT_EQ(printer.get(), before);
}

TEST(JsonPrinterFactory, ReplacesThePrinter)
{
    std::ostringstream first;
    std::ostringstream second;
    PrinterReference printer;
    EXPECT_TRUE(jsonPrinterFactory(&first, printer));
    const PrinterReference kept = printer;
    EXPECT_TRUE(jsonPrinterFactory(&second, printer));
    EXPECT_NE(printer.get(), kept.get());
    EXPECT_TRUE(printer->printInt(2));
    EXPECT_TRUE(kept->printInt(1));
    EXPECT_EQ(first.str(), "1");
    EXPECT_EQ(second.str(), "2");
}

/// A printer that writes its references down, and is not destroyed by the last release.
class CountedPrinter : public jsontest::RefusingPrinter
{
public:
    void addRef() override
    {
        log += '+';
    }
    void release() override
    {
        log += '-';
    }

    std::string log;
};

TEST(JsonPrinterFactory, LetsTheFormerPrinterGoUnlessItRefuses)
{
    CountedPrinter former;
    PrinterReference printer(&former);
    EXPECT_EQ(former.log, "+");
    EXPECT_FALSE(jsonPrinterFactory(nullptr, printer));
    EXPECT_EQ(former.log, "+");
    std::ostringstream stream;
    EXPECT_TRUE(jsonPrinterFactory(&stream, printer));
    EXPECT_EQ(former.log, "+-");
    EXPECT_NE(printer.get(), &former);
}

TEST(JsonPrinterFactory, WritesNothingByItself)
{
    std::ostringstream stream;
    {
        PrinterReference printer;
        EXPECT_TRUE(jsonPrinterFactory(&stream, printer));
        EXPECT_TRUE(printer->printArrayBegin());
        // What was printed is in the stream before the call returns.
        EXPECT_EQ(stream.str(), "[");
    }
    EXPECT_EQ(stream.str(), "[");
}

// ---------------------------------------------------------------------------------------------------
// Tokens

struct TokenRow
{
    const char * label;
    std::function<bool(JSONPrinter &)> print;
    std::string text;
};

TEST(JsonPrinter, PrintsEachTokenAndSaysTrue)
{
    const TokenRow rows[] = {
        {"object begin", [](JSONPrinter & p) { return p.printObjectBegin(); }, "{"},
        {"object end", [](JSONPrinter & p) { return p.printObjectEnd(); }, "}"},
        {"array begin", [](JSONPrinter & p) { return p.printArrayBegin(); }, "["},
        {"array end", [](JSONPrinter & p) { return p.printArrayEnd(); }, "]"},
        {"key", [](JSONPrinter & p) { return p.printKey("a"); }, "\"a\":"},
        {"empty key", [](JSONPrinter & p) { return p.printKey(""); }, "\"\":"},
        {"key with escapes", [](JSONPrinter & p) { return p.printKey("a\"\n"); }, "\"a\\\"\\n\":"},
        {"string", [](JSONPrinter & p) { return p.printString("text"); }, "\"text\""},
        {"empty string", [](JSONPrinter & p) { return p.printString(""); }, "\"\""},
        {"quote, backslash and slash", [](JSONPrinter & p) { return p.printString("\"\\/"); },
            "\"\\\"\\\\/\""},
        {"number", [](JSONPrinter & p) { return p.printNumber("12345678901234567890"); },
            "12345678901234567890"},
        {"number, unchecked", [](JSONPrinter & p) { return p.printNumber("no \"number\""); },
            "no \"number\""},
        {"number, empty", [](JSONPrinter & p) { return p.printNumber(""); }, ""},
        {"number with a zero byte", [](JSONPrinter & p) { return p.printNumber(text("1\0"s + "2")); },
            "1\0"s + "2"},
        {"zero", [](JSONPrinter & p) { return p.printInt(0); }, "0"},
        {"seven", [](JSONPrinter & p) { return p.printInt(7); }, "7"},
        {"minus one", [](JSONPrinter & p) { return p.printInt(-1); }, "-1"},
        {"the greatest int", [](JSONPrinter & p) { return p.printInt(2147483647); }, "2147483647"},
        {"the least int", [](JSONPrinter & p) { return p.printInt(-2147483647 - 1); }, "-2147483648"},
        {"true", [](JSONPrinter & p) { return p.printBool(true); }, "true"},
        {"false", [](JSONPrinter & p) { return p.printBool(false); }, "false"},
        {"null", [](JSONPrinter & p) { return p.printNull(); }, "null"},
    };
    for (const TokenRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(printedBy([&row](JSONPrinter & printer) { EXPECT_TRUE(row.print(printer)); }), row.text);
    }
}

TEST(JsonPrinter, PutsCommasByItself)
{
    const auto print = [](const char * tokens)
    {
        return printedBy(
            [tokens](JSONPrinter & printer)
            {
                for (const char * token = tokens; *token != '\0'; ++token)
                {
                    switch (*token)
                    {
                    case '{':
                        printer.printObjectBegin();
                        break;
                    case '}':
                        printer.printObjectEnd();
                        break;
                    case '[':
                        printer.printArrayBegin();
                        break;
                    case ']':
                        printer.printArrayEnd();
                        break;
                    case 'k':
                        printer.printKey("k");
                        break;
                    case 's':
                        printer.printString("s");
                        break;
                    case 'd':
                        printer.printNumber("12");
                        break;
                    case 'i':
                        printer.printInt(3);
                        break;
                    case 'n':
                        printer.printNull();
                        break;
                    case 'b':
                        printer.printBool(true);
                        break;
                    default:
                        ADD_FAILURE() << *token;
                    }
                }
            });
    };
    struct Row
    {
        const char * tokens;
        const char * text;
    };
    const Row rows[] = {
        {"", ""},
        {"{}", "{}"},
        {"[]", "[]"},
        {"{ki}", "{\"k\":3}"},
        {"{kikb}", "{\"k\":3,\"k\":true}"},
        {"[ii]", "[3,3]"},
        {"[sdinb]", "[\"s\",12,3,null,true]"},
        {"[s[n]{}b]", "[\"s\",[null],{},true]"},
        {"[[][]]", "[[],[]]"},
        {"[[[]][]]", "[[[]],[]]"},
        {"{k[]k{}}", "{\"k\":[],\"k\":{}}"},
        {"{k{k{ki}}}", "{\"k\":{\"k\":{\"k\":3}}}"},
        {"{k[ii]ki}", "{\"k\":[3,3],\"k\":3}"},
        // Kept: nothing checks the order of tokens, and these are the separators where it is wrong.
        {"ii", "3,3"},
        {"[][]", "[],[]"},
        {"{}i", "{},3"},
        {"]i", "],3"},
        {"i]", "3]"},
        {"]]}", "]]}"},
        {"]}[", "]},["},
        {"kk", "\"k\":\"k\":"},
        {"k]i", "\"k\":],3"},
        {"k]]", "\"k\":]]"},
        {"ki", "\"k\":3"},
        {"kii", "\"k\":3,3"},
        {"[k", "[\"k\":"},
        {"{ii}", "{3,3}"},
        {"k[i", "\"k\":[3"},
        {"i[i", "3,[3"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.tokens);
        EXPECT_EQ(print(row.tokens), row.text);
    }
}

TEST(JsonPrinter, PrintsTheExampleOfTwoMembers)
{
    EXPECT_EQ(printedBy(
                  [](JSONPrinter & printer)
                  {
                      EXPECT_TRUE(printer.printObjectBegin());
                      EXPECT_TRUE(printer.printKey("a"));
                      EXPECT_TRUE(printer.printInt(1));
                      EXPECT_TRUE(printer.printKey("b"));
                      EXPECT_TRUE(printer.printBool(false));
                      EXPECT_TRUE(printer.printObjectEnd());
                  }),
        "{\"a\":1,\"b\":false}");
}

TEST(JsonPrinter, DoesNotCheckTheBalance)
{
    std::string closers;
    EXPECT_EQ(printedBy(
                  [&closers](JSONPrinter & printer)
                  {
                      for (int i = 0; i < 1000; ++i)
                      {
                          EXPECT_TRUE(printer.printArrayEnd());
                          EXPECT_TRUE(printer.printObjectEnd());
                          closers += "]}";
                      }
                  }),
        closers);
}

// ---------------------------------------------------------------------------------------------------
// Escaping

/// How each byte is written; the bytes that are not named here stand for themselves.
const std::pair<int, const char *> escapes[] = {{0x00, "\\u0000"}, {0x01, "\\u0001"}, {0x02, "\\u0002"},
    {0x03, "\\u0003"}, {0x04, "\\u0004"}, {0x05, "\\u0005"}, {0x06, "\\u0006"}, {0x07, "\\u0007"},
    {0x08, "\\b"}, {0x09, "\\t"}, {0x0A, "\\n"}, {0x0B, "\\u000b"}, {0x0C, "\\f"}, {0x0D, "\\r"},
    {0x0E, "\\u000e"}, {0x0F, "\\u000f"}, {0x10, "\\u0010"}, {0x11, "\\u0011"}, {0x12, "\\u0012"},
    {0x13, "\\u0013"}, {0x14, "\\u0014"}, {0x15, "\\u0015"}, {0x16, "\\u0016"}, {0x17, "\\u0017"},
    {0x18, "\\u0018"}, {0x19, "\\u0019"}, {0x1A, "\\u001a"}, {0x1B, "\\u001b"}, {0x1C, "\\u001c"},
    {0x1D, "\\u001d"}, {0x1E, "\\u001e"}, {0x1F, "\\u001f"}, {0x22, "\\\""}, {0x5C, "\\\\"}};

std::string escaped(int byte)
{
    for (const auto & [escapedByte, escape] : escapes)
    {
        if (escapedByte == byte)
            return escape;
    }
    return std::string(1, static_cast<char>(byte));
}

TEST(JsonPrinter, EscapesEveryByteByTheTable)
{
    std::string all;
    std::string allEscaped;
    for (int byte = 0; byte < 256; ++byte)
    {
        SCOPED_TRACE(byte);
        const std::string bytes(1, static_cast<char>(byte));
        const std::string expected = '"' + escaped(byte) + '"';
        EXPECT_EQ(printedBy([&](JSONPrinter & printer) { printer.printString(text(bytes)); }), expected);
        EXPECT_EQ(printedBy([&](JSONPrinter & printer) { printer.printKey(text(bytes)); }), expected + ':');
        EXPECT_EQ(jsontest::printed(makeString(bytes).get()), expected);
        all += bytes;
        allEscaped += escaped(byte);
    }
    EXPECT_EQ(jsontest::printed(makeString(all).get()), '"' + allEscaped + '"');
    const auto object = make<Object>();
    object->add(text(all), makeBool(true));
    EXPECT_EQ(jsontest::printed(object.get()), "{\"" + allEscaped + "\":true}");
}

TEST(JsonPrinter, EscapesAtEveryPlaceOfAString)
{
    for (const int byte :
        {0x00, 0x08, 0x1F, 0x20, 0x21, 0x22, 0x23, 0x2F, 0x5B, 0x5C, 0x5D, 0x7F, 0x80, 0xC3, 0xFF})
    {
        for (std::size_t before = 0; before <= 40; ++before)
        {
            for (const std::size_t behind : {0U, 1U, 7U, 15U, 16U, 17U, 40U})
            {
                const std::string bytes =
                    std::string(before, 'x') + static_cast<char>(byte) + std::string(behind, 'y');
                const std::string expected =
                    '"' + std::string(before, 'x') + escaped(byte) + std::string(behind, 'y') + '"';
                ASSERT_EQ(
                    printedBy([&](JSONPrinter & printer) { printer.printString(text(bytes)); }), expected);
                ASSERT_EQ(jsontest::printed(makeString(bytes).get()), expected);
            }
        }
    }
}

TEST(JsonPrinter, PrintsTextsLargerThanAnyBuffer)
{
    // Round the sizes at which buffers are likely to be full.
    for (const std::size_t size :
        {16000U, 16319U, 16320U, 16321U, 16382U, 16383U, 16384U, 16385U, 32768U, 100000U, 1000000U})
    {
        SCOPED_TRACE(size);
        const std::string plain(size, 'x');
        const std::string controls(size, '\x01');
        std::string controlsEscaped;
        for (std::size_t i = 0; i < size; ++i)
            controlsEscaped += "\\u0001";
        const auto print = [](const std::string & bytes)
        {
            return printedBy(
                [&bytes](JSONPrinter & printer)
                {
                    printer.printString(text(bytes));
                    printer.printNumber(text(bytes));
                });
        };
        EXPECT_TRUE(print(plain) == '"' + plain + "\"," + plain);
        EXPECT_TRUE(print(controls) == '"' + controlsEscaped + "\"," + controls);
    }
}

TEST(JsonPrinter, PrintsTreesLargerThanAnyBuffer)
{
    std::string json = "[";
    for (int i = 0; i < 20000; ++i)
    {
        json += i == 0 ? "" : ",";
        json += "{\"key\":" + std::to_string(i) + ",\"text\":\"value\\n" + std::to_string(i) + "\"}";
    }
    json += "]";
    EXPECT_TRUE(jsontest::printed(jsontest::parsed(json)) == json);
}

// ---------------------------------------------------------------------------------------------------
// Whole trees

TEST(JsonPrinterItem, PrintsEveryType)
{
    EXPECT_EQ(jsontest::printed(make<ValueNull>().get()), "null");
    EXPECT_EQ(jsontest::printed(make<Object>().get()), "{}");
    EXPECT_EQ(jsontest::printed(make<Array>().get()), "[]");
    EXPECT_EQ(jsontest::printed(makeString("x").get()), "\"x\"");
    EXPECT_EQ(jsontest::printed(makeInt("-12").get()), "-12");
    EXPECT_EQ(jsontest::printed(makeBool(true).get()), "true");
    EXPECT_EQ(jsontest::printed(makeBool(false).get()), "false");
}

TEST(JsonPrinterItem, KeepsNarrowingIntegersTo32Bits)
{
    const std::pair<const char *, const char *> rows[] = {
        {"5000000000", "705032704"},
        {"-5000000000", "-705032704"},
        {"2147483647", "2147483647"},
        {"2147483648", "-2147483648"},
        {"4294967295", "-1"},
        {"4294967296", "0"},
        {"9223372036854775807", "-1"},
    };
    for (const auto & [value, expected] : rows)
        EXPECT_EQ(jsontest::printed(makeInt(value).get()), expected) << value;
    // The way round it.
    EXPECT_EQ(printedBy([](JSONPrinter & printer)
                  { EXPECT_TRUE(printer.printNumber(std::to_string(makeInt("5000000000")->getInt64()))); }),
        "5000000000");
}

TEST(JsonPrinterItem, PrintsKeysSorted)
{
    EXPECT_EQ(
        jsontest::printed(jsontest::parsed("{ \"b\" : 1 , \"a\" : [ 2 , { \"d\" : 3 , \"c\" : 4 } ] }")),
        "{\"a\":[2,{\"c\":4,\"d\":3}],\"b\":1}");
    // By unsigned bytes, the shorter prefix first.
    EXPECT_EQ(jsontest::printed(jsontest::parsed(
                  "{\"\xC3\xA4\":1,\"z\":2,\"aa\":3,\"a\":4,\"Z\":5,\"a\\u0000\":6,\"\x7F\":7}")),
        "{\"Z\":5,\"a\":4,\"a\\u0000\":6,\"aa\":3,\"z\":2,\"\x7F\":7,\"\xC3\xA4\":1}");
}

TEST(JsonPrinterItem, TakesItsPlaceAmongTheTokens)
{
    const ItemReference tree = jsontest::parsed("{\"a\":[1]}");
    EXPECT_EQ(printedBy(
                  [&tree](JSONPrinter & printer)
                  {
                      printer.printArrayBegin();
                      EXPECT_TRUE(printer.printItem(tree));
                      EXPECT_TRUE(printer.printItem(tree));
                      printer.printInt(1);
                      EXPECT_TRUE(printer.printItem(makeInt("2")));
                      printer.printObjectBegin();
                      printer.printKey("k");
                      EXPECT_TRUE(printer.printItem(tree));
                      printer.printKey("l");
                      EXPECT_TRUE(printer.printItem(makeString("x")));
                      printer.printObjectEnd();
                      printer.printArrayEnd();
                  }),
        "[{\"a\":[1]},{\"a\":[1]},1,2,{\"k\":{\"a\":[1]},\"l\":\"x\"}]");
}

TEST(JsonPrinterItem, FailsAtNullAndUnknownNodesAndKeepsWhatWasWritten)
{
    struct Row
    {
        const char * label;
        std::function<ItemReference(Item *)> make;
        const char * text;
    };
    const Row rows[] = {
        {"alone", [](Item * odd) { return ItemReference(odd); }, ""},
        {"first element",
            [](Item * odd)
            {
                const auto array = make<Array>();
                array->add(odd);
                array->add(makeInt("1"));
                return ItemReference(array);
            },
            "["},
        {"second element",
            [](Item * odd)
            {
                const auto array = make<Array>();
                array->add(makeInt("1"));
                array->add(odd);
                return ItemReference(array);
            },
            "[1"},
        {"first entry",
            [](Item * odd)
            {
                const auto object = make<Object>();
                object->add("a", odd);
                object->add("b", makeInt("1"));
                return ItemReference(object);
            },
            "{\"a\":"},
        {"second entry",
            [](Item * odd)
            {
                const auto object = make<Object>();
                object->add("b", odd);
                object->add("a", makeInt("1"));
                return ItemReference(object);
            },
            "{\"a\":1,\"b\":"},
        {"deep within",
            [](Item * odd)
            {
                const auto inner = make<Array>();
                inner->add(make<Array>());
                inner->add(odd);
                const auto object = make<Object>();
                object->add("k", inner);
                const auto array = make<Array>();
                array->add(object);
                array->add(makeInt("1"));
                return ItemReference(array);
            },
            "[{\"k\":[[]"},
    };
    for (const std::uint32_t type :
        {std::uint32_t{qvjson::TypeReserved}, 7U, 8U, 100U, 0xFFFFU, 0x10000U, 0x10002U, 0xFFFFFFFFU})
    {
        CountingItem unknown(static_cast<qvjson::Type>(type));
        Item * const oddOnes[] = {nullptr, &unknown};
        for (Item * const odd : oddOnes)
        {
            SCOPED_TRACE(odd == nullptr ? "null" : "unknown");
            for (const Row & row : rows)
            {
                SCOPED_TRACE(row.label);
                EXPECT_EQ(
                    printedBy([&](JSONPrinter & printer) { EXPECT_FALSE(printer.printItem(row.make(odd))); }),
                    row.text);
            }
        }
    }
}

/// A tree of a text, in which every null is a null pointer.
ItemReference withNullPointers(const ItemReference & item)
{
    if (item->getType() == qvjson::TypeNull)
        return {};
    if (Array * const array = *item)
    {
        const auto result = make<Array>();
        for (unsigned int i = 0; i < array->getLength(); ++i)
        {
            ItemReference element;
            EXPECT_TRUE(array->getItem(i, element));
            result->add(withNullPointers(element));
        }
        return result;
    }
    if (Object * const object = *item)
    {
        const auto result = make<Object>();
        jsontest::ItemMap items;
        object->getItems(items);
        for (const auto & [key, value] : items)
            result->add(key, withNullPointers(value));
        return result;
    }
    return item;
}

TEST(JsonPrinterItem, SeparatorsGoOnAfterAFailure)
{
    struct Row
    {
        const char * tree;
        /// With a 2 and the end of an array printed behind it.
        const char * text;
    };
    const Row rows[] = {
        {"null", "2]"},
        {"[null]", "[2]"},
        {"[1,null]", "[1,2]"},
        {"[[],null]", "[[],2]"},
        {"[{},null]", "[{},2]"},
        {"[[null]]", "[[2]"},
        {"[[1],[null]]", "[[1],[2]"},
        {"[[1],[3,null]]", "[[1],[3,2]"},
        {"{\"a\":null}", "{\"a\":2]"},
        {"{\"a\":1,\"b\":null}", "{\"a\":1,\"b\":2]"},
        {"{\"a\":[],\"b\":null}", "{\"a\":[],\"b\":2]"},
        {"{\"a\":[null]}", "{\"a\":[2]"},
        {"{\"a\":[1,null]}", "{\"a\":[1,2]"},
        {"[{\"a\":null}]", "[{\"a\":2]"},
        {"[1,{\"a\":{\"b\":null}}]", "[1,{\"a\":{\"b\":2]"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.tree);
        const ItemReference tree = withNullPointers(jsontest::parsed("[" + std::string(row.tree) + "]"));
        ItemReference inner;
        static_cast<Array *>(*tree)->getItem(0, inner);
        EXPECT_EQ(printedBy(
                      [&inner](JSONPrinter & printer)
                      {
                          EXPECT_FALSE(printer.printItem(inner));
                          EXPECT_TRUE(printer.printInt(2));
                          EXPECT_TRUE(printer.printArrayEnd());
                      }),
            row.text);
    }
}

TEST(JsonPrinterItem, AFailureBehindAKeyLeavesTheKeyWaiting)
{
    const auto print = [](Item * item)
    {
        return printedBy(
            [item](JSONPrinter & printer)
            {
                EXPECT_TRUE(printer.printKey("k"));
                EXPECT_FALSE(printer.printItem(item));
                EXPECT_TRUE(printer.printInt(2));
                EXPECT_TRUE(printer.printInt(3));
            });
    };
    EXPECT_EQ(print(nullptr), "\"k\":2,3");
    CountingItem unknown;
    EXPECT_EQ(print(&unknown), "\"k\":2,3");
    const auto array = make<Array>();
    array->add(nullptr);
    EXPECT_EQ(print(array), "\"k\":[2,3");
}

TEST(JsonPrinterItem, KeepsWhatWasWrittenHoweverMuchItWas)
{
    const auto array = make<Array>();
    std::string expected;
    for (int i = 0; i < 20000; ++i)
    {
        array->add(makeInt(std::to_string(i)));
        expected += (i == 0 ? "[" : ",") + std::to_string(i);
    }
    array->add(nullptr);
    EXPECT_TRUE(
        printedBy([&array](JSONPrinter & printer) { EXPECT_FALSE(printer.printItem(array)); }) == expected);
}

TEST(JsonPrinterItem, LeavesTheCountsAlone)
{
    CountingItem unknown;
    {
        const auto array = make<Array>();
        array->add(&unknown);
        EXPECT_EQ(printedBy([&](JSONPrinter & printer) { EXPECT_FALSE(printer.printItem(array)); }), "[");
        EXPECT_EQ(unknown.count, 1);
    }
    EXPECT_EQ(unknown.count, 0);
}

// ---------------------------------------------------------------------------------------------------
// Streams that refuse

/// Takes so many bytes and then no more.
class NarrowBuffer : public std::streambuf
{
public:
    explicit NarrowBuffer(std::size_t room) : room_(room)
    {
    }

    std::string taken;

protected:
    int_type overflow(int_type byte) override
    {
        if (taken.size() >= room_ || byte == traits_type::eof())
            return traits_type::eof();
        taken += traits_type::to_char_type(byte);
        return byte;
    }

private:
    std::size_t room_;
};

TEST(JsonPrinter, KeepsSayingTrueToAStreamThatRefuses)
{
    NarrowBuffer buffer(3);
    std::ostream stream(&buffer);
    PrinterReference printer;
    ASSERT_TRUE(jsonPrinterFactory(&stream, printer));
    EXPECT_TRUE(printer->printArrayBegin());
    EXPECT_TRUE(printer->printString("text"));
    EXPECT_TRUE(printer->printKey("key"));
    EXPECT_TRUE(printer->printNumber("1"));
    EXPECT_TRUE(printer->printInt(1));
    EXPECT_TRUE(printer->printBool(true));
    EXPECT_TRUE(printer->printNull());
    EXPECT_TRUE(printer->printItem(jsontest::parsed("{\"a\":[1,2]}")));
    EXPECT_TRUE(printer->printObjectBegin());
    EXPECT_TRUE(printer->printObjectEnd());
    EXPECT_TRUE(printer->printArrayEnd());
    EXPECT_FALSE(stream.good());
    EXPECT_EQ(buffer.taken, "[\"t");
}

/// Throws at every byte.
class ThrowingBuffer : public std::streambuf
{
protected:
    std::streamsize xsputn(const char *, std::streamsize) override
    {
        throw std::runtime_error("no more");
    }
    int_type overflow(int_type) override
    {
        throw std::runtime_error("no more");
    }
};

TEST(JsonPrinter, HandsTheBytesOnceToAStreamThatThrows)
{
    const struct
    {
        const char * label;
        std::function<void(JSONPrinter &)> print;
    } rows[] = {
        {"a token",
            [](JSONPrinter & printer)
            {
                printer.printString("text");
            }},
        {"a tree",
            [](JSONPrinter & printer)
            {
                printer.printItem(jsontest::parsed("[1]"));
            }},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        ThrowingBuffer buffer;
        std::ostream stream(&buffer);
        stream.exceptions(std::ios::badbit);
        PrinterReference printer;
        ASSERT_TRUE(jsonPrinterFactory(&stream, printer));
        EXPECT_THROW(row.print(*printer), std::runtime_error);
        // A second attempt would have added the bit of an operation that was not begun.
        EXPECT_EQ(stream.rdstate(), std::ios::badbit);
    }
}

TEST(JsonPrinter, KeepsSayingTrueToAStreamThatHasFailedAlready)
{
    std::ostringstream stream;
    stream.setstate(std::ios::failbit);
    PrinterReference printer;
    ASSERT_TRUE(jsonPrinterFactory(&stream, printer));
    EXPECT_TRUE(printer->printInt(1));
    EXPECT_TRUE(printer->printItem(jsontest::parsed("[1]")));
    EXPECT_EQ(stream.str(), "");
    // What was lost stays lost.
    stream.clear();
    EXPECT_TRUE(printer->printInt(2));
    EXPECT_EQ(stream.str(), ",2");
}

TEST(JsonPrinter, ReadsBackAsItWasPrinted)
{
    std::string all;
    for (int byte = 0; byte < 0x80; ++byte)
        all += static_cast<char>(byte);
    all += "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
    const auto array = make<Array>();
    array->add(makeString(all));
    array->add(makeInt("-2147483648"));
    const auto object = make<Object>();
    object->add(text(all), make<ValueNull>());
    array->add(object);
    const ItemReference again = jsontest::parsed(jsontest::printed(array.get()));
    EXPECT_TRUE(again->equals(array));
}

} // namespace
