#include "VontalBase/core/EarthTime.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/files.h"

#include "disk/disksupport.h"
#include "support/ChildProcess.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/VirtualSlot.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace
{

using qvdisk::File;
using testsupport::TempDirectory;
using Vontal::u8string;

namespace fs = std::filesystem;

/// Writes down what it is told.
class Listing : public qvdisk::FileEnumerator
{
public:
    explicit Listing(std::size_t most = 1000) : m_most(most)
    {
    }

    bool onEntry(File & entry) override
    {
        paths.push_back(entry.getPath());
        return paths.size() < m_most;
    }

    std::vector<std::wstring> paths;

private:
    std::size_t m_most;
};

TEST(File, HoldsItsPathWithoutOneBackslashAtTheEnd)
{
    const struct
    {
        const char * label;
        const wchar_t * path;
        const wchar_t * held;
    } rows[] = {
        {"one backslash", L"C:\\a\\", L"C:\\a"},
        {"the root of a drive", L"C:\\", L"C:"},
        {"two backslashes alone", L"\\\\", L"\\\\"},
        {"a slash stays", L"C:\\a/", L"C:\\a/"},
        {"only one of two goes", L"a\\\\", L"a\\"},
        {"only one of three goes", L"\\\\\\", L"\\\\"},
        {"a lone backslash", L"\\", L""},
        {"empty", L"", L""},
        {"no separator", L"abc", L"abc"},
        {"separators further in", L"a\\b/c", L"a\\b/c"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const std::wstring path = row.path;
        std::string narrow(path.begin(), path.end());
        EXPECT_EQ(File(path).getPath(), row.held);
        EXPECT_EQ(File(row.path).getPath(), row.held);
        EXPECT_EQ(File(u8string(narrow)).getPath(), row.held);
        File file(L"before");
        file.setPath(path);
        EXPECT_EQ(file.getPath(), row.held);
        file.setPath(u8string(narrow));
        EXPECT_EQ(file.getPath(), row.held);
    }
}

TEST(File, IsEmptyFromNothingAndFromNull)
{
    EXPECT_EQ(File().getPath(), L"");
    EXPECT_EQ(File(static_cast<const wchar_t *>(nullptr)).getPath(), L"");
}

TEST(File, CopiesThePathAlone)
{
    const File first(L"a\\b");
    File second(first);
    EXPECT_EQ(second.getPath(), L"a\\b");
    File third;
    third = first;
    EXPECT_EQ(third.getPath(), L"a\\b");
}

TEST(File, TakesTextOutsideAscii)
{
    EXPECT_EQ(File(u8string("\xC3\xA9\\\xF0\x9F\x98\x80")).getPath(),
        Vontal::pstring(u8string("\xC3\xA9\\\xF0\x9F\x98\x80")));
    EXPECT_EQ(File(u8string("a\0b", 3)).getPath(), L"a") << "up to the first zero byte";
}

TEST(File, AppendsWithABackslashBetween)
{
    const struct
    {
        const char * label;
        const wchar_t * path;
        const wchar_t * child;
        const wchar_t * expected;
    } rows[] = {
        {"plain", L"a", L"b", L"a\\b"},
        {"the child loses its last backslash", L"a", L"b\\", L"a\\b"},
        {"kept: to an empty path the backslash comes too", L"", L"b", L"\\b"},
        {"an empty child", L"a", L"", L"a"},
        {"kept: a slash is not enough", L"a/", L"b", L"a/\\b"},
        {"a drive", L"C:\\", L"b", L"C:\\b"},
        {"a child with directories", L"a", L"b/c\\d", L"a\\b/c\\d"},
        {"both empty", L"", L"", L""},
        {"a child of a backslash", L"a", L"\\", L"a\\"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const std::wstring path = row.path;
        const std::wstring child = row.child;
        const u8string path8(row.path);
        const u8string child8(row.child);
        EXPECT_EQ(File(path, child).getPath(), row.expected);
        EXPECT_EQ(File(path8, child8).getPath(), row.expected);
        File file(path);
        EXPECT_EQ(&file.append(child), &file);
        EXPECT_EQ(file.getPath(), row.expected);
        EXPECT_EQ(File(path).append(child8).getPath(), row.expected);
        EXPECT_EQ(File(path).append(row.child).getPath(), row.expected);
    }
}

TEST(File, AppendsNothingForNull)
{
    File file(L"a/");
    EXPECT_EQ(&file.append(static_cast<const wchar_t *>(nullptr)), &file);
    EXPECT_EQ(file.getPath(), L"a/");
}

TEST(File, AppendsItsOwnPath)
{
    File file(L"a");
    file.append(file.getPath());
    EXPECT_EQ(file.getPath(), L"a\\a");
}

TEST(File, TakesItsNameApart)
{
    const struct
    {
        const wchar_t * path;
        const wchar_t * leaf;
        const wchar_t * body;
        const wchar_t * extension;
        const wchar_t * parent;
    } rows[] = {
        {L"C:\\a\\b", L"b", L"b", L"", L"C:\\a\\"},
        {L"C:\\a/b.txt", L"b.txt", L"b", L".txt", L"C:\\a/"},
        {L"a.txt", L"a.txt", L"a", L".txt", L""},
        {L"a.b\\c", L"c", L"c", L"", L"a.b\\"},
        {L"a.b/c", L"c", L"c", L"", L"a.b/"},
        {L".profile", L".profile", L"", L".profile", L""},
        {L"a.b.c", L"a.b.c", L"a.b", L".c", L""},
        {L"name.", L"name.", L"name", L".", L""},
        {L"a/", L"", L"", L"", L"a/"},
        {L"", L"", L"", L"", L""},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.path)));
        File file(row.path);
        EXPECT_EQ(file.getLeafName(), row.leaf);
        EXPECT_EQ(file.getLeafNameBody(), row.body);
        EXPECT_EQ(file.getExtension(), row.extension);
        EXPECT_EQ(file.getParentPath(), row.parent);
    }
}

