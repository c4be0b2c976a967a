#include "VontalBase/text/ml_u8string.h"

#include "support/IntendedLeak.h"
#include "support/TempDirectory.h"
#include "support/VirtualSlot.h"
#include "support/WideErrors.h"
#include "utils/configsupport.h"

#include <gtest/gtest.h>
#include <limits>
#include <list>
#include <string>
#include <type_traits>

namespace
{

using configtest::entriesOf;
using configtest::Listener;
using configtest::loadItems;
using configtest::namesOf;
using configtest::valueOf;
using qvutils::Config;
using testsupport::slotsOfDestructor;
using testsupport::TempDirectory;
using testsupport::virtualSlot;
using Vontal::u8string;

static_assert(Config::Strict == 0 && Config::AutoCreate == 1);
static_assert(Config::Integer == 0 && Config::String == 1);
static_assert(sizeof(Config::ConfigMode) == 4 && sizeof(Config::ItemType) == 4);
static_assert(std::is_base_of_v<qvbase::ListenerContainer<Config::ItemChangeListener>, Config::Item>);
static_assert(!std::is_convertible_v<Config::Item, u8string>);

/// Lets the protected operations be named.
class OpenConfig : public Config
{
public:
    using Config::addItemInternal;
    using Config::getItemInternal;
};

TEST(Config, HasItsVirtualOperationsInOrder)
{
    std::size_t slot = 0;
    EXPECT_EQ(virtualSlot(&OpenConfig::getItemInternal), slot++);
    EXPECT_EQ(virtualSlot(&OpenConfig::addItemInternal), slot++);
    slot += slotsOfDestructor;
    EXPECT_EQ(virtualSlot(&Config::getItems), slot++);
    using Add = const Config::Item * (Config::*)(const u8string &, const u8string &, const u8string &);
    using AddWithoutValue = const Config::Item * (Config::*)(const u8string &, const u8string &);
    EXPECT_EQ(virtualSlot(static_cast<Add>(&Config::addItem)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<AddWithoutValue>(&Config::addItem)), slot++);
    EXPECT_EQ(virtualSlot(&Config::removeItem), slot++);
    EXPECT_EQ(virtualSlot(&Config::clear), slot++);
    using LoadNode = bool (Config::*)(const u8string &, qvxml::Node &, VontalException &);
    using LoadFile = bool (Config::*)(const u8string &, const u8string &, VontalException &);
    EXPECT_EQ(virtualSlot(static_cast<LoadNode>(&Config::loadXML)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<LoadFile>(&Config::loadXML)), slot++);
    EXPECT_EQ(virtualSlot(&Config::getItem), slot++);
    EXPECT_EQ(virtualSlot(&Config::getItemInt), slot++);
    EXPECT_EQ(virtualSlot(&Config::getItemString), slot++);
    EXPECT_EQ(virtualSlot(&Config::setItemInt), slot++);
    EXPECT_EQ(virtualSlot(&Config::setItemString), slot++);
    EXPECT_EQ(virtualSlot(&Config::setItemLocalStatus), slot++);
    EXPECT_EQ(testsupport::virtualSlots<Config>(), slot);
}

TEST(Config, HasItemsAndListenersWithNoOtherVirtualOperations)
{
    EXPECT_EQ(testsupport::virtualSlots<qvbase::ListenerContainer<int>>(), slotsOfDestructor);
    EXPECT_EQ(testsupport::virtualSlots<Config::Item>(), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&Config::ItemChangeListener::itemChanged), 0U);
}

TEST(Config, IsEmptyAndStrictAtFirst)
{
    Config config;
    EXPECT_EQ(namesOf(config), "");
    EXPECT_EQ(config.getItem("a"), nullptr);
    EXPECT_FALSE(config.setItemString("a", "1"));
    EXPECT_FALSE(config.setItemInt("a", 1));
    EXPECT_FALSE(config.setItemLocalStatus("a", 1));
    EXPECT_EQ(namesOf(config), "");
}

