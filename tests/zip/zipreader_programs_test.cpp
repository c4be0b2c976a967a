/// Archives that other programs make.

#include "VontalBase/zip/zipreader.h"

#include "support/ChildProcess.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace
{

using namespace ziptest;

namespace fs = std::filesystem;

constexpr std::int64_t changedAt = 1'600'000'001; // 13 September 2020, 12:26:41 in UTC
constexpr std::uint64_t changedUnits = (changedAt + 11'644'473'600) * std::uint64_t{10'000'000};

class ArchivesOfPrograms : public testing::Test
{
protected:
    ~ArchivesOfPrograms() override
    {
        directory.clear();
    }

    void SetUp() override
    {
        if (testsupport::hasDrives())
            GTEST_SKIP() << "the other programs are run on the other system";
        fs::create_directories(directory.path() / "tree" / "sub" / "deep");
        fs::create_directories(directory.path() / "tree" / "empty");
        for (const auto & [name, bytes] : contents)
        {
            directory.write("tree/" + name, bytes);
            testsupport::setTimesOfFile(directory.text("tree/" + name), {changedAt, changedAt, changedAt});
        }
        testsupport::setReadOnly(directory.text("tree/sub/read-only"), true);
    }

    testsupport::ChildResult run(
        const std::string & program, const std::vector<std::string> & arguments) const
    {
        testsupport::ChildResult result = testsupport::runProgram(program, arguments);
        EXPECT_TRUE(result.started) << program << ": " << result.standardError;
        EXPECT_EQ(result.exitCode, 0) << program << ": " << result.standardError << result.standardOutput;
        return result;
    }

    /// Holds an archive of the tree against it.
    /// @param prefix what stands in front of all names.
    void expectTree(const std::string & archive, const std::string & prefix) const
    {
        const std::string bytes = directory.read(archive);
        for (const Source source : allSources)
        {
            SCOPED_TRACE(nameOf(source));
            const OpenArchive opened(bytes, source);
            ASSERT_TRUE(opened.isOpen()) << lastMessage();
            for (const auto & [name, content] : contents)
            {
                SCOPED_TRACE(name);
                const int index = opened.find(prefix + name);
                ASSERT_GE(index, 0);
                EXPECT_TRUE(opened.content(index) == content);
                EXPECT_EQ(opened.entry(index).attr & 0x10U, 0U);
                const Pieces pieces = readInPieces(opened.get(), index, 10'001, content.size());
                EXPECT_TRUE(pieces.bytes == content);
                ASSERT_EQ(
                    UnzipItem(opened.get(), index, wide(directory.text("out")).data(), 0, ZipKindFile), 0U);
                EXPECT_TRUE(directory.read("out") == content);
                testsupport::setReadOnly(directory.text("out"), false);
            }
            const int empty = opened.find(prefix + "empty/");
            ASSERT_GE(empty, 0);
            EXPECT_NE(opened.entry(empty).attr & 0x10U, 0U);
        }
    }

    testsupport::TempDirectory directory;
    const std::map<std::string, std::string> contents = {{"text", prose(100'000)}, {"noise", noise(300'000)},
        {"zeros", std::string(1'000'000, '\0')}, {"nothing", ""}, {"sub/one byte", "1"},
        {"sub/deep/block", noise(16'384)}, {"sub/deep/two blocks", prose(32'768)},
        {"sub/read-only", "fixed"}};
};

TEST_F(ArchivesOfPrograms, AreReadAsPythonWritesThem)
{
    const std::string script =
        "import os, sys, zipfile\n"
        "root, target = sys.argv[1:]\n"
        "def fill(archive):\n"
        "    for folder, folders, files in os.walk(root):\n"
        "        for name in folders + files:\n"
        "            path = os.path.join(folder, name)\n"
        "            archive.write(path, os.path.relpath(path, root))\n"
        "class Stream:\n"
        "    def __init__(self, file): self.file = file\n"
        "    def write(self, data): return self.file.write(data)\n"
        "    def flush(self): pass\n"
        "for name, method in (('stored', zipfile.ZIP_STORED), ('packed', zipfile.ZIP_DEFLATED)):\n"
        "    with zipfile.ZipFile(target + name + '.zip', 'w', method) as archive:\n"
        "        fill(archive)\n"
        "        archive.comment = b'a comment'\n"
        "with open(target + 'stream.zip', 'wb') as file:\n"
        "    with zipfile.ZipFile(Stream(file), 'w', zipfile.ZIP_DEFLATED) as archive:\n"
        "        fill(archive)\n"
        "with open(target + 'behind.zip', 'wb') as file:\n"
        "    file.write(b'#!/bin/program\\n' * 1000)\n"
        "with zipfile.ZipFile(target + 'behind.zip', 'a', zipfile.ZIP_DEFLATED) as archive:\n"
        "    fill(archive)\n";
    run("python3", {"-c", script, directory.text("tree"), directory.text() + "/"});
    for (const std::string name : {"stored", "packed", "stream", "behind"})
    {
        SCOPED_TRACE(name);
        expectTree(name + ".zip", "");
    }
    const std::string bytes = directory.read("packed.zip");
    directory.write("prefixed.zip", std::string(70'000, 'x') + bytes);
    expectTree("prefixed.zip", "");
    const OpenArchive opened(bytes);
    EXPECT_NE(opened.entry(opened.find("sub/read-only")).attr & 1U, 0U);
    EXPECT_EQ(opened.entry(opened.find("text")).attr & 1U, 0U);
}

TEST_F(ArchivesOfPrograms, ShowWhatPythonSaysOfEachItem)
{
    const std::string script =
        "import sys, zipfile\n"
        "with zipfile.ZipFile(sys.argv[1], 'w') as archive:\n"
        "    item = zipfile.ZipInfo('\\u00e4/\\u20ac/\\U0001f600', (1999, 12, 31, 23, 59, 58))\n"
        "    item.external_attr = 0o100400 << 16 | 0x22\n"
        "    archive.writestr(item, b'content')\n"
        "    item = zipfile.ZipInfo('folder/', (2044, 2, 29, 1, 2, 4))\n"
        "    item.external_attr = 0o40755 << 16 | 0x10\n"
        "    archive.writestr(item, b'')\n";
    run("python3", {"-c", script, directory.text("a.zip")});
    const OpenArchive opened(directory.read("a.zip"));
    ASSERT_EQ(opened.count(), 2);
    ZIPENTRYW entry{};
    ASSERT_EQ(GetZipItemW(opened.get(), 0, &entry), 0U);
    EXPECT_EQ(entry.name, wide("\xC3\xA4/\xE2\x82\xAC/\xF0\x9F\x98\x80"));
    EXPECT_EQ(entry.attr, 0xA3U);
    EXPECT_EQ(unitsOf(entry.mtime), moment(1999, 12, 31, 23, 59, 58));
    ASSERT_EQ(GetZipItemW(opened.get(), 1, &entry), 0U);
    EXPECT_EQ(entry.attr, 0x90U);
    EXPECT_EQ(unitsOf(entry.ctime), moment(2044, 2, 29, 1, 2, 4));
}

TEST_F(ArchivesOfPrograms, AreReadAsBsdtarWritesThem)
{
    std::vector<std::string> arguments = {"--format", "zip", "-C", directory.text("tree"), "-cf"};
    const auto tarTo = [&](const std::string & target, const std::vector<std::string> & options)
    {
        std::vector<std::string> all = arguments;
        all.push_back(target);
        all.insert(all.begin(), options.begin(), options.end());
        for (const char * const name : {"text", "noise", "zeros", "nothing", "sub", "empty"})
            all.emplace_back(name);
        return run("bsdtar", all).standardOutput;
    };
    tarTo(directory.text("packed.zip"), {});
    tarTo(directory.text("stored.zip"), {"--options", "zip:compression=store"});
    directory.write("stream.zip", tarTo("-", {}));
    for (const std::string name : {"packed", "stored", "stream"})
    {
        SCOPED_TRACE(name);
        expectTree(name + ".zip", "");
        const OpenArchive opened(directory.read(name + ".zip"));
        EXPECT_EQ(unitsOf(opened.entry(opened.find("text")).mtime), changedUnits) << "in the UT field";
        EXPECT_NE(opened.entry(opened.find("sub/read-only")).attr & 1U, 0U);
    }
}

TEST_F(ArchivesOfPrograms, AreReadAs7zWritesThem)
{
    struct Row
    {
        const char * name;
        std::vector<std::string> options;
    };
    for (const Row & row : {Row{"packed", {}}, Row{"stored", {"-mm=Copy"}},
             Row{"best", {"-mm=Deflate", "-mx=9"}}, Row{"least", {"-mm=Deflate", "-mx=1"}}})
    {
        SCOPED_TRACE(row.name);
        const std::string name = row.name + std::string(".zip");
        std::vector<std::string> arguments = {"a", "-tzip", directory.text(name), directory.text("tree")};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        run("7z", arguments);
        expectTree(name, "tree/");
    }
}

} // namespace
