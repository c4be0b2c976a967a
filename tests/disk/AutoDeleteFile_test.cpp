#include "VontalBase/disk/AutoDeleteFile.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using qvdisk::AutoDeleteFile;
using testsupport::TempDirectory;
using Vontal::pstring;

TEST(AutoDeleteFile, DeletesItsFileInTheEnd)
{
    const TempDirectory directory;
    directory.write("a", "1");
    directory.write("b", "1");
    {
        const AutoDeleteFile first{pathOf(directory, "a")};
        const AutoDeleteFile second{pstring(pathOf(directory, "b"))};
        EXPECT_EQ(first.get(), wide(pathOf(directory, "a")));
        EXPECT_FALSE(first.isEmpty());
        EXPECT_TRUE(directory.contains("a"));
    }
    EXPECT_FALSE(directory.contains("a"));
    EXPECT_FALSE(directory.contains("b"));
}

TEST(AutoDeleteFile, HoldsNothingAtFirst)
{
    AutoDeleteFile file;
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.get(), L"");
    EXPECT_EQ(file.release(), "");
    file.freeFile();
    EXPECT_TRUE(file.isEmpty());
}

TEST(AutoDeleteFile, DeletesWhatItHeldWhenItIsGivenAnother)
{
    const TempDirectory directory;
    directory.write("a", "1");
    directory.write("b", "1");
    AutoDeleteFile file(pathOf(directory, "a"));
    file.attach(pathOf(directory, "b"));
    EXPECT_FALSE(directory.contains("a"));
    EXPECT_TRUE(directory.contains("b"));
    EXPECT_EQ(file.get(), wide(pathOf(directory, "b")));
    file.freeFile();
    EXPECT_FALSE(directory.contains("b"));
    EXPECT_TRUE(file.isEmpty());
    file.attach(pathOf(directory, "missing"));
    EXPECT_FALSE(file.isEmpty()) << "the file need not be there";
}

TEST(AutoDeleteFile, LetsGoOfAFile)
{
    const TempDirectory directory;
    directory.write("a", "1");
    {
        AutoDeleteFile file(pathOf(directory, "a"));
        EXPECT_EQ(file.release(), pathOf(directory, "a"));
        EXPECT_TRUE(file.isEmpty());
    }
    EXPECT_EQ(directory.read("a"), "1");
    directory.remove("a");
}

TEST(AutoDeleteFile, KeepsSharingItsFileWithCopies)
{
    const TempDirectory directory;
    directory.write("a", "1");
    {
        AutoDeleteFile first(pathOf(directory, "a"));
        {
            const AutoDeleteFile second(first);
            EXPECT_EQ(second.get(), first.get());
        }
        EXPECT_FALSE(directory.contains("a")) << "the first copy that ends deletes it";
        EXPECT_FALSE(first.isEmpty());
        directory.write("a", "2");
    }
    EXPECT_FALSE(directory.contains("a")) << "the second deletes what is there by then";
}

TEST(AutoDeleteFile, KeepsNotDeletingWhatItHeldWhenItIsAssignedTo)
{
    const TempDirectory directory;
    directory.write("a", "1");
    {
        AutoDeleteFile file(pathOf(directory, "a"));
        const AutoDeleteFile other;
        file = other;
        EXPECT_TRUE(file.isEmpty());
    }
    EXPECT_EQ(directory.read("a"), "1");
    directory.remove("a");
}

TEST(AutoDeleteFile, HoldsTheNameOfTheOtherWhenItIsAssignedTo)
{
    const TempDirectory directory;
    directory.write("a", "1");
    directory.write("b", "2");
    {
        const AutoDeleteFile other(pathOf(directory, "b"));
        AutoDeleteFile file(pathOf(directory, "a"));
        file = other;
        EXPECT_EQ(file.get(), other.get());
        EXPECT_TRUE(directory.contains("a"));
        EXPECT_TRUE(directory.contains("b"));
    }
    EXPECT_FALSE(directory.contains("b"));
    directory.remove("a");
}

TEST(AutoDeleteFile, MakesATemporaryFile)
{
    const TempDirectory directory;
    const testsupport::TemporaryPlace place(directory.text());
    directory.write("old", "1");
    const auto leaf = [](const AutoDeleteFile & file)
    {
        const Vontal::u8string path(file.get().c_str());
        return path.substr(path.find_last_of("\\/") + 1);
    };
    {
        AutoDeleteFile file(pathOf(directory, "old"));
        EXPECT_TRUE(file.create(pstring(L"a"), pstring(L"txt")));
        EXPECT_FALSE(directory.contains("old"));
        EXPECT_THAT(leaf(file), HasForm("a-#.txt"));
        const std::string first = leaf(file);
        EXPECT_EQ(directory.read(first), "");
        EXPECT_TRUE(file.create(pstring(L"b")));
        EXPECT_FALSE(directory.contains(first));
        EXPECT_THAT(leaf(file), HasForm("b-#"));
        EXPECT_EQ(directory.read(leaf(file)), "");
        // The path that goes may be what the next name is made from.
        EXPECT_TRUE(file.create(file.get()));
        EXPECT_NE(leaf(file).find("_b-"), std::string::npos) << leaf(file);
    }
}

TEST(AutoDeleteFile, HasThePathForItsOnlyField)
{
    EXPECT_EQ(sizeof(AutoDeleteFile), sizeof(pstring));
}

} // namespace
