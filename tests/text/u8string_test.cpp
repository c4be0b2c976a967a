#include "VontalBase/text/astring.h"
#include "VontalBase/text/u8string.h"

#include "support/VirtualSlot.h"
#include "text/wide.h"

#include <cmath>
#include <gtest/gtest.h>
#include <list>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;
using Vontal::astring;
using Vontal::u8string;

static_assert(std::is_convertible_v<u8string *, std::string *>, "the base is public");
static_assert(std::has_virtual_destructor_v<u8string>);
static_assert(sizeof(u8string) == sizeof(std::string) + sizeof(void *),
    "a virtual table, and no data member of its own");
static_assert(std::is_copy_constructible_v<u8string> && std::is_copy_assignable_v<u8string>);
static_assert(std::is_nothrow_move_constructible_v<u8string> && std::is_nothrow_move_assignable_v<u8string>);
static_assert(std::is_convertible_v<const char *, u8string>);
static_assert(std::is_convertible_v<std::string, u8string>);
static_assert(std::is_convertible_v<const wchar_t *, u8string>);
static_assert(
    std::is_assignable_v<u8string &, const char *> && std::is_assignable_v<u8string &, std::string>);
static_assert(std::is_same_v<decltype(std::declval<const u8string &>().toUInt()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<const u8string &>().toULong(std::declval<bool &>())),
    Vontal::ulong32>);
static_assert(std::is_same_v<decltype(std::declval<const u8string &>().toDouble()), double>);
static_assert(std::is_same_v<decltype(std::declval<const u8string &>().toAstring()), astring>);

TEST(U8String, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(virtualSlot(&u8string::toUInt), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&u8string::toULong), slotsOfDestructor + 1);
    EXPECT_EQ(virtualSlot(static_cast<double (u8string::*)(bool &) const>(&u8string::toDouble)),
        slotsOfDestructor + 2);
    EXPECT_EQ(
        virtualSlot(static_cast<double (u8string::*)() const>(&u8string::toDouble)), slotsOfDestructor + 3);
}

TEST(U8String, IsEmptyByDefault)
{
    EXPECT_EQ(u8string(), "");
    EXPECT_EQ(u8string().size(), 0U);
}

TEST(U8String, TakesBytesAsTheyStand)
{
    // Nothing of this is UTF-8.
    const char illFormed[] = "\xFF\xC0\x80 \xED\xA0\x80";
    const std::string withNul("a\0b", 3);
    EXPECT_EQ(u8string(illFormed), std::string(illFormed));
    EXPECT_EQ(u8string(withNul).size(), 3U);
    EXPECT_EQ(u8string(withNul), withNul);

    u8string text = "before";
    text = illFormed;
    EXPECT_EQ(text, std::string(illFormed));
    text = withNul;
    EXPECT_EQ(text, withNul);
    text = std::string(100, '\xFE');
    EXPECT_EQ(text, std::string(100, '\xFE'));
}