TEST(Config, CreatesWhatIsSetWhereTheModeSaysSo)
{
    Config config;
    config.setMode(Config::AutoCreate);
    EXPECT_TRUE(config.setItemString("text", "t"));
    EXPECT_EQ(config.getItem("text")->getSource(), "") << "the default source is empty at first";
    config.setDefaultSource("here");
    EXPECT_TRUE(config.setItemInt("number", -12));
    EXPECT_TRUE(config.setItemLocalStatus("status", 3));

    EXPECT_EQ(config.getItem("text")->getType(), Config::String);
    EXPECT_EQ(config.getItem("number")->getType(), Config::Integer);
    EXPECT_EQ(config.getItem("number")->getSource(), "here");
    EXPECT_EQ(valueOf(config, "number"), "-12");
    const Config::Item * const status = config.getItem("status");
    EXPECT_EQ(status->getType(), Config::String);
    EXPECT_EQ(status->getSource(), "here");
    EXPECT_EQ(status->getLocalStatus(), 3);
    EXPECT_FALSE(status->hasAssignedValue());
    EXPECT_EQ(status->getEffectiveValue(), "");
}

TEST(Config, KeptTakesAnyOtherModeForStrict)
{
    Config config;
    config.setMode(static_cast<Config::ConfigMode>(2));
    EXPECT_FALSE(config.setItemString("a", "1"));
    config.setMode(Config::AutoCreate);
    EXPECT_TRUE(config.setItemString("a", "1"));
    config.setMode(Config::Strict);
    EXPECT_FALSE(config.setItemString("b", "1"));
    EXPECT_TRUE(config.setItemString("a", "2"));
}

TEST(Config, AddsItems)
{
    Config config;
    const Config::Item * const item = config.addItem("a", "source");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->getName(), "a");
    EXPECT_EQ(item->getSource(), "source");
    EXPECT_EQ(item->getType(), Config::String);
    EXPECT_FALSE(item->hasAssignedValue());
    EXPECT_EQ(item->getLocalStatus(), 0);
    EXPECT_EQ(item->getDefaultValue(), "");

    // One that is there keeps its source, and its value is assigned all the same.
    Listener listener;
    config.registerListener("a", &listener);
    EXPECT_EQ(config.addItem("a", "other"), item);
    EXPECT_TRUE(listener.heard.empty());
    EXPECT_EQ(config.addItem("a", "other", "1"), item);
    EXPECT_EQ(item->getSource(), "source");
    EXPECT_EQ(listener.heard, std::vector<std::string>{"a=1"});
    const Config::Item * const added = config.addItem("b", "new", "2");
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(added->getEffectiveValue(), "2");
    EXPECT_EQ(added->getType(), Config::String);
    EXPECT_EQ(added->getSource(), "new");
}

TEST(Config, LeavesAnItemTheTypeAndTheSourceThatItWasMadeWith)
{
    Config config;
    config.addItem("text", "first");
    config.setDefaultSource("later");
    EXPECT_TRUE(config.setItemInt("text", 5));
    EXPECT_EQ(config.getItem("text")->getType(), Config::String);
    EXPECT_EQ(config.getItem("text")->getSource(), "first");

    ASSERT_TRUE(loadItems(config, "<Item name='number' type='int' value='1'/>"));
    EXPECT_TRUE(config.setItemString("number", "one"));
    EXPECT_EQ(config.getItem("number")->getType(), Config::Integer);
    EXPECT_EQ(config.getItem("number")->getSource(), "s");
}

TEST(Config, OrdersItemsByTheBytesOfTheirNames)
{
    Config config;
    for (const char * const name : {"b", "a", "ab", "B", "\xC3\xA9", "z", ""})
        config.addItem(name, "");
    EXPECT_EQ(namesOf(config), " B a ab b z \xC3\xA9 ");

    std::list<const Config::Item *> items = {nullptr};
    config.getItems(items);
    EXPECT_EQ(items.size(), 8U);
    EXPECT_EQ(items.front(), nullptr) << "the list is not emptied first";
}