TEST(File, KnowsAShareByItsName)
{
    const struct
    {
        const wchar_t * path;
        bool isUNC;
        bool isShare;
    } rows[] = {
        {L"\\\\server\\share", true, true},
        {L"\\\\server\\share\\", true, true},
        {L"\\\\server\\", true, false},
        {L"\\\\server", true, false},
        {L"\\\\server\\share\\x", true, false},
        {L"\\\\s\\t", true, true},
        {L"\\\\s\\", true, false},
        // One backslash of two at the end is not held.
        {L"\\\\server\\share\\\\", true, true},
        {L"\\\\server\\\\", true, false},
        {L"\\\\\\a", true, false},
        {L"\\\\", true, false},
        {L"\\server\\share", false, false},
        {L"//server/share", false, false},
        {L"C:\\a\\b", false, false},
        {L"\\", false, false},
        {L"", false, false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.path)));
        EXPECT_EQ(File(row.path).isUNC(), row.isUNC);
        EXPECT_EQ(File(row.path).isUNCShareName(), row.isShare);
    }
}

TEST(File, TakesAShareForADirectoryWithoutAskingAnybody)
{
    EXPECT_TRUE(File(L"\\\\no-such-server.invalid\\share").isDirectory());
    EXPECT_FALSE(File(L"\\\\").isDirectory());
}

TEST(File, LooksForAShareToSayWhetherItExists)
{
    const u8string path = "\\\\no-such-server.invalid\\share";
    EXPECT_FALSE(File(path).exists());
    EXPECT_TRUE(File(path).isDirectory()) << "kept: by its form alone";
    EXPECT_FALSE(File(path).isFile());
    EXPECT_FALSE(File(path).isEmpty());
    EXPECT_EQ(File(path).getFileSize(), -1);
    EXPECT_FALSE(qvdisk::isDirectory(path)) << "the free function looks it up";
    EXPECT_FALSE(qvdisk::fileExists(path));
    EXPECT_FALSE(File(path + "\\below").exists());
    EXPECT_FALSE(File(path + "\\below").isDirectory());
}

TEST(File, KnowsTheRootOfADrive)
{
    EXPECT_EQ(File(L"C:").isDirectory(), testsupport::hasDrives());
    EXPECT_EQ(File(L"C:\\").exists(), testsupport::hasDrives());
    EXPECT_FALSE(File(L"C:").isFile());
}

