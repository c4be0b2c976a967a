#include "VontalBase/utils/SortedTexts.h"
#include "VontalBase/utils/bundleparser.h"

#include "support/Load.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using namespace std::string_literals;
using qvutils::appendUnescaped;
using qvutils::BundleEntry;
using qvutils::parseBundle;
using qvutils::SortedTexts;

using Texts = std::vector<std::pair<std::string, std::string>>;

struct Row
{
    const char * label;
    std::string text;
    Texts expected;
};

/// The entries of a text in their order; one whose key is "fault" where the text has one.
Texts entriesOf(const std::string & text)
{
    std::vector<BundleEntry> entries;
    if (!parseBundle(text, entries))
        return {{"fault", ""}};
    Texts texts;
    for (const BundleEntry & entry : entries)
    {
        std::string value;
        appendUnescaped(entry.value, value);
        texts.emplace_back(entry.key, value);
    }
    return texts;
}

void expectEntries(const std::vector<Row> & rows)
{
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(entriesOf(row.text), row.expected);
    }
}

const Texts none;
const Texts fault = {{"fault", ""}};

TEST(BundleParser, TakesEachInputAtTheStartOfALine)
{
    expectEntries({
        {"nothing at all", "", none},
        {"a number sign begins a comment", "#a=b", none},
        {"a space stays", " k=v", {{"k", "v"}}},
        {"a tab stays", "\tk=v", {{"k", "v"}}},
        {"a line feed stays", "\nk=v", {{"k", "v"}}},
        {"a carriage return stays", "\rk=v", {{"k", "v"}}},
        {"all of them, again and again", " \t\r\n\n \r\t k=v", {{"k", "v"}}},
        {"white space behind which a comment begins", " \t#k=v", none},
        {"a letter begins a key", "k=v", {{"k", "v"}}},
        {"an equals sign begins a key", "=k=v", {{"=k", "v"}}},
        {"an equals sign that is a key", "==v", {{"=", "v"}}},
        {"an equals sign in front of a blank", "= =v", {{"=", "v"}}},
        {"a backslash begins a key", "\\=v", {{"\\", "v"}}},
        {"an exclamation mark begins a key, not a comment", "!k=v", {{"!k", "v"}}},
        {"a zero byte begins a key", "\0=v"s, {{"\0"s, "v"}}},
        {"a form feed is no white space", "\fk=v", {{"\fk", "v"}}},
        {"a vertical tab is no white space", "\vk=v", {{"\vk", "v"}}},
        {"the space of another script is no white space", "\xC2\xA0=v", {{"\xC2\xA0", "v"}}},
        {"only white space", " \t\r\n", none},
    });
}

TEST(BundleParser, TakesEachInputInAComment)
{
    expectEntries({
        {"a line feed ends it", "#c\nk=v", {{"k", "v"}}},
        {"a carriage return ends it", "#c\rk=v", {{"k", "v"}}},
        {"both end it", "#c\r\nk=v", {{"k", "v"}}},
        {"an empty one", "#\nk=v", {{"k", "v"}}},
        {"a backslash at its end does not go on with it", "#c\\\nk=v", {{"k", "v"}}},
        {"anything else stays", "#=# \t\\\0\xFF=x\nk=v"s, {{"k", "v"}}},
        {"one behind the other", "#1\n#2\n\n  #3\nk=v\n#4", {{"k", "v"}}},
        {"behind a value there is none", "k=v # c\n", {{"k", "v # c"}}},
        {"within a key there is none", "k#c=v", {{"k#c", "v"}}},
    });
}

TEST(BundleParser, TakesEachInputInAKey)
{
    expectEntries({
        {"a space ends it", "k =v", {{"k", "v"}}},
        {"a tab ends it", "k\t=v", {{"k", "v"}}},
        {"a line feed is a fault", "k\n=v", fault},
        {"a carriage return is a fault", "k\r=v", fault},
        {"a line end behind a longer one is a fault", "key\nother=v", fault},
        {"an equals sign begins the value", "key=v", {{"key", "v"}}},
        {"anything else belongs to it", "k.e:y\\!\0\xC3\xA4[]=v"s, {{"k.e:y\\!\0\xC3\xA4[]"s, "v"}}},
        {"a colon does not end it", "k:v=w", {{"k:v", "w"}}},
        {"letters keep their case", "Key=v\nkey=w", {{"Key", "v"}, {"key", "w"}}},
        {"a line end at once", "a=b\nk\n", fault},
    });
}