TEST(U8String, OfWideTextIsItsUtf8)
{
    EXPECT_EQ(
        u8string(wide(u"caf\u00E9 \u20AC \U0001F600").c_str()), "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
    EXPECT_EQ(u8string(L""), "");
    EXPECT_EQ(u8string(wideUnits({'a', 0xD800, 'b'}).c_str()), "a\xEF\xBF\xBD"
                                                               "b");
}

TEST(U8String, CopiesAndMovesLikeItsBase)
{
    u8string text = "a text that is too long for the place inside the string";
    const u8string copy = text;
    EXPECT_EQ(copy, text);
    const u8string moved = std::move(text);
    EXPECT_EQ(moved, copy);
    u8string assigned = "x";
    assigned = copy;
    EXPECT_EQ(assigned, copy);
    u8string taken;
    taken = std::move(assigned);
    EXPECT_EQ(taken, copy);
}

TEST(U8String, CountsBytesAndNotCharacters)
{
    const u8string text = "\xC3\xA9"
                          "a\xF0\x9F\x98\x80";
    EXPECT_EQ(u8string("\xC3\xA9").size(), 2U);
    EXPECT_EQ(text.size(), 7U);
    EXPECT_EQ(text.length(), 7U);
    EXPECT_EQ(text.find('a'), 2U);
    EXPECT_EQ(text[1], '\xA9');
    EXPECT_EQ(text.end() - text.begin(), 7);
    EXPECT_EQ(text.substr(0, 1), "\xC3") << "a character can be cut in half";
}

TEST(U8String, IsOrderedByUnsignedBytesWithShorterPrefixesFirst)
{
    struct Row
    {
        const char * label;
        u8string less;
        u8string greater;
    };
    const Row rows[] = {
        {"a byte above 127 comes behind every ASCII byte", "\x7F", "\x80"},
        {"the empty text comes first", "", u8string("\0", 1)},
        {"a prefix comes first", "ab", "abc"},
        {"case is not folded", "Z", "a"},
        {"no locale: an umlaut comes behind z", "z", "\xC3\xA4"},
        {"bytes and not UTF-16 units: U+FFFD before U+10000", "\xEF\xBF\xBD", "\xF0\x90\x80\x80"},
        {"bytes behind a NUL count", u8string("a\0b", 3), u8string("a\0c", 3)},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_LT(row.less, row.greater);
        EXPECT_FALSE(row.greater < row.less);
        EXPECT_NE(row.less, row.greater);
    }
}

TEST(U8String, DoesNotNormalise)
{
    EXPECT_NE(u8string("\xC3\xA9"), u8string("e\xCC\x81"));
}

TEST(U8String, LivesInStandardContainers)
{
    const std::vector<u8string> vector = {"b", "a"};
    EXPECT_EQ(vector[0], "b");
    const std::list<u8string> list = {"b", "a"};
    EXPECT_EQ(list.back(), "a");

    const std::set<u8string> set = {"z", "\xC3\xA4", "Z", "z"};
    EXPECT_EQ(std::vector<u8string>(set.begin(), set.end()), (std::vector<u8string>{"Z", "z", "\xC3\xA4"}));
    std::map<u8string, int> map;
    map["\xC3\xA4"] = 1;
    map["z"] = 2;
    EXPECT_EQ(map.begin()->first, "z");
    EXPECT_EQ(map.at("\xC3\xA4"), 1);
}

TEST(U8String, ReadsItselfAsANumber)
{
    bool ok = false;
    EXPECT_EQ(u8string("12abc").toUInt(), 12U);
    EXPECT_EQ(u8string("abc").toUInt(), 0U);
    EXPECT_EQ(u8string("4294967295").toULong(ok), 4294967295U);
    EXPECT_TRUE(ok);
    EXPECT_EQ(u8string("-1").toULong(ok), 0U);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(u8string("1,5").toDouble(ok), 1.5);
    EXPECT_FALSE(ok);
}

TEST(U8String, ReadsItselfBeyondAZeroByte)
{
    const u8string text("12\0", 3);
    bool ok = true;
    EXPECT_EQ(text.toULong(ok), 12U);
    EXPECT_FALSE(ok) << "the zero byte is part of the text, and no digit";
}

TEST(U8String, GivesTheSameRealNumberWithAndWithoutTheFlag)
{
    for (const char * const text : {"", "1.5", "-2,25", "12-3", "x", "1e5", "-"})
    {
        SCOPED_TRACE(text);
        bool ok = false;
        const double withFlag = u8string(text).toDouble(ok);
        const double without = u8string(text).toDouble();
        EXPECT_EQ(without, withFlag);
        EXPECT_EQ(std::signbit(without), std::signbit(withFlag));
    }
}

/// An application's string that answers for itself.
class Answering : public u8string
{
public:
    explicit Answering(bool & destroyed) : destroyedFlag(&destroyed)
    {
    }
    Answering(const Answering &) = delete;
    Answering & operator=(const Answering &) = delete;
    ~Answering() override
    {
        *destroyedFlag = true;
    }
    unsigned int toUInt() const override
    {
        return 7;
    }
    Vontal::ulong32 toULong(bool & ok) const override
    {
        ok = true;
        return 8;
    }
    double toDouble(bool & ok) const override
    {
        ok = true;
        return 9.5;
    }

private:
    bool * destroyedFlag;
};

TEST(U8String, HasVirtualOperationsThatCanBeOverridden)
{
    bool destroyed = false;
    const u8string * const text = new Answering(destroyed);
    bool ok = false;
    EXPECT_EQ(text->toUInt(), 7U);
    EXPECT_EQ(text->toULong(ok), 8U);
    EXPECT_EQ(text->toDouble(ok), 9.5);
    EXPECT_EQ(text->toDouble(), 9.5) << "the form without a flag calls the virtual one with a flag";
    delete text;
    EXPECT_TRUE(destroyed);
}

TEST(U8String, WidensUpToItsFirstZeroByte)
{
    EXPECT_EQ(u8string("caf\xC3\xA9").toAstring(), wide(u"caf\u00E9"));
    EXPECT_EQ(u8string("").toAstring(), L"");
    EXPECT_EQ(u8string("ab\0cd", 5).toAstring(), L"ab");
    EXPECT_EQ(u8string("\xFF").toAstring(), wide(u"\uFFFD"));
}

} // namespace
