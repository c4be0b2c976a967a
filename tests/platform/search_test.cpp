#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/search.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace
{

using qvplatform::Search;
using testsupport::TempDirectory;

std::wstring wide(const std::string & utf8)
{
    return Vontal::pstring(Vontal::u8string(utf8));
}

std::wstring inside(const TempDirectory & directory, const std::wstring & name)
{
    return wide(directory.text()) + L'\\' + name;
}

/// All names that a pattern finds.
std::vector<std::wstring> namesOf(const std::wstring & pattern)
{
    std::vector<std::wstring> names;
    Search search;
    for (bool isAtEntry = search.begin(pattern); isAtEntry; isAtEntry = search.next())
        names.push_back(search.name());
    return names;
}

std::set<std::wstring> setOf(const std::vector<std::wstring> & names)
{
    return {names.begin(), names.end()};
}

using Names = std::set<std::wstring>;

class PlatformSearch : public testing::Test
{
protected:
    PlatformSearch()
    {
        for (const char * const name : {"a.txt", "b.txt", "c", ".hidden"})
            directory.write(name, "");
        std::filesystem::create_directory(directory.path() / "below");
    }
    ~PlatformSearch() override
    {
        directory.clear();
    }

    TempDirectory directory;
};

TEST_F(PlatformSearch, TellsDotsFirstAndThenTheRest)
{
    const std::vector<std::wstring> names = namesOf(inside(directory, L"*"));
    ASSERT_EQ(names.size(), 7U);
    EXPECT_EQ(names[0], L".");
    EXPECT_EQ(names[1], L"..");
    EXPECT_EQ(setOf(names), (Names{L".", L"..", L"a.txt", L"b.txt", L"c", L".hidden", L"below"}));
    EXPECT_EQ(setOf(namesOf(inside(directory, L"*.*"))), setOf(names));
}

TEST_F(PlatformSearch, TellsWhatAPatternMatches)
{
    EXPECT_EQ(setOf(namesOf(inside(directory, L"*.txt"))), (Names{L"a.txt", L"b.txt"}));
    EXPECT_EQ(setOf(namesOf(inside(directory, L"?.txt"))), (Names{L"a.txt", L"b.txt"}));
    EXPECT_EQ(setOf(namesOf(inside(directory, L"b*"))), (Names{L"b.txt", L"below"}));
    EXPECT_EQ(setOf(namesOf(inside(directory, L"z*"))), Names{});
}

TEST_F(PlatformSearch, LooksUpANameThatIsNoPattern)
{
    EXPECT_EQ(namesOf(inside(directory, L"c")), std::vector<std::wstring>{L"c"});
    EXPECT_EQ(namesOf(inside(directory, L"below")), std::vector<std::wstring>{L"below"});
    EXPECT_EQ(setOf(namesOf(inside(directory, L"none"))), Names{});
    EXPECT_EQ(setOf(namesOf(L"")), Names{});
}

TEST_F(PlatformSearch, FindsNothingThroughASeparatorAtTheEnd)
{
    EXPECT_EQ(setOf(namesOf(inside(directory, L"below\\"))), Names{});
    EXPECT_EQ(setOf(namesOf(inside(directory, L"below/"))), Names{});
    EXPECT_EQ(setOf(namesOf(L"/")), Names{});
}

TEST_F(PlatformSearch, TellsDirectoriesFromFiles)
{
    Search search;
    ASSERT_TRUE(search.begin(inside(directory, L"below")));
    EXPECT_TRUE(search.isDirectory());
    EXPECT_FALSE(search.isFile());
    EXPECT_FALSE(search.isLink());
    EXPECT_FALSE(search.next());
    EXPECT_FALSE(search.hasFailed());
    ASSERT_TRUE(search.begin(inside(directory, L"c")));
    EXPECT_FALSE(search.isDirectory());
    EXPECT_TRUE(search.isFile());
    for (bool isAtEntry = search.begin(inside(directory, L"*")); isAtEntry; isAtEntry = search.next())
    {
        const std::wstring name = search.name();
        EXPECT_EQ(search.isDots(), name == L"." || name == L"..");
        EXPECT_EQ(search.isDirectory(), search.isDots() || name == L"below");
        EXPECT_EQ(search.isFile(), !search.isDirectory());
    }
}

TEST_F(PlatformSearch, TellsFilesFromPipes)
{
    if (!testsupport::makePipeFile(directory.text("pipe")))
        GTEST_SKIP() << "files cannot be pipes here";
    ASSERT_TRUE(testsupport::makeLink(directory.text("pipe"), directory.text("piped")));
    for (const wchar_t * const name : {L"pipe", L"piped", L"pipe*", L"piped*"})
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(name)));
        Search search;
        ASSERT_TRUE(search.begin(inside(directory, name)));
        EXPECT_FALSE(search.isFile());
        EXPECT_FALSE(search.isDirectory());
    }
}

