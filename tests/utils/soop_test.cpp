#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/soop_db.h"
#include "VontalBase/utils/soop_node.h"

#include "support/IntendedLeak.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"
#include "support/TestBarrier.h"
#include "support/VirtualSlot.h"
#include "support/WideErrors.h"

#include <atomic>
#include <gtest/gtest.h>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qv_soop::soop_db;
using qv_soop::soop_node;
using testsupport::TempDirectory;
using Vontal::u8string;
using Attributes = std::map<std::string, std::string>;

static_assert(std::has_virtual_destructor_v<soop_db>);
static_assert(std::has_virtual_destructor_v<soop_node>);
static_assert(std::is_copy_constructible_v<soop_db> && std::is_copy_assignable_v<soop_db>);
static_assert(std::is_copy_constructible_v<soop_node> && std::is_copy_assignable_v<soop_node>);

using Text = const std::string &;
static_assert(std::is_same_v<decltype(&soop_db::getList), const std::list<soop_node *> & (soop_db::*)(Text)>);
static_assert(std::is_same_v<decltype(&soop_db::addList), bool (soop_db::*)(Text)>);
static_assert(std::is_same_v<decltype(&soop_db::init), bool (soop_db::*)(const u8string &)>);
static_assert(
    std::is_same_v<decltype(&soop_db::getRootNode), const soop_node * (soop_db::*)() const noexcept>);
static_assert(
    std::is_same_v<decltype(&soop_node::getNode), const soop_node * (soop_node::*)(Text, Text, Text) const>);
[[maybe_unused]] constexpr const soop_node * (soop_db::*getNodeByText)(
    Text, Text, Text) const = &soop_db::getNode;
[[maybe_unused]] constexpr const soop_node * (soop_db::*getNodeByNumber)(
    Text, Text, int) const = &soop_db::getNode;

/// A directory with one database after the other in it.
class ListDatabase : public testing::Test
{
protected:
    ~ListDatabase() override
    {
        directory.clear();
    }

    bool load(soop_db & database, const std::string & text) const
    {
        return database.init(u8string(directory.write("list.xml", text)));
    }

    const TempDirectory directory;

private:
    const testsupport::WideErrors m_silent;
};

/// The attribute "n" of each node.
std::string numbersOf(const std::list<soop_node *> & nodes)
{
    std::string numbers;
    for (const soop_node * const node : nodes)
    {
        const char * const number = node->getAttr("n");
        numbers += std::string(number != nullptr ? number : "-") + " ";
    }
    return numbers;
}

std::string numberOf(const soop_node * node)
{
    return node != nullptr && node->getAttr("n") != nullptr ? node->getAttr("n") : "(none)";
}

/// So many elements within each other, and then this one.
std::string nested(int depth, const std::string & innermost)
{
    std::string text = innermost;
    for (int i = 0; i < depth; ++i)
        text = "<a>" + text + "</a>";
    return text;
}

TEST_F(ListDatabase, HasNoVirtualOperationsButDestructors)
{
    EXPECT_EQ(testsupport::virtualSlots<soop_db>(), testsupport::slotsOfDestructor);
    EXPECT_EQ(testsupport::virtualSlots<soop_node>(), testsupport::slotsOfDestructor);
}

TEST_F(ListDatabase, IsEmptyAtFirst)
{
    soop_db database;
    const soop_node * const root = database.getRootNode();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->getName(), "");
    EXPECT_EQ(root->getParent(), nullptr);
    EXPECT_EQ(root->getAttributes(), Attributes());
    EXPECT_TRUE(root->getSubnodes().empty());
    EXPECT_EQ(database.getNode("a", "b", "c"), nullptr);
    EXPECT_TRUE(database.getList("a").empty());
    EXPECT_FALSE(database.addList("a"));
}

TEST_F(ListDatabase, HoldsTagsAttributesAndStructure)
{
    soop_db database;
    ASSERT_TRUE(
        load(database, "<?xml version='1.0'?><!-- c --><list v='1'>text<item n='1' \xC4\x8D='&lt;\xC3\xA9'/>"
                       "<?pi?><sub><item n='2'/></sub><![CDATA[more]]><item/></list>"));
    const soop_node * const root = database.getRootNode();
    EXPECT_EQ(root->getName(), "list");
    EXPECT_EQ(root->getParent(), nullptr);
    EXPECT_EQ(root->getAttributes(), (Attributes{{"v", "1"}}));
    ASSERT_EQ(root->getSubnodes().size(), 3U);
    auto child = root->getSubnodes().begin();
    EXPECT_EQ((*child)->getName(), "item");
    EXPECT_EQ((*child)->getParent(), root);
    EXPECT_EQ((*child)->getAttributes(), (Attributes{{"n", "1"}, {"\xC4\x8D", "<\xC3\xA9"}}));
    EXPECT_TRUE((*child)->getSubnodes().empty());
    ++child;
    EXPECT_EQ((*child)->getName(), "sub");
    ASSERT_EQ((*child)->getSubnodes().size(), 1U);
    EXPECT_EQ((*child)->getSubnodes().front()->getParent(), *child);
    EXPECT_EQ((*child)->getSubnodes().front()->getAttributes(), (Attributes{{"n", "2"}}));
    ++child;
    EXPECT_EQ((*child)->getAttributes(), Attributes());
}