TEST(File, KnowsFilesDirectoriesAndNothing)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    directory.write("nothing", "");
    const struct
    {
        const char * label;
        u8string path;
        bool isFile;
        bool isDirectory;
        bool isEmpty;
        std::int64_t size;
    } rows[] = {
        {"a file", pathOf(directory, "file"), true, false, false, 5},
        {"an empty file", pathOf(directory, "nothing"), true, false, true, 0},
        {"a directory", pathOf(directory), false, true, false, -2},
        {"a directory with a separator", pathOf(directory) + "\\", false, true, false, -2},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        File file(row.path);
        EXPECT_TRUE(file.exists());
        EXPECT_EQ(file.isFile(), row.isFile);
        EXPECT_EQ(file.isDirectory(), row.isDirectory);
        EXPECT_EQ(file.isEmpty(), row.isEmpty);
        EXPECT_TRUE(file.getFileSize() == row.size || !row.isFile);
    }
    for (const u8string & path : {pathOf(directory, "none"), pathOf(directory, "none\\none"), u8string()})
    {
        SCOPED_TRACE(path);
        File file(path);
        EXPECT_FALSE(file.exists());
        EXPECT_FALSE(file.isFile());
        EXPECT_FALSE(file.isDirectory());
        EXPECT_FALSE(file.isEmpty());
        EXPECT_EQ(file.getFileSize(), -1);
        qvbase::EarthTime time(1999, 1, 2, 3);
        EXPECT_FALSE(file.getModificationTime(time));
        EXPECT_EQ(time, qvbase::EarthTime(1999, 1, 2, 3));
    }
    directory.clear();
}