TEST_F(PlatformSearch, FailsWhereThereIsNoDirectory)
{
    EXPECT_FALSE(Search().begin(inside(directory, L"none\\*")));
    EXPECT_FALSE(Search().begin(inside(directory, L"c\\*")));
    EXPECT_TRUE(Search().begin(inside(directory, L"below\\*"))) << "an empty one has its dots";
    Search search;
    EXPECT_FALSE(search.next());
    EXPECT_TRUE(search.hasFailed());
}

TEST_F(PlatformSearch, StartsFromTheWorkingDirectory)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory.path());
    const std::vector<std::wstring> names = namesOf(L"*.txt");
    const bool isThere = Search().begin(L"c");
    std::filesystem::current_path(before);
    EXPECT_EQ(setOf(names), (Names{L"a.txt", L"b.txt"}));
    EXPECT_TRUE(isThere);
}

TEST_F(PlatformSearch, FollowsLinksOnlyToSayWhetherTheyLeadToADirectory)
{
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "no links can be made here";
    ASSERT_TRUE(testsupport::makeLink(directory.text("below"), directory.text("ldir")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("c"), directory.text("lfile")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("none"), directory.text("lnone")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("lcircle"), directory.text("lcircle")));
    for (const wchar_t * const name : {L"ldir", L"lfile", L"lnone", L"lcircle"})
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(name)));
        Search search;
        ASSERT_TRUE(search.begin(inside(directory, name)));
        EXPECT_TRUE(search.isLink());
        EXPECT_EQ(search.isDirectory(), std::wstring(name) == L"ldir");
        EXPECT_EQ(search.isFile(), std::wstring(name) == L"lfile");
        ASSERT_TRUE(search.begin(inside(directory, std::wstring(name) + L'*')));
        EXPECT_TRUE(search.isLink());
        EXPECT_EQ(search.isDirectory(), std::wstring(name) == L"ldir");
        EXPECT_EQ(search.isFile(), std::wstring(name) == L"lfile");
        EXPECT_TRUE(search.enterEntry().hasFailed()) << "a link is not entered";
    }
}

TEST_F(PlatformSearch, RemovesEntriesByTheirTrueNames)
{
    const std::string names[] = {"\xFF", "\xED\xA0\x80", "..\\below", "a\\b"};
    for (const std::string & name : names)
    {
        if (!testsupport::makeFileOfBytes(directory.text(), name))
            GTEST_SKIP() << "names are text here";
    }
    std::set<std::wstring> strange;
    Search search;
    for (bool isAtEntry = search.begin(inside(directory, L"*")); isAtEntry; isAtEntry = search.next())
    {
        if (search.isDots() || search.name().find(L'\xFFFD') == std::wstring::npos)
            continue;
        strange.insert(search.name());
        EXPECT_TRUE(search.removeEntry());
    }
    EXPECT_EQ(strange, (Names{L"\xFFFD", L"\xFFFD\xFFFD\xFFFD",
                           L"..\xFFFD"
                           L"below",
                           L"a\xFFFD"
                           L"b"}));
    EXPECT_EQ(namesOf(inside(directory, L"*")).size(), 7U);
}