TEST_F(ListDatabase, GivesAttributes)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<a b='' c='text'/>"));
    const soop_node * const root = database.getRootNode();
    EXPECT_STREQ(root->getAttr("b"), "");
    EXPECT_STREQ(root->getAttr("c"), "text");
    EXPECT_EQ(root->getAttr("d"), nullptr);
    EXPECT_EQ(root->getAttr("B"), nullptr);
    EXPECT_EQ(root->getAttr("c"), root->getAttr("c")) << "the text is the node's";
}

TEST_F(ListDatabase, RefusesFilesThatCannotBeRead)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<a n='1'><i n='1'/></a>"));
    ASSERT_TRUE(database.addList("i"));
    EXPECT_FALSE(database.init(u8string(directory.text("missing.xml"))));
    for (const char * const text : {"", "<a>", "<b", "text"})
        EXPECT_FALSE(load(database, text)) << text;
    EXPECT_EQ(database.getRootNode()->getName(), "a");
    EXPECT_EQ(database.getRootNode()->getAttributes(), (Attributes{{"n", "1"}}));
    EXPECT_EQ(numbersOf(database.getRootNode()->getSubnodes()), "1 ");
    EXPECT_EQ(numbersOf(database.getList("i")), "1 ");
}

TEST_F(ListDatabase, KeptMergesASecondFile)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<a n='1' o='2'><item n='1'/></a>"));
    ASSERT_TRUE(database.addList("item"));
    ASSERT_TRUE(load(database, "<b n='3' p='4'><item n='2'/></b>"));
    const soop_node * const root = database.getRootNode();
    EXPECT_EQ(root->getName(), "b");
    EXPECT_EQ(root->getAttributes(), (Attributes{{"n", "1"}, {"o", "2"}, {"p", "4"}}));
    EXPECT_EQ(numbersOf(root->getSubnodes()), "1 2 ");
    EXPECT_EQ(numbersOf(database.getList("item")), "1 ");
    EXPECT_EQ(root->getSubnodes().back()->getParent(), root);
}

TEST_F(ListDatabase, ListsNodesInTheOrderOfTheFile)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<a><b n='1'/><c><b n='2'/><d><b n='3'/></d></c><b n='4'/></a>"));
    EXPECT_TRUE(database.addList("b"));
    EXPECT_EQ(numbersOf(database.getList("b")), "1 2 3 4 ");
    EXPECT_FALSE(database.addList("b"));
    EXPECT_EQ(numbersOf(database.getList("b")), "1 2 3 4 ");
    EXPECT_EQ(&database.getList("b"), &database.getList("b"));

    EXPECT_FALSE(database.addList("x"));
    EXPECT_FALSE(database.addList("B"));
    EXPECT_TRUE(database.getList("x").empty());
    EXPECT_EQ(&database.getList("x"), &database.getList("y")) << "one empty list";
    EXPECT_FALSE(database.addList("x")) << "looking for it has made none";
}

TEST_F(ListDatabase, ListsOnlyTheOuterOfNestedNodes)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<r><A n='1'><B><A n='2'/></B></A><A n='3'/></r>"));
    EXPECT_TRUE(database.addList("A"));
    EXPECT_EQ(numbersOf(database.getList("A")), "1 3 ");
    EXPECT_TRUE(database.addList("r"));
    ASSERT_EQ(database.getList("r").size(), 1U);
    EXPECT_EQ(database.getList("r").front(), database.getRootNode());
}

