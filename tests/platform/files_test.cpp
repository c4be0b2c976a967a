#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/SecondsNow.h"
#include "support/TempDirectory.h"

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace
{

using qvplatform::FileStatus;
using testsupport::TempDirectory;

std::wstring wide(const std::string & utf8)
{
    return Vontal::pstring(Vontal::u8string(utf8));
}

std::wstring inside(const TempDirectory & directory, const std::string & name)
{
    return wide(directory.text()) + L'\\' + wide(name);
}

bool close(std::FILE * stream)
{
    return stream != nullptr && std::fclose(stream) == 0;
}

TEST(PlatformFiles, TellWhatAPathNames)
{
    const TempDirectory directory;
    const std::time_t before = testsupport::secondsNow();
    directory.write("file", "12345");
    FileStatus status;
    ASSERT_TRUE(qvplatform::readFileStatus(inside(directory, "file"), status));
    EXPECT_EQ(status.kind, FileStatus::Kind::Regular);
    EXPECT_EQ(status.size, 5);
    EXPECT_GE(status.modificationTime, before - 2);
    EXPECT_LE(status.modificationTime, testsupport::secondsNow() + 2);
    ASSERT_TRUE(qvplatform::readFileStatus(directory.text("file"), status)) << "the narrow form";
    EXPECT_EQ(status.kind, FileStatus::Kind::Regular);
    EXPECT_EQ(status.size, 5);
    ASSERT_TRUE(qvplatform::readFileStatus(wide(directory.text()), status));
    EXPECT_EQ(status.kind, FileStatus::Kind::Directory);
    directory.remove("file");
}

TEST(PlatformFiles, LeaveTheStatusAloneWhereNothingIsNamed)
{
    const TempDirectory directory;
    FileStatus status;
    status.size = 77;
    EXPECT_FALSE(qvplatform::readFileStatus(inside(directory, "none"), status));
    EXPECT_FALSE(qvplatform::readFileStatus(directory.text("none"), status));
    EXPECT_FALSE(qvplatform::readFileStatus(std::wstring(), status));
    EXPECT_FALSE(qvplatform::readFileStatus(std::string(), status));
    EXPECT_EQ(status.size, 77);
}

TEST(PlatformFiles, EndAPathAtItsFirstNul)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    FileStatus status;
    EXPECT_TRUE(qvplatform::readFileStatus(inside(directory, "file") + L'\0' + L"x", status));
    EXPECT_FALSE(qvplatform::readFileStatus(L'\0' + inside(directory, "file"), status));
    directory.remove("file");
}

TEST(PlatformFiles, NameNothingWithADriveOrAShareWhereThereAreNone)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "this system has drives";
    const TempDirectory directory;
    FileStatus status;
    EXPECT_TRUE(qvplatform::readFileStatus(wide(directory.text()), status));
    EXPECT_FALSE(qvplatform::readFileStatus(L"\\" + (L'\\' + wide(directory.text()).substr(1)), status));
    EXPECT_FALSE(qvplatform::makeDirectory(L"Q:\\"));
    EXPECT_FALSE(qvplatform::makeDirectory(L"Q:"));
    EXPECT_FALSE(qvplatform::makeDirectory(L"q:/x"));
    EXPECT_FALSE(std::filesystem::exists("Q:"));
    EXPECT_TRUE(qvplatform::makeDirectory(inside(directory, "Q:"))) << "further in it is a name";
    EXPECT_TRUE(qvplatform::removeDirectory(inside(directory, "Q:")));
}

TEST(PlatformFiles, AreEmptiedOnlyWhenTheyAreOpen)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    const std::wstring path = inside(directory, "file");
    std::FILE * const first = qvplatform::openStream(path, "r+b");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(qvplatform::openStream(path, "wb"), nullptr);
    EXPECT_EQ(qvplatform::openStream(path, "ab"), nullptr);
    EXPECT_EQ(qvplatform::openStream(path, "rb"), nullptr) << "a reader beside a writer";
    EXPECT_TRUE(close(first));
    EXPECT_EQ(directory.read("file"), "12345");
    EXPECT_TRUE(close(qvplatform::openStream(path, "wb")));
    EXPECT_EQ(directory.read("file"), "");
    directory.remove("file");
}

