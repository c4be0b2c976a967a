// Temporary files where the system refuses.

#include "VontalBase/disk/AutoDeleteFile.h"
#include "VontalBase/disk/places.h"
#include "VontalBase/disk/temporaryfiles.h"
#include "VontalBase/platform/gates.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"
#include "support/SecondsNow.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace
{

using qvdisk::AutoDeleteFile;
using qvplatform::GateAnswer;
using testsupport::TempDirectory;
using testsupport::TemporaryPlace;
using Vontal::pstring;
using Vontal::u8string;

namespace fs = std::filesystem;

constexpr std::uint64_t forever = std::numeric_limits<std::uint64_t>::max();
constexpr char createFile[] = "create file";
constexpr char makeDirectory[] = "make directory";
constexpr char temporaryDirectory[] = "temporary directory";

/// The name in a path of the library.
std::string leaf(const std::string & path)
{
    return path.substr(path.find_last_of("\\/") + 1);
}

/// A directory that is the system's for temporary files, and gates that are open in the end.
class TemporaryFilesAtTheGates : public testing::Test
{
protected:
    ~TemporaryFilesAtTheGates() override
    {
        qvplatform::disarmGates();
        directory.clear();
    }

    TempDirectory directory;
    TemporaryPlace place{directory.text()};
};

TEST_F(TemporaryFilesAtTheGates, AreTriedAgainUnderTheNumberOfTheAttempt)
{
    const struct
    {
        const char * label;
        std::uint64_t refusals;
        const char * suffix;
        const char * expected;
    } rows[] = {
        {"no refusal", 0, "txt", "a-#.txt"},
        {"one", 1, "txt", "a-#-1.txt"},
        {"two", 2, "txt", "a-#-2.txt"},
        {"eleven, without a suffix", 11, "", "a-#-11"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        qvplatform::armGates({createFile, 1, row.refusals, GateAnswer::Fail});
        u8string out;
        EXPECT_TRUE(qvdisk::createTempFile(pathOf(directory), u8string("a"), u8string(row.suffix), out));
        EXPECT_EQ(qvplatform::gatePassages(), row.refusals + 1);
        EXPECT_THAT(leaf(out), HasForm(row.expected));
        EXPECT_EQ(directory.read(leaf(out)), "");
        directory.clear();
    }
}

TEST_F(TemporaryFilesAtTheGates, AreNoDirectoriesAfterAThousandAttempts)
{
    u8string out = "before";
    qvplatform::armGates({makeDirectory, 1, forever, GateAnswer::Fail});
    EXPECT_FALSE(qvdisk::createTempDir("a", out));
    EXPECT_EQ(qvplatform::gatePassages(), 1000U);
    EXPECT_EQ(out, "before");
    EXPECT_TRUE(fs::is_empty(directory.path()));
    qvplatform::armGates({makeDirectory, 1, 999, GateAnswer::Fail});
    EXPECT_TRUE(qvdisk::createTempDir("a", out));
    EXPECT_EQ(qvplatform::gatePassages(), 1000U);
}

/// What `rand` gives next after a seed.
struct RandomNumbers
{
    explicit RandomNumbers(unsigned int seed)
    {
        std::srand(seed);
        first = std::to_string(std::rand());
        second = std::to_string(std::rand());
        std::srand(seed);
    }

    std::string first;
    std::string second;
};

TEST_F(TemporaryFilesAtTheGates, TakeAnotherNumberForADirectoryThatIsRefused)
{
    const RandomNumbers numbers(4711);
    qvplatform::armGates({makeDirectory, 1, 1, GateAnswer::Fail});
    const std::time_t before = testsupport::secondsNow();
    u8string out;
    EXPECT_TRUE(qvdisk::createTempDir("a", out));
    const std::time_t after = testsupport::secondsNow();
    EXPECT_EQ(qvplatform::gatePassages(), 2U);
    const std::string name = leaf(out);
    ASSERT_THAT(name, HasForm("a-#.#"));
    EXPECT_EQ(name.substr(name.find('.') + 1), numbers.second) << "one number each attempt";
    EXPECT_GE(std::stoll(name.substr(2)), before);
    EXPECT_LE(std::stoll(name.substr(2)), after);
    EXPECT_EQ(out, pathOf(directory, name)) << "without a separator at its end";
    EXPECT_TRUE(fs::is_directory(directory.path() / name));
}

/// How many seconds a test may take between laying names and looking for them.
constexpr int patience = 60;

TEST_F(TemporaryFilesAtTheGates, DoNotAskForADirectoryThatIsThere)
{
    const RandomNumbers numbers(4712);
    const std::time_t now = testsupport::secondsNow();
    for (int i = 0; i < patience; ++i)
        fs::create_directory(directory.path() / ("a-" + std::to_string(now + i) + '.' + numbers.first));
    qvplatform::armGates({makeDirectory, 1, 0, GateAnswer::Fail});
    u8string out;
    EXPECT_TRUE(qvdisk::createTempDir("a", out));
    EXPECT_EQ(qvplatform::gatePassages(), 1U);
    EXPECT_EQ(out.substr(out.rfind('.') + 1), numbers.second);
}

TEST_F(TemporaryFilesAtTheGates, TryADirectoryWhoseNameAFileHas)
{
    const RandomNumbers numbers(4713);
    const std::time_t now = testsupport::secondsNow();
    for (int i = 0; i < patience; ++i)
        directory.write("a-" + std::to_string(now + i) + '.' + numbers.first, "1");
    qvplatform::armGates({makeDirectory, 1, 0, GateAnswer::Fail});
    u8string out;
    EXPECT_TRUE(qvdisk::createTempDir("a", out));
    EXPECT_EQ(qvplatform::gatePassages(), 2U) << "a file is no directory that is there";
    EXPECT_EQ(out.substr(out.rfind('.') + 1), numbers.second);
}

TEST_F(TemporaryFilesAtTheGates, AreNotMadeWithoutAPlaceForThem)
{
    const u8string source = pathOf(directory, "source.x");
    const u8string held = pathOf(directory, "held");
    std::wstring wideOut;
    u8string out;
    AutoDeleteFile owner;
    const struct
    {
        const char * label;
        std::function<bool()> make;
    } rows[] = {
        {"getTempDir",
            [&]
            {
                return qvdisk::getTempDir(out);
            }},
        {"createTempFile, wide, an empty directory",
            [&]
            {
                return qvdisk::createTempFile(L"", L"a", L"b", wideOut);
            }},
        {"createTempFile, wide",
            [&]
            {
                return qvdisk::createTempFile(std::wstring(L"a"), std::wstring(L"b"), wideOut);
            }},
        {"createTempFile, an empty directory",
            [&]
            {
                return qvdisk::createTempFile(u8string(), u8string("a"), u8string("b"), out);
            }},
        {"createTempFile",
            [&]
            {
                return qvdisk::createTempFile(u8string("a"), u8string("b"), out);
            }},
        {"createTempFile for an owner, an empty directory",
            [&]
            {
                return qvdisk::createTempFile(u8string(), u8string("a"), u8string("b"), owner);
            }},
        {"createTempFile for an owner",
            [&]
            {
                return qvdisk::createTempFile(u8string("a"), u8string("b"), owner);
            }},
        {"createTempFileCopy, wide",
            [&]
            {
                return qvdisk::createTempFileCopy(L"a", wide(source), wideOut);
            }},
        {"createTempFileCopy, an empty directory",
            [&]
            {
                return qvdisk::createTempFileCopy(u8string(), u8string("a"), source, out);
            }},
        {"createTempDir",
            [&]
            {
                return qvdisk::createTempDir("a", out);
            }},
    };
    directory.write("source.x", "12345");
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        wideOut = L"before";
        out = "before";
        directory.write("held", "1");
        owner.attach(held);
        directory.write("held", "1");
        qvplatform::armGates({temporaryDirectory, 1, forever, GateAnswer::Fail});
        EXPECT_FALSE(row.make());
        EXPECT_EQ(qvplatform::gatePassages(), 1U);
        EXPECT_EQ(wideOut, L"before");
        EXPECT_EQ(out, "before");
        EXPECT_EQ(owner.get(), wide(held));
        EXPECT_TRUE(directory.contains("held"));
        qvplatform::disarmGates();
        EXPECT_TRUE(row.make()) << "with a place";
    }
}

TEST_F(TemporaryFilesAtTheGates, DoNotAskForThePlaceWhereADirectoryIsNamed)
{
    directory.write("source.x", "12345");
    qvplatform::armGates({temporaryDirectory, 1, forever, GateAnswer::Fail});
    std::wstring wideOut;
    u8string out;
    AutoDeleteFile owner;
    EXPECT_TRUE(qvdisk::createTempFile(wide(pathOf(directory)), L"a", L"b", wideOut));
    EXPECT_TRUE(qvdisk::createTempFile(pathOf(directory), u8string("a"), u8string("b"), out));
    EXPECT_TRUE(qvdisk::createTempFile(pathOf(directory), u8string("a"), u8string("b"), owner));
    EXPECT_TRUE(
        qvdisk::createTempFileCopy(pathOf(directory), u8string("a"), pathOf(directory, "source.x"), out));
    EXPECT_EQ(qvplatform::gatePassages(), 0U);
}

TEST_F(TemporaryFilesAtTheGates, LeaveAnOwnerThatMakesOneWithNothing)
{
    const std::function<bool(AutoDeleteFile &)> ways[] = {
        [](AutoDeleteFile & file) { return file.create(pstring(L"a"), pstring(L"b")); },
        [](AutoDeleteFile & file) { return file.create(pstring(L"a")); },
    };
    for (const auto & create : ways)
    {
        directory.write("held", "1");
        AutoDeleteFile file(pathOf(directory, "held"));
        qvplatform::armGates({temporaryDirectory, 1, 1, GateAnswer::Fail});
        EXPECT_FALSE(create(file));
        EXPECT_TRUE(file.isEmpty());
        EXPECT_FALSE(directory.contains("held")) << "what it held is deleted first";
    }
}

TEST_F(TemporaryFilesAtTheGates, AreNoCopiesWhereTheCopyingFails)
{
    directory.write("source.x", "12345");
    const u8string source = pathOf(directory, "source.x");
    std::wstring wideOut = L"before";
    qvplatform::armGates({"copy file", 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvdisk::createTempFileCopy(L"a", wide(source), wideOut));
    EXPECT_EQ(wideOut, L"before");
    u8string out = "before";
    qvplatform::armGates({"read stream", 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvdisk::createTempFileCopy(pathOf(directory), u8string("a"), source, out));
    EXPECT_EQ(out, "before");
    qvplatform::disarmGates();
    directory.remove("source.x");
    EXPECT_TRUE(fs::is_empty(directory.path())) << "the new files are deleted";
}

} // namespace