TEST(Config, RemovesItems)
{
    Config config;
    config.setMode(Config::AutoCreate);
    config.setDefaultSource("kept");
    config.addItem("a", "");
    EXPECT_FALSE(config.removeItem("b"));
    EXPECT_TRUE(config.removeItem("a"));
    EXPECT_FALSE(config.removeItem("a"));
    config.addItem("c", "");
    config.clear();
    EXPECT_EQ(namesOf(config), "");
    // The mode and the default source stay.
    EXPECT_TRUE(config.setItemString("d", ""));
    EXPECT_EQ(config.getItem("d")->getSource(), "kept");
}

TEST(Config, MayRemoveAnItemByItsOwnName)
{
    Config config;
    const Config::Item * const item = config.addItem("a name that is not short at all", "");
    EXPECT_TRUE(config.removeItem(item->getName()));
    EXPECT_EQ(namesOf(config), "");
}

TEST(Config, ReadsNumbersLeniently)
{
    struct Case
    {
        const char * text;
        int number;
    };
    const Case cases[] = {
        {"12", 12},
        {"12abc", 12},
        {"  -7", -7},
        {"+5", 5},
        {"\t\n3", 3},
        {"abc", 0},
        {"", 0},
        {"- 5", 0},
        {"0x10", 0},
        {"1.9", 1},
        {"2147483647", 2147483647},
        {"-2147483648", std::numeric_limits<int>::min()},
        {"2147483648", 2147483647},
        {"99999999999999999999999", 2147483647},
        {"-99999999999999999999999", std::numeric_limits<int>::min()},
    };
    Config config;
    for (const Case & read : cases)
    {
        SCOPED_TRACE(read.text);
        config.addItem("n", "", read.text);
        int number = 99;
        EXPECT_TRUE(config.getItemInt("n", number));
        EXPECT_EQ(number, read.number);
    }
    int number = 99;
    u8string text = "as it was";
    EXPECT_FALSE(config.getItemInt("unknown", number));
    EXPECT_FALSE(config.getItemString("unknown", text));
    EXPECT_FALSE(config.getItemString("N", text)) << "names keep their case";
    EXPECT_EQ(number, 99);
    EXPECT_EQ(text, "as it was");
}

TEST(Config, ReadsTheDefaultUntilAValueIsAssigned)
{
    Config config;
    ASSERT_TRUE(loadItems(config, "<Item name='a' default='7'/>"));
    int number = 0;
    EXPECT_TRUE(config.getItemInt("a", number));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(valueOf(config, "a"), "7");
    EXPECT_FALSE(config.getItem("a")->hasAssignedValue());

    // An empty value is a value.
    EXPECT_TRUE(config.setItemString("a", ""));
    EXPECT_EQ(valueOf(config, "a"), "");
    EXPECT_TRUE(config.getItem("a")->hasAssignedValue());
    EXPECT_EQ(config.getItem("a")->getDefaultValue(), "7");
}

