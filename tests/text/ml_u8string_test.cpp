#include "VontalBase/text/ml_u8string.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/TestBarrier.h"
#include "support/VirtualSlot.h"

#include <clocale>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using Vontal::ml_u8string;
using Vontal::ml_u8string_set_default_language;
using Vontal::u8string;

static_assert(std::has_virtual_destructor_v<ml_u8string>);
static_assert(std::is_same_v<decltype(std::declval<ml_u8string &>().get()), const u8string &>);
static_assert(std::is_same_v<decltype(std::declval<ml_u8string &>().getDefaultValue()), const u8string &>);
static_assert(std::is_same_v<decltype(std::declval<ml_u8string &>().getPrefLanguage()), const std::string &>);

/// Puts the default language back to what the library starts with.
class MultiLanguageString : public testing::Test
{
protected:
    ~MultiLanguageString() override
    {
        ml_u8string_set_default_language("C");
    }
};

/// What `text` gives for a language.
std::string inLanguage(const ml_u8string & text, const std::string & language)
{
    ml_u8string copy(text);
    copy.setPrefLanguage(language);
    return copy.get();
}

TEST_F(MultiLanguageString, HasNoVirtualOperationButItsDestructor)
{
    EXPECT_EQ(testsupport::virtualSlots<ml_u8string>(), testsupport::slotsOfDestructor);
}

TEST_F(MultiLanguageString, BeginsWithItsDefaultValueAndTheLanguageC)
{
    const ml_u8string empty;
    EXPECT_EQ(empty.get(), "");
    EXPECT_EQ(empty.getDefaultValue(), "");
    EXPECT_EQ(empty.getPrefLanguage(), "C");

    const ml_u8string text("value");
    EXPECT_EQ(text.get(), "value");
    EXPECT_EQ(text.getDefaultValue(), "value");
    EXPECT_EQ(&text.get(), &text.getDefaultValue());
}

TEST_F(MultiLanguageString, GivesTheTranslationOfItsLanguage)
{
    struct Case
    {
        const char * added;
        const char * preferred;
        const char * expected;
    };
    const Case cases[] = {
        {"cs", "CS", "added"},
        {"CS", "cs", "added"},
        {"cs", "cs", "added"},
        {"cs-cz", "CS-CZ", "added"},
        {"EN", "EN-GB", "default"},
        {"EN-GB", "EN", "default"},
        {"de", "cs", "default"},
        {"", "", "added"},
        {"c", "C", "added"},
        {"cs", "", "default"},
        {"", "C", "default"},
    };
    for (const Case & lookup : cases)
    {
        SCOPED_TRACE(std::string(lookup.added) + " for " + lookup.preferred);
        ml_u8string text("default");
        EXPECT_TRUE(text.add(lookup.added, "added"));
        text.setPrefLanguage(lookup.preferred);
        EXPECT_EQ(text.get(), lookup.expected);
        EXPECT_EQ(text.getDefaultValue(), "default");
    }
}

TEST_F(MultiLanguageString, FindsAnEmptyTranslation)
{
    ml_u8string text("default");
    text.add("cs", "");
    text.setPrefLanguage("cs");
    EXPECT_EQ(text.get(), "");
    ml_u8string empty;
    empty.add("cs", "");
    empty.setPrefLanguage("cs");
    EXPECT_NE(&empty.get(), &empty.getDefaultValue());
}

TEST_F(MultiLanguageString, KeptPutsBytesIntoUpperCaseAsTheLocaleOfTheRuntimeDoes)
{
    const std::string former = std::setlocale(LC_CTYPE, nullptr);
    bool isSet = false;
    for (const char * const name : {"de_DE.ISO-8859-1", "German_Germany.1252", ".1252"})
        isSet = isSet || std::setlocale(LC_CTYPE, name) != nullptr;
    if (!isSet)
        GTEST_SKIP() << "this system has no locale of 8-bit text";
    ml_u8string text;
    text.setPrefLanguage("\xE9");
    EXPECT_EQ(text.getPrefLanguage(), "\xC9");
    std::setlocale(LC_CTYPE, "C");
    text.setPrefLanguage("\xE9");
    EXPECT_EQ(text.getPrefLanguage(), "\xE9");
    std::setlocale(LC_CTYPE, former.c_str());
}

TEST_F(MultiLanguageString, KeepsItsLanguageInUpperCase)
{
    ml_u8string text;
    text.setPrefLanguage("en");
    EXPECT_EQ(text.getPrefLanguage(), "EN");
    text.setPrefLanguage("zh-Hans_cn.1");
    EXPECT_EQ(text.getPrefLanguage(), "ZH-HANS_CN.1");
    // Bytes that are no ASCII letters stay.
    text.setPrefLanguage("\xC3\xA9");
    EXPECT_EQ(text.getPrefLanguage(), "\xC3\xA9");
}

