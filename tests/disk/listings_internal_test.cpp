// Listings that break off, and removals that are refused.

#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/platform/gates.h"

#include "disk/disksupport.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <list>
#include <string>

namespace
{

using qvdisk::File;
using qvplatform::GateAnswer;
using testsupport::TempDirectory;
using Vontal::u8string;

namespace fs = std::filesystem;

constexpr std::uint64_t forever = std::numeric_limits<std::uint64_t>::max();
constexpr char nextEntry[] = "next entry";
constexpr char removeEntry[] = "remove entry";

/// Leaves the gates open whatever a test did.
class ListingsAtTheGates : public testing::Test
{
protected:
    ~ListingsAtTheGates() override
    {
        qvplatform::disarmGates();
        directory.clear();
    }

    /// Makes `tree` anew, with these files in it.
    void lay(const std::list<std::string> & names) const
    {
        directory.clear();
        fs::create_directory(directory.path() / "tree");
        for (const std::string & name : names)
        {
            fs::create_directories((directory.path() / "tree" / name).parent_path());
            directory.write("tree/" + name, "1");
        }
    }

    /// How many files and directories there are in `tree`.
    [[nodiscard]] std::uint64_t left() const
    {
        const fs::recursive_directory_iterator entries(directory.path() / "tree");
        return static_cast<std::uint64_t>(std::distance(begin(entries), end(entries)));
    }

    TempDirectory directory;
    u8string tree = pathOf(directory, "tree");
};

class Everything : public qvdisk::FileEnumerator
{
public:
    bool onEntry(File &) override
    {
        ++count;
        return true;
    }

    std::uint64_t count = 0;
};

TEST_F(ListingsAtTheGates, AreFailuresWhereverTheyBreakOff)
{
    const struct
    {
        const char * label;
        std::list<std::string> names;
        std::function<bool()> walk;
    } rows[] = {
        {"isEmpty", {},
            [&]
            {
                return File(tree).isEmpty();
            }},
        {"getEntries", {"1", "2", "3"},
            [&]
            {
                Everything entries;
                return File(tree).getEntries(&entries);
            }},
        {"getDirectoryContent", {"1", "2", "3"},
            [&]
            {
                std::list<u8string> names;
                return qvdisk::getDirectoryContent(tree, names);
            }},
        {"deleteDirContent", {"1", "2", "below/3"},
            [&]
            {
                return qvdisk::deleteDirContent(tree);
            }},
        {"deleteDirectory", {"1", "2", "below/3"},
            [&]
            {
                return qvdisk::deleteDirectory(tree);
            }},
        {"remove", {"1", "2", "below/3"},
            [&]
            {
                return File(tree).remove(true);
            }},
    };
    for (const auto & row : rows)
    {
        lay(row.names);
        qvplatform::armGates({nextEntry, 1, 0, GateAnswer::Fail});
        EXPECT_TRUE(row.walk()) << row.label;
        const std::uint64_t passages = qvplatform::gatePassages();
        EXPECT_GT(passages, row.names.size()) << row.label;
        for (std::uint64_t passage = 1; passage <= passages; ++passage)
        {
            SCOPED_TRACE(row.label + (" at " + std::to_string(passage)));
            lay(row.names);
            qvplatform::armGates({nextEntry, passage, 1, GateAnswer::Fail});
            EXPECT_FALSE(row.walk());
            EXPECT_STREQ(qvplatform::faultedGate(), nextEntry);
            qvplatform::disarmGates();
            EXPECT_TRUE(directory.contains("tree"));
        }
    }
}

TEST_F(ListingsAtTheGates, AreFailuresWhereTheyCannotBegin)
{
    lay({"1"});
    qvplatform::armGates({"begin search", 1, forever, GateAnswer::Fail});
    Everything entries;
    std::list<u8string> names;
    EXPECT_FALSE(File(tree).getEntries(&entries));
    EXPECT_FALSE(qvdisk::getDirectoryContent(tree, names));
    EXPECT_FALSE(qvdisk::deleteDirContent(tree));
    EXPECT_FALSE(qvdisk::deleteDirectory(tree));
    EXPECT_FALSE(File(tree).remove(true));
    EXPECT_EQ(entries.count, 0U);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(left(), 1U);
    lay({});
    EXPECT_FALSE(File(tree).isEmpty());
}

TEST_F(ListingsAtTheGates, HaveToldWhatCameBeforeTheyBrokeOff)
{
    lay({"1", "2", "3"});
    Everything all;
    qvplatform::armGates({nextEntry, 1, 0, GateAnswer::Fail});
    ASSERT_TRUE(File(tree).getEntries(&all));
    const std::uint64_t passages = qvplatform::gatePassages();
    // The last passage finds the end, the three before it a file each.
    for (std::uint64_t missing = 0; missing <= 3; ++missing)
    {
        SCOPED_TRACE(missing);
        qvplatform::armGates({nextEntry, passages - missing, 1, GateAnswer::Fail});
        Everything entries;
        EXPECT_FALSE(File(tree).getEntries(&entries));
        EXPECT_EQ(entries.count, 3 - missing);
        qvplatform::armGates({nextEntry, passages - missing, 1, GateAnswer::Fail});
        std::list<u8string> names;
        EXPECT_FALSE(qvdisk::getDirectoryContent(tree, names));
        EXPECT_EQ(names.size(), 3 - missing);
    }
}

TEST_F(ListingsAtTheGates, KeepCountingAsDoneForDeleteAllFilesWhereTheyBreakOff)
{
    std::wstring error = L"before";
    lay({"1", "2", "3"});
    qvplatform::armGates({"begin search", 1, 1, GateAnswer::Fail});
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(tree), error)) << "there is nothing to delete";
    EXPECT_EQ(left(), 3U);

    qvplatform::armGates({nextEntry, 1, 0, GateAnswer::Fail});
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(tree), error));
    const std::uint64_t passages = qvplatform::gatePassages();
    for (std::uint64_t passage = 1; passage <= passages; ++passage)
    {
        SCOPED_TRACE(passage);
        lay({"1", "2", "3"});
        qvplatform::armGates({nextEntry, passage, 1, GateAnswer::Fail});
        EXPECT_TRUE(qvdisk::deleteAllFiles(wide(tree), error));
        EXPECT_STREQ(qvplatform::faultedGate(), nextEntry);
        EXPECT_EQ(left(), std::min<std::uint64_t>(3, passages - passage)) << "what had been listed is gone";
    }
    EXPECT_EQ(error, L"before");
}