TEST(PlatformFiles, LetManyReadButNobodyWriteBesideThem)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    const std::wstring path = inside(directory, "file");
    std::FILE * const first = qvplatform::openStream(path, "rb");
    std::FILE * const second = qvplatform::openStream(path, "rb");
    EXPECT_EQ(qvplatform::openStream(path, "wb"), nullptr);
    EXPECT_EQ(qvplatform::openStream(path, "r+b"), nullptr);
    EXPECT_TRUE(close(first));
    EXPECT_TRUE(close(second));
    EXPECT_EQ(directory.read("file"), "12345");
    directory.remove("file");
}

TEST(PlatformFiles, AreRefusedAlsoWhereASignalInterruptsTheAsking)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    const std::wstring path = inside(directory, "file");
    std::FILE * const reader = qvplatform::openStream(path, "rb");
    qvplatform::armGates({"lock file", 1, 1, qvplatform::GateAnswer::Interrupt});
    EXPECT_EQ(qvplatform::openStream(path, "wb"), nullptr);
    EXPECT_TRUE(close(reader));
    EXPECT_TRUE(close(qvplatform::openStream(path, "r+b")));
    qvplatform::disarmGates();
    EXPECT_EQ(directory.read("file"), "12345");
    directory.remove("file");
}

TEST(PlatformFiles, ThatAreToBeNewDoNotStayWhereTheyCannotBeHad)
{
    const TempDirectory directory;
    const std::wstring path = inside(directory, "file");
    for (const char * const service : {"look at open file", "lock file"})
    {
        SCOPED_TRACE(service);
        qvplatform::armGates({service, 1, 1, qvplatform::GateAnswer::Fail});
        std::FILE * const first = qvplatform::openStream(path, "wbx");
        qvplatform::disarmGates();
        if (qvplatform::faultedGate() == nullptr)
        {
            EXPECT_TRUE(close(first)) << "the system does it by itself";
        }
        else
        {
            EXPECT_EQ(first, nullptr);
            EXPECT_FALSE(directory.contains("file"));
            EXPECT_TRUE(close(qvplatform::openStream(path, "wbx")));
        }
        directory.remove("file");
    }
}

TEST(PlatformFiles, OpenInTheModeThatIsAskedFor)
{
    const TempDirectory directory;
    const std::wstring path = inside(directory, "file");
    EXPECT_EQ(qvplatform::openStream(path, "rb"), nullptr) << "reading makes no file";
    EXPECT_EQ(qvplatform::openStream(path, "r+b"), nullptr);
    EXPECT_FALSE(directory.contains("file"));
    const auto write = [&](const char * mode, const char * text)
    {
        std::FILE * const stream = qvplatform::openStream(path, mode);
        return stream != nullptr && std::fputs(text, stream) >= 0 && close(stream);
    };
    EXPECT_TRUE(write("wb", "one\n"));
    EXPECT_TRUE(write("ab", "two\n"));
    EXPECT_EQ(directory.read("file"), "one\ntwo\n");
    EXPECT_TRUE(write("r+b", "ONE"));
    EXPECT_EQ(directory.read("file"), "ONE\ntwo\n");
    EXPECT_TRUE(write("wb", "3"));
    EXPECT_EQ(directory.read("file"), "3");
    EXPECT_TRUE(write(" a b", "4"));
    EXPECT_TRUE(write("aeb", "5"));
    EXPECT_TRUE(write("abN", "6"));
    EXPECT_EQ(directory.read("file"), "3456");
    for (const char * const mode : {"", "q", "b", "rw", "rx", "wq"})
        EXPECT_EQ(qvplatform::openStream(path, mode), nullptr) << mode;
    EXPECT_EQ(directory.read("file"), "3456");
    directory.remove("file");
}

VONTALBASE_TEST_CHILD(staysUntilTold, arguments)
{
    const std::wstring ready = wide(arguments.at(0));
    const std::wstring leave = wide(arguments.at(1));
    if (!qvplatform::createNewFile(ready))
        return 1;
    FileStatus status;
    return testsupport::eventually([&] { return qvplatform::readFileStatus(leave, status); }) ? 0 : 2;
}

TEST(PlatformFiles, AreNotHandedToChildren)
{
    const TempDirectory directory;
    const std::wstring path = inside(directory, "file");
    std::FILE * const stream = qvplatform::openStream(path, "wb");
    ASSERT_NE(stream, nullptr);
    testsupport::ChildResult result;
    std::thread other(
        [&] {
            result =
                testsupport::runChild("staysUntilTold", {directory.text("ready"), directory.text("leave")});
        });
    EXPECT_TRUE(testsupport::eventually([&] { return directory.contains("ready"); }));
    // Not by the function that would give a lock back.
    std::fclose(stream);
    EXPECT_TRUE(close(qvplatform::openStream(path, "wb"))) << "the child has it";
    directory.write("leave", "");
    other.join();
    EXPECT_EQ(result.exitCode, 0);
    for (const char * const name : {"file", "ready", "leave"})
        directory.remove(name);
}

