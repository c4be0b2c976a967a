#include "VontalBase/core/ByteArrayInputStream.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/WorkingDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <istream>
#include <memory>
#include <sstream>
#include <string>

namespace
{

using testsupport::TempDirectory;
using testsupport::WorkingDirectory;
using Vontal::u8string;

namespace fs = std::filesystem;

/// Bytes of every value, in no order that a block size divides.
std::string manyBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

TEST(GetFileSize, TellsBytesOrMinusOne)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    const struct
    {
        const char * label;
        u8string path;
        std::int64_t size;
    } rows[] = {
        {"a file", pathOf(directory, "file"), 5},
        {"nothing", pathOf(directory, "none"), -1},
        {"an empty path", "", -1},
        {"a file taken for a directory", pathOf(directory, "file\\x"), -1},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(qvdisk::getFileSize(row.path), row.size);
        EXPECT_EQ(qvdisk::getFileSize(wide(row.path)), row.size);
        EXPECT_EQ(qvdisk::getFileSize(std::string(row.path)), row.size);
    }
    directory.remove("file");
}

TEST(FileExists, LooksANameUp)
{
    const TempDirectory directory;
    directory.write("file.txt", "");
    fs::create_directory(directory.path() / "below");
    const struct
    {
        const char * label;
        u8string path;
        bool exists;
    } rows[] = {
        {"a file", pathOf(directory, "file.txt"), true},
        {"a directory", pathOf(directory, "below"), true},
        {"nothing", pathOf(directory, "none"), false},
        {"an empty path", "", false},
        {"a pattern that matches", pathOf(directory, "*.txt"), true},
        {"a pattern of single characters", pathOf(directory, "fil?.txt"), true},
        {"a pattern that matches nothing", pathOf(directory, "*.doc"), false},
        {"all of an empty directory", pathOf(directory, "below\\*"), true},
        {"all of nothing", pathOf(directory, "none\\*"), false},
        {"a slash at the end", pathOf(directory, "below/"), false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(qvdisk::fileExists(row.path), row.exists);
        EXPECT_EQ(qvdisk::fileExists(wide(row.path)), row.exists);
        EXPECT_EQ(qvdisk::fileExists(std::string(row.path)), row.exists);
    }
    directory.clear();
}

TEST(FileExists, KeepsTheFormsApartForADirectoryWithABackslash)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "below");
    const u8string path = pathOf(directory, "below\\");
    EXPECT_TRUE(qvdisk::fileExists(wide(path)));
    EXPECT_TRUE(qvdisk::fileExists(path));
    EXPECT_FALSE(qvdisk::fileExists(std::string(path)));
    EXPECT_FALSE(qvdisk::fileExists(path + "\\")) << "one backslash alone does not matter";
    directory.clear();
}