TEST(BundleParser, TakesEachInputBehindAKey)
{
    expectEntries({
        {"spaces stay", "k   =v", {{"k", "v"}}},
        {"tabs stay", "k\t \t=v", {{"k", "v"}}},
        {"a letter is a fault", "k k=v", fault},
        {"a line feed is a fault", "k \n=v", fault},
        {"a carriage return is a fault", "k \r=v", fault},
        {"a number sign is a fault", "k #=v", fault},
        {"a backslash is a fault", "k \\=v", fault},
        {"a zero byte is a fault", "k \0=v"s, fault},
    });
}

TEST(BundleParser, TakesEachInputInAValue)
{
    expectEntries({
        {"a line feed ends it", "k=v\nl=w", {{"k", "v"}, {"l", "w"}}},
        {"a carriage return ends it", "k=v\rl=w", {{"k", "v"}, {"l", "w"}}},
        {"both end it", "k=v\r\nl=w\r\n", {{"k", "v"}, {"l", "w"}}},
        {"an empty one", "k=\nl=\r\nm=", {{"k", ""}, {"l", ""}, {"m", ""}}},
        {"spaces in front of it and behind it stay", "k= v \t\n", {{"k", " v \t"}}},
        {"spaces alone stay", "k =  \n", {{"k", "  "}}},
        {"an equals sign is ordinary", "k=a=b==\n", {{"k", "a=b=="}}},
        {"an equals sign at once", "k==\n", {{"k", "="}}},
        {"anything else belongs to it", "k=#\0\xC3\xA4\xFF\f"s, {{"k", "#\0\xC3\xA4\xFF\f"s}}},
        {"the next line begins anew", "k=v\n  #c\n\tl=w", {{"k", "v"}, {"l", "w"}}},
    });
}

TEST(BundleParser, TakesEachInputBehindABackslash)
{
    expectEntries({
        {"a backslash", "k=a\\\\b", {{"k", "a\\b"}}},
        {"n", "k=a\\nb", {{"k", "a\nb"}}},
        {"r", "k=a\\rb", {{"k", "a\rb"}}},
        {"t", "k=a\\tb", {{"k", "a\tb"}}},
        {"first and last", "k=\\n\nl=x\\t\n", {{"k", "\n"}, {"l", "x\t"}}},
        {"one behind the other", "k=\\\\\\n\\\\n", {{"k", "\\\n\\n"}}},
        {"a capital letter is a fault", "k=\\N", fault},
        {"another letter is a fault", "k=\\u0041", fault},
        {"a quote is a fault", "k=\\\"", fault},
        {"an equals sign is a fault", "k=\\=", fault},
        {"a space is a fault", "k=\\ ", fault},
        {"a zero byte is a fault", "k=\\\0"s, fault},
        {"a line feed is a fault, so that no entry runs on to a next line", "k=a\\\nb=c", fault},
        {"a carriage return is a fault", "k=a\\\rb=c", fault},
    });
}

TEST(BundleParser, EndsWellOnlyAtTheStartOfALineInACommentAndInAValue)
{
    expectEntries({
        {"at the start of a line", "k=v\n", {{"k", "v"}}},
        {"behind white space", "k=v\n \t", {{"k", "v"}}},
        {"in a comment", "k=v\n#c", {{"k", "v"}}},
        {"in a comment that has just begun", "k=v\n#", {{"k", "v"}}},
        {"in a value", "k=v", {{"k", "v"}}},
        {"in a value that has just begun", "k=", {{"k", ""}}},
        {"behind an escape", "k=\\n", {{"k", "\n"}}},
        {"in a key of one letter", "k", fault},
        {"in a longer key", "a=b\nkey", fault},
        {"behind a key", "k ", fault},
        {"in an escape", "k=v\\", fault},
        {"in an escape behind an escape", "k=\\\\\\", fault},
    });
}

TEST(SortedTexts, HoldNothingBeforeTheyAreRead)
{
    SortedTexts texts;
    EXPECT_EQ(texts.find(""), nullptr);
    EXPECT_TRUE(texts.read(""));
    EXPECT_EQ(texts.size(), 0U);
    EXPECT_EQ(texts.find("k"), nullptr);
}

