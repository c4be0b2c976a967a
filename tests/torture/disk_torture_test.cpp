#include "VontalBase/core/ByteArrayInputStream.h"
#include "VontalBase/core/EarthTime.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/disk/AutoDeleteFile.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/places.h"
#include "VontalBase/disk/temporaryfiles.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/NativePaths.h"
#include "support/TempDirectory.h"
#include "support/Torture.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <new>
#include <sstream>
#include <string>

namespace
{

using qvdisk::File;
using testsupport::Fault;
using testsupport::TempDirectory;
using testsupport::torture;
using testsupport::UnseenAllocations;
using Vontal::u8string;

namespace fs = std::filesystem;

const std::string longBytes(70'000, 'x');

class Everything : public qvdisk::FileEnumerator
{
public:
    bool onEntry(File &) override
    {
        ++count;
        return true;
    }

    int count = 0;
};

/// A place with a file, a tree and a victim that nothing is asked to touch.
class DiskTorture : public testing::Test
{
protected:
    DiskTorture() : place(directory.text()), temporaryPlace(directory.text("temporary"))
    {
        lay();
    }

    ~DiskTorture() override
    {
        directory.clear();
    }

    /// Makes everything as it is at the beginning of a run.
    void lay()
    {
        const UnseenAllocations unseen;
        directory.clear();
        fs::create_directories(directory.path() / "tree" / "below" / "deep");
        fs::create_directories(directory.path() / "temporary");
        fs::create_directories(directory.path() / "outside");
        directory.write("file", longBytes);
        directory.write("tree/a", "1");
        directory.write("tree/below/b", "1");
        directory.write("tree/below/deep/c", "1");
        directory.write("outside/victim", "12345");
        if (testsupport::canMakeLinks())
            testsupport::makeLink(directory.text("outside"), directory.text("tree/link"));
    }

    [[nodiscard]] u8string at(const char * name) const
    {
        return place + '\\' + name;
    }

    /// How many files and directories are in the place for temporary files.
    [[nodiscard]] int temporaries() const
    {
        const UnseenAllocations unseen;
        int count = 0;
        for ([[maybe_unused]] const auto & entry : fs::directory_iterator(directory.path() / "temporary"))
            ++count;
        return count;
    }

    [[nodiscard]] std::string bytesOf(const char * name) const
    {
        const UnseenAllocations unseen;
        return directory.read(name);
    }

    using Verdict = std::function<bool(const Fault & fault)>;

    /// Runs an operation under every fault, each time on what `lay` makes. Memory that ends it leaves it by
    /// the exception; whatever happens, the victim stays. `isRight` asks the fault, when the operation is
    /// over, what it excuses.
    void tortureOperation(const char * label, const Verdict & isRight)
    {
        tortureEach(
            label, [this] { lay(); }, isRight);
    }

    /// The same for an operation that changes nothing.
    void tortureQuestion(const char * label, const Verdict & isRight)
    {
        lay();
        tortureEach(
            label, [] {}, isRight);
    }

    TempDirectory directory;
    u8string place;
    testsupport::TemporaryPlace temporaryPlace;

private:
    void tortureEach(const char * label, const std::function<void()> & prepare, const Verdict & isRight)
    {
        SCOPED_TRACE(label);
        const testsupport::TortureReport report = torture(
            [&](const Fault & fault)
            {
                prepare();
                try
                {
                    EXPECT_TRUE(isRight(fault));
                }
                catch (const std::bad_alloc &)
                {
                    EXPECT_TRUE(fault.isAllocation());
                    EXPECT_EQ(temporaries(), 0) << "what nobody learns of must not stay";
                }
                EXPECT_EQ(bytesOf("outside/victim"), "12345");
            });
        EXPECT_GT(report.faultyRuns, 0U);
    }
};

TEST_F(DiskTorture, QuestionsAreAnsweredOrDenied)
{
    const struct
    {
        const char * label;
        std::function<bool()> ask;
    } questions[] = {
        {"isFile",
            [&]
            {
                return File(at("file")).isFile();
            }},
        {"isDirectory",
            [&]
            {
                return File(at("tree")).isDirectory();
            }},
        {"exists",
            [&]
            {
                return File(at("file")).exists();
            }},
        {"getFileSize",
            [&]
            {
                return File(at("file")).getFileSize() == 70'000;
            }},
        {"free getFileSize",
            [&]
            {
                return qvdisk::getFileSize(at("file")) == 70'000;
            }},
        {"fileExists",
            [&]
            {
                return qvdisk::fileExists(at("file"));
            }},
        {"narrow fileExists",
            [&]
            {
                return qvdisk::fileExists(std::string(at("fil?")));
            }},
        {"free isDirectory",
            [&]
            {
                return qvdisk::isDirectory(at("tree"));
            }},
        {"getModificationTime",
            [&]
            {
                qvbase::EarthTime time;
                return File(at("file")).getModificationTime(time);
            }},
        {"isEmpty of a directory",
            [&]
            {
                return File(at("temporary")).isEmpty();
            }},
        {"getEntries",
            [&]
            {
                Everything entries;
                return File(at("tree")).getEntries(&entries);
            }},
        {"getDirectoryContent",
            [&]
            {
                std::list<u8string> names;
                return qvdisk::getDirectoryContent(at("tree"), names);
            }},
        {"getModuleFullName",
            [&]
            {
                u8string out;
                return qvdisk::getModuleFullName(out);
            }},
        {"getModuleDir",
            [&]
            {
                u8string out;
                return qvdisk::getModuleDir(out);
            }},
        {"getModuleName",
            [&]
            {
                u8string out;
                return qvdisk::getModuleName(out);
            }},
    };
    for (const auto & question : questions)
        tortureQuestion(
            question.label, [&](const Fault & fault) { return question.ask() || fault.excuses(); });
}

TEST_F(DiskTorture, AFullDirectoryIsNeverTakenForAnEmptyOne)
{
    tortureQuestion("isEmpty", [&](const Fault &) { return !File(at("tree")).isEmpty(); });
    tortureQuestion("isEmpty of a file", [&](const Fault &) { return !File(at("file")).isEmpty(); });
}

TEST_F(DiskTorture, ARefusedOpenNeverEmptiesAFile)
{
    tortureOperation("openForWrite",
        [&](const Fault & fault)
        {
            const std::unique_ptr<qvdisk::FileWriter> writer(File(at("file")).openForWrite());
            if (writer != nullptr)
                return bytesOf("file").empty();
            return fault.excuses() && bytesOf("file") == longBytes;
        });
    tortureOperation("openForRead",
        [&](const Fault & fault)
        {
            const std::unique_ptr<qvdisk::FileReader> reader(File(at("file")).openForRead());
            return (reader != nullptr || fault.excuses()) && bytesOf("file") == longBytes;
        });
}

TEST_F(DiskTorture, AWriteThatSaysYesHasWrittenEverything)
{
    const struct
    {
        const char * label;
        std::function<bool()> write;
    } ways[] = {
        {"writeTextFile",
            [&]
            {
                return qvdisk::writeTextFile(at("new"), longBytes);
            }},
        {"writeBinaryData",
            [&]
            {
                return qvdisk::writeBinaryData(at("new"), longBytes.data(), 70'000);
            }},
        {"save of a stream",
            [&]
            {
                const qvbase::Reference<qvbase::ReferencedImpl<qvbase::ByteArrayInputStream>> stream(
                    new qvbase::ReferencedImpl<qvbase::ByteArrayInputStream>);
                return stream->init(longBytes.data(), 70'000) && qvdisk::save(stream.get(), at("new"));
            }},
        {"save of a standard stream",
            [&]
            {
                std::istringstream stream(longBytes);
                std::string error;
                const bool isSaved = qvdisk::save(&stream, at("new"), error);
                EXPECT_EQ(isSaved, error.empty());
                return isSaved;
            }},
        {"copy",
            [&]
            {
                return qvdisk::copy(at("file"), at("new"));
            }},
    };
    for (const auto & way : ways)
    {
        tortureOperation(way.label,
            [&](const Fault & fault) { return way.write() ? bytesOf("new") == longBytes : fault.excuses(); });
    }
}

TEST_F(DiskTorture, AFileIsReadAsFarAsItCanBe)
{
    tortureOperation("readRawFile",
        [&](const Fault & fault)
        {
            std::string out = "before";
            const bool isRead = qvdisk::readRawFile(at("file"), out);
            if (!isRead)
                return fault.excuses() && out == "before";
            // Kept: a read that fails ends it quietly.
            return fault.excuses() ? ("before" + longBytes).compare(0, out.size(), out) == 0
                                   : out == "before" + longBytes;
        });
    tortureOperation("readUnicodeTextFile",
        [&](const Fault & fault)
        {
            u8string out = "before";
            return qvdisk::readUnicodeTextFile(at("file"), out) ? fault.excuses() || out == longBytes
                                                                : fault.excuses() && out == "before";
        });
    tortureOperation("countMD5sum",
        [&](const Fault & fault)
        {
            u8string digest;
            // Seventy thousand times x, as md5sum reckons it.
            const bool isCounted = qvdisk::countMD5sum(at("file"), digest);
            return isCounted ? digest == "bbe08e77a44b51de811b3d30272b9916"
                             : fault.excuses() && digest.empty();
        });
}

TEST_F(DiskTorture, DirectoriesAreMadeOrDenied)
{
    tortureOperation("mkdir", [&](const Fault & fault)
        { return File(at("new")).mkdir() ? fs::exists(directory.path() / "new") : fault.excuses(); });
    tortureOperation("createDirectories",
        [&](const Fault & fault)
        {
            const bool isMade = qvdisk::createDirectories(at("new\\newer\\newest"));
            const UnseenAllocations unseen;
            return isMade ? directory.contains("new/newer/newest") : fault.excuses();
        });
    tortureOperation("wide createDirectories",
        [&](const Fault &) { return qvdisk::createDirectories(Vontal::pstring(at("new\\newer"))); });
}

TEST_F(DiskTorture, WhatIsSaidToBeRemovedIsGoneAndNothingElse)
{
    const struct
    {
        const char * label;
        const char * name;
        std::function<bool()> remove;
    } ways[] = {
        {"deleteFile", "tree/a",
            [&]
            {
                return qvdisk::deleteFile(at("tree\\a"));
            }},
        {"remove of a file", "tree/a",
            [&]
            {
                return File(at("tree\\a")).remove(false);
            }},
        {"remove of an empty directory", "temporary",
            [&]
            {
                return File(at("temporary")).remove(false);
            }},
        {"remove of a tree", "tree",
            [&]
            {
                return File(at("tree")).remove(true);
            }},
        {"deleteDirectory", "tree",
            [&]
            {
                return qvdisk::deleteDirectory(at("tree"));
            }},
        {"deleteDirContent", "tree/below",
            [&]
            {
                return qvdisk::deleteDirContent(at("tree"));
            }},
    };
    for (const auto & way : ways)
    {
        tortureOperation(way.label,
            [&](const Fault & fault)
            {
                const bool isRemoved = way.remove();
                EXPECT_EQ(bytesOf("file"), longBytes);
                const UnseenAllocations unseen;
                return isRemoved ? !directory.contains(way.name) : fault.excuses();
            });
    }
    tortureOperation("remove of a full directory, not asked for what is in it",
        [&](const Fault &)
        {
            const bool isRemoved = File(at("tree")).remove(false);
            return !isRemoved && bytesOf("tree/below/deep/c") == "1";
        });
    tortureOperation("deleteAllFiles",
        [&](const Fault & fault)
        {
            std::wstring error;
            const bool isDone = qvdisk::deleteAllFiles(Vontal::pstring(at("tree\\below\\deep")), error);
            EXPECT_EQ(isDone, error.empty());
            EXPECT_EQ(bytesOf("tree/below/b"), "1");
            const UnseenAllocations unseen;
            return fault.excuses() || (isDone && !directory.contains("tree/below/deep/c"));
        });
}

TEST_F(DiskTorture, TemporaryFilesAreGivenOutOrNotThere)
{
    const struct
    {
        const char * label;
        std::function<bool()> make;
    } ways[] = {
        {"createTempFile, wide",
            [&]
            {
                std::wstring out;
                return qvdisk::createTempFile(std::wstring(L"a"), std::wstring(L"b"), out);
            }},
        {"createTempFile",
            [&]
            {
                u8string out;
                return qvdisk::createTempFile(u8string("a"), u8string("b"), out);
            }},
        {"createTempFileCopy, wide",
            [&]
            {
                std::wstring out;
                return qvdisk::createTempFileCopy(L"a", Vontal::pstring(at("file")), out);
            }},
        {"createTempFileCopy",
            [&]
            {
                u8string out;
                return qvdisk::createTempFileCopy(at("temporary"), u8string("a"), at("file"), out);
            }},
        {"createTempDir",
            [&]
            {
                u8string out;
                return qvdisk::createTempDir("a", out);
            }},
    };
    for (const auto & way : ways)
    {
        tortureOperation(way.label,
            [&](const Fault & fault)
            {
                const bool isMade = way.make();
                EXPECT_EQ(temporaries(), isMade ? 1 : 0);
                return isMade || fault.excuses();
            });
    }
    tortureOperation("AutoDeleteFile",
        [&](const Fault & fault)
        {
            qvdisk::AutoDeleteFile file;
            const bool isMade = qvdisk::createTempFile(u8string("a"), u8string("b"), file);
            EXPECT_EQ(file.isEmpty(), !isMade);
            EXPECT_EQ(temporaries(), isMade ? 1 : 0);
            return isMade || fault.excuses();
        });
}

TEST_F(DiskTorture, ATemporaryFileIsGivenUpAfterAHundredThousandAttempts)
{
    qvplatform::armGates({"create file", 1, 1'000'000, qvplatform::GateAnswer::Fail});
    u8string out = "before";
    EXPECT_FALSE(qvdisk::createTempFile(at("temporary"), u8string("a"), u8string("b"), out));
    qvplatform::disarmGates();
    EXPECT_EQ(qvplatform::gatePassages(), 100'000U);
    EXPECT_EQ(out, "before");
    EXPECT_EQ(temporaries(), 0);
}

} // namespace
