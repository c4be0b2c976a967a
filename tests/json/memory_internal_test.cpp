// What the documented results are where memory is refused.

#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/JSONTreeParser.h"
#include "VontalBase/json/jsonparse.h"

#include "json/CountingItem.h"
#include "json/LoggingAcceptor.h"
#include "json/boundclasses.h"
#include "json/jsonsupport.h"
#include "support/FailingAllocator.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <ostream>
#include <set>
#include <streambuf>
#include <string>
#include <vector>

namespace
{

using jsontest::CountingItem;
using jsontest::ItemMap;
using jsontest::ItemReference;
using jsontest::make;
using qvjson::Array;
using qvjson::Object;
using testsupport::FailingAllocator;

/// Takes everything and keeps nothing, so that it allocates nothing.
class SilentAcceptor : public qvjson::JSONParserAcceptor
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject() override
    {
        return this;
    }
    bool parserEndChildObject(qvjson::JSONParserAcceptor *) override
    {
        return true;
    }
    bool parserEndObject() override
    {
        return true;
    }
    bool parseKey(Vontal::u8string const &) override
    {
        return true;
    }
    bool parseInt(char const *, unsigned int) override
    {
        return true;
    }
    bool parseString(char const *, unsigned int) override
    {
        return true;
    }
    bool parseBool(bool) override
    {
        return true;
    }
    bool parseNull() override
    {
        return true;
    }
    bool parserBeginArray() override
    {
        return true;
    }
    bool parserEndArray() override
    {
        return true;
    }
};

/// Parses with the first, second, third allocation refused, until there is no further one, and gives all
/// endings that this had: the texts of the record, or what was thrown.
std::set<std::vector<std::string>> endings(const std::function<bool(VontalException &)> & parse)
{
    std::set<std::vector<std::string>> result;
    for (std::uint64_t number = 1;; ++number)
    {
        VontalException record;
        bool isGood = false;
        bool isThrown = false;
        bool isRefused = false;
        {
            const FailingAllocator window({.allocation = number});
            try
            {
                isGood = parse(record);
            }
            catch (const std::bad_alloc &)
            {
                isThrown = true;
            }
            isRefused = window.refused() != 0;
        }
        if (!isRefused)
        {
            EXPECT_TRUE(isGood);
            return result;
        }
        EXPECT_FALSE(isGood);
        EXPECT_TRUE(jsontest::havePositions(record));
        result.insert(isThrown ? std::vector<std::string>{"thrown"} : jsontest::textsOf(record));
    }
}

TEST(JsonMemory, ParserThatCannotBeSetUpSaysSo)
{
    SilentAcceptor acceptor;
    const Vontal::u8string json = "{\"a\":[1,\"x\"]}";
    EXPECT_EQ(endings([&](VontalException & record) { return qvjson::jsonParse(json, &acceptor, record); }),
        (std::set<std::vector<std::string>>{{"Failed to initialize parser"}, {"thrown"}}));
}

TEST(JsonMemory, BuffersThatCannotGrowEndTheScan)
{
    SilentAcceptor acceptor;
    const std::vector<std::string> grown = {"Failed to parse JSON"};
    std::string escapes;
    std::string codes;
    for (int i = 0; i < 5000; ++i)
    {
        escapes += "\\n";
        codes += "\\u20ac";
    }
    for (const std::string & json :
        {"[\"" + std::string(5000, 'x') + "\"]", "[1" + std::string(5000, '0') + "]",
            "{\"" + escapes + "\":1}", "[\"" + codes + "\"]", std::string(300, '[') + std::string(300, ']')})
    {
        const Vontal::u8string text = json;
        const auto result =
            endings([&](VontalException & record) { return qvjson::jsonParse(text, &acceptor, record); });
        EXPECT_EQ(result.count(grown), 1U);
        EXPECT_EQ(result.count({"Failed to initialize parser"}), 1U);
        for (const auto & ending : result)
        {
            EXPECT_TRUE(ending == grown || ending == std::vector<std::string>{"thrown"} ||
                        ending == std::vector<std::string>{"Failed to initialize parser"})
                << testing::PrintToString(ending);
        }
    }
}

