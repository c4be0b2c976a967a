#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/languages.h"

#include "support/ChildProcess.h"
#include "support/UserSettings.h"
#include "utils/bundlesupport.h"

#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <vector>

namespace
{

using qvutils::detectSystemLanguage;
using qvutils::listAvailableLanguages;
using testing::UnorderedElementsAre;
using Vontal::u8string;

using Names = std::list<u8string>;

TEST(ListAvailableLanguages, FindsTheDirectoriesWithAFileOfTheBundle)
{
    const BundleFiles files;
    files.lay("de/menu.properties", "k=v");
    files.lay("pt_BR/menu.properties", "not read, so that a fault does not matter");
    files.lay("\xE6\xBC\xA2/menu.properties", "");
    files.lay("fr/help.properties", "");
    files.lay("it/deeper/menu.properties", "");
    files.makeDirectory("empty");
    files.lay("menu.properties", "");
    files.lay("file", "");
    Names names = {"before"};
    EXPECT_TRUE(listAvailableLanguages(files.root(), "menu", names));
    EXPECT_THAT(names, UnorderedElementsAre("de", "pt_BR", "\xE6\xBC\xA2"));
    EXPECT_TRUE(listAvailableLanguages(files.root() + "\\", "help", names));
    EXPECT_EQ(names, Names{"fr"});
    EXPECT_TRUE(listAvailableLanguages(files.root() + "\\it", "menu", names));
    EXPECT_EQ(names, Names{"deeper"});
}

TEST(ListAvailableLanguages, KeptDoesNotSeeTheOtherFormOfFiles)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "k=german\n");
    Names names = {"before"};
    EXPECT_TRUE(listAvailableLanguages(files.root(), "menu", names));
    EXPECT_EQ(names, Names());
    EXPECT_EQ(files.makeManager()->getString("menu", "k", "de"), "german");
}

TEST(ListAvailableLanguages, RefusesAnEmptyRootAndOneThatCannotBeListed)
{
    const BundleFiles files;
    files.lay("file", "");
    for (const u8string & root : Names{"", files.root() + "\\missing", files.root() + "\\file"})
    {
        SCOPED_TRACE(root);
        Names names = {"before"};
        EXPECT_FALSE(listAvailableLanguages(root, "menu", names));
        EXPECT_EQ(names, Names()) << "emptied all the same";
    }
}

TEST(ListAvailableLanguages, FindsNothingInAnEmptyDirectory)
{
    const BundleFiles files;
    Names names = {"before"};
    EXPECT_TRUE(listAvailableLanguages(files.root(), "menu", names));
    EXPECT_EQ(names, Names());
}

TEST(ListAvailableLanguages, TakesAnythingOfTheNameForAFile)
{
    const BundleFiles files;
    files.makeDirectory("de/menu.properties");
    Names names;
    EXPECT_TRUE(listAvailableLanguages(files.root(), "menu", names));
    EXPECT_EQ(names, Names{"de"});
}

TEST(ListAvailableLanguages, TakesNamesAsTheyAre)
{
    const BundleFiles files;
    files.lay("de/menu.properties", "");
    Names names = {"before"};
    for (const char * const pattern : {"me*", "m?nu", "*"})
    {
        EXPECT_TRUE(listAvailableLanguages(files.root(), pattern, names));
        EXPECT_EQ(names, Names()) << pattern;
    }
}

TEST(ListAvailableLanguages, MayReplaceTheListThatItsArgumentsLieIn)
{
    const BundleFiles files;
    files.lay("de/menu.properties", "");
    Names names = {files.root(), "menu"};
    EXPECT_TRUE(listAvailableLanguages(names.front(), names.back(), names));
    EXPECT_EQ(names, Names{"de"});
}

VONTALBASE_TEST_CHILD(detectsALanguage, arguments)
{
    testsupport::takeLanguages(arguments.at(0), "", "", "xx_XX");
    const u8string found = detectSystemLanguage(Names(arguments.begin() + 1, arguments.end()));
    std::fputs(("<" + found + ">").c_str(), stdout);
    return 0;
}

TEST(DetectSystemLanguage, PicksTheFirstOfTheMostWantedFamily)
{
    if (!testsupport::languagesCanBeTaken())
        GTEST_SKIP() << "the languages are a setting of the user's account";
    const struct
    {
        const char * label;
        /// What the user wants, and then what there is.
        std::vector<std::string> arguments;
        const char * expected;
    } rows[] = {
        {"the same", {"de_DE", "fr", "de_DE"}, "<de_DE>"},
        {"one family", {"de_AT", "fr", "DE_de"}, "<DE_de>"},
        {"one family, with a hyphen", {"de_AT", "fr", "de-CH"}, "<de-CH>"},
        {"a language without a country", {"de_AT", "fr", "de"}, "<de>"},
        {"a wish without a country", {"DE", "fr", "de_AT"}, "<de_AT>"},
        {"the first of a family, not the same one", {"de_AT", "de_CH", "de_AT"}, "<de_CH>"},
        {"the first wish goes before the second one", {"de:fr", "fr", "de"}, "<de>"},
        {"the second wish", {"cs:fr", "it", "fr"}, "<fr>"},
        {"a longer name is another family", {"de", "den", "d", "en_GB"}, "<en_GB>"},
        {"English, where there is no wish", {"cs_CZ", "en_GB", "de"}, "<en_GB>"},
        {"English, behind others", {"cs_CZ", "de", "EN-us", "en"}, "<EN-us>"},
        {"English, which is not there", {"cs_CZ", "de"}, "<en>"},
        {"a wish for English is one like others", {"en_US:de", "de", "en_GB"}, "<en_GB>"},
        {"letters of other scripts are compared as they are", {"\xC3\xA4", "\xC3\x84", "\xC3\xA4_x"},
            "<\xC3\xA4_x>"},
        {"names without a family are never wanted", {"_DE:de", "_DE", "", "fr"}, "<en>"},
        {"nothing is there", {"de"}, "<>"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const testsupport::ChildResult child = testsupport::runChild("detectsALanguage", row.arguments);
        EXPECT_EQ(child.exitCode, 0);
        EXPECT_EQ(child.standardOutput, row.expected);
    }
}

TEST(DetectSystemLanguage, PicksTheLanguageOfTheDisplayWhereThatIsASetting)
{
    const u8string own = testsupport::displayLanguage();
    if (own.empty())
        GTEST_SKIP() << "the languages come from the environment";
    const u8string family = own.substr(0, own.find('-'));
    EXPECT_EQ(detectSystemLanguage({"xx", family + "_ZZ", own}), family + "_ZZ");
    EXPECT_EQ(detectSystemLanguage({"xx", own}), own);
}

TEST(DetectSystemLanguage, GivesEmptyTextForAnEmptyList)
{
    EXPECT_EQ(detectSystemLanguage({}), "");
}

TEST(DetectSystemLanguage, KeptGivesEnglishWhereThatIsNotThere)
{
    EXPECT_EQ(detectSystemLanguage({"xx", "yy_ZZ"}), "en");
}

TEST(DetectSystemLanguage, GivesTheFirstEnglishWhereNothingElseIsWanted)
{
    EXPECT_EQ(detectSystemLanguage({"xx", "EN_gb", "en"}), "EN_gb");
}

} // namespace
