#include "VontalBase/parse/SemicolonSeparatedOptions.h"
#include "VontalBase/text/VontalException.h"

#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <type_traits>

namespace
{

using qvparse::SemicolonSeparatedOptions;

static_assert(std::has_virtual_destructor_v<SemicolonSeparatedOptions>);
static_assert(
    sizeof(SemicolonSeparatedOptions) == sizeof(void *) + sizeof(std::map<std::string, std::string>));

/// What the options of a text are, in the form in which they are stored.
std::string storedFrom(const std::string & text)
{
    SemicolonSeparatedOptions options;
    VontalException error;
    EXPECT_TRUE(options.parse(text, error));
    EXPECT_EQ(error.format(), VontalException().format());
    std::string stored = "replaced";
    options.store(stored);
    return stored;
}

std::string valueOf(SemicolonSeparatedOptions & options, const std::string & key)
{
    std::string value = "none";
    const bool isThere = options.get(key, value);
    EXPECT_EQ(isThere, value != "none");
    return value;
}

TEST(SemicolonSeparatedOptions, HasItsDestructorAsItsOnlyVirtualOperation)
{
    EXPECT_EQ(testsupport::virtualSlots<SemicolonSeparatedOptions>(), testsupport::slotsOfDestructor);
}

TEST(SemicolonSeparatedOptions, ReadsATextByItsRules)
{
    struct Case
    {
        const char * label;
        std::string text;
        const char * stored;
    };
    const Case cases[] = {
        {"nothing", "", ""},
        {"one option", "a=1", "a=1"},
        {"closed by a semicolon", "a=1;", "a=1"},
        {"in the order of the keys", "b=2;a=1", "a=1;b=2"},
        {"in the order of unsigned bytes", "\xC3\xA4=1;z=2;A=3", "A=3;z=2;\xC3\xA4=1"},
        {"empty places", ";;a=1;;", "a=1"},
        {"blanks of keys go, those of values stay", "a = 1 ; b=2", "a= 1 ;b=2"},
        {"a blank within a key", "a b c=1", "abc=1"},
        {"tabs and line ends go everywhere", "\ta\n\rb=\t1\r\n2\t", "ab=12"},
        {"a key alone", "a", "a="},
        {"a key alone between others", "a;b=1;c", "a=;b=1;c="},
        {"an empty value", "a=;b=1", "a=;b=1"},
        {"kept: a further equals sign is dropped", "a=b=c", "a=bc"},
        {"kept: an equals sign at the end of a value", "a=b=;c=d", "a=b;c=d"},
        {"kept: a value in front of any key swallows all", "=x;a=1;b=2", ""},
        {"kept: the same behind options", "a=1;=x;b=2", "a=1"},
        {"blanks alone", "  ;  ", ""},
        {"the later value counts", "a=1;a=2", "a=2"},
        {"quotes are text", "a=\"1;2\"", "2\"=;a=\"1"},
        {"other bytes are text", std::string("a\0b=\x01\xFF", 6), nullptr},
    };
    for (const Case & test : cases)
    {
        SCOPED_TRACE(test.label);
        EXPECT_EQ(storedFrom(test.text), test.stored == nullptr ? test.text : test.stored);
    }
}

TEST(SemicolonSeparatedOptions, KeepsTheBlanksOfAValue)
{
    SemicolonSeparatedOptions options;
    VontalException error;
    options.parse("a = 1 ; b=2", error);
    EXPECT_EQ(valueOf(options, "a"), " 1 ");
    EXPECT_EQ(valueOf(options, "b"), "2");
}

TEST(SemicolonSeparatedOptions, AddsToWhatIsThere)
{
    SemicolonSeparatedOptions options;
    VontalException error;
    options.parse("a=1;b=2", error);
    options.parse("b=3;c=4", error);
    options.parse("", error);
    std::string text;
    options.store(text);
    EXPECT_EQ(text, "a=1;b=3;c=4");
}

TEST(SemicolonSeparatedOptions, LeavesTheFailureRecordAsItIs)
{
    SemicolonSeparatedOptions options;
    VontalException error("file", 1, "before");
    const Vontal::u8string before = error.format();
    EXPECT_TRUE(options.parse("=;=a;;", error));
    EXPECT_EQ(error.format(), before);
}

TEST(SemicolonSeparatedOptions, GivesSetsAndRemovesOptions)
{
    SemicolonSeparatedOptions options;
    EXPECT_EQ(valueOf(options, "a"), "none");
    options.set("a", "1");
    EXPECT_EQ(valueOf(options, "a"), "1");
    EXPECT_EQ(valueOf(options, "A"), "none");
    options.set("a", "2");
    EXPECT_EQ(valueOf(options, "a"), "2");
    EXPECT_TRUE(options.remove("a"));
    EXPECT_FALSE(options.remove("a"));
    EXPECT_EQ(valueOf(options, "a"), "none");
    std::string text = "replaced";
    options.store(text);
    EXPECT_EQ(text, "");
}

TEST(SemicolonSeparatedOptions, StoresWhatWasSetAsItIs)
{
    SemicolonSeparatedOptions options;
    options.set("", "");
    options.set("k y", "a=b;c");
    std::string text;
    options.store(text);
    EXPECT_EQ(text, "=;k y=a=b;c");
}

TEST(SemicolonSeparatedOptions, StoresOverAKeyOrValueOfItsOwn)
{
    SemicolonSeparatedOptions options;
    std::string text = "a";
    options.set(text, text);
    options.store(text);
    EXPECT_EQ(text, "a=a");
}

TEST(SemicolonSeparatedOptions, CopiesItsOptions)
{
    SemicolonSeparatedOptions options;
    options.set("a", "1");
    SemicolonSeparatedOptions copy(options);
    SemicolonSeparatedOptions assigned;
    assigned.set("b", "2");
    assigned = options;
    options.set("a", "3");
    for (SemicolonSeparatedOptions * const other : {&copy, &assigned})
    {
        EXPECT_EQ(valueOf(*other, "a"), "1");
        EXPECT_EQ(valueOf(*other, "b"), "none");
    }
}

} // namespace