TEST_F(ListDatabase, FindsTheFirstNodeInDepth)
{
    soop_db database;
    ASSERT_TRUE(load(database,
        "<r id='0' n='root'><A id='1' n='a'><A id='2' n='b'/></A><B><A id='2' n='c'/></B><A id='-5' n='d'/>"
        "<A n='e'/><A id='007' n='f'/><A id='7' n='g'/><A id='' n='h'/></r>"));
    struct Case
    {
        const char * tag;
        const char * attribute;
        const char * value;
        const char * found;
    };
    const Case cases[] = {
        {"A", "id", "1", "a"},
        {"A", "id", "2", "b"},
        {"r", "id", "0", "root"},
        {"A", "id", "0", "(none)"},
        {"a", "id", "1", "(none)"},
        {"A", "ID", "1", "(none)"},
        {"A", "id", "01", "(none)"},
        {"A", "id", "", "h"},
        {"A", "none", "", "(none)"},
        {"B", "id", "2", "(none)"},
    };
    for (const Case & search : cases)
    {
        SCOPED_TRACE(std::string(search.tag) + " " + search.attribute + "=" + search.value);
        EXPECT_EQ(numberOf(database.getNode(search.tag, search.attribute, search.value)), search.found);
        EXPECT_EQ(database.getNode(search.tag, search.attribute, search.value),
            database.getRootNode()->getNode(search.tag, search.attribute, search.value));
    }
    EXPECT_EQ(numberOf(database.getNode("A", "id", 2)), "b");
    EXPECT_EQ(numberOf(database.getNode("A", "id", -5)), "d");
    EXPECT_EQ(numberOf(database.getNode("A", "id", 7)), "g");
    EXPECT_EQ(database.getNode("A", "id", 8), nullptr);
}

TEST_F(ListDatabase, ComparesValuesWholeAndWithCase)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<r><A id='Ab' n='found'/></r>"));
    EXPECT_EQ(numberOf(database.getNode("A", "id", "Ab")), "found");
    for (const char * const other : {"ab", "AB", "A", "b", "Ab ", " Ab", "Abc", ""})
        EXPECT_EQ(database.getNode("A", "id", other), nullptr) << other;
}

TEST_F(ListDatabase, SearchesBelowANodeOfWhichTheTagAloneAgrees)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<r><A><A id='9' n='z'/></A></r>"));
    EXPECT_EQ(numberOf(database.getNode("A", "id", "9")), "z");
}

TEST_F(ListDatabase, FindsNumbersOfEverySize)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<r id='0' n='zero'><a id='-2147483648' n='least'/>"
                               "<a id='2147483647' n='most'/></r>"));
    EXPECT_EQ(numberOf(database.getNode("r", "id", 0)), "zero");
    EXPECT_EQ(numberOf(database.getNode("a", "id", std::numeric_limits<int>::min())), "least");
    EXPECT_EQ(numberOf(database.getNode("a", "id", std::numeric_limits<int>::max())), "most");
}

