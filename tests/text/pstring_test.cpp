#include "VontalBase/text/conversions.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "text/wide.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace
{

using Vontal::pstring;
using Vontal::u8string;

static_assert(std::is_convertible_v<pstring *, std::wstring *>, "the base is public");
static_assert(!std::is_polymorphic_v<pstring>, "unlike the other two it has no virtual operation");
static_assert(sizeof(pstring) == sizeof(std::wstring) && alignof(pstring) == alignof(std::wstring));
static_assert(
    std::is_convertible_v<const wchar_t *, pstring> && std::is_convertible_v<std::wstring, pstring>);
static_assert(std::is_convertible_v<u8string, pstring>);
static_assert(std::is_nothrow_move_constructible_v<pstring> && std::is_nothrow_move_assignable_v<pstring>);

TEST(PString, TakesCodeUnitsAsTheyStand)
{
    EXPECT_EQ(pstring(), L"");
    EXPECT_EQ(pstring(L"C:\\a"), std::wstring(L"C:\\a"));
    const std::wstring units = wideUnits({'a', 0, 0xDC00, 'b'});
    EXPECT_EQ(pstring(units), units);
    EXPECT_EQ(pstring(std::wstring(units)), units);
}

TEST(PString, OfUtf8IsItsWideFormUpToTheFirstZeroByte)
{
    EXPECT_EQ(pstring(u8string("C:\\caf\xC3\xA9\\\xF0\x9F\x98\x80")), wide(u"C:\\caf\u00E9\\\U0001F600"));
    EXPECT_EQ(pstring(u8string("")), L"");
    EXPECT_EQ(pstring(u8string("ab\0cd", 5)), L"ab");
    EXPECT_EQ(pstring(u8string("\xC3(")), wide(u"\uFFFD("));
}

TEST(PString, GoesBackThroughTheConversion)
{
    const u8string name = "D:\\\xE2\x82\xAC\\x";
    u8string back;
    EXPECT_TRUE(Vontal::c_u16u8(back, pstring(name)));
    EXPECT_EQ(back, name);
}

} // namespace
