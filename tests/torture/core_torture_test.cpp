#include "VontalBase/core/ByteArrayInputStream.h"
#include "VontalBase/core/EarthTime.h"
#include "VontalBase/core/FileInputStream.h"
#include "VontalBase/core/Md5Sum.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/core/Secret.h"
#include "VontalBase/utils/StringArray.h"
#include "VontalBase/utils/uuid.h"

#include "support/TempDirectory.h"
#include "support/Torture.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace
{

using qvbase::Secret;
using qvutils::StringArray;
using testsupport::Fault;
using testsupport::TempDirectory;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;
using Vontal::u8string;

const u8string longText = "a text that is too long for the place inside a string";

TEST(CoreTorture, AByteStreamOpensOrGivesFalse)
{
    const std::string bytes(1000, 'x');
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const qvbase::Reference<qvbase::ByteArrayInputStream> stream =
                new qvbase::ReferencedImpl<qvbase::ByteArrayInputStream>();
            const bool isOpen = stream->init(bytes.data(), 1000);
            EXPECT_EQ(isOpen, !fault.isAllocation());
            char buffer[10];
            EXPECT_EQ(stream->read(buffer, 10), isOpen ? 10 : -1);
            stream->close();
            EXPECT_EQ(stream->read(buffer, 10), -1);
        });
    EXPECT_EQ(report.faultyRuns, 2U) << "the object and its bytes";
}

using FileStream = qvbase::ReferencedImpl<qvbase::FileInputStream>;

const char * const fileName = "a file whose name has no place inside of a string";

TEST(CoreTorture, AFileStreamTakesItsFileOrLeavesItToTheCaller)
{
    const TempDirectory directory;
    const u8string path = directory.write(fileName, "abc");
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            std::FILE * file = nullptr;
            qvbase::Reference<qvbase::FileInputStream> stream;
            {
                const UnseenAllocations unseen;
                file = std::fopen(path.c_str(), "rb");
                stream = new FileStream();
            }
            ASSERT_NE(file, nullptr);
            char byte = '#';
            bool isTaken = false;
            try
            {
                stream->init(file, path, false);
                isTaken = true;
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            EXPECT_EQ(stream->read(&byte, 1), isTaken ? 1 : -1);
            stream = nullptr;
            if (!isTaken)
            {
                EXPECT_EQ(std::getc(file), 'a') << "it is open";
                std::fclose(file);
            }
        },
        {.answers = {}});
    EXPECT_EQ(report.faultyRuns, 1U) << "the name";
    directory.remove(fileName);
}

TEST(CoreTorture, AFileStreamIsClosedWhereItCannotDeleteForWantOfMemory)
{
    const TempDirectory directory;
    const u8string path = directory.text(fileName);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            qvbase::Reference<qvbase::FileInputStream> stream;
            {
                const UnseenAllocations unseen;
                directory.write(fileName, "abc");
                stream = new FileStream();
                stream->init(std::fopen(path.c_str(), "rb"), path, true);
            }
            bool isDeleted = false;
            try
            {
                stream->close();
                isDeleted = true;
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            char byte = '#';
            EXPECT_EQ(stream->read(&byte, 1), -1) << "closed in either case";
            const UnseenAllocations unseen;
            EXPECT_NE(directory.contains(fileName), isDeleted);
            stream = nullptr;
            EXPECT_FALSE(directory.contains(fileName)) << "the destructor deletes again";
        },
        {.answers = {}});
    EXPECT_GT(report.faultyRuns, 0U);
}

TEST(CoreTorture, AFileStreamThatIsDestroyedWithoutMemoryIsClosedAndLeavesItsFile)
{
    const TempDirectory directory;
    const u8string path = directory.text(fileName);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            qvbase::Reference<qvbase::FileInputStream> stream;
            {
                const UnseenAllocations unseen;
                directory.write(fileName, "abc");
                stream = new FileStream();
                stream->init(std::fopen(path.c_str(), "rb"), path, true);
            }
            stream = nullptr;
            const UnseenAllocations unseen;
            EXPECT_EQ(directory.contains(fileName), fault.isAllocation());
            if (directory.contains(fileName))
                directory.remove(fileName);
        },
        {.answers = {}});
    EXPECT_GT(report.faultyRuns, 0U);
}

