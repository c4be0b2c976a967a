#include "VontalBase/utils/StringArray.h"

#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvutils::StringArray;
using testsupport::virtualSlot;
using testsupport::virtualSlots;
using Vontal::u8string;

static_assert(std::is_base_of_v<std::vector<u8string>, StringArray>);
static_assert(!std::has_virtual_destructor_v<StringArray>);
static_assert(sizeof(StringArray) == sizeof(std::vector<u8string>) + sizeof(void *), "no fields of its own");

StringArray arrayOf(std::initializer_list<const char *> texts)
{
    StringArray array;
    for (const char * const text : texts)
        array.push_back(text);
    return array;
}

std::vector<std::string> textsOf(const StringArray & array)
{
    return {array.begin(), array.end()};
}

using Texts = std::vector<std::string>;

TEST(StringArray, HasItsVirtualOperationsInOrder)
{
    EXPECT_EQ(virtualSlot(&StringArray::parseJson), 0U);
    EXPECT_EQ(virtualSlot(&StringArray::serializeJson), 1U);
    EXPECT_EQ(virtualSlot(&StringArray::contains), 2U);
    EXPECT_EQ(virtualSlots<StringArray>(), 3U);
}

TEST(StringArray, IsEmptyAfterItWasMovedFrom)
{
    StringArray source = arrayOf({"a", "b"});
    StringArray moved(std::move(source));
    EXPECT_EQ(textsOf(moved), Texts({"a", "b"}));
    EXPECT_TRUE(source.empty()); // NOLINT(bugprone-use-after-move)
    StringArray target = arrayOf({"c"});
    target = std::move(moved);
    EXPECT_EQ(textsOf(target), Texts({"a", "b"}));
    EXPECT_TRUE(moved.empty()); // NOLINT(bugprone-use-after-move)
}

TEST(StringArray, IsCopied)
{
    const StringArray source = arrayOf({"a", "b"});
    StringArray copy(source);
    copy.push_back("c");
    EXPECT_EQ(textsOf(source), Texts({"a", "b"}));
    copy = source;
    EXPECT_EQ(textsOf(copy), Texts({"a", "b"}));
}

TEST(StringArray, AppendsTheStringsOfAJsonArrayInOrder)
{
    StringArray array = arrayOf({"before"});
    EXPECT_TRUE(array.parseJson(R"(["one", "", "two \"quoted\"", "\u20AC"])"));
    EXPECT_EQ(textsOf(array), Texts({"before", "one", "", "two \"quoted\"", "\xE2\x82\xAC"}));
    EXPECT_TRUE(array.parseJson("[]"));
    EXPECT_EQ(array.size(), 5U);
    EXPECT_TRUE(array.parseJson(R"(["one"])"));
    EXPECT_EQ(array.size(), 6U);
    EXPECT_EQ(array.back(), "one");
}

TEST(StringArray, KeepsZeroBytesOfStrings)
{
    StringArray array;
    EXPECT_TRUE(array.parseJson("[\"a\\u0000b\"]"));
    ASSERT_EQ(array.size(), 1U);
    EXPECT_EQ(array.front(), std::string("a\0b", 3));
}

TEST(StringArray, KeepsTheStringsBeforeTheFirstElementThatIsNone)
{
    const char * const documents[] = {R"(["a", "b", 5, "c"])", R"(["a", "b", null, "c"])",
        R"(["a", "b", true])", R"(["a", "b", ["c"]])", R"(["a", "b", {"c": "d"}])"};
    for (const char * const document : documents)
    {
        StringArray array = arrayOf({"before"});
        EXPECT_FALSE(array.parseJson(document)) << document;
        EXPECT_EQ(textsOf(array), Texts({"before", "a", "b"})) << document;
    }
}

TEST(StringArray, ChangesNothingForWhatIsNoArrayOfStrings)
{
    const char * const documents[] = {
        "", "5", "{}", R"({"a": "b"})", "null", "true", R"(["a",])", "[5]", "[nonsense]", R"(["a"}))"};
    for (const char * const document : documents)
    {
        StringArray array = arrayOf({"before"});
        EXPECT_FALSE(array.parseJson(document)) << document;
        EXPECT_EQ(textsOf(array), Texts({"before"})) << document;
    }
}

TEST(StringArray, IsRefusedALoneStringByTheJsonReader)
{
    StringArray array;
    EXPECT_FALSE(array.parseJson("\"alone\""));
    EXPECT_TRUE(array.empty());
}

std::string serialized(const StringArray & array)
{
    u8string out = "before";
    EXPECT_TRUE(array.serializeJson(out));
    return out;
}

TEST(StringArray, WritesItselfAsAJsonArray)
{
    EXPECT_EQ(serialized(StringArray()), "[]");
    EXPECT_EQ(serialized(arrayOf({"one"})), "[\"one\"]");
    EXPECT_EQ(serialized(arrayOf({"one", "", "t\"wo"})), "[\"one\",\"\",\"t\\\"wo\"]");
}

TEST(StringArray, ReadsBackWhatItHasWritten)
{
    StringArray array = arrayOf({"", "plain", "\"\\/\b\f\n\r\t", "\x01\x1F\x7F", "\xC3\xA9\xF0\x9F\x98\x80"});
    array.push_back(u8string("a\0b", 3));
    StringArray back;
    EXPECT_TRUE(back.parseJson(serialized(array)));
    EXPECT_EQ(textsOf(back), textsOf(array));
}

TEST(StringArray, ContainsWhatIsEqualByteForByte)
{
    StringArray array = arrayOf({"Alpha", "beta"});
    EXPECT_TRUE(array.contains("Alpha"));
    EXPECT_TRUE(array.contains("beta"));
    EXPECT_FALSE(array.contains("alpha")) << "case counts";
    EXPECT_FALSE(array.contains("Alph"));
    EXPECT_FALSE(array.contains("Alpha "));
    EXPECT_FALSE(array.contains(u8string("Alpha\0", 6)));
    EXPECT_FALSE(array.contains("")) << "only an empty element matches";
    array.push_back("");
    EXPECT_TRUE(array.contains(""));
    EXPECT_FALSE(StringArray().contains(""));
}

} // namespace