TEST(Config, WritesNumbersInDecimal)
{
    Config config;
    config.setMode(Config::AutoCreate);
    for (const int number :
        {0, 7, -7, 1234567, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        EXPECT_TRUE(config.setItemInt("n", number));
        EXPECT_EQ(valueOf(config, "n"), std::to_string(number));
    }
}

struct LoadCase
{
    const char * label;
    const char * attributes;
    const char * children;
    Config::ItemType type;
    const char * value;
    const char * defaultValue;
    bool hasValue;
    int status;
};

const LoadCase loadCases[] = {
    {"a name alone", "", "", Config::String, "", "", false, 0},
    {"a number", "type='int'", "", Config::Integer, "", "", false, 0},
    {"a type in upper case", "type='INT'", "", Config::String, "", "", false, 0},
    {"another type", "type='integer'", "", Config::String, "", "", false, 0},
    {"an empty type", "type=''", "", Config::String, "", "", false, 0},
    {"a default", "default='d'", "", Config::String, "d", "d", false, 0},
    {"an empty default", "default=''", "", Config::String, "", "", false, 0},
    {"a value", "value='v'", "", Config::String, "v", "", true, 0},
    {"an empty value", "value='' default='d'", "", Config::String, "", "d", true, 0},
    {"a local status", "local='5'", "", Config::String, "", "", false, 5},
    {"a negative one", "local='-5'", "", Config::String, "", "", false, -5},
    {"one that is no number", "local='abc'", "", Config::String, "", "", false, 0},
    {"all", "type='int' default='1' value='2' local='3'", "", Config::Integer, "2", "1", true, 3},
    {"a child", "", "<Value>c</Value>", Config::String, "c", "", true, 0},
    {"children of languages", "", "<Value xml:lang='XX'>x</Value><Value>c</Value>", Config::String, "c", "",
        true, 0},
    {"a value hides children", "value='v'", "<Value>c</Value>", Config::String, "v", "", true, 0},
    {"an empty value hides children", "value=''", "<Value>c</Value>", Config::String, "", "", true, 0},
    {"other children", "default='d'", "<Other>c</Other>", Config::String, "d", "d", false, 0},
    {"a child that cannot be read", "default='d'", "<Value><b/></Value>", Config::String, "d", "d", false, 0},
    {"an empty child", "default='d'", "<Value/>", Config::String, "", "d", true, 0},
    {"text", "default='d'", "text", Config::String, "d", "d", false, 0},
    {"attributes that are unknown", "note='n' Value='v'", "", Config::String, "", "", false, 0},
};

TEST(Config, LoadsItems)
{
    for (const LoadCase & load : loadCases)
    {
        SCOPED_TRACE(load.label);
        Config config;
        ASSERT_TRUE(loadItems(
            config, "<Item name='a' " + std::string(load.attributes) + ">" + load.children + "</Item>"));
        const Config::Item * const item = config.getItem("a");
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->getType(), load.type);
        EXPECT_EQ(item->getEffectiveValue(), load.value);
        EXPECT_EQ(item->getDefaultValue(), load.defaultValue);
        EXPECT_EQ(item->hasAssignedValue(), load.hasValue);
        EXPECT_EQ(item->getLocalStatus(), load.status);
        EXPECT_EQ(item->getSource(), "s");
    }
}

TEST(Config, LoadsTheValueInTheDefaultLanguage)
{
    Vontal::ml_u8string_set_default_language("cs");
    Config config;
    EXPECT_TRUE(loadItems(config, "<Item name='a'><Value>d</Value><Value xml:lang='cs'>c</Value></Item>"));
    Vontal::ml_u8string_set_default_language("C");
    EXPECT_EQ(valueOf(config, "a"), "c");
}

TEST(Config, KeptStoresWhatIsReadOfAStatusThatIsNoNumber)
{
    const struct
    {
        const char * text;
        int status;
    } rows[] = {{"abc", 0}, {"", 0}, {"7x", 7}, {"--3", 3}, {" 4", 0}, {"-12", -12}};
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.text);
        Config config;
        ASSERT_TRUE(loadItems(config, "<Item name='a' local='5'/>"));
        ASSERT_EQ(config.getItem("a")->getLocalStatus(), 5);
        EXPECT_TRUE(loadItems(config, std::string("<Item name='a' local='") + row.text + "'/>"));
        EXPECT_EQ(config.getItem("a")->getLocalStatus(), row.status);
    }
}

TEST(Config, ReplacesADefaultByAnEmptyOne)
{
    Config config;
    ASSERT_TRUE(loadItems(config, "<Item name='a' default='d'/>"));
    ASSERT_TRUE(loadItems(config, "<Item name='a' default=''/>"));
    EXPECT_EQ(config.getItem("a")->getDefaultValue(), "");
    EXPECT_EQ(valueOf(config, "a"), "");
}

TEST(Config, LoadsTheChildrenOfAnElementOfAnyName)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<Other><Item name='a' value='1'/></Other>"));
    Config config;
    VontalException error;
    EXPECT_TRUE(config.loadXML("s", *document.getRootElement(), error));
    EXPECT_EQ(error.first, nullptr);
    EXPECT_EQ(namesOf(config), "a ");
}