TEST(JsonMemory, TreeOverloadAddsItsOwnMessage)
{
    const Vontal::u8string json = "[\"" + std::string(5000, 'x') + "\"]";
    const auto result = endings(
        [&json](VontalException & record)
        {
            ItemReference root;
            return qvjson::jsonParse(json, root, record);
        });
    EXPECT_EQ(
        result, (std::set<std::vector<std::string>>{{"Failed to initialize parser", "Failed to parse data"},
                    {"Failed to parse JSON", "Failed to parse data"}, {"thrown"}}));
}

/// Does a step again and again, each time with a further allocation refused, and checks after each
/// std::bad_alloc that the state is what it was.
void expectAllOrNothing(const std::function<void()> & step, const std::function<std::string()> & state)
{
    const std::string before = state();
    for (std::uint64_t number = 1;; ++number)
    {
        bool isRefused = false;
        {
            const FailingAllocator window({.allocation = number});
            try
            {
                step();
            }
            catch (const std::bad_alloc &)
            {
                isRefused = true;
            }
            EXPECT_EQ(isRefused, window.refused() != 0);
        }
        if (!isRefused)
            return;
        EXPECT_EQ(state(), before) << "with allocation " << number << " refused";
    }
}

TEST(JsonMemory, ArraysStayAsTheyWereWhereAddFails)
{
    CountingItem item;
    {
        const auto array = make<Array>();
        const auto state = [&]
        {
            return std::to_string(array->getLength()) + ' ' + std::to_string(item.count);
        };
        for (int i = 1; i <= 70; ++i)
        {
            expectAllOrNothing([&] { array->add(&item); }, state);
            EXPECT_EQ(item.count, i);
        }
    }
    EXPECT_EQ(item.count, 0);
}

TEST(JsonMemory, ObjectsStayAsTheyWereWhereAddFails)
{
    CountingItem item;
    {
        const auto object = make<Object>();
        const auto state = [&]
        {
            ItemMap items;
            object->getItems(items);
            std::string text;
            for (const auto & [key, value] : items)
                text += key + ' ';
            items.clear();
            return text + std::to_string(item.count);
        };
        for (int i = 1; i <= 70; ++i)
        {
            Vontal::u8string key = std::to_string(i * 37 % 70);
            if (i % 2 == 0)
                key += " and more than fifteen bytes";
            if (i % 3 != 0)
            {
                expectAllOrNothing([&] { object->add(key, &item); }, state);
            }
            else
            {
                expectAllOrNothing([&] { EXPECT_TRUE(object->addKey(key)); }, state);
                expectAllOrNothing([&] { EXPECT_TRUE(object->add(&item)); }, state);
            }
            EXPECT_EQ(item.count, i);
        }
    }
    EXPECT_EQ(item.count, 0);
}

TEST(JsonMemory, StringsStayAsTheyWereWhereSetFails)
{
    for (const std::size_t before : {5U, 100U})
    {
        const auto string = jsontest::makeString(std::string(before, 'x'));
        expectAllOrNothing([&]
            { string->set(std::string_view("a text of more than twenty bytes").data(), 32); },
            [&string] { return std::string(string->getValue()); });
        EXPECT_EQ(string->getValue(), "a text of more than twenty bytes");
    }
}

/// A stream buffer of fixed size, so that writing to it needs no memory.
class FixedBuffer : public std::streambuf
{
public:
    FixedBuffer()
    {
        setp(bytes_.data(), bytes_.data() + bytes_.size());
    }

    std::string text() const
    {
        return {pbase(), pptr()};
    }

private:
    std::array<char, 1000> bytes_ = {};
};

TEST(JsonMemory, PrintingGoesOnBehindWhatWasWrittenWhereATreeFails)
{
    // Each time it fails at an opening bracket for which there is no room among the open ones.
    const std::string json = "[[1,[{\"a\":[[[2,[[[[[[[[[[3]]]]]]]]]]]]],\"b\":4}]],5]";
    const ItemReference tree = jsontest::parsed(json);
    std::set<std::string> texts;
    for (std::uint64_t number = 1;; ++number)
    {
        FixedBuffer buffer;
        std::ostream stream(&buffer);
        qvbase::Reference<qvjson::JSONPrinter> printer;
        ASSERT_TRUE(qvjson::jsonPrinterFactory(&stream, printer));
        bool isThrown = false;
        {
            const FailingAllocator window({.allocation = number});
            try
            {
                EXPECT_TRUE(printer->printItem(tree));
            }
            catch (const std::bad_alloc &)
            {
                isThrown = true;
            }
            EXPECT_EQ(isThrown, window.refused() != 0);
        }
        if (!isThrown)
        {
            EXPECT_EQ(buffer.text(), json);
            break;
        }
        const std::string written = buffer.text();
        ASSERT_FALSE(written.empty());
        EXPECT_EQ(json.substr(0, written.size()), written);
        EXPECT_EQ(written.back(), '[');
        texts.insert(written);
        EXPECT_TRUE(printer->printInt(6));
        EXPECT_TRUE(printer->printInt(7));
        EXPECT_EQ(buffer.text(), written + "6,7");
    }
    EXPECT_GE(texts.size(), 3U);
    EXPECT_EQ(*texts.begin(), "[");
}

