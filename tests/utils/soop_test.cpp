#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/soop_db.h"
#include "VontalBase/utils/soop_node.h"

#include "support/IntendedLeak.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <iostream>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>

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

/// A directory with one database after the other in it.
class ListDatabase : public testing::Test
{
protected:
    ListDatabase() : m_former(std::wcerr.rdbuf(m_caught.rdbuf()))
    {
    }
    ~ListDatabase() override
    {
        std::wcerr.rdbuf(m_former);
        directory.clear();
    }

    bool load(soop_db & database, const std::string & text) const
    {
        return database.init(u8string(directory.write("list.xml", text)));
    }

    const TempDirectory directory;

private:
    std::wostringstream m_caught;
    std::wstreambuf * m_former;
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
    ASSERT_TRUE(load(database, "<a n='1'/>"));
    EXPECT_FALSE(database.init(u8string(directory.text("missing.xml"))));
    for (const char * const text : {"", "<a>", "<b", "text"})
        EXPECT_FALSE(load(database, text)) << text;
    EXPECT_EQ(database.getRootNode()->getName(), "a");
    EXPECT_EQ(database.getRootNode()->getAttributes(), (Attributes{{"n", "1"}}));
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
    EXPECT_EQ(&(assigned = database), &assigned);
    EXPECT_EQ(assigned.getRootNode()->getSubnodes(), database.getRootNode()->getSubnodes());
    EXPECT_EQ(numbersOf(assigned.getList("A")), "1 ");

    soop_db & self = assigned;
    assigned = self;
    EXPECT_EQ(numbersOf(assigned.getRootNode()->getSubnodes()), "1 ");
    EXPECT_EQ(assigned.getRootNode()->getName(), "r");
}

TEST_F(ListDatabase, NeedsNoStackForDepth)
{
    // Laid file upon file, since the XML service limits the depth of one.
    soop_db database;
    std::string text;
    constexpr int depth = 200;
    for (int i = 0; i < depth; ++i)
        text += "<a>";
    text += "<b n='1'/>";
    for (int i = 0; i < depth; ++i)
        text += "</a>";
    ASSERT_TRUE(load(database, text));
    testsupport::runOnSmallStack(
        [&database]
        {
            EXPECT_EQ(numberOf(database.getNode("b", "n", "1")), "1");
            EXPECT_TRUE(database.addList("b"));
        });
    EXPECT_EQ(database.getList("b").size(), 1U);
}

} // namespace