TEST(Config, PassesOverItemsThatAreNoChildren)
{
    Config config;
    EXPECT_TRUE(loadItems(config, "<Group><Item name='a'/></Group><Item name='b'><Item name='c'/></Item>"
                                  "<Item name='d'><Group><Value>1</Value></Group></Item>"));
    EXPECT_EQ(namesOf(config), "b d ");
    EXPECT_FALSE(config.getItem("d")->hasAssignedValue());
}

TEST(Config, PassesOverWhatIsNoItem)
{
    Config config;
    EXPECT_TRUE(loadItems(config, ""));
    EXPECT_TRUE(loadItems(config, "text<!-- c --><item name='a'/><Items name='b'/><Other/><Item name='c'/>"));
    EXPECT_EQ(namesOf(config), "c ");
}

TEST(Config, LaysFilesOverEachOther)
{
    Config config;
    VontalException error;
    ASSERT_TRUE(loadItems(config,
        "<Item name='a' type='int' default='1' value='2' local='3'/><Item name='b' value='stays'/>", error,
        "first"));
    ASSERT_TRUE(
        loadItems(config, "<Item name='a' type='string' default='4'/><Item name='c'/>", error, "second"));
    const Config::Item * const item = config.getItem("a");
    EXPECT_EQ(item->getType(), Config::Integer);
    EXPECT_EQ(item->getSource(), "first");
    EXPECT_EQ(item->getDefaultValue(), "4");
    EXPECT_EQ(item->getEffectiveValue(), "2");
    EXPECT_EQ(item->getLocalStatus(), 3);
    EXPECT_EQ(valueOf(config, "b"), "stays");
    EXPECT_EQ(config.getItem("c")->getSource(), "second");
}

TEST(Config, RefusesItemsWithoutANameAndKeepsWhatItRead)
{
    for (const char * const nameless : {"<Item/>", "<Item name=''/>", "<Item Name='b' value='1'/>"})
    {
        SCOPED_TRACE(nameless);
        Config config;
        VontalException error;
        EXPECT_FALSE(loadItems(
            config, std::string("<Item name='a' value='1'/>") + nameless + "<Item name='c'/>", error));
        EXPECT_EQ(entriesOf(error), "qvutils:454 <Item> with empty name.");
        EXPECT_EQ(namesOf(config), "a ");
        EXPECT_EQ(valueOf(config, "a"), "1");
    }
}

/// A store that takes only some names.
class ChoosyConfig : public Config
{
protected:
    Item * addItemInternal(const u8string & name, ItemType type, const u8string & source) override
    {
        return name == "refused" ? nullptr : Config::addItemInternal(name, type, source);
    }
};

TEST(Config, AsksAnOverrideForItsItems)
{
    ChoosyConfig config;
    VontalException error;
    EXPECT_FALSE(loadItems(config, "<Item name='a'/><Item name='refused' value='1'/>", error));
    EXPECT_EQ(entriesOf(error), "qvutils:467 Failed to add item");
    EXPECT_EQ(namesOf(config), "a ");
    EXPECT_EQ(config.addItem("refused", ""), nullptr);
    EXPECT_EQ(config.addItem("refused", "", "1"), nullptr);
    config.setMode(Config::AutoCreate);
    EXPECT_FALSE(config.setItemString("refused", "1"));
    EXPECT_FALSE(config.setItemInt("refused", 1));
    EXPECT_FALSE(config.setItemLocalStatus("refused", 1));
    EXPECT_TRUE(config.setItemString("taken", "1"));
}

/// A store in which one item has two names.
class AliasConfig : public Config
{
protected:
    Item * getItemInternal(const u8string & name) override
    {
        return Config::getItemInternal(name == "alias" ? "a" : name);
    }
};