TEST(JsonMemory, NothingButAWantOfMemoryLeavesABoundClassThatIsPrinted)
{
    // Of a size at which the text goes from the printer to the stream in the middle of a tree.
    const auto object = make<jsontest::Everything>();
    object->jsonFieldsDeclare();
    object->tree = make<Object>();
    for (int i = 0; i < 100; ++i)
        object->tree->add(std::to_string(i), jsontest::makeString(std::string(500, 'x')));
    Vontal::u8string text = "before";
    expectAllOrNothing([&] { EXPECT_TRUE(object->toJson(text)); }, [&text] { return std::string(text); });
    EXPECT_GT(text.size(), 50000U);
}

/// What comes behind the beginning of an array.
using Event = bool (*)(qvjson::JSONTreeParser & parser);
const Vontal::u8string longKey = "a key of more than fifteen bytes";
const Event events[] = {
    [](qvjson::JSONTreeParser & parser) { return parser.parserBeginArray(); },
    [](qvjson::JSONTreeParser & parser) { return parser.parseInt("1", 1); },
    [](qvjson::JSONTreeParser & parser) { return parser.parserEndArray(); },
    [](qvjson::JSONTreeParser & parser) { return parser.parserBeginObject() != nullptr; },
    [](qvjson::JSONTreeParser & parser) { return parser.parseKey(longKey); },
    [](qvjson::JSONTreeParser & parser) { return parser.parseString("text", 4); },
    [](qvjson::JSONTreeParser & parser) { return parser.parserEndObject(); },
    [](qvjson::JSONTreeParser & parser) { return parser.parseBool(true); },
    [](qvjson::JSONTreeParser & parser) { return parser.parseNull(); },
    [](qvjson::JSONTreeParser & parser) { return parser.root().get() != nullptr; },
    [](qvjson::JSONTreeParser & parser) { return parser.parserEndArray(); },
};

TEST(JsonMemory, ATreeParserRefusesEveryEventAfterAWantOfMemory)
{
    for (std::uint64_t number = 1;; ++number)
    {
        SCOPED_TRACE(number);
        qvjson::JSONTreeParser parser;
        bool isThrown = false;
        {
            const FailingAllocator window({.allocation = number});
            try
            {
                EXPECT_TRUE(parser.parserBeginArray());
                for (const Event event : events)
                    EXPECT_TRUE(event(parser));
            }
            catch (const std::bad_alloc &)
            {
                isThrown = true;
            }
        }
        if (!isThrown)
        {
            EXPECT_GT(number, 5U);
            return;
        }
        EXPECT_EQ(parser.parserBeginObject(), nullptr);
        EXPECT_FALSE(parser.parserBeginArray());
        EXPECT_FALSE(parser.parseKey("k"));
        EXPECT_FALSE(parser.parseInt("1", 1));
        EXPECT_FALSE(parser.parseString("text", 4));
        EXPECT_FALSE(parser.parseBool(true));
        EXPECT_FALSE(parser.parseNull());
        EXPECT_FALSE(parser.parserEndArray());
        EXPECT_FALSE(parser.parserEndObject());
    }
}

TEST(JsonMemory, GetItemsLeavesTheMapWhereItFails)
{
    const ItemReference root = jsontest::parsed("{\"a\":1,\"b key of more than fifteen bytes\":2,\"c\":3}");
    ItemMap items = {{"before", nullptr}};
    expectAllOrNothing([&] { static_cast<Object *>(*root)->getItems(items); },
        [&items] { return std::to_string(items.size()) + items.begin()->first; });
    EXPECT_EQ(items.size(), 3U);
}

} // namespace
