#include "VontalBase/text/astring.h"

#include "support/VirtualSlot.h"
#include "text/wide.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;
using Vontal::astring;

template <class Text>
concept HasToULong = requires(const Text & text, bool & ok)
{
    text.toULong(ok);
};

static_assert(std::is_convertible_v<astring *, std::wstring *>, "the base is public");
static_assert(std::has_virtual_destructor_v<astring>);
static_assert(sizeof(astring) == sizeof(std::wstring) + sizeof(void *),
    "a virtual table, and no data member of its own");
static_assert(!HasToULong<astring>, "kept: only u8string has it");
static_assert(std::is_nothrow_move_constructible_v<astring> && std::is_nothrow_move_assignable_v<astring>);
static_assert(
    std::is_convertible_v<const wchar_t *, astring> && std::is_convertible_v<std::wstring, astring>);
static_assert(std::is_same_v<decltype(std::declval<const astring &>().toUInt()), unsigned int>);

TEST(AString, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(virtualSlot(&astring::toUInt), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(static_cast<double (astring::*)(bool &) const>(&astring::toDouble)),
        slotsOfDestructor + 1);
    EXPECT_EQ(
        virtualSlot(static_cast<double (astring::*)() const>(&astring::toDouble)), slotsOfDestructor + 2);
}

TEST(AString, TakesCodeUnitsAsTheyStand)
{
    EXPECT_EQ(astring(), L"");
    EXPECT_EQ(astring(L"abc"), std::wstring(L"abc"));
    const std::wstring units = wideUnits({'a', 0, 0xD800, 'b'});
    EXPECT_EQ(astring(units), units);
    astring text;
    text = units;
    EXPECT_EQ(text, units);
    text = L"x";
    EXPECT_EQ(text, L"x");
    text = std::wstring(50, L'y');
    EXPECT_EQ(text, std::wstring(50, L'y'));
    const astring copy = text;
    const astring moved = std::move(text);
    EXPECT_EQ(moved, copy);
}

TEST(AString, CountsCodeUnits)
{
    const astring text = wide(u"\U0001F600\u00E9");
    EXPECT_EQ(text.size(), 3U) << "a surrogate pair counts two";
    EXPECT_EQ(text.find(static_cast<wchar_t>(0xE9)), 2U);
}

TEST(AString, ReadsItselfAsANumber)
{
    bool ok = true;
    EXPECT_EQ(astring(L"12abc").toUInt(), 12U);
    EXPECT_EQ(astring(L"-5").toUInt(), 0U);
    EXPECT_EQ(astring(L"1,5").toDouble(ok), 1.5);
    EXPECT_FALSE(ok);
    EXPECT_EQ(astring(L"12-3").toDouble(), -123.0);
    EXPECT_TRUE(std::signbit(astring(L"-").toDouble()));
}

/// An application's string that answers for itself.
class Answering : public astring
{
public:
    unsigned int toUInt() const override
    {
        return 7;
    }
    double toDouble(bool & ok) const override
    {
        ok = true;
        return 9.5;
    }
};

TEST(AString, HasVirtualOperationsThatCanBeOverridden)
{
    const Answering own;
    const astring & text = own;
    bool ok = false;
    EXPECT_EQ(text.toUInt(), 7U);
    EXPECT_EQ(text.toDouble(ok), 9.5);
    EXPECT_EQ(text.toDouble(), 9.5) << "the form without a flag calls the virtual one with a flag";
}

} // namespace
