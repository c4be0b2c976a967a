// What listeners are told, and what they may do meanwhile.

#include "utils/configsupport.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using configtest::Listener;
using configtest::loadItems;
using configtest::namesOf;
using configtest::valueOf;
using qvutils::Config;
using Vontal::u8string;

TEST(Config, TellsListenersInTheirOrder)
{
    Config config;
    config.addItem("a", "");
    std::string order;
    Listener first;
    Listener second;
    first.reaction = [&order]
    {
        order += "1";
    };
    second.reaction = [&order]
    {
        order += "2";
    };
    config.registerListener("a", &second);
    config.registerListener("a", &first);
    config.registerListener("a", &second);
    EXPECT_TRUE(config.setItemString("a", "x"));
    EXPECT_EQ(order, "212");
    // An equal value is told as well, a status is not.
    EXPECT_TRUE(config.setItemString("a", "x"));
    EXPECT_TRUE(config.setItemLocalStatus("a", 1));
    EXPECT_EQ(order, "212212");

    config.unregisterListener("a", &second);
    EXPECT_TRUE(config.setItemInt("a", 1));
    EXPECT_EQ(order, "21221212");
    config.unregisterListener("a", &second);
    config.unregisterListener("a", &second);
    EXPECT_TRUE(config.setItemInt("a", 1));
    EXPECT_EQ(order, "212212121");
    EXPECT_EQ(first.heard.back(), "a=1");
}

TEST(Config, IgnoresListenersOfUnknownItems)
{
    Config config;
    Listener listener;
    config.setMode(Config::AutoCreate);
    config.registerListener("a", &listener);
    config.unregisterListener("a", &listener);
    EXPECT_EQ(namesOf(config), "");
    EXPECT_TRUE(config.setItemString("a", "1"));
    config.unregisterListener("a", &listener);
    EXPECT_TRUE(listener.heard.empty());
}

TEST(Config, TellsThoseWhoWereRegisteredWhenTheValueWasAssigned)
{
    Config config;
    config.addItem("a", "");
    Listener first;
    Listener second;
    Listener late;
    first.reaction = [&]
    {
        config.unregisterListener("a", &second);
        config.registerListener("a", &late);
    };
    config.registerListener("a", &first);
    config.registerListener("a", &second);
    EXPECT_TRUE(config.setItemString("a", "1"));
    EXPECT_EQ(second.heard.size(), 1U);
    EXPECT_TRUE(late.heard.empty());
    first.reaction = nullptr;
    EXPECT_TRUE(config.setItemString("a", "2"));
    EXPECT_EQ(second.heard.size(), 1U);
    EXPECT_EQ(late.heard.size(), 1U);
}

TEST(Config, LetsListenersSetItems)
{
    Config config;
    config.addItem("a", "");
    config.addItem("b", "");
    Listener chain;
    Listener again;
    chain.reaction = [&]
    {
        if (chain.heard.size() < 5)
            config.setItemInt("a", static_cast<int>(chain.heard.size()));
        config.setItemString("b", "seen");
    };
    config.registerListener("a", &chain);
    config.registerListener("b", &again);
    EXPECT_TRUE(config.setItemString("a", "0"));
    EXPECT_EQ(chain.heard, (std::vector<std::string>{"a=0", "a=1", "a=2", "a=3", "a=4"}));
    EXPECT_EQ(again.heard.size(), 5U);
}

TEST(Config, LetsListenersRemoveTheItem)
{
    Config config;
    config.addItem("a", "");
    Listener remover;
    Listener second;
    remover.reaction = [&config]
    {
        config.clear();
    };
    config.registerListener("a", &remover);
    config.registerListener("a", &second);
    EXPECT_TRUE(config.setItemString("a", "last"));
    EXPECT_EQ(second.heard, std::vector<std::string>{"a=last"});
    EXPECT_EQ(config.getItem("a"), nullptr);

    // During a load as well.
    config.addItem("a", "");
    config.registerListener("a", &remover);
    EXPECT_TRUE(
        loadItems(config, "<Item name='a' value='1' local='4' default='2'/><Item name='b' value='3'/>"));
    EXPECT_EQ(namesOf(config), "b ");
}