TEST(Config, AsksAnOverrideWhichItemIsMeant)
{
    AliasConfig config;
    config.addItem("a", "");
    EXPECT_TRUE(config.setItemString("alias", "text"));
    EXPECT_EQ(valueOf(config, "a"), "text");
    EXPECT_TRUE(config.setItemInt("alias", 7));
    EXPECT_EQ(valueOf(config, "a"), "7");
    EXPECT_TRUE(config.setItemLocalStatus("alias", 3));
    EXPECT_EQ(config.getItem("a")->getLocalStatus(), 3);
    EXPECT_TRUE(loadItems(config, "<Item name='alias' value='2'/>"));
    EXPECT_EQ(valueOf(config, "a"), "2");
    EXPECT_EQ(namesOf(config), "a ");
}

TEST(Config, LoadsFiles)
{
    const TempDirectory directory;
    const std::string path =
        directory.write("settings.xml", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Config "
                                        "version=\"3\">\n  <Item name=\"a\" value=\"1\"/>\n</Config>\n");
    Config config;
    VontalException error;
    EXPECT_TRUE(config.loadXML("file", u8string(path), error));
    EXPECT_EQ(error.first, nullptr);
    EXPECT_EQ(valueOf(config, "a"), "1");
    EXPECT_EQ(config.getItem("a")->getSource(), "file");
    directory.clear();
}

TEST(Config, TellsWhyAFileCannotBeLoaded)
{
    const TempDirectory directory;
    const testsupport::WideErrors silent;
    const std::string missing = directory.text("missing.xml");
    struct Case
    {
        const char * label;
        std::string path;
        std::string entries;
    };
    const std::string broken = directory.write("broken.xml", "<Config>");
    const Case cases[] = {
        {"missing", missing, "qvutils:0 Cannot read file: " + missing},
        {"broken", broken, "qvutils:0 Cannot read file: " + broken},
        {"another root", directory.write("root.xml", "<config><Item name='a'/></config>"),
            "qvutils:429 File is not configuration, expected tag <Config>"},
        {"an item without a name", directory.write("name.xml", "<Config><Item/></Config>"),
            "qvutils:454 <Item> with empty name.|qvutils:434 Filed to read configuration"},
    };
    for (const Case & refused : cases)
    {
        SCOPED_TRACE(refused.label);
        Config config;
        VontalException error;
        EXPECT_FALSE(config.loadXML("s", u8string(refused.path), error));
        EXPECT_EQ(entriesOf(error), refused.entries);
        EXPECT_EQ(namesOf(config), "");
    }
    directory.clear();
}

TEST(Config, LoadsTheNodesOfAFileThroughItsOwnOperation)
{
    class Watching : public Config
    {
    public:
        using Config::loadXML;
        bool loadXML(const u8string &, qvxml::Node & node, VontalException &) override
        {
            name = node.getNodeName();
            return result;
        }

        u8string name;
        bool result = true;
    };
    const TempDirectory directory;
    const std::string path = directory.write("a.xml", "<Config/>");
    Watching config;
    VontalException error;
    EXPECT_TRUE(static_cast<Config &>(config).loadXML("s", u8string(path), error));
    EXPECT_EQ(config.name, "Config");
    config.result = false;
    EXPECT_FALSE(static_cast<Config &>(config).loadXML("s", u8string(path), error));
    EXPECT_EQ(entriesOf(error), "qvutils:434 Filed to read configuration");
    directory.clear();
}

std::string savedItems(const Config & config, int filter)
{
    qvxml::XMLDocPtr document;
    EXPECT_TRUE(config.saveSettings(document, filter));
    std::string text;
    EXPECT_TRUE(document.saveBuffer(text, false));
    const std::size_t start = text.find("<Config");
    return start == std::string::npos ? text : text.substr(start, text.find_last_of('>') + 1 - start);
}

