// Other programs read what the writer writes.
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "support/ChildProcess.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/TempDirectory.h"
#include "writing.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using testsupport::TempDirectory;
using namespace ziptesting;

struct Content
{
    const char * name;
    std::string bytes;
};

const std::vector<Content> contents = {{"one.txt", "one"}, {"two.gz", noise(20'000)},
    {"three/four.txt", prose(400'000)}, {"five.zip", prose(1000)}, {"six.dat", noise(300'000, 3)}};

/// An archive in a file, one that went through a pipe, and one that was in memory.
class Programs : public testing::Test
{
protected:
    void SetUp() override
    {
        if (testsupport::hasDrives())
            GTEST_SKIP() << "the other programs are run on the other system";
        const HZIP file = createFile(directory.text("file.zip"));
        fill(file);
        EXPECT_EQ(CloseZipZ(file), 0U);
        CollectingPipe pipe;
        const HZIP stream = createHandle(pipe.get());
        fill(stream);
        EXPECT_EQ(CloseZipZ(stream), 0U);
        directory.write("stream.zip", pipe.bytes());
        const HZIP memory = createMemory();
        fill(memory);
        directory.write("memory.zip", closeMemory(memory));
        directory.write("empty.zip", closeMemory(createMemory()));
    }

    ~Programs() override
    {
        directory.clear();
    }

    static void fill(HZIP archive)
    {
        EXPECT_EQ(addFolder(archive, L"three"), 0U);
        for (const Content & content : contents)
            EXPECT_EQ(addMemory(archive, wide(content.name), content.bytes), 0U);
    }

    static testsupport::ChildResult run(
        const std::string & program, const std::vector<std::string> & arguments)
    {
        testsupport::ChildResult result = testsupport::runProgram(program, arguments);
        EXPECT_TRUE(result.started) << program << ": " << result.standardError;
        EXPECT_EQ(result.exitCode, 0) << program << ": " << result.standardError;
        return result;
    }

    TempDirectory directory;
    const std::vector<std::string> archives = {"file.zip", "stream.zip", "memory.zip"};
};

TEST_F(Programs, ReadItWithPython)
{
    const std::string script = "import sys, zipfile\n"
                               "archive = zipfile.ZipFile(sys.argv[1])\n"
                               "assert archive.testzip() is None\n"
                               "for item in archive.infolist():\n"
                               "    print(item.filename, item.file_size, item.CRC, item.compress_type)\n";
    for (const std::string & name : archives)
    {
        SCOPED_TRACE(name);
        std::string expected = "three/ 0 0 0\n";
        for (const Content & content : contents)
        {
            const std::string item = content.name;
            const bool isStored = item == "two.gz" || item == "five.zip";
            expected += item + ' ' + std::to_string(content.bytes.size()) + ' ' +
                        std::to_string(crcOf(content.bytes)) + (isStored ? " 0\n" : " 8\n");
        }
        EXPECT_EQ(run("python3", {"-c", script, directory.text(name)}).standardOutput, expected);
    }
    EXPECT_EQ(run("python3", {"-c", script, directory.text("empty.zip")}).standardOutput, "");
}

TEST_F(Programs, ReadItWithBsdtar)
{
    for (const std::string & name : archives)
    {
        SCOPED_TRACE(name);
        std::string expected = "three/\n";
        for (const Content & content : contents)
            expected += content.name + std::string("\n");
        EXPECT_EQ(run("bsdtar", {"-tf", directory.text(name)}).standardOutput, expected);
        for (const Content & content : contents)
            EXPECT_EQ(
                run("bsdtar", {"-xOf", directory.text(name), content.name}).standardOutput, content.bytes)
                << content.name;
    }
}

TEST_F(Programs, ReadItWith7z)
{
    for (const std::string & name : archives)
    {
        SCOPED_TRACE(name);
        const std::string output = run("7z", {"t", directory.text(name)}).standardOutput;
        EXPECT_NE(output.find("Everything is Ok"), std::string::npos) << output;
        EXPECT_NE(output.find("Files: 5"), std::string::npos) << output;
        EXPECT_EQ(run("7z", {"x", "-so", directory.text(name), "six.dat"}).standardOutput, noise(300'000, 3));
    }
}

TEST_F(Programs, SeeItsAttributesAndTimes)
{
    directory.write("source", "x");
    // 2001-02-03 04:05:07 in UTC; the zone is given to the other program as well, by the system.
    testsupport::setTimesOfFile(directory.text("source"), {981'173'107, 981'173'107, 981'173'107});
    testsupport::setReadOnly(directory.text("source"), true);
    const HZIP archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addFile(archive, L"file", directory.text("source")), 0U);
    EXPECT_EQ(addFolder(archive, L"folder"), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    const std::string script =
        "import datetime, sys, zipfile\n"
        "file, folder = zipfile.ZipFile(sys.argv[1]).infolist()\n"
        "print('%x %x' % (file.external_attr, folder.external_attr), file.create_system,\n"
        "      file.create_version, file.extract_version, file.internal_attr, folder.is_dir())\n"
        "offset = datetime.datetime.now().astimezone().utcoffset()\n"
        "print(datetime.datetime(*file.date_time) - offset)\n";
    EXPECT_EQ(run("python3", {"-c", script, directory.text("a.zip")}).standardOutput,
        "81000021 41c00010 11 23 20 0 True\n2001-02-03 04:05:06\n");
    run("bsdtar", {"-xf", directory.text("a.zip"), "-C", directory.text()});
    EXPECT_EQ(directory.read("file"), "x");
    EXPECT_TRUE(std::filesystem::is_directory(directory.path() / "folder"));
}

} // namespace
