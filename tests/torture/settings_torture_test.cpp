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

#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <new>
#include <sstream>
#include <string>

namespace
{

using qvxml::XMLDocPtr;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;
using Vontal::u8string;

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
            if (!fault.happened())
            {
                EXPECT_TRUE(isDone && isOld && isLoaded);
            }
            const UnseenAllocations unseen;
            if (isOld && document.get() != nullptr)
            {
                // The fault may come up only now.
                qvxml::Node * root = nullptr;
                u8string name;
                const bool isNamed = attempt(
                    [&]
                    {
                        root = document.getRootElement();
                        name = root != nullptr ? root->getNodeName() : u8string();
                    });
                if (isNamed && root != nullptr)
                {
                    EXPECT_EQ(name, isLoaded ? "Config" : "old");
                }
            }
        });
    EXPECT_GT(report.faultyRuns, 10U);
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
            EXPECT_TRUE(fault.happened() || (isDone && isSet));
        });
    EXPECT_GT(report.faultyRuns, 10U);
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
                EXPECT_TRUE(fault.happened() || (isDone && isSaved));
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
    torture(
        [&](const Fault & fault)
        {
            qvutils::Config config;
            VontalException error;
            bool isLoaded = false;
            const bool isDone = attempt([&] { isLoaded = config.loadXML("file", path, error); });
            EXPECT_TRUE(fault.happened() || (isDone && isLoaded));
            if (!isDone)
                return;
            EXPECT_EQ(isLoaded, error.first == nullptr);
        });
    directory.clear();
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
            EXPECT_TRUE(fault.happened() || (isDone && isListed));
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