TEST_F(ListingsAtTheGates, StopAtTheFirstEntryThatStays)
{
    const struct
    {
        const char * label;
        std::function<bool()> remove;
    } ways[] = {
        {"deleteDirContent",
            [&]
            {
                return qvdisk::deleteDirContent(tree);
            }},
        {"deleteDirectory",
            [&]
            {
                return qvdisk::deleteDirectory(tree);
            }},
        {"remove",
            [&]
            {
                return File(tree).remove(true);
            }},
    };
    for (const auto & way : ways)
    {
        for (std::uint64_t refused = 1; refused <= 3; ++refused)
        {
            SCOPED_TRACE(way.label + (" at " + std::to_string(refused)));
            lay({"1", "2", "3"});
            qvplatform::armGates({removeEntry, refused, 1, GateAnswer::Fail});
            EXPECT_FALSE(way.remove());
            EXPECT_EQ(qvplatform::gatePassages(), refused) << "nothing is tried behind it";
            EXPECT_EQ(left(), 4 - refused);
        }
        SCOPED_TRACE(way.label);
        lay({"below/file"});
        qvplatform::armGates({removeEntry, 1, 1, GateAnswer::Fail});
        EXPECT_FALSE(way.remove());
        EXPECT_TRUE(directory.contains("tree/below/file")) << "the innermost is the first";
        qvplatform::armGates({removeEntry, 2, 1, GateAnswer::Fail});
        EXPECT_FALSE(way.remove());
        EXPECT_TRUE(directory.contains("tree/below"));
        EXPECT_FALSE(directory.contains("tree/below/file"));
        qvplatform::armGates({"enter directory", 1, 1, GateAnswer::Fail});
        EXPECT_FALSE(way.remove());
        EXPECT_TRUE(directory.contains("tree/below"));
    }
}

TEST_F(ListingsAtTheGates, EndDeleteAllFilesAtTheEntryThatItNames)
{
    for (std::uint64_t refused = 1; refused <= 3; ++refused)
    {
        SCOPED_TRACE(refused);
        lay({"1", "2", "3"});
        qvplatform::armGates({removeEntry, refused, 1, GateAnswer::Fail});
        std::wstring error;
        EXPECT_FALSE(qvdisk::deleteAllFiles(wide(tree), error));
        EXPECT_EQ(qvplatform::gatePassages(), refused);
        EXPECT_EQ(left(), 4 - refused);
        const std::size_t start = error.find(L"Cannot remove file: ");
        ASSERT_NE(start, std::wstring::npos);
        const std::wstring path = error.substr(start + 20);
        EXPECT_EQ(path.substr(0, path.size() - 1), wide(tree + '\\'));
        EXPECT_TRUE(directory.contains("tree/" + std::string(1, static_cast<char>(path.back()))));
    }
}

TEST_F(ListingsAtTheGates, AreNotBegunForARootThatIsToBeDeleted)
{
    lay({});
    for (const char * const root : {"\\", "/", ""})
    {
        SCOPED_TRACE(root);
        // Should the root be walked after all, nothing in it is removed.
        qvplatform::armGates({removeEntry, 1, forever, GateAnswer::Fail});
        EXPECT_FALSE(qvdisk::deleteDirectory(root));
        EXPECT_EQ(qvplatform::gatePassages(), 0U) << "nothing was to be removed";
        qvplatform::armGates({"enter directory", 1, forever, GateAnswer::Fail});
        EXPECT_FALSE(qvdisk::deleteDirectory(root));
        EXPECT_EQ(qvplatform::gatePassages(), 0U) << "nothing was entered";
        qvplatform::armGates({"remove directory", 1, forever, GateAnswer::Fail});
        EXPECT_FALSE(qvdisk::deleteDirectory(root));
        EXPECT_EQ(qvplatform::gatePassages(), 0U) << "nor the root itself";
    }
}

} // namespace