TEST(Config, SavesNamesAndEffectiveValuesAlone)
{
    Config config;
    EXPECT_EQ(savedItems(config, -1), "<Config/>");
    ASSERT_TRUE(loadItems(config,
        "<Item name='b' type='int' default='1' value='2' local='1'/><Item name='a' default='d'/>"
        "<Item name='c' value='&lt;&amp;' local='1'/><Item name='d'/>"));
    EXPECT_EQ(savedItems(config, -1),
        "<Config><Item name=\"a\" value=\"d\"/><Item name=\"b\" value=\"2\"/>"
        "<Item name=\"c\" value=\"&lt;&amp;\"/><Item name=\"d\" value=\"\"/></Config>");
    EXPECT_EQ(savedItems(config, -7), savedItems(config, -1));
    EXPECT_EQ(savedItems(config, 0),
        "<Config><Item name=\"a\" value=\"d\"/><Item name=\"d\" value=\"\"/></Config>");
    EXPECT_EQ(savedItems(config, 1),
        "<Config><Item name=\"b\" value=\"2\"/><Item name=\"c\" value=\"&lt;&amp;\"/></Config>");
    EXPECT_EQ(savedItems(config, 2), "<Config/>");
}

TEST(Config, SavesInPlaceOfWhatADocumentHeld)
{
    Config config;
    config.addItem("a", "", "1");
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<Other x='1'><Item name='old'/><y/></Other>"));
    EXPECT_TRUE(config.saveSettings(document, -1));
    std::string text;
    ASSERT_TRUE(document.saveBuffer(text, false));
    EXPECT_NE(text.find("<Config><Item name=\"a\" value=\"1\"/></Config>"), std::string::npos) << text;
    EXPECT_EQ(text.find("Other"), std::string::npos) << text;
}

TEST(Config, KeptLosesTypesAndDefaultsBySaving)
{
    Config config;
    ASSERT_TRUE(loadItems(config, "<Item name='a' type='int' default='1' local='0'/>"));
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(config.saveSettings(document, -1));
    Config again;
    VontalException error;
    ASSERT_TRUE(again.loadXML("saved", *document.getRootElement(), error));
    const Config::Item * const item = again.getItem("a");
    EXPECT_EQ(item->getType(), Config::String);
    EXPECT_TRUE(item->hasAssignedValue());
    EXPECT_EQ(item->getEffectiveValue(), "1");
    EXPECT_EQ(item->getDefaultValue(), "");
}

TEST(Config, CopiesEverythingButListeners)
{
    Config config;
    config.setMode(Config::AutoCreate);
    config.setDefaultSource("d");
    VontalException error;
    ASSERT_TRUE(loadItems(
        config, "<Item name='a' type='int' default='1' value='2' local='3'/><Item name='b'/>", error, "s"));
    Listener listener;
    config.registerListener("a", &listener);

    Config copy(config);
    EXPECT_EQ(namesOf(copy), "a b ");
    const Config::Item * const item = copy.getItem("a");
    EXPECT_NE(item, config.getItem("a"));
    EXPECT_EQ(item->getType(), Config::Integer);
    EXPECT_EQ(item->getSource(), "s");
    EXPECT_EQ(item->getDefaultValue(), "1");
    EXPECT_EQ(item->getEffectiveValue(), "2");
    EXPECT_TRUE(item->hasAssignedValue());
    EXPECT_EQ(item->getLocalStatus(), 3);
    EXPECT_FALSE(copy.getItem("b")->hasAssignedValue());
    EXPECT_TRUE(copy.setItemString("a", "new"));
    EXPECT_TRUE(listener.heard.empty());
    EXPECT_EQ(valueOf(config, "a"), "2");
    EXPECT_TRUE(copy.setItemString("c", ""));
    EXPECT_EQ(copy.getItem("c")->getSource(), "d");
}

TEST(Config, KeptAssignmentSharesTheItems)
{
    Config source;
    source.setMode(Config::AutoCreate);
    source.setDefaultSource("d");
    source.addItem("a", "", "1");
    // What the target had is lost, and one of the two must not be destroyed.
    const testsupport::IntendedLeak leak;
    auto * const target = new Config;
    target->addItem("lost", "");
    EXPECT_EQ(&(*target = source), target);
    EXPECT_EQ(target->getItem("a"), source.getItem("a"));
    EXPECT_TRUE(target->setItemString("b", "2")) << "the mode is copied";
    EXPECT_EQ(target->getItem("b")->getSource(), "d") << "and so is the default source";
    EXPECT_EQ(valueOf(source, "b"), "2");
    EXPECT_EQ(namesOf(*target), "a b ");
}

} // namespace