TEST_F(MultiLanguageString, KeepsTheLastTranslationOfALanguage)
{
    ml_u8string text("default");
    EXPECT_TRUE(text.add("cs", "first"));
    EXPECT_TRUE(text.add("CS", "second"));
    EXPECT_EQ(inLanguage(text, "cs"), "second");
}

TEST_F(MultiLanguageString, CopiesEverythingIntoATableOfItsOwn)
{
    ml_u8string text("default");
    text.add("cs", "cesky");
    text.setPrefLanguage("cs");
    ml_u8string copy(text);
    EXPECT_EQ(copy.getPrefLanguage(), "CS");
    EXPECT_EQ(copy.getDefaultValue(), "default");
    EXPECT_EQ(copy.get(), "cesky");
    copy.add("cs", "changed");
    EXPECT_EQ(text.get(), "cesky");
}

TEST_F(MultiLanguageString, KeptAssignmentMergesTheTranslations)
{
    ml_u8string source("from");
    source.add("cs", "cs of the source");
    source.add("de", "de of the source");
    source.setPrefLanguage("de");
    ml_u8string target("to");
    target.add("de", "de of the target");
    target.add("fr", "fr of the target");
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.getDefaultValue(), "from");
    EXPECT_EQ(target.getPrefLanguage(), "DE");
    EXPECT_EQ(inLanguage(target, "cs"), "cs of the source");
    EXPECT_EQ(inLanguage(target, "de"), "de of the source");
    EXPECT_EQ(inLanguage(target, "fr"), "fr of the target");
    EXPECT_EQ(inLanguage(source, "fr"), "from");

    ml_u8string & self = target;
    target = self;
    EXPECT_EQ(inLanguage(target, "fr"), "fr of the target");
}

TEST_F(MultiLanguageString, SwitchesAllObjectsAtOnce)
{
    ml_u8string first("1");
    ml_u8string second("2");
    ml_u8string copy(first);
    second.setPrefLanguage("cs");
    ml_u8string_set_default_language("de");
    EXPECT_EQ(first.getPrefLanguage(), "DE");
    EXPECT_EQ(second.getPrefLanguage(), "DE");
    EXPECT_EQ(copy.getPrefLanguage(), "DE");
    EXPECT_EQ(ml_u8string().getPrefLanguage(), "DE");
    EXPECT_EQ(ml_u8string("x").getPrefLanguage(), "DE");

    // A copy takes the language of its source and not the default one.
    first.setPrefLanguage("fr");
    EXPECT_EQ(ml_u8string(first).getPrefLanguage(), "FR");
}

TEST_F(MultiLanguageString, SwitchesBothSidesOfAnAssignment)
{
    auto source = std::make_unique<ml_u8string>("from");
    ml_u8string target("to");
    target = *source;
    ml_u8string_set_default_language("de");
    EXPECT_EQ(source->getPrefLanguage(), "DE");
    EXPECT_EQ(target.getPrefLanguage(), "DE");
    source.reset();
    ml_u8string_set_default_language("fr");
    EXPECT_EQ(target.getPrefLanguage(), "FR");
}

TEST_F(MultiLanguageString, SwitchesWhatIsLeftOfManyWhateverTheOrderOfTheirEnd)
{
    std::vector<std::unique_ptr<ml_u8string>> texts;
    for (int i = 0; i < 10; ++i)
        texts.push_back(std::make_unique<ml_u8string>());
    for (const std::size_t gone : {9U, 0U, 5U, 4U, 8U})
        texts[gone].reset();
    ml_u8string_set_default_language("pl");
    for (const std::size_t left : {1U, 2U, 3U, 6U, 7U})
        EXPECT_EQ(texts[left]->getPrefLanguage(), "PL");
    texts.clear();
    ml_u8string_set_default_language("en");
    EXPECT_EQ(ml_u8string().getPrefLanguage(), "EN");
}

TEST_F(MultiLanguageString, SurvivesALongNameOfALanguage)
{
    const std::string language(1000, 'a');
    const ml_u8string text("default");
    ml_u8string_set_default_language(language);
    EXPECT_EQ(text.getPrefLanguage(), std::string(1000, 'A'));
}