TEST_F(ListDatabase, MayBeReadByManyThreads)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<r><a id='1' n='one'/><b><a id='2' n='two'/></b></r>"));
    ASSERT_TRUE(database.addList("a"));
    constexpr int threadCount = 4;
    testsupport::TestBarrier start(threadCount);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
    {
        threads.emplace_back(
            [&]
            {
                start.arriveAndWait();
                for (int round = 0; round < 1000; ++round)
                {
                    const bool isRight = database.getList("a").size() == 2 && database.getList("x").empty() &&
                                         numberOf(database.getNode("a", "id", "2")) == "two" &&
                                         numberOf(database.getNode("a", "id", 1)) == "one" &&
                                         database.getRootNode()->getAttr("id") == nullptr;
                    wrong += isRight ? 0 : 1;
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

TEST_F(ListDatabase, SearchesANodeAndWhatIsBelowIt)
{
    soop_db database;
    ASSERT_TRUE(load(database, "<r><A id='1' n='a'><B id='1' n='b'/></A><B id='1' n='c'/></r>"));
    const soop_node * const second = database.getRootNode()->getSubnodes().back();
    EXPECT_EQ(second->getNode("B", "id", "1"), second);
    EXPECT_EQ(second->getNode("A", "id", "1"), nullptr);
    const soop_node * const first = database.getRootNode()->getSubnodes().front();
    EXPECT_EQ(numberOf(first->getNode("B", "id", "1")), "b");
}

TEST_F(ListDatabase, KeptCopiesShareTheNodes)
{
    // One of the two must not be destroyed.
    const testsupport::IntendedLeak leak;
    auto & database = *new soop_db;
    ASSERT_TRUE(load(database, "<r v='1'><A n='1'/></r>"));
    ASSERT_TRUE(database.addList("A"));
    soop_db & copy = *new soop_db(database);
    EXPECT_NE(copy.getRootNode(), database.getRootNode());
    EXPECT_EQ(copy.getRootNode()->getName(), "r");
    EXPECT_EQ(copy.getRootNode()->getAttributes(), (Attributes{{"v", "1"}}));
    EXPECT_EQ(copy.getRootNode()->getSubnodes(), database.getRootNode()->getSubnodes());
    EXPECT_EQ(copy.getList("A"), database.getList("A"));
    EXPECT_EQ(copy.getRootNode()->getSubnodes().front()->getParent(), database.getRootNode());

    auto & assigned = *new soop_db;
    ASSERT_TRUE(load(assigned, "<x><y/></x>"));
    ASSERT_TRUE(assigned.addList("y"));
    const soop_node * const former = assigned.getRootNode()->getSubnodes().front();
    EXPECT_EQ(&(assigned = database), &assigned);
    EXPECT_EQ(assigned.getRootNode()->getSubnodes(), database.getRootNode()->getSubnodes());
    EXPECT_EQ(numbersOf(assigned.getList("A")), "1 ");
    EXPECT_TRUE(assigned.getList("y").empty()) << "the lists are replaced";
    EXPECT_EQ(former->getName(), "y") << "what was there is not destroyed";

    soop_db & self = assigned;
    assigned = self;
    EXPECT_EQ(numbersOf(assigned.getRootNode()->getSubnodes()), "1 ");
    EXPECT_EQ(assigned.getRootNode()->getName(), "r");
    EXPECT_EQ(assigned.getRootNode()->getAttributes(), (Attributes{{"v", "1"}}));
    EXPECT_EQ(numbersOf(assigned.getList("A")), "1 ");
}

TEST_F(ListDatabase, KeptCopiesOfNodesShareTheirParentAndTheirChildren)
{
    // One of the nodes with the same children may be destroyed.
    const testsupport::IntendedLeak leak;
    auto & database = *new soop_db;
    ASSERT_TRUE(load(database, "<r><A n='1' o='2'><B n='3'/></A></r>"));
    ASSERT_TRUE(database.addList("A"));
    soop_node & node = *database.getList("A").front();
    auto & assigned = *new soop_node;
    EXPECT_EQ(&(assigned = node), &assigned);
    soop_node & self = node;
    node = self;
    for (const soop_node * const same : {static_cast<const soop_node *>(new soop_node(node)),
             static_cast<const soop_node *>(&assigned), static_cast<const soop_node *>(&node)})
    {
        EXPECT_EQ(same->getParent(), database.getRootNode());
        EXPECT_EQ(same->getName(), "A");
        EXPECT_EQ(same->getAttributes(), (Attributes{{"n", "1"}, {"o", "2"}}));
        ASSERT_EQ(same->getSubnodes().size(), 1U);
        EXPECT_EQ(numberOf(same->getSubnodes().front()), "3");
        EXPECT_EQ(same->getSubnodes().front()->getParent(), &node) << "the source stays the parent";
    }
}

TEST_F(ListDatabase, NeedsNoStackForDepth)
{
    // One tree below the leaf of the other, since the XML service limits the depth of a file.
    constexpr int depth = 200;
    constexpr int parts = 500;
    const u8string path(directory.write("part.xml", nested(depth, "<leaf/>")));
    const u8string lastPath(directory.write("last.xml", nested(depth, "<b n='1'/>")));
    auto database = std::make_unique<soop_db>();
    ASSERT_TRUE(database->init(path));
    ASSERT_TRUE(database->addList("leaf"));
    soop_node * leaf = database->getList("leaf").front();
    for (int i = 1; i < parts; ++i)
    {
        soop_db part;
        const bool isLast = i == parts - 1;
        ASSERT_TRUE(part.init(isLast ? lastPath : path));
        ASSERT_TRUE(part.addList(isLast ? "b" : "leaf"));
        soop_node * const next = part.getList(isLast ? "b" : "leaf").front();
        *leaf = *part.getRootNode();
        // The nodes are the leaf's now: assignment destroys none.
        part = soop_db();
        leaf = next;
    }
    testsupport::runOnSmallStack(
        [&]
        {
            EXPECT_EQ(database->getNode("b", "n", "1"), leaf);
            EXPECT_EQ(database->getNode("b", "n", "2"), nullptr);
            EXPECT_TRUE(database->addList("b"));
            EXPECT_EQ(numbersOf(database->getList("b")), "1 ");
            database.reset();
        });
}

TEST_F(ListDatabase, LoadsADeepFileOnASmallStack)
{
    soop_db database;
    const u8string path(directory.write("deep.xml", nested(200, "<b n='1'/>")));
    bool isLoaded = false;
    testsupport::runOnSmallStack([&] { isLoaded = database.init(path); });
    ASSERT_TRUE(isLoaded);
    EXPECT_EQ(numberOf(database.getNode("b", "n", "1")), "1");
}

} // namespace
