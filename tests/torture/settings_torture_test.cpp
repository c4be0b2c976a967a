#include "VontalBase/platform/com.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/ml_u8string.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/Config.h"
#include "VontalBase/utils/soop_db.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/TempDirectory.h"
#include "support/Torture.h"
#include "support/XmlService.h"
#include "utils/configsupport.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using qvxml::XMLDocPtr;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;
using Vontal::u8string;

/// Only the library's own service has gates, and allocations that can fail.
constexpr std::uint64_t fewestFaultyRuns = testsupport::isXmlServiceOurs() ? 10 : 3;

/// Does something that a shortage of memory may end. Whether it came to its end.
bool attempt(const std::function<void()> & action)
{
    try
    {
        action();
        return true;
    }
    catch (const std::bad_alloc &)
    {
    }
    catch (const _com_error & error)
    {
        EXPECT_EQ(error.Error(), E_OUTOFMEMORY);
    }
    return false;
}

/// Keeps the lines about parse errors from the terminal, and allocates nothing.
class NoErrors
{
public:
    NoErrors() : m_former(std::wcerr.rdbuf(nullptr))
    {
    }
    NoErrors(const NoErrors &) = delete;
    NoErrors & operator=(const NoErrors &) = delete;
    ~NoErrors()
    {
        std::wcerr.rdbuf(m_former);
        std::wcerr.clear();
    }

private:
    std::wstreambuf * m_former;
};

const char * const documentText =
    "<?xml version=\"1.0\"?><Config><!-- c --><Item name=\"a\" value=\"1\" default=\"0\" local=\"1\"/>"
    "<Item name=\"b\"><Value>text</Value><Value xml:lang=\"cs\">a longer text of the second "
    "language</Value></Item>"
    "</Config>";

TEST(XmlTorture, LoadsOrKeepsTheFormerDocument)
{
    const NoErrors silent;
    const TortureReport report = torture(
        [](const Fault & fault)
        {
            XMLDocPtr document;
            bool isOld = false;
            bool isLoaded = false;
            const bool isDone = attempt(
                [&]
                {
                    isOld = document.loadBuffer("<old/>");
                    isLoaded = document.loadBuffer(documentText);
                });
            if (!fault.excuses())
            {
                EXPECT_TRUE(isDone && isOld && isLoaded);
            }
            const UnseenAllocations unseen;
            if (isOld && document.get() != nullptr)
            {
                qvxml::Node * root = nullptr;
                u8string name;
                const bool isRead = attempt(
                    [&]
                    {
                        root = document.getRootElement();
                        name = root != nullptr ? root->getNodeName() : u8string();
                    });
                // The service may meet the fault only now, and not give the element out, or not its name.
                const bool isRight = name == (isLoaded ? "Config" : "old");
                EXPECT_TRUE(!isRead || isRight || (name.empty() && fault.excuses())) << name;
            }
        });
    EXPECT_GT(report.faultyRuns, fewestFaultyRuns);
}

TEST(XmlTorture, CreatesAndChangesDocuments)
{
    const TortureReport report = torture(
        [](const Fault & fault)
        {
            XMLDocPtr document;
            qvxml::Node * child = nullptr;
            bool isSet = false;
            const bool isDone = attempt(
                [&]
                {
                    qvxml::Node * const root = document.create("root");
                    child = root != nullptr ? root->createChild("child", "a text that is not short at all")
                                            : nullptr;
                    isSet =
                        child != nullptr && child->setProperty("name", "a value that is not short at all");
                });
            EXPECT_TRUE(fault.excuses() || (isDone && isSet));
        });
    EXPECT_GT(report.faultyRuns, fewestFaultyRuns);
}

TEST(XmlTorture, SavesWholeDocumentsOrTellsOfIt)
{
    const testsupport::TempDirectory directory;
    const u8string path(directory.text("saved.xml"));
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer(documentText));
    for (const bool format : {false, true})
    {
        std::string whole;
        if (!document.saveBuffer(whole, format))
            continue; // This service does not reindent.
        torture(
            [&](const Fault &)
            {
                VontalException error;
                bool isSaved = false;
                const bool isDone = attempt([&] { isSaved = document.saveFile(path, format, error); });
                const UnseenAllocations unseen;
                if (isDone && isSaved)
                {
                    EXPECT_EQ(directory.read("saved.xml"), whole);
                    EXPECT_EQ(error.first, nullptr);
                }
                else if (isDone)
                {
                    EXPECT_NE(error.first, nullptr);
                }
            });
        torture(
            [&](const Fault & fault)
            {
                std::string text;
                bool isSaved = false;
                const bool isDone = attempt([&] { isSaved = document.saveBuffer(text, format); });
                EXPECT_TRUE(fault.excuses() || (isDone && isSaved));
                if (isSaved)
                {
                    EXPECT_EQ(text, whole);
                }
            });
    }
    directory.clear();
}

TEST(SettingsTorture, LoadSettingsOrTellWhyNot)
{
    const NoErrors silent;
    const testsupport::TempDirectory directory;
    const u8string path(directory.write("settings.xml", documentText));
    // The root or an attribute that the service does not give is taken for one that is missing.
    const std::set<std::string> documented = {
        "",
        "qvutils:0 Cannot read file: " + path,
        "qvutils:424 Cannot get root element",
        "qvutils:429 File is not configuration, expected tag <Config>",
        "qvutils:454 <Item> with empty name.|qvutils:434 Filed to read configuration",
    };
    bool isRootMissing = false;
    torture(
        [&](const Fault & fault)
        {
            qvutils::Config config;
            VontalException error;
            bool isLoaded = false;
            const bool isDone = attempt([&] { isLoaded = config.loadXML("file", path, error); });
            EXPECT_TRUE(fault.excuses() || (isDone && isLoaded));
            if (!isDone)
                return;
            const UnseenAllocations unseen;
            const std::string entries = configtest::entriesOf(error);
            EXPECT_EQ(isLoaded, entries.empty());
            EXPECT_TRUE(documented.count(entries) == 1) << entries;
            isRootMissing = isRootMissing || entries == "qvutils:424 Cannot get root element";
        });
    EXPECT_TRUE(isRootMissing || !testsupport::isXmlServiceOurs()) << "only ours can be made to refuse it";
    directory.clear();
}