TEST(PlatformFiles, DoNotOpenADirectory)
{
    const TempDirectory directory;
    for (const char * const mode : {"rb", "r+b", "wb", "ab"})
    {
        SCOPED_TRACE(mode);
        EXPECT_EQ(qvplatform::openStream(wide(directory.text()), mode), nullptr);
    }
}

TEST(PlatformFiles, LetTwoWriteToADevice)
{
    if (testsupport::deviceThatIsNoFile().empty())
        GTEST_SKIP() << "this system has no such device";
    const std::wstring path = wide(testsupport::deviceThatIsNoFile());
    std::FILE * const first = qvplatform::openStream(path, "wb");
    std::FILE * const second = qvplatform::openStream(path, "wb");
    EXPECT_TRUE(close(first));
    EXPECT_TRUE(close(second));
    FileStatus status;
    ASSERT_TRUE(qvplatform::readFileStatus(path, status));
    EXPECT_EQ(status.kind, FileStatus::Kind::Other);
}

VONTALBASE_TEST_CHILD(opensForWriting, arguments)
{
    std::FILE * const stream = qvplatform::openStream(wide(arguments.at(0)), arguments.at(1));
    return stream == nullptr ? 3 : close(stream) ? 0 : 4;
}

TEST(PlatformFiles, AreRefusedToWritersOfOtherProcesses)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "12345");
    std::FILE * const reader = qvplatform::openStream(wide(path), "rb");
    EXPECT_EQ(testsupport::runChild("opensForWriting", {path, "wb"}).exitCode, 3);
    EXPECT_EQ(testsupport::runChild("opensForWriting", {path, "rb"}).exitCode, 0);
    EXPECT_TRUE(close(reader));
    EXPECT_EQ(directory.read("file"), "12345") << "the refused open must not empty it";
    std::FILE * const writer = qvplatform::openStream(wide(path), "ab");
    EXPECT_EQ(testsupport::runChild("opensForWriting", {path, "ab"}).exitCode, 3);
    EXPECT_EQ(testsupport::runChild("opensForWriting", {path, "rb"}).exitCode, 3);
    EXPECT_TRUE(close(writer));
    EXPECT_EQ(testsupport::runChild("opensForWriting", {path, "wb"}).exitCode, 0);
    EXPECT_EQ(directory.read("file"), "");
    directory.remove("file");
}

TEST(PlatformFiles, AreMadeOnceOnly)
{
    const TempDirectory directory;
    const std::wstring path = inside(directory, "new");
    EXPECT_TRUE(qvplatform::createNewFile(path));
    EXPECT_EQ(directory.read("new"), "");
    EXPECT_FALSE(qvplatform::createNewFile(path));
    directory.write("new", "1");
    EXPECT_FALSE(qvplatform::createNewFile(path));
    EXPECT_EQ(directory.read("new"), "1");
    EXPECT_FALSE(qvplatform::createNewFile(inside(directory, "missing") + L"\\new"));
    directory.remove("new");
}