TEST(Paths, NameNothingByADriveOrAShareInAnyFormWhereThereAreNone)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "this system has drives and shares";
    const TempDirectory directory;
    fs::create_directories(directory.path() / "C:" / "below");
    directory.write("C:/x", "12345");
    const WorkingDirectory place(directory.path());
    const struct
    {
        const char * label;
        const char * path;
        bool exists;
        bool isShare;
    } rows[] = {
        {"a share", "\\\\etc\\passwd", false, true},
        {"a share with a slash behind it", "\\\\etc\\passwd/", false, true},
        {"below a share", "\\\\usr\\share\\doc", false, false},
        {"a pattern in a share", "\\\\etc\\pass*", false, true},
        {"one backslash is the root", "\\etc\\passwd", true, false},
        {"so is a slash", "/etc/passwd", true, false},
        {"a drive", "C:", false, false},
        {"a file on a drive", "C:\\x", false, false},
        {"with a slash", "C:/x", false, false},
        {"a small letter", "c:\\x", false, false},
        {"a pattern on a drive", "C:\\*", false, false},
        {"a name with a colon further in", ".\\C:\\x", true, false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const std::string narrow = row.path;
        const u8string path(narrow);
        EXPECT_EQ(qvdisk::fileExists(narrow), row.exists);
        EXPECT_EQ(qvdisk::fileExists(wide(path)), row.exists);
        EXPECT_EQ(qvdisk::fileExists(path), row.exists);
        EXPECT_EQ(qvdisk::getFileSize(narrow) >= 0, row.exists);
        EXPECT_EQ(qvdisk::getFileSize(wide(path)) >= 0, row.exists);
        EXPECT_EQ(qvdisk::getFileSize(path) >= 0, row.exists);
        qvdisk::File file(path);
        EXPECT_EQ(file.exists(), row.exists);
        EXPECT_EQ(file.isFile(), row.exists);
        EXPECT_EQ(file.isUNCShareName(), row.isShare);
        EXPECT_EQ(file.isDirectory(), row.isShare) << "kept: by its form alone";
        EXPECT_FALSE(qvdisk::isDirectory(path));
        std::string text;
        EXPECT_EQ(qvdisk::readRawFile(path, text), row.exists);
    }
    const struct
    {
        const char * path;
        bool isRoot;
    } newPaths[] = {
        {"\\\\tmp\\vontalbase-new", true},
        {"\\\\tmp\\x\\vontalbase-new", false},
        {"C:\\new", false},
        {"C:/new", false},
        {"Q:", true},
    };
    for (const auto & row : newPaths)
    {
        SCOPED_TRACE(row.path);
        const u8string path(row.path);
        EXPECT_FALSE(qvdisk::createDirectory(path));
        EXPECT_FALSE(qvdisk::File(path).mkdir());
        EXPECT_EQ(qvdisk::createDirectories(path), row.isRoot) << "a root is not asked for";
        EXPECT_TRUE(qvdisk::createDirectories(wide(path))) << "kept: whatever happened";
        EXPECT_FALSE(qvdisk::writeTextFile(path, "1"));
        EXPECT_FALSE(qvdisk::deleteFile(wide(path)));
    }
    EXPECT_FALSE(qvdisk::deleteFile(u8string("C:\\x")));
    EXPECT_FALSE(qvdisk::deleteDirectory("C:\\below"));
    EXPECT_FALSE(qvdisk::deleteDirectory("C:"));
    EXPECT_EQ(directory.read("C:/x"), "12345");
    EXPECT_TRUE(fs::is_directory(directory.path() / "C:" / "below"));
    EXPECT_FALSE(fs::exists("/tmp/vontalbase-new"));
    EXPECT_FALSE(fs::exists("C:/new"));
    EXPECT_FALSE(fs::exists("Q:"));
    directory.clear();
}

TEST(IsDirectory, TakesThePathAsItStands)
{
    const TempDirectory directory;
    directory.write("file", "");
    fs::create_directory(directory.path() / "below");
    EXPECT_TRUE(qvdisk::isDirectory(pathOf(directory)));
    EXPECT_TRUE(qvdisk::isDirectory(pathOf(directory, "below")));
    EXPECT_TRUE(qvdisk::isDirectory(pathOf(directory, "bel*")));
    EXPECT_FALSE(qvdisk::isDirectory(pathOf(directory, "file")));
    EXPECT_FALSE(qvdisk::isDirectory(pathOf(directory, "none")));
    EXPECT_FALSE(qvdisk::isDirectory(""));
    directory.clear();
}

TEST(IsDirectory, KeepsNotSeeingADirectoryThroughASeparator)
{
    const TempDirectory directory;
    EXPECT_FALSE(qvdisk::isDirectory(pathOf(directory) + "\\"));
    EXPECT_FALSE(qvdisk::isDirectory(pathOf(directory) + "/"));
    EXPECT_FALSE(qvdisk::isDirectory("C:\\")) << "the root of a drive";
    EXPECT_FALSE(qvdisk::isDirectory("/"));
}