TEST(CoreTorture, ASecretHoldsTheWholeValueOrNothing)
{
    const TortureReport report = torture(
        [](const Fault & fault)
        {
            Secret secret;
            bool isSet = false;
            try
            {
                isSet = secret.set(longText);
                EXPECT_EQ(isSet, !fault.excuses() || !secret.empty());
                const Secret copy(secret);
                Secret assigned;
                assigned = copy;
                const Secret::Clear clear(assigned);
                EXPECT_TRUE(clear.get().empty() || clear.get() == longText);
                EXPECT_TRUE(fault.excuses() || clear.get() == longText);
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            EXPECT_EQ(secret.empty(), !isSet);
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(CoreTorture, ASecretIsEmptyWhenItsAssignmentThrows)
{
    Secret source;
    ASSERT_TRUE(source.set(longText));
    const TortureReport report = torture(
        [&source](const Fault &)
        {
            Secret target;
            {
                const UnseenAllocations unseen;
                target.set("before");
            }
            try
            {
                target = source;
                EXPECT_EQ(target.getProtectedData(), source.getProtectedData());
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(target.empty());
            }
        });
    EXPECT_GT(report.faultyRuns, 0U);
}

TEST(CoreTorture, AStringArrayIsParsedToItsEndOrToTheFault)
{
    const u8string document = "[\"" + longText + "\",\"" + longText + "\",\"" + longText + "\"]";
    const TortureReport report = torture(
        [&document](const Fault & fault)
        {
            StringArray array;
            bool isParsed = false;
            try
            {
                isParsed = array.parseJson(document);
                EXPECT_TRUE(isParsed || fault.isAllocation());
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            EXPECT_LE(array.size(), 3U);
            EXPECT_TRUE(!isParsed || array.size() == 3);
            for (const u8string & text : array)
                EXPECT_EQ(text, longText);
        });
    EXPECT_GT(report.faultyRuns, 5U);
}

TEST(CoreTorture, AStringArrayIsWrittenWholeOrNotAtAll)
{
    StringArray array;
    std::string expected = "[";
    for (int i = 0; i < 50; ++i)
    {
        array.push_back(longText);
        expected += (i == 0 ? "\"" : ",\"") + longText + "\"";
    }
    expected += "]";
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            u8string out = "before";
            try
            {
                EXPECT_TRUE(array.serializeJson(out));
                EXPECT_EQ(out, expected);
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                EXPECT_EQ(out, "before");
            }
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(CoreTorture, DigestsAndIdentifiersAreAppendedWholeOrNotAtAll)
{
    const TortureReport report = torture(
        [](const Fault & fault)
        {
            std::string digest = "before";
            u8string uuid = "before";
            try
            {
                qvbase::Md5Sum sum;
                sum.add(longText);
                sum.finish(digest);
                EXPECT_EQ(digest.size(), 6U + 32U);
                const bool isMade = qvutils::generateUUID(uuid);
                EXPECT_EQ(isMade, uuid != "before");
                EXPECT_TRUE(isMade || fault.isGate("make uuid") || fault.isGate("random bytes"));
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                EXPECT_TRUE(digest == "before" || digest.size() == 6U + 32U);
                EXPECT_EQ(uuid, "before");
            }
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(CoreTorture, DatesAreFormattedOrNot)
{
    const qvbase::EarthTime value(2024, 1, 15, 3600000);
    const u8string date = value.formatDate();
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            std::string text = "before";
            std::wstring wide = L"before";
            try
            {
                const u8string formatted = value.formatDate();
                EXPECT_EQ(formatted, fault.isGate("format date") ? u8string() : date);
                static_cast<void>(value.formatTime(false));
                value.serialize(text);
                EXPECT_EQ(text.size(), 18U);
                value.printDate(text, 0, true, true);
                value.printDate(wide, 0, true);
                EXPECT_EQ(text, "2024.01.15");
                EXPECT_EQ(wide, L"2024.1.15");
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

} // namespace