TEST(PlatformFiles, AreCopiedWithTheirTimeAndTheirBeingReadOnly)
{
    const TempDirectory directory;
    const std::string bytes(200'000, 'x');
    const std::string source = directory.write("source", bytes);
    directory.write("target", "longer than nothing");
    const auto longAgo = std::filesystem::last_write_time(source) - std::chrono::hours(1000);
    std::filesystem::last_write_time(source, longAgo);
    EXPECT_TRUE(qvplatform::copyFile(wide(source), inside(directory, "target")));
    EXPECT_EQ(directory.read("target"), bytes);
    EXPECT_EQ(std::filesystem::last_write_time(directory.path() / "target"), longAgo);
    EXPECT_FALSE(testsupport::isReadOnly(directory.text("target")));
    testsupport::setReadOnly(source, true);
    EXPECT_TRUE(qvplatform::copyFile(wide(source), inside(directory, "target")));
    EXPECT_TRUE(testsupport::isReadOnly(directory.text("target")) || !testsupport::copiesStayReadOnly());
    testsupport::setReadOnly(source, false);
    testsupport::setReadOnly(directory.text("target"), false);
    directory.clear();
}

TEST(PlatformFiles, AreNotCopiedFromNothingAndNotOntoThemselves)
{
    const TempDirectory directory;
    const std::string file = directory.write("file", "12345");
    EXPECT_FALSE(qvplatform::copyFile(inside(directory, "none"), wide(file)));
    EXPECT_FALSE(qvplatform::copyFile(wide(directory.text()), wide(file)));
    EXPECT_FALSE(qvplatform::copyFile(wide(file), wide(file)));
    EXPECT_EQ(directory.read("file"), "12345");
    EXPECT_FALSE(qvplatform::copyFile(wide(file), inside(directory, "missing") + L"\\a"));
    directory.remove("file");
}

TEST(PlatformFiles, AreNotCopiedOntoWhatSomebodyHasOpen)
{
    const TempDirectory directory;
    const std::string source = directory.write("source", "12345");
    directory.write("target", "kept");
    const std::wstring target = inside(directory, "target");
    std::FILE * const reader = qvplatform::openStream(target, "rb");
    EXPECT_FALSE(qvplatform::copyFile(wide(source), target));
    EXPECT_TRUE(close(reader));
    EXPECT_EQ(directory.read("target"), "kept");
    const qvplatform::Handle writer = qvplatform::createForWriting(target, qvplatform::attribute::normal);
    EXPECT_TRUE(qvplatform::writeBytes(writer, "written", 7));
    EXPECT_FALSE(qvplatform::copyFile(wide(source), target));
    qvplatform::closeHandle(writer);
    EXPECT_EQ(directory.read("target"), "written");
    EXPECT_TRUE(qvplatform::copyFile(wide(source), target));
    EXPECT_EQ(directory.read("target"), "12345");
    directory.clear();
}

TEST(PlatformFiles, AreRemovedButDirectoriesAreNot)
{
    const TempDirectory directory;
    directory.write("file", "1");
    EXPECT_TRUE(qvplatform::makeDirectory(inside(directory, "below")));
    EXPECT_FALSE(qvplatform::makeDirectory(inside(directory, "below")));
    EXPECT_FALSE(qvplatform::removeFile(inside(directory, "below")));
    EXPECT_FALSE(qvplatform::removeDirectory(inside(directory, "file")));
    EXPECT_TRUE(qvplatform::removeFile(inside(directory, "file")));
    EXPECT_FALSE(qvplatform::removeFile(inside(directory, "file")));
    EXPECT_FALSE(qvplatform::makeDirectory(inside(directory, "missing\\below")));
    directory.write("below/file", "1");
    EXPECT_FALSE(qvplatform::removeDirectory(inside(directory, "below")));
    EXPECT_TRUE(qvplatform::removeFile(inside(directory, "below\\file")));
    EXPECT_TRUE(qvplatform::removeDirectory(inside(directory, "below")));
}

TEST(PlatformFiles, CanBeMadeWritable)
{
    const TempDirectory directory;
    const std::string file = directory.write("file", "1");
    testsupport::setReadOnly(file, true);
    qvplatform::clearReadOnly(wide(file));
    EXPECT_FALSE(testsupport::isReadOnly(file));
    qvplatform::clearReadOnly(inside(directory, "none"));
    directory.remove("file");
}

TEST(PlatformFiles, AreNotTouchedThroughALink)
{
    const TempDirectory directory;
    const std::string file = directory.write("file", "1");
    std::filesystem::create_directory(directory.path() / "below");
    if (!testsupport::canMakeLinks())
    {
        directory.clear();
        GTEST_SKIP() << "no links can be made here";
    }
    ASSERT_TRUE(testsupport::makeLink(file, directory.text("link")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("below"), directory.text("dirlink")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("none"), directory.text("dangling")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("circle"), directory.text("circle")));
    for (const char * const name : {"link", "dirlink", "dangling", "circle"})
    {
        SCOPED_TRACE(name);
        EXPECT_TRUE(qvplatform::isLink(inside(directory, name)));
        EXPECT_TRUE(qvplatform::isLink(inside(directory, name) + L"\\/"));
    }
    EXPECT_FALSE(qvplatform::isLink(wide(file)));
    EXPECT_FALSE(qvplatform::isLink(inside(directory, "below")));
    EXPECT_FALSE(qvplatform::isLink(inside(directory, "none")));
    EXPECT_FALSE(qvplatform::isLink(L""));
    for (const char * const pattern : {"lin*", "lin?", "*", "lin<", "lin>"})
        EXPECT_FALSE(qvplatform::isLink(inside(directory, pattern))) << pattern;

    FileStatus status;
    EXPECT_FALSE(qvplatform::readFileStatus(inside(directory, "dangling"), status));
    EXPECT_FALSE(qvplatform::readFileStatus(inside(directory, "circle"), status));
    ASSERT_TRUE(qvplatform::readFileStatus(inside(directory, "dirlink"), status));
    EXPECT_EQ(status.kind, FileStatus::Kind::Directory);

    testsupport::setReadOnly(file, true);
    qvplatform::clearReadOnly(inside(directory, "link"));
    EXPECT_TRUE(testsupport::isReadOnly(file)) << "the setting of what is linked to stays";
    testsupport::setReadOnly(file, false);

    EXPECT_FALSE(qvplatform::removeDirectory(inside(directory, "link")));
    EXPECT_FALSE(qvplatform::removeDirectory(inside(directory, "dangling")));
    EXPECT_TRUE(qvplatform::removeDirectory(inside(directory, "dirlink")));
    EXPECT_TRUE(qvplatform::removeFile(inside(directory, "link")));
    EXPECT_TRUE(qvplatform::removeFile(inside(directory, "dangling")));
    EXPECT_TRUE(qvplatform::removeFile(inside(directory, "circle")));
    EXPECT_EQ(directory.read("file"), "1");
    EXPECT_TRUE(directory.contains("below"));
    directory.clear();
}

TEST(PlatformFiles, MayHavePathsOfAnyLength)
{
    const TempDirectory directory;
    const std::wstring name(200, L'n');
    std::wstring path = wide(directory.text());
    while (path.size() < testsupport::possiblePathLength())
    {
        path += L'\\' + name;
        ASSERT_TRUE(qvplatform::makeDirectory(path)) << path.size();
    }
    EXPECT_FALSE(qvplatform::makeDirectory(path));
    const std::wstring file = path + L"\\file";
    std::FILE * const stream = qvplatform::openStream(file, "wb");
    ASSERT_NE(stream, nullptr);
    std::fputs("12", stream);
    EXPECT_TRUE(close(stream));
    FileStatus status;
    ASSERT_TRUE(qvplatform::readFileStatus(file, status));
    EXPECT_EQ(status.size, 2);
    EXPECT_FALSE(qvplatform::isLink(file));
    EXPECT_TRUE(qvplatform::copyFile(file, path + L"\\copy"));
    EXPECT_TRUE(qvplatform::removeFile(path + L"\\copy"));
    EXPECT_FALSE(qvplatform::removeDirectory(path));
    EXPECT_TRUE(qvplatform::removeFile(file));
    EXPECT_FALSE(qvplatform::readFileStatus(file, status));
    while (path.size() > wide(directory.text()).size())
    {
        ASSERT_TRUE(qvplatform::removeDirectory(path)) << path.size();
        path.resize(path.size() - name.size() - 1);
    }
}

TEST(PlatformFiles, HaveNamesThatNoFileHasBeyondALimit)
{
    const TempDirectory directory;
    const std::wstring longest(255, L'n');
    EXPECT_TRUE(qvplatform::createNewFile(wide(directory.text()) + L'\\' + longest));
    EXPECT_TRUE(qvplatform::removeFile(wide(directory.text()) + L'\\' + longest));
    EXPECT_FALSE(qvplatform::createNewFile(wide(directory.text()) + L'\\' + longest + L'n'));
    EXPECT_FALSE(qvplatform::createNewFile(wide(directory.text()) + L'\\' + std::wstring(100'000, L'n')));
}

TEST(PlatformFiles, KeepNothingOpenWhereTheSystemRefuses)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    const std::wstring path = inside(directory, "file");
    const auto before = testsupport::ResourceSnapshot::take();
    for (std::uint64_t passage = 1;; ++passage)
    {
        SCOPED_TRACE(passage);
        qvplatform::armGates({nullptr, passage, 1, qvplatform::GateAnswer::Fail});
        std::FILE * const stream = qvplatform::openStream(path, "wb");
        qvplatform::disarmGates();
        if (qvplatform::faultedGate() == nullptr)
        {
            EXPECT_GT(passage, 1U);
            EXPECT_TRUE(close(stream));
            break;
        }
        EXPECT_EQ(stream, nullptr);
        EXPECT_EQ(directory.read("file"), "12345");
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("file");
}

} // namespace