TEST(ReadRawFile, AppendsTheBytes)
{
    const TempDirectory directory;
    for (const std::size_t size : {0, 1, 1023, 1024, 1025, 65536, 65537, 300'000})
    {
        SCOPED_TRACE(size);
        const std::string bytes = manyBytes(size);
        directory.write("file", bytes);
        std::string out = "before";
        EXPECT_TRUE(qvdisk::readRawFile(pathOf(directory, "file"), out));
        EXPECT_EQ(out, "before" + bytes);
    }
    directory.remove("file");
}

TEST(ReadRawFile, LeavesTheTextAloneWhereItCannotOpen)
{
    const TempDirectory directory;
    std::string out = "before";
    EXPECT_FALSE(qvdisk::readRawFile(pathOf(directory, "none"), out));
    EXPECT_FALSE(qvdisk::readRawFile(pathOf(directory), out));
    EXPECT_FALSE(qvdisk::readRawFile("", out));
    EXPECT_EQ(out, "before");
}

TEST(ReadRawFile, ReadsAFileThatDoesNotTellItsSize)
{
    const u8string path = "/proc/self/cmdline";
    if (testsupport::hasDrives())
        GTEST_SKIP() << "this system has no such files";
    EXPECT_EQ(qvdisk::getFileSize(path), 0);
    std::string out;
    EXPECT_TRUE(qvdisk::readRawFile(path, out));
    EXPECT_NE(out.find("disk_test"), std::string::npos);
}

TEST(ReadRawFile, KeepsTakingAReadThatFailsForTheEnd)
{
    // The system opens it, but there is nothing at its beginning to be read.
    const u8string path = "/proc/self/mem";
    if (testsupport::hasDrives())
        GTEST_SKIP() << "this system has no such files";
    std::string out = "before";
    EXPECT_TRUE(qvdisk::readRawFile(path, out));
    EXPECT_EQ(out, "before");
}

TEST(WriteTextFile, WritesTheBytesAsTheyStand)
{
    const TempDirectory directory;
    const std::string text("\xC3\xA9\r\n\n\0\x1A\xFF", 8);
    EXPECT_TRUE(qvdisk::writeTextFile(pathOf(directory, "file"), text));
    EXPECT_EQ(directory.read("file"), text) << "no mark, no other line ends";
    std::string back;
    EXPECT_TRUE(qvdisk::readRawFile(pathOf(directory, "file"), back));
    EXPECT_EQ(back, text);
    EXPECT_TRUE(qvdisk::writeTextFile(pathOf(directory, "file"), "1"));
    EXPECT_EQ(directory.read("file"), "1");
    EXPECT_TRUE(qvdisk::writeTextFile(pathOf(directory, "file"), ""));
    EXPECT_EQ(directory.read("file"), "");
    EXPECT_FALSE(qvdisk::writeTextFile(pathOf(directory, "none\\file"), "1"));
    EXPECT_FALSE(qvdisk::writeTextFile(pathOf(directory), "1"));
    EXPECT_FALSE(qvdisk::writeTextFile("", "1"));
    directory.remove("file");
}

TEST(WriteBinaryData, WritesTheBytes)
{
    const TempDirectory directory;
    EXPECT_TRUE(qvdisk::writeBinaryData(pathOf(directory, "file"), "1\0\n2", 4));
    EXPECT_EQ(directory.read("file"), std::string("1\0\n2", 4));
    EXPECT_FALSE(qvdisk::writeBinaryData(pathOf(directory, "file"), nullptr, 4));
    EXPECT_EQ(directory.read("file").size(), 4U) << "null touches nothing";
    EXPECT_FALSE(qvdisk::writeBinaryData(pathOf(directory, "new"), nullptr, 0));
    EXPECT_FALSE(directory.contains("new"));
    EXPECT_TRUE(qvdisk::writeBinaryData(pathOf(directory, "file"), "1", 0));
    EXPECT_EQ(directory.read("file"), "");
    EXPECT_FALSE(qvdisk::writeBinaryData(pathOf(directory, "none\\file"), "1", 1));
    directory.remove("file");
}

using ByteStream = qvbase::ReferencedImpl<qvbase::ByteArrayInputStream>;

/// Gives a few bytes and then fails.
class FailingStream : public qvbase::InputStream
{
public:
    int read(void * buffer, int size) override
    {
        largest = std::max(largest, size);
        if (wasRead)
            return -1;
        wasRead = true;
        *static_cast<char *>(buffer) = '1';
        return 1;
    }

    void close() override
    {
        isClosed = true;
    }

    int largest = 0;
    bool wasRead = false;
    bool isClosed = false;
};

TEST(SaveInputStream, WritesUpToTheEndOfTheStream)
{
    const TempDirectory directory;
    for (const std::size_t size : {0, 1, 4095, 4096, 4097, 100'000})
    {
        SCOPED_TRACE(size);
        const std::string bytes = manyBytes(size);
        const qvbase::Reference<ByteStream> stream(new ByteStream);
        ASSERT_TRUE(stream->init(bytes.data(), static_cast<unsigned int>(bytes.size())));
        EXPECT_TRUE(qvdisk::save(stream.get(), pathOf(directory, "file")));
        EXPECT_EQ(directory.read("file"), bytes);
        char more = 0;
        EXPECT_EQ(stream->read(&more, 1), 0) << "it is not closed";
    }
    directory.remove("file");
}

TEST(SaveInputStream, LeavesAPartWhereTheStreamFails)
{
    const TempDirectory directory;
    const auto before = testsupport::ResourceSnapshot::take();
    const qvbase::Reference<qvbase::ReferencedImpl<FailingStream>> stream(
        new qvbase::ReferencedImpl<FailingStream>);
    EXPECT_FALSE(qvdisk::save(stream.get(), pathOf(directory, "file")));
    EXPECT_EQ(directory.read("file"), "1");
    EXPECT_EQ(stream->largest, 4096);
    EXPECT_FALSE(stream->isClosed);
    stream->wasRead = false;
    EXPECT_FALSE(qvdisk::save(stream.get(), pathOf(directory, "none\\file")));
    EXPECT_FALSE(stream->wasRead) << "what cannot be written is not read";
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("file");
}

TEST(SaveStandardStream, WritesWhatTheBufferGives)
{
    const TempDirectory directory;
    for (const std::size_t size : {0, 1, 1023, 1024, 1025, 2048, 100'000})
    {
        SCOPED_TRACE(size);
        const std::string bytes = manyBytes(size);
        std::istringstream stream(bytes);
        std::string error = "before";
        EXPECT_TRUE(qvdisk::save(&stream, pathOf(directory, "file"), error));
        EXPECT_EQ(directory.read("file"), bytes);
        EXPECT_EQ(error, "before");
        EXPECT_TRUE(stream.good()) << "the state does not change";
    }
    std::istringstream failed("123");
    failed.setstate(std::ios::failbit);
    std::string error;
    EXPECT_TRUE(qvdisk::save(&failed, pathOf(directory, "file"), error)) << "the state is not asked for";
    EXPECT_EQ(directory.read("file"), "123");
    std::istream withoutBuffer(nullptr);
    EXPECT_TRUE(qvdisk::save(&withoutBuffer, pathOf(directory, "file"), error));
    EXPECT_EQ(directory.read("file"), "");
    directory.remove("file");
}

TEST(SaveStandardStream, SaysWhyItFails)
{
    const TempDirectory directory;
    const std::string place = "qvdiskutils:#:'qvdisk::save': ";
    std::string error = "before ";
    EXPECT_FALSE(qvdisk::save(nullptr, pathOf(directory, "file"), error));
    EXPECT_THAT(error, HasForm("before " + place + "Wrong parameter istream==NULL"));
    EXPECT_FALSE(directory.contains("file"));

    std::istringstream stream("123");
    error.clear();
    EXPECT_FALSE(qvdisk::save(&stream, pathOf(directory, "none\\file"), error));
    EXPECT_THAT(error, HasForm(place + "Cannot create file: *"));
    EXPECT_EQ(error.substr(error.find("file: ") + 6), pathOf(directory, "none\\file"));
    EXPECT_EQ(stream.get(), '1') << "what cannot be written is not read";

    const u8string full = testsupport::fullDevice();
    if (full.empty())
        GTEST_SKIP() << "this system has no device that is always full";
    for (const std::size_t size : {1, 100'000})
    {
        std::istringstream some(manyBytes(size));
        error.clear();
        EXPECT_FALSE(qvdisk::save(&some, full, error));
        EXPECT_THAT(error, HasForm(place + "Cannot write file: /dev/full"));
    }
}

TEST(DeleteFile, DeletesFilesAlone)
{
    const TempDirectory directory;
    directory.write("a", "");
    directory.write("b", "");
    directory.write("c", "");
    fs::create_directory(directory.path() / "below");
    testsupport::setReadOnly(directory.text("b"), true);
    EXPECT_TRUE(qvdisk::deleteFile(pathOf(directory, "a")));
    EXPECT_TRUE(qvdisk::deleteFile(pathOf(directory, "b"))) << "read-only";
    EXPECT_TRUE(qvdisk::deleteFile(wide(pathOf(directory, "c"))));
    EXPECT_FALSE(qvdisk::deleteFile(pathOf(directory, "a")));
    EXPECT_FALSE(qvdisk::deleteFile(pathOf(directory, "below")));
    EXPECT_FALSE(qvdisk::deleteFile(u8string()));
    EXPECT_TRUE(directory.contains("below"));
    directory.clear();
}

TEST(Copy, CopiesTheBytes)
{
    const TempDirectory directory;
    for (const std::size_t size : {0, 1, 65535, 65536, 65537, 131072, 200'000})
    {
        SCOPED_TRACE(size);
        const std::string bytes = manyBytes(size);
        directory.write("source", bytes);
        directory.write("target", std::string(300'000, 'x'));
        EXPECT_TRUE(qvdisk::copy(pathOf(directory, "source"), pathOf(directory, "target")));
        EXPECT_EQ(directory.read("target"), bytes);
    }
    directory.clear();
}

TEST(Copy, DoesNotCopyAttributesAndTimes)
{
    const TempDirectory directory;
    const std::string source = directory.write("source", "1");
    fs::last_write_time(source, fs::last_write_time(source) - std::chrono::hours(1000));
    testsupport::setReadOnly(source, true);
    EXPECT_TRUE(qvdisk::copy(pathOf(directory, "source"), pathOf(directory, "target")));
    EXPECT_FALSE(testsupport::isReadOnly(directory.text("target")));
    EXPECT_GT(fs::last_write_time(directory.path() / "target"),
        fs::last_write_time(source) + std::chrono::hours(900));
    testsupport::setReadOnly(source, false);
    directory.clear();
}

TEST(Copy, OpensBothBeforeItTestsEither)
{
    const TempDirectory directory;
    const auto before = testsupport::ResourceSnapshot::take();
    directory.write("target", "12345");
    EXPECT_FALSE(qvdisk::copy(pathOf(directory, "none"), pathOf(directory, "target")));
    EXPECT_EQ(directory.read("target"), "") << "a missing source empties the target";
    directory.write("source", "12345");
    EXPECT_FALSE(qvdisk::copy(pathOf(directory, "source"), pathOf(directory, "none\\target")));
    EXPECT_EQ(directory.read("source"), "12345");
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.clear();
}

TEST(Copy, DoesNotEmptyAFileThatIsCopiedOntoItself)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    EXPECT_FALSE(qvdisk::copy(pathOf(directory, "file"), pathOf(directory, "file")));
    EXPECT_EQ(directory.read("file"), "12345");
    directory.remove("file");
}

TEST(CountMD5sum, AppendsThirtyTwoDigits)
{
    const TempDirectory directory;
    // The digests are those that md5sum prints.
    const struct
    {
        const char * label;
        std::string bytes;
        const char * digest;
    } rows[] = {
        {"three bytes", "abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"one byte more than a block", std::string(65537, 'a'), "b3c6fc238e908636e53aabd5ad830cf7"},
        {"large blocks", std::string(16'777'217, 'a'), "c2fa6bae9682ffe64b4d07bd5a7d02ac"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        directory.write("file", row.bytes);
        u8string digest = "before ";
        EXPECT_TRUE(qvdisk::countMD5sum(pathOf(directory, "file"), digest));
        EXPECT_EQ(digest, std::string("before ") + row.digest);
    }
    directory.remove("file");
}

TEST(CountMD5sum, KeepsGivingNoDigestForAWholeNumberOfBlocks)
{
    const TempDirectory directory;
    // From 16 MiB on a file is read in larger blocks, which must not be seen.
    for (const std::size_t size : {0, 65536, 131072, 16'777'216, 16'842'752})
    {
        SCOPED_TRACE(size);
        directory.write("file", manyBytes(size));
        u8string digest = "before";
        EXPECT_TRUE(qvdisk::countMD5sum(pathOf(directory, "file"), digest));
        EXPECT_EQ(digest, "before");
    }
    directory.remove("file");
}

TEST(CountMD5sum, LeavesTheDigestAloneWhereTheFileCannotBeRead)
{
    const TempDirectory directory;
    u8string digest = "before";
    EXPECT_FALSE(qvdisk::countMD5sum(pathOf(directory, "none"), digest));
    EXPECT_FALSE(qvdisk::countMD5sum(pathOf(directory), digest));
    if (!testsupport::hasDrives())
    {
        EXPECT_FALSE(qvdisk::countMD5sum("/proc/self/mem", digest)) << "a read that fails";
    }
    EXPECT_EQ(digest, "before");
}

} // namespace
