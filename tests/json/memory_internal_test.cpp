// What the documented results are where memory is refused.

#include "VontalBase/json/jsonparse.h"

#include "json/CountingItem.h"
#include "json/LoggingAcceptor.h"
#include "json/jsonsupport.h"
#include "support/FailingAllocator.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <set>
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

TEST(JsonMemory, GetItemsLeavesTheMapWhereItFails)
{
    const ItemReference root = jsontest::parsed("{\"a\":1,\"b key of more than fifteen bytes\":2,\"c\":3}");
    ItemMap items = {{"before", nullptr}};
    expectAllOrNothing([&] { static_cast<Object *>(*root)->getItems(items); },
        [&items] { return std::to_string(items.size()) + items.begin()->first; });
    EXPECT_EQ(items.size(), 3U);
}

} // namespace