TEST(File, TellsTheSecondInUtcInWhichAFileWasWritten)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "1");
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    const struct
    {
        const char * label;
        milliseconds since1970;
        qvbase::EarthTime expected;
    } rows[] = {
        {"the first second after 1970 began", seconds(1), {1970, 1, 1, 1000}},
        {"a billion seconds", seconds(1'000'000'000), {2001, 9, 9, 6'400'000}},
        {"one second less", seconds(999'999'999), {2001, 9, 9, 6'399'000}},
        {"the end of a leap day", seconds(1'583'020'799), {2020, 2, 29, 86'399'000}},
        {"one second more", seconds(1'583'020'800), {2020, 3, 1, 0}},
        {"a summer's day", seconds(1'656'633'600), {2022, 7, 1, 0}},
        {"beyond 31 bits", seconds(2'147'483'648), {2038, 1, 19, 11'648'000}},
        {"a fraction of a second does not count", milliseconds(1'000'000'000'999), {2001, 9, 9, 6'400'000}},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const std::chrono::sys_time<milliseconds> moment(row.since1970);
        fs::last_write_time(path, std::chrono::file_clock::from_sys(moment));
        qvbase::EarthTime time(1999, 1, 2, 3);
        EXPECT_TRUE(File(u8string(path)).getModificationTime(time));
        EXPECT_EQ(time, row.expected);
    }
    directory.remove("file");
}

TEST(File, MakesOneDirectory)
{
    const TempDirectory directory;
    EXPECT_TRUE(File(pathOf(directory, "a")).mkdir());
    EXPECT_FALSE(File(pathOf(directory, "a")).mkdir());
    EXPECT_FALSE(File(pathOf(directory, "b\\c")).mkdir());
    EXPECT_TRUE(File(pathOf(directory, "a")).isDirectory());
    EXPECT_TRUE(File(pathOf(directory, "a")).isEmpty());
    directory.write("a/file", "");
    EXPECT_FALSE(File(pathOf(directory, "a")).isEmpty());
    directory.clear();
}

TEST(File, TellsItsEntries)
{
    const TempDirectory directory;
    const std::wstring place = wide(pathOf(directory));
    Listing none;
    EXPECT_TRUE(File(place).getEntries(&none));
    EXPECT_TRUE(none.paths.empty());

    directory.write("a", "");
    directory.write("\xC3\xA9\xF0\x9F\x98\x80", "");
    fs::create_directory(directory.path() / "below");
    directory.write("below/deep", "");
    Listing all;
    EXPECT_TRUE(File(place).getEntries(&all));
    EXPECT_EQ(std::set<std::wstring>(all.paths.begin(), all.paths.end()),
        (std::set<std::wstring>{
            place + L"\\a", place + L"\\below", place + L'\\' + wide("\xC3\xA9\xF0\x9F\x98\x80")}));
    EXPECT_EQ(all.paths.size(), 3U);

    Listing missing;
    EXPECT_FALSE(File(place + L"\\none").getEntries(&missing));
    EXPECT_FALSE(File(place + L"\\a").getEntries(&missing));
    EXPECT_TRUE(missing.paths.empty());
    directory.clear();
}

TEST(File, StopsTellingEntriesWhenItIsToldTo)
{
    const TempDirectory directory;
    for (const char * const name : {"a", "b", "c"})
        directory.write(name, "");
    const auto before = testsupport::ResourceSnapshot::take();
    Listing first(1);
    EXPECT_FALSE(File(pathOf(directory)).getEntries(&first));
    EXPECT_EQ(first.paths.size(), 1U);
    Listing last(3);
    EXPECT_FALSE(File(pathOf(directory)).getEntries(&last)) << "also at the last entry";
    EXPECT_EQ(last.paths.size(), 3U);
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.clear();
}

TEST(File, RemovesAFileAndAnEmptyDirectory)
{
    const TempDirectory directory;
    directory.write("file", "1");
    directory.write("other", "1");
    testsupport::setReadOnly(directory.text("other"), true);
    fs::create_directory(directory.path() / "below");
    EXPECT_TRUE(File(pathOf(directory, "file")).remove(false));
    EXPECT_TRUE(File(pathOf(directory, "other")).remove(true)) << "read-only";
    EXPECT_TRUE(File(pathOf(directory, "below")).remove(false));
    EXPECT_FALSE(File(pathOf(directory, "below")).remove(false));
    EXPECT_FALSE(File(pathOf(directory, "below")).remove(true));
}

TEST(File, RemovesAFullDirectoryOnlyWithWhatIsInIt)
{
    const TempDirectory directory;
    fs::create_directories(directory.path() / "a" / "b" / "c");
    directory.write("a/file", "1");
    directory.write("a/b/file", "1");
    directory.write("beside", "1");
    EXPECT_FALSE(File(pathOf(directory, "a")).remove(false));
    EXPECT_EQ(directory.read("a/b/file"), "1");
    EXPECT_TRUE(File(pathOf(directory, "a")).remove(true));
    EXPECT_FALSE(directory.contains("a"));
    EXPECT_EQ(directory.read("beside"), "1");
    directory.remove("beside");
}

TEST(File, RemovesAReadOnlyDirectory)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "a");
    testsupport::setReadOnly(directory.text("a"), true);
    EXPECT_TRUE(File(pathOf(directory, "a")).remove(false));
}

TEST(File, NeverRemovesTheRootForAnEmptyPath)
{
    EXPECT_FALSE(File().remove(true));
    EXPECT_FALSE(File().remove(false));
    EXPECT_FALSE(File(L"\\").remove(true)) << "held as an empty path";
}

TEST(File, OpensAStreamInTheModeGiven)
{
    const TempDirectory directory;
    File file(pathOf(directory, "file"));
    EXPECT_EQ(file.open("rb"), nullptr);
    std::FILE * stream = file.open("wb");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(file.open("ab"), nullptr) << "a second writer";
    EXPECT_EQ(file.openForWrite(), nullptr);
    EXPECT_EQ(file.openForRead(), nullptr);
    std::fputs("1\r\n2", stream);
    std::fclose(stream);
    EXPECT_EQ(directory.read("file"), "1\r\n2");
    EXPECT_EQ(File(pathOf(directory, "missing\\file")).open("wb"), nullptr);
    EXPECT_EQ(File(pathOf(directory)).open("rb"), nullptr);
    EXPECT_EQ(file.open("nonsense"), nullptr);
    directory.remove("file");
}

TEST(File, OpensForReadingBesideReadersAndForWritingAlone)
{
    const TempDirectory directory;
    directory.write("file", "12345");
    File file(pathOf(directory, "file"));
    {
        const std::unique_ptr<qvdisk::FileReader> first(file.openForRead());
        const std::unique_ptr<qvdisk::FileReader> second(file.openForRead());
        ASSERT_NE(first, nullptr);
        EXPECT_NE(second, nullptr);
        EXPECT_EQ(file.openForWrite(), nullptr);
        char buffer[8] = {};
        EXPECT_EQ(first->read(buffer, 8), 5U) << "the refused open must not have emptied it";
    }
    const std::unique_ptr<qvdisk::FileWriter> writer(file.openForWrite());
    EXPECT_NE(writer, nullptr);
    EXPECT_EQ(directory.read("file"), "");
    writer->close();
    directory.remove("file");
}

VONTALBASE_TEST_CHILD(writesBesideAWriter, arguments)
{
    File file{u8string(arguments.at(0))};
    const std::unique_ptr<qvdisk::FileWriter> writer(file.openForWrite());
    return writer == nullptr ? 3 : 0;
}

TEST(File, IsRefusedToASecondWriterOfAnotherProcess)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "12345");
    {
        std::FILE * const stream = File(u8string(path)).open("r+b");
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(testsupport::runChild("writesBesideAWriter", {path}).exitCode, 3);
        std::fclose(stream);
    }
    EXPECT_EQ(directory.read("file"), "12345");
    EXPECT_EQ(testsupport::runChild("writesBesideAWriter", {path}).exitCode, 0);
    EXPECT_EQ(directory.read("file"), "");
    directory.remove("file");
}

TEST(File, KeepsTheOrderOfItsOperations)
{
    using testsupport::slotsOfDestructor;
    using testsupport::virtualSlot;
    EXPECT_EQ(virtualSlot(&File::getLeafName), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&File::getLeafNameBody), slotsOfDestructor + 1);
    EXPECT_EQ(virtualSlot(&File::getExtension), slotsOfDestructor + 2);
    EXPECT_EQ(virtualSlot(&File::getParentPath), slotsOfDestructor + 3);
    EXPECT_EQ(virtualSlot(&File::isFile), slotsOfDestructor + 4);
    EXPECT_EQ(virtualSlot(&File::isDirectory), slotsOfDestructor + 5);
    EXPECT_EQ(virtualSlot(&File::isUNC), slotsOfDestructor + 6);
    EXPECT_EQ(virtualSlot(&File::isUNCShareName), slotsOfDestructor + 7);
    EXPECT_EQ(virtualSlot(&File::exists), slotsOfDestructor + 8);
    EXPECT_EQ(virtualSlot(&File::open), slotsOfDestructor + 9);
    EXPECT_EQ(virtualSlot(&File::openForRead), slotsOfDestructor + 10);
    EXPECT_EQ(virtualSlot(&File::openForWrite), slotsOfDestructor + 11);
    EXPECT_EQ(virtualSlot(&File::getFileSize), slotsOfDestructor + 12);
    EXPECT_EQ(virtualSlot(&File::mkdir), slotsOfDestructor + 13);
    EXPECT_EQ(virtualSlot(&File::getEntries), slotsOfDestructor + 14);
    EXPECT_EQ(virtualSlot(&File::remove), slotsOfDestructor + 15);
    EXPECT_EQ(virtualSlot(&File::isEmpty), slotsOfDestructor + 16);
    EXPECT_EQ(virtualSlot(&File::getModificationTime), slotsOfDestructor + 17);
    EXPECT_EQ(testsupport::virtualSlots<File>(), slotsOfDestructor + 18);
    EXPECT_EQ(sizeof(File), sizeof(void *) + sizeof(Vontal::pstring)) << "the path is the only field";
    EXPECT_EQ(virtualSlot(&qvdisk::FileEnumerator::onEntry), 0U);
}

/// Opens by an operation of its own.
class RefusingFile : public File
{
public:
    std::FILE * open(const char * mode) override
    {
        modes += mode;
        return nullptr;
    }

    std::string modes;
};

TEST(File, OpensForReadingAndWritingByItsOwnOperation)
{
    RefusingFile file;
    EXPECT_EQ(file.openForRead(), nullptr);
    EXPECT_EQ(file.openForWrite(), nullptr);
    EXPECT_EQ(file.modes, "rbwb");
}

} // namespace