TEST_F(MultiLanguageString, MayBeMadeAndDestroyedInManyThreads)
{
    constexpr int threadCount = 4;
    testsupport::TestBarrier start(threadCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
    {
        threads.emplace_back(
            [&start]
            {
                start.arriveAndWait();
                for (int round = 0; round < 500; ++round)
                {
                    ml_u8string text("default");
                    text.add("de", "deutsch");
                    const ml_u8string copy(text);
                    EXPECT_EQ(copy.get(), "default");
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    ml_u8string_set_default_language("de");
    EXPECT_EQ(ml_u8string().getPrefLanguage(), "DE");
}

TEST_F(MultiLanguageString, MayBeDestroyedWhileAnotherThreadSwitches)
{
    std::vector<std::unique_ptr<ml_u8string>> texts;
    for (int i = 0; i < 2000; ++i)
        texts.push_back(std::make_unique<ml_u8string>("default"));
    const ml_u8string left;
    testsupport::TestBarrier start(2);
    std::thread destroyer(
        [&]
        {
            start.arriveAndWait();
            texts.clear();
        });
    start.arriveAndWait();
    for (int i = 0; i < 200; ++i)
        ml_u8string_set_default_language(i % 2 == 0 ? "de" : "fr");
    destroyer.join();
    EXPECT_EQ(left.getPrefLanguage(), "FR");
}

struct ReadCase
{
    const char * label;
    const char * children;
    bool isRead;
    const char * defaultValue;
    const char * cs;
    const char * c;
};

// For "cs" and "c" the text of the language, or the default value.
const ReadCase readCases[] = {
    {"no child", "", false, "", "", ""},
    {"text alone", "text", false, "", "", ""},
    {"another name", "<Other>1</Other>", false, "", "", ""},
    {"a child of a child", "<x><Value>1</Value></x>", false, "", "", ""},
    {"another case of the name", "<value>1</value>", false, "", "", ""},
    {"one default", "<Value>1</Value>", true, "1", "1", "1"},
    {"the first default counts", "<Value>1</Value><Value>2</Value>", true, "1", "1", "1"},
    {"an empty default is replaced", "<Value/><Value>2</Value>", true, "2", "2", "2"},
    {"the language C is none", "<Value xml:lang=\"C\">1</Value>", true, "1", "1", "1"},
    {"kept: the language c is one", "<Value xml:lang=\"c\">1</Value>", true, "", "", "1"},
    {"a translation", "<Value>1</Value><Value xml:lang=\"cs\">2</Value>", true, "1", "2", "1"},
    {"a translation in upper case", "<Value xml:lang=\"CS\">2</Value>", true, "", "2", ""},
    {"the last translation counts", "<Value xml:lang=\"cs\">1</Value><Value xml:lang=\"CS\">2</Value>", true,
        "", "2", ""},
    {"an empty language", "<Value xml:lang=\"\">1</Value>", true, "", "", ""},
    {"another attribute", "<Value lang=\"cs\">1</Value>", true, "1", "1", "1"},
    {"no readable text", "<Value><b/></Value>", false, "", "", ""},
    {"the next one is readable", "<Value><b/></Value><Value>2</Value>", true, "2", "2", "2"},
    {"a dropped text counts", "<Value>1</Value><x/><Value>3</Value>", true, "1", "1", "1"},
};

TEST_F(MultiLanguageString, ReadsElements)
{
    for (const ReadCase & read : readCases)
    {
        SCOPED_TRACE(read.label);
        qvxml::XMLDocPtr document;
        ASSERT_TRUE(document.loadBuffer(u8string(std::string("<a>") + read.children + "</a>")));
        ml_u8string text;
        u8string tag("Value");
        EXPECT_EQ(text.read(document.getRootElement(), tag), read.isRead);
        EXPECT_EQ(text.getDefaultValue(), read.defaultValue);
        EXPECT_EQ(inLanguage(text, "cs"), read.cs);
        EXPECT_EQ(inLanguage(text, "c"), read.c);
        EXPECT_EQ(tag, "Value");
    }
}

TEST_F(MultiLanguageString, ReadsTheElementsOfTheNameThatIsAskedFor)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><Value>1</Value><Text>2</Text><Value>3</Value></a>"));
    ml_u8string text;
    u8string tag("Text");
    EXPECT_TRUE(text.read(document.getRootElement(), tag));
    EXPECT_EQ(text.getDefaultValue(), "2");
}

TEST_F(MultiLanguageString, ReadsAnEmptyLanguageAsOneLikeOthers)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><Value xml:lang=\"\">1</Value><Value>2</Value></a>"));
    ml_u8string text;
    u8string tag("Value");
    EXPECT_TRUE(text.read(document.getRootElement(), tag));
    EXPECT_EQ(inLanguage(text, ""), "1");
    EXPECT_EQ(text.getDefaultValue(), "2");
}

TEST_F(MultiLanguageString, ReadsNothingWithoutAParent)
{
    ml_u8string text("before");
    u8string tag("Value");
    EXPECT_FALSE(text.read(nullptr, tag));
    EXPECT_EQ(text.get(), "before");
}

TEST_F(MultiLanguageString, ReadsInAdditionToWhatItHas)
{
    qvxml::XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><Value>new</Value><Value xml:lang=\"de\">neu</Value></a>"));
    ml_u8string text("before");
    text.add("cs", "cesky");
    u8string tag("Value");
    EXPECT_TRUE(text.read(document.getRootElement(), tag));
    EXPECT_EQ(text.getDefaultValue(), "before") << "it was not empty";
    EXPECT_EQ(inLanguage(text, "cs"), "cesky");
    EXPECT_EQ(inLanguage(text, "de"), "neu");
}

} // namespace
