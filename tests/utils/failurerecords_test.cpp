// What the subsystems do with a failure record that tells of something already: nothing where they succeed,
// and new entries in front where they fail.

#include "VontalBase/text/VontalException.h"
#include "VontalBase/utils/Config.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"
#include "VontalBase/zip/ZipWriterPtr.h"
#include "VontalBase/zip/unzip.h"

#include "support/TempDirectory.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvxml::XMLDocPtr;
using testsupport::TempDirectory;
using Vontal::u8string;

/// Calls an operation with a record that holds one entry, and gives the texts of those that came in front of
/// it, the oldest first.
std::string newEntries(bool expected, const std::function<bool(VontalException &)> & operation)
{
    VontalException error;
    error.add("before", 1, "earlier");
    const VontalExceptionDescription * const earlier = error.first;
    EXPECT_EQ(operation(error), expected);
    std::string texts;
    const VontalExceptionDescription * entry = error.first;
    for (; entry != nullptr && entry != earlier; entry = entry->next)
        texts = entry->text + '|' + texts;
    if (entry == nullptr || entry->text != "earlier" || entry->next != nullptr)
        return "the earlier entry is gone";
    return texts;
}

class FailureRecords : public testing::Test
{
protected:
    FailureRecords() : place(directory.text() + "/")
    {
    }
    FailureRecords(const FailureRecords &) = delete;
    FailureRecords & operator=(const FailureRecords &) = delete;
    ~FailureRecords() override
    {
        directory.clear();
    }

    [[nodiscard]] u8string at(const char * name) const
    {
        return place + name;
    }

    TempDirectory directory;
    u8string place;
};

TEST_F(FailureRecords, OfSettings)
{
    directory.write("good.xml", "<Config><Item name='a' value='1'/></Config>");
    directory.write("nameless.xml", "<Config><Item/></Config>");
    const auto load = [this](const char * name)
    {
        return [this, name](VontalException & error)
        {
            return qvutils::Config().loadXML("s", at(name), error);
        };
    };
    EXPECT_EQ(newEntries(true, load("good.xml")), "");
    EXPECT_EQ(
        newEntries(false, load("nameless.xml")), "<Item> with empty name.|Filed to read configuration|");
    EXPECT_EQ(newEntries(false, load("none.xml")), ("Cannot read file: " + at("none.xml") + "|"));

    const auto loadNode = [](const char * text)
    {
        return [text](VontalException & error)
        {
            XMLDocPtr document;
            EXPECT_TRUE(document.loadBuffer(u8string(text)));
            return qvutils::Config().loadXML("s", *document.getRootElement(), error);
        };
    };
    EXPECT_EQ(newEntries(true, loadNode("<Config><Item name='a'/></Config>")), "");
    EXPECT_EQ(newEntries(false, loadNode("<Config><Item/></Config>")), "<Item> with empty name.|");
}

TEST_F(FailureRecords, OfSavedDocuments)
{
    XMLDocPtr document;
    ASSERT_NE(document.create("a"), nullptr);
    XMLDocPtr empty;
    EXPECT_EQ(newEntries(true,
                  [&](VontalException & error) { return document.saveFile(at("a.xml"), false, error); }),
        "");
    EXPECT_EQ(
        newEntries(false, [&](VontalException & error) { return empty.saveFile(at("b.xml"), false, error); }),
        "Not a valid document|Failed to save to file|");
}

TEST_F(FailureRecords, OfUnpackedArchives)
{
    const u8string archive = at("a.zip");
    const u8string target = at("out");
    {
        qvzip::ZipWriterPtr writer;
        char bytes[] = "text";
        ASSERT_TRUE(writer.createZipFile(archive));
        ASSERT_TRUE(writer.addItemFromMemory("name", bytes, 4));
        writer.close();
    }
    EXPECT_EQ(
        newEntries(true, [&](VontalException & error) { return qvzip::unzip(archive, target, error); }), "");
    EXPECT_EQ(newEntries(
                  true, [&](VontalException & error) { return qvzip::unzipChecked(archive, target, error); }),
        "");
    const auto tellsOnce = [](const std::string & texts)
    {
        return texts.find('|') == texts.size() - 1;
    };
    EXPECT_PRED1(tellsOnce, newEntries(false, [&](VontalException & error)
                                { return qvzip::unzip(at("none.zip"), target, error); }));
    EXPECT_PRED1(tellsOnce, newEntries(false, [&](VontalException & error)
                                { return qvzip::unzipChecked(at("none.zip"), target, error); }));
}

} // namespace