TEST(Config, TellsListenersOfLoadedValuesButNotOfDefaults)
{
    Config config;
    config.addItem("a", "");
    Listener listener;
    config.registerListener("a", &listener);
    EXPECT_TRUE(loadItems(config, "<Item name='a' default='d' local='1'/>"));
    EXPECT_TRUE(listener.heard.empty());
    EXPECT_TRUE(loadItems(config, "<Item name='a' value='v'/><Item name='a'><Value>w</Value></Item>"));
    EXPECT_EQ(listener.heard, (std::vector<std::string>{"a=v", "a=w"}));
}

TEST(Config, TellsOfTheVeryItemThatTheStoreHas)
{
    Config config;
    config.addItem("a", "");
    Listener listener;
    config.registerListener("a", &listener);
    EXPECT_TRUE(config.setItemString("a", "1"));
    EXPECT_EQ(listener.last, config.getItem("a"));
}

TEST(Config, AddsNoItemThatAListenerRemoves)
{
    Config config;
    config.addItem("a", "");
    Listener remover;
    remover.reaction = [&config]
    {
        config.removeItem("a");
    };
    config.registerListener("a", &remover);
    EXPECT_EQ(config.addItem("a", "s", "1"), nullptr);
    EXPECT_EQ(remover.heard, std::vector<std::string>{"a=1"});
    EXPECT_EQ(namesOf(config), "");

    // Not even if it puts another one in its place.
    config.addItem("a", "");
    remover.reaction = [&config]
    {
        config.removeItem("a");
        config.addItem("a", "another");
    };
    config.registerListener("a", &remover);
    EXPECT_EQ(config.addItem("a", "s", "2"), nullptr);
    EXPECT_EQ(config.getItem("a")->getSource(), "another");
}

TEST(Config, LoadsWithTheSourceOfAnItemThatGoesMeanwhile)
{
    const u8string source(std::string(1000, 's'));
    Config config;
    config.addItem("a", source);
    Listener remover;
    remover.reaction = [&config]
    {
        config.removeItem("a");
    };
    config.registerListener("a", &remover);
    VontalException error;
    EXPECT_TRUE(loadItems(
        config, "<Item name='a' value='1'/><Item name='b'/>", error, config.getItem("a")->getSource()));
    EXPECT_EQ(namesOf(config), "b ");
    EXPECT_EQ(config.getItem("b")->getSource(), source);
}

TEST(Config, KeepsAnItemThatANestedCallRemovesUntilTheLastCallHasEnded)
{
    Config config;
    Listener again;
    Listener behind;
    again.reaction = [&]
    {
        if (again.heard.size() == 1)
            config.setItemString("a", "inner");
        else
            EXPECT_TRUE(config.removeItem("a"));
    };
    config.addItem("a", "");
    config.registerListener("a", &again);
    config.registerListener("a", &behind);
    EXPECT_TRUE(config.setItemString("a", "outer"));
    EXPECT_EQ(again.heard, (std::vector<std::string>{"a=outer", "a=inner"}));
    EXPECT_EQ(behind.heard, (std::vector<std::string>{"a=inner", "a=inner"}));
    EXPECT_EQ(namesOf(config), "");
}

TEST(Config, KeepsAnItemThatANestedCallRemovesDuringALoad)
{
    Config config;
    Listener again;
    Listener behind;
    again.reaction = [&]
    {
        if (again.heard.size() == 1)
            config.setItemString("a", "inner");
        else
            EXPECT_TRUE(config.removeItem("a"));
    };
    config.addItem("a", "");
    config.registerListener("a", &again);
    config.registerListener("a", &behind);
    EXPECT_TRUE(loadItems(config, "<Item name='a'><Value>outer</Value></Item><Item name='b'/>"));
    EXPECT_EQ(again.heard, (std::vector<std::string>{"a=outer", "a=inner"}));
    EXPECT_EQ(behind.heard, (std::vector<std::string>{"a=inner", "a=inner"}));
    EXPECT_EQ(namesOf(config), "b ");
}

TEST(Config, HasToldListenersOfWhatStandsInFrontOfAFault)
{
    Config config;
    config.addItem("a", "");
    Listener listener;
    config.registerListener("a", &listener);
    VontalException error;
    EXPECT_FALSE(
        loadItems(config, "<Item name='a' value='1'/><Item value='2'/><Item name='a' value='3'/>", error));
    EXPECT_EQ(listener.heard, std::vector<std::string>{"a=1"});
}

} // namespace