TEST_F(PlatformSearch, EntersADirectoryAndTakesUpTheOneAboveAgain)
{
    directory.write("below/deep", "");
    Search search;
    for (bool isAtEntry = search.begin(inside(directory, L"*")); isAtEntry && search.name() != L"below";)
        isAtEntry = search.next();
    ASSERT_EQ(search.name(), L"below");
    Search deeper = search.enterEntry();
    ASSERT_FALSE(deeper.hasFailed());
    EXPECT_FALSE(search.isSuspended());
    search.suspend();
    EXPECT_TRUE(search.isSuspended());
    while (deeper.isDots())
        ASSERT_TRUE(deeper.next());
    EXPECT_EQ(deeper.name(), L"deep");
    EXPECT_TRUE(deeper.removeEntry());
    EXPECT_FALSE(deeper.next());
    ASSERT_TRUE(search.resume(deeper));
    EXPECT_FALSE(search.isSuspended());
    deeper.end();
    EXPECT_EQ(search.name(), L"below");
    EXPECT_TRUE(search.removeEntry());
    Names left;
    while (search.next())
        left.insert(search.name());
    EXPECT_EQ(left, (Names{L".", L"..", L"a.txt", L"b.txt", L"c", L".hidden"}));
}

TEST_F(PlatformSearch, RemovesReadOnlyEntriesAndNoFullDirectory)
{
    directory.write("below/deep", "");
    testsupport::setReadOnly(directory.text("c"), true);
    Search search;
    for (bool isAtEntry = search.begin(inside(directory, L"*")); isAtEntry; isAtEntry = search.next())
    {
        if (search.isDots())
            continue;
        EXPECT_EQ(search.removeEntry(), search.name() != L"below");
    }
    EXPECT_EQ(setOf(namesOf(inside(directory, L"*"))), (Names{L".", L"..", L"below"}));
}

TEST_F(PlatformSearch, GivesBackWhatItHolds)
{
    const auto before = testsupport::ResourceSnapshot::take();
    {
        Search search;
        ASSERT_TRUE(search.begin(inside(directory, L"*")));
        Search moved = std::move(search);
        EXPECT_TRUE(moved.next());
        moved.end();
        EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
        ASSERT_TRUE(moved.begin(inside(directory, L"*")));
        ASSERT_TRUE(moved.begin(inside(directory, L"*")));
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

TEST_F(PlatformSearch, TellsAnEndFromAFailure)
{
    Search search;
    ASSERT_TRUE(search.begin(inside(directory, L"*")));
    qvplatform::armGates({"next entry", 2, 1, qvplatform::GateAnswer::Fail});
    EXPECT_TRUE(search.next());
    EXPECT_FALSE(search.hasFailed());
    EXPECT_FALSE(search.next());
    EXPECT_TRUE(search.hasFailed());
    qvplatform::disarmGates();
}

TEST_F(PlatformSearch, LooksUpNarrowNamesAndPatterns)
{
    using qvplatform::matchesSomething;
    EXPECT_TRUE(matchesSomething(directory.text("c")));
    EXPECT_TRUE(matchesSomething(directory.text() + "\\c"));
    EXPECT_TRUE(matchesSomething(directory.text("*.txt")));
    EXPECT_TRUE(matchesSomething(directory.text("below")));
    EXPECT_FALSE(matchesSomething(directory.text("*.none")));
    EXPECT_FALSE(matchesSomething(directory.text("none")));
    EXPECT_FALSE(matchesSomething(directory.text("below") + "\\"));
    EXPECT_FALSE(matchesSomething(directory.text("below") + "/"));
    EXPECT_FALSE(matchesSomething(""));
}

TEST(PlatformSearchPaths, MayBeOfAnyLength)
{
    const TempDirectory directory;
    const std::wstring name(200, L'n');
    std::wstring path = wide(directory.text());
    const std::size_t start = path.size();
    while (path.size() < testsupport::possiblePathLength())
    {
        path += L'\\' + name;
        ASSERT_TRUE(qvplatform::makeDirectory(path));
    }
    Search search;
    ASSERT_TRUE(search.begin(path));
    EXPECT_TRUE(search.isDirectory());
    ASSERT_TRUE(search.begin(path + L"\\*"));
    EXPECT_FALSE(Search().begin(path + L"\\none"));
    search.end();
    for (; path.size() > start; path.resize(path.size() - name.size() - 1))
        ASSERT_TRUE(qvplatform::removeDirectory(path));
}

} // namespace