/// What a document of settings holds, as far as it was written: the names of its items, "?" for one whose
/// name the service did not take. Empty where there is no such document.
std::vector<std::string> savedNames(XMLDocPtr & document)
{
    std::vector<std::string> names;
    qvxml::Node * const root = document.get() != nullptr ? document.getRootElement() : nullptr;
    qvxml::Node * item = root != nullptr ? root->getFirstChild() : nullptr;
    for (; item != nullptr; item = item->getNextSibling())
    {
        u8string name = "?";
        item->getProperty("name", name);
        names.push_back(name);
    }
    return names;
}

/// Whether these are the first items in the order of their names.
bool areFirst(const std::vector<std::string> & names, const std::vector<std::string> & all)
{
    if (names.size() > all.size())
        return false;
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        if (names[i] != all[i] && names[i] != "?")
            return false;
    }
    return true;
}

TEST(SettingsTorture, SaveSettingsInTheirOrderOrTellOfIt)
{
    const std::vector<std::string> all = {"a", "b", "c"};
    qvutils::Config config;
    for (const char * const name : {"c", "a", "b"})
        config.addItem(name, "", "a value that is not short at all");
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            XMLDocPtr document;
            bool isSaved = false;
            const bool isDone = attempt([&] { isSaved = config.saveSettings(document, -1); });
            const bool hadFault = fault.happened();
            const UnseenAllocations unseen;
            std::vector<std::string> names;
            const bool isRead = attempt([&] { names = savedNames(document); });
            if (!hadFault)
            {
                EXPECT_TRUE(isDone && isSaved);
                if (!fault.happened())
                {
                    EXPECT_EQ(names, all);
                }
            }
            if (!isRead || (fault.happened() && !hadFault))
                return; // The fault came to the reading of what was saved.
            EXPECT_TRUE(areFirst(names, all)) << testing::PrintToString(names);
            if (isDone)
            {
                EXPECT_EQ(isSaved, names.size() == all.size());
            }
        });
    EXPECT_GT(report.faultyRuns, fewestFaultyRuns);
}

TEST(SettingsTorture, KeepSettingsWhole)
{
    torture(
        [](const Fault &)
        {
            qvutils::Config config;
            config.setMode(qvutils::Config::AutoCreate);
            attempt(
                [&]
                {
                    config.setItemString(
                        "a name that is not short at all", "a value that is not short at all");
                    config.setItemInt("number", 1);
                    const qvutils::Config copy(config);
                    config.removeItem("number");
                });
        });
}

TEST(SettingsTorture, LoadListDatabasesOrRefuseThem)
{
    const NoErrors silent;
    const testsupport::TempDirectory directory;
    const u8string path(directory.write("list.xml", documentText));
    torture(
        [&](const Fault & fault)
        {
            bool isLoaded = false;
            bool isListed = false;
            const bool isDone = attempt(
                [&]
                {
                    qv_soop::soop_db database;
                    isLoaded = database.init(path);
                    isListed = isLoaded && database.addList("Item");
                });
            EXPECT_TRUE(fault.excuses() || (isDone && isListed));
        });
    directory.clear();
}

TEST(SettingsTorture, KeepAFilledListDatabaseUsable)
{
    const NoErrors silent;
    const testsupport::TempDirectory directory;
    const u8string first(directory.write("first.xml", "<a n=\"1\"><i n=\"1\"/></a>"));
    const u8string second(directory.write("second.xml", documentText));
    torture(
        [&](const Fault & fault)
        {
            qv_soop::soop_db database;
            bool isFilled = false;
            attempt([&] { isFilled = database.init(first) && database.addList("i"); });
            if (!isFilled)
                return;
            bool isLoaded = false;
            const bool isDone = attempt([&] { isLoaded = database.init(second); });
            EXPECT_TRUE(fault.excuses() || (isDone && isLoaded));
            const UnseenAllocations unseen;
            const qv_soop::soop_node & root = *database.getRootNode();
            if (isDone && !isLoaded)
            {
                EXPECT_EQ(root.getName(), "a");
                EXPECT_EQ(root.getSubnodes().size(), 1U);
                EXPECT_EQ(root.getSubnodes().front(), database.getList("i").front());
            }
            // A fault of the service may have taken the attribute when the first file was read.
            EXPECT_LE(root.getAttributes().size(), 1U);
            EXPECT_EQ(database.getList("i").size(), 1U);
            EXPECT_EQ(database.getNode("no such tag", "n", "1"), nullptr) << "all nodes are walked through";
        });
    directory.clear();
}

TEST(SettingsTorture, HoldTextsOfSeveralLanguages)
{
    torture(
        [](const Fault &)
        {
            attempt(
                []
                {
                    Vontal::ml_u8string text("a default value that is not short at all");
                    text.add("a language that is not short at all", "a translation that is not short at all");
                    Vontal::ml_u8string copy(text);
                    Vontal::ml_u8string assigned;
                    assigned = copy;
                    Vontal::ml_u8string_set_default_language("another language that is not short at all");
                });
            const UnseenAllocations unseen;
            Vontal::ml_u8string_set_default_language("C");
        });
}

} // namespace