TEST(SortedTexts, RefuseAKeyThatIsThereTwice)
{
    const struct
    {
        const char * label;
        const char * file;
        bool isGood;
    } rows[] = {
        {"one behind the other", "k=1\nk=2\n", false},
        {"the same text", "k=1\nk=1\n", false},
        {"apart", "k=1\na=2\nz=3\nk=4\n", false},
        {"the second one ends with the file", "k=1\nk=2", false},
        {"the second one is empty and ends with the file", "k=1\nk=", false},
        {"with other blanks", "k=1\n\tk \t=2", false},
        {"in another case", "k=1\nK=2", true},
        {"one begins with the other", "k=1\nkk=2", true},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        SortedTexts texts;
        EXPECT_EQ(texts.read(row.file), row.isGood);
        EXPECT_EQ(texts.size(), row.isGood ? 2U : 0U);
        EXPECT_EQ(texts.find("k") != nullptr, row.isGood);
    }
}

TEST(SortedTexts, AreFoundByAllBytesOfTheirKeys)
{
    const std::vector<std::string> keys = {
        "b", "a", "ab", "B", "\xFF", "\x7F", "\x80", "a\0"s, "\xC3\xA4", "a\0b"s, "zz", "aa"};
    std::string file;
    for (const std::string & key : keys)
        file += key + "=<" + key + ">\n";
    SortedTexts texts;
    ASSERT_TRUE(texts.read(file));
    file.assign(file.size(), '?');
    for (const std::string & key : keys)
    {
        SCOPED_TRACE(key);
        ASSERT_NE(texts.find(key), nullptr);
        EXPECT_EQ(*texts.find(key), "<" + key + ">");
        EXPECT_EQ(texts.find(key), texts.find(key));
        EXPECT_EQ(texts.find(key + '\x01'), nullptr);
    }
    for (const char * const missing : {"", "A", "b ", "abc", "zzz", "\x01", "\xFF\xFF"})
        EXPECT_EQ(texts.find(missing), nullptr) << missing;
}

TEST(SortedTexts, AreFoundHoweverTheFileIsOrdered)
{
    constexpr int count = 10'000;
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i);
    std::mt19937 random(7);
    for (const char * const order : {"rising", "falling", "mixed"})
    {
        SCOPED_TRACE(order);
        if (order == std::string("falling"))
            std::reverse(numbers.begin(), numbers.end());
        if (order == std::string("mixed"))
            std::shuffle(numbers.begin(), numbers.end(), random);
        std::string file;
        for (const int number : numbers)
            file += "key." + std::to_string(number) + "=text " + std::to_string(number) + "\r\n";
        SortedTexts texts;
        ASSERT_TRUE(texts.read(file));
        ASSERT_EQ(texts.size(), static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
        {
            const Vontal::u8string * const text = texts.find("key." + std::to_string(i));
            ASSERT_NE(text, nullptr) << i;
            ASSERT_EQ(*text, "text " + std::to_string(i));
        }
    }
}

TEST(SortedTexts, MayBeAsLongAsMemoryAllows)
{
    const std::size_t length = static_cast<std::size_t>(testsupport::repetitions(100)) << 20;
    {
        SCOPED_TRACE("one value");
        SortedTexts texts;
        ASSERT_TRUE(texts.read("k=" + std::string(length, 'v')));
        ASSERT_NE(texts.find("k"), nullptr);
        EXPECT_EQ(texts.find("k")->size(), length);
    }
    {
        SCOPED_TRACE("one key");
        SortedTexts texts;
        EXPECT_FALSE(texts.read(std::string(length, 'k')));
        SortedTexts others;
        ASSERT_TRUE(others.read(std::string(length, 'k') + "=v"));
        EXPECT_NE(others.find(std::string(length, 'k')), nullptr);
    }
    for (const char * const piece : {"\\n", "\\\\", "\r", "\n", "# ", " "})
    {
        SCOPED_TRACE(std::string("again and again ") + piece);
        std::string file = "k=";
        while (file.size() < length)
            file += piece;
        SortedTexts texts;
        ASSERT_TRUE(texts.read(file));
        EXPECT_EQ(texts.size(), 1U);
    }
}

} // namespace
