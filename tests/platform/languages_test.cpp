#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/languages.h"

#include "support/ChildProcess.h"
#include "support/UserSettings.h"

#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using namespace std::string_literals;
using qvplatform::languagesOfEnvironment;
using qvplatform::languagesOfList;
using qvplatform::readPreferredLanguages;

using Names = std::vector<std::string>;

struct Row
{
    const char * label;
    const char * languages;
    const char * all;
    const char * messages;
    const char * usual;
    Names expected;
};

TEST(PlatformLanguages, OfAnEnvironmentAreThoseOfItsMessages)
{
    const Row rows[] = {
        {"nothing is set", "", "", "", "", {}},
        {"the usual locale", "", "", "", "de_DE.UTF-8", {"de-DE"}},
        {"messages go before it", "", "", "fr_FR", "de_DE", {"fr-FR"}},
        {"everything goes before both", "", "it_IT", "fr_FR", "de_DE", {"it-IT"}},
        {"everything goes before the usual one", "", "it_IT", "", "de_DE", {"it-IT"}},
        {"a language alone", "", "", "", "de", {"de"}},
        {"an encoding and a modifier", "", "", "", "de_DE.UTF-8@euro", {"de-DE"}},
        {"a modifier alone", "", "", "", "sr@latin", {"sr"}},
        {"more than two parts", "", "", "", "zh_Hant_TW", {"zh-Hant-TW"}},
        {"a hyphen", "", "", "", "de-AT", {"de-AT"}},
        {"case stays", "", "", "", "DE_de", {"DE-de"}},
        {"no translation", "", "", "", "C", {}},
        {"no translation, by its other name", "", "", "", "POSIX", {}},
        {"no translation, with an encoding", "", "", "", "C.UTF-8", {}},
        {"no translation goes before the others", "", "C", "fr_FR", "de_DE", {}},
        {"no translation of messages", "", "", "POSIX", "de_DE", {}},
        {"a list", "de_AT:fr:it_IT.UTF-8", "", "", "en_GB", {"de-AT", "fr", "it-IT"}},
        {"a list of one", "cs", "", "", "de_DE.UTF-8", {"cs"}},
        {"a list with gaps", "::de_AT::fr:", "", "", "en_GB", {"de-AT", "fr"}},
        {"a list of gaps", "::", "", "", "en_GB", {}},
        {"a list of nothing but an encoding", ".UTF-8:@euro", "", "", "en_GB", {}},
        {"names without a language", "_DE:-:_:de", "", "", "en_GB", {"de"}},
        {"a list twice", "de:de", "", "", "en_GB", {"de", "de"}},
        {"no translation ends a list", "de:C:fr", "", "", "en_GB", {"de"}},
        {"its other name ends it too", "de:fr:POSIX:it", "", "", "en_GB", {"de", "fr"}},
        {"and with an encoding", "C.UTF-8:fr", "", "", "en_GB", {}},
        {"a list does not count without a locale", "de_AT:fr", "", "", "", {}},
        {"nor where the locale has no translation", "de_AT:fr", "", "", "C", {}},
        {"nor by its other name", "de_AT:fr", "POSIX", "", "de_DE", {}},
        {"but where it has an encoding", "de_AT:fr", "", "", "C.UTF-8", {"de-AT", "fr"}},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(languagesOfEnvironment({row.languages, row.all, row.messages, row.usual}), row.expected);
    }
}

TEST(PlatformLanguages, OfAListEndAtItsEmptyText)
{
    const struct
    {
        const char * label;
        std::wstring list;
        Names expected;
    } rows[] = {
        {"nothing", L"", {}},
        {"an end alone", L"\0"s, {}},
        {"one", L"de-DE\0\0"s, {"de-DE"}},
        {"two", L"de-DE\0en-US\0\0"s, {"de-DE", "en-US"}},
        {"what stands behind the end", L"de\0\0fr\0\0"s, {"de"}},
        {"without an end", L"de\0fr\0"s, {"de", "fr"}},
        {"in the middle of a text", L"de\0fr"s, {"de", "fr"}},
        {"other letters", L"\xE4\0\0"s, {"\xC3\xA4"}},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(languagesOfList(row.list), row.expected);
    }
}

VONTALBASE_TEST_CHILD(tellsItsLanguages, arguments)
{
    testsupport::takeLanguages(arguments.at(0), arguments.at(1), arguments.at(2), arguments.at(3));
    Names names = {"before"};
    if (!readPreferredLanguages(names))
        return 1;
    for (const std::string & name : names)
        std::printf("%s\n", name.c_str());
    return 0;
}

TEST(PlatformLanguages, AreReadFromTheEnvironmentWhereTheyAreThere)
{
    if (!testsupport::languagesCanBeTaken())
        GTEST_SKIP() << "the languages are a setting of the user's account";
    const struct
    {
        const char * label;
        std::vector<std::string> variables;
        const char * expected;
    } rows[] = {
        {"nothing", {"", "", "", ""}, ""},
        {"LANG", {"", "", "", "de_DE.UTF-8"}, "de-DE\n"},
        {"LC_MESSAGES", {"", "", "fr_FR", "de_DE"}, "fr-FR\n"},
        {"LC_ALL", {"", "it_IT", "fr_FR", "de_DE"}, "it-IT\n"},
        {"LANGUAGE", {"cs:sk_SK", "it_IT", "fr_FR", "de_DE"}, "cs\nsk-SK\n"},
        {"set and empty", {" ", " ", " ", "de_DE"}, "de-DE\n"},
        {"LANGUAGE without a translation", {"cs", "C", "", ""}, ""},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const testsupport::ChildResult child = testsupport::runChild("tellsItsLanguages", row.variables);
        EXPECT_EQ(child.exitCode, 0);
        EXPECT_EQ(child.standardOutput, row.expected);
    }
}

TEST(PlatformLanguages, BeginWithTheLanguageOfTheDisplayWhereThatIsASetting)
{
    const std::string expected = testsupport::displayLanguage();
    if (expected.empty())
        GTEST_SKIP() << "the languages come from the environment";
    Names names;
    ASSERT_TRUE(readPreferredLanguages(names));
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names[0], expected);
    for (const std::string & name : names)
        EXPECT_NE(name, "");
}

TEST(PlatformLanguages, AreNotToldWhereTheSystemRefusesOneOfItsAnswers)
{
    Names names = {"before"};
    qvplatform::armGates({"preferred languages", 1, 0});
    EXPECT_TRUE(readPreferredLanguages(names));
    const std::uint64_t passages = qvplatform::gatePassages();
    ASSERT_GT(passages, 0U);
    for (std::uint64_t passage = 1; passage <= passages; ++passage)
    {
        names = {"before"};
        qvplatform::armGates({"preferred languages", passage, 1});
        EXPECT_FALSE(readPreferredLanguages(names)) << passage;
        EXPECT_EQ(names, Names{"before"}) << passage;
    }
    qvplatform::disarmGates();
}

} // namespace
