#include "VontalBase/text/AStringBuilder.h"
#include "VontalBase/text/u8string.h"

#include "text/wide.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using Vontal::astring;
using Vontal::AStringBuilder;
using Vontal::u8string;

static_assert(!std::is_polymorphic_v<AStringBuilder>);
static_assert(sizeof(AStringBuilder) == sizeof(astring), "one field");
static_assert(std::is_default_constructible_v<AStringBuilder> &&
              std::is_copy_constructible_v<AStringBuilder> && std::is_move_constructible_v<AStringBuilder> &&
              std::is_copy_assignable_v<AStringBuilder> && std::is_move_assignable_v<AStringBuilder>);
static_assert(std::is_convertible_v<AStringBuilder, const astring &>);
static_assert(std::is_same_v<decltype(std::declval<const AStringBuilder &>().c_str()), const wchar_t *>);
static_assert(std::is_same_v<decltype(std::declval<const AStringBuilder &>().getSize()), std::uint64_t>);

/// Whether `append` takes these arguments.
template <class... Arguments>
concept Appends = requires(AStringBuilder & builder, Arguments... arguments)
{
    builder.append(arguments...);
};
template <class Builder>
concept HasHexadecimal = requires(Builder & builder)
{
    builder.appendInHex(1L);
};
template <class Builder>
concept HasHexadecimalOfBytes = requires(Builder & builder, const unsigned char * bytes)
{
    builder.appendInHex(bytes, 1U);
    builder.appendInHexLE(bytes, 1U);
};
template <class Builder>
concept HasAnsi = requires(Builder & builder)
{
    builder.appendInAcp("a");
};
template <class Builder>
concept HasWideAnsi = requires(Builder & builder)
{
    builder.appendInAcp(L"a");
};

// Kept: it has five forms of append and appendEndl, and U8StringBuilder has the rest.
static_assert(Appends<const std::wstring &> && Appends<const wchar_t *> && Appends<const u8string &> &&
              Appends<int> && Appends<unsigned int>);
static_assert(!Appends<std::int64_t> && !Appends<std::uint64_t>);
static_assert(!Appends<long> && !Appends<unsigned long>);
static_assert(!Appends<long long> && !Appends<unsigned long long>);
static_assert(!Appends<double>);
static_assert(!Appends<const char *, unsigned long long> && !Appends<const wchar_t *, unsigned long long>);
static_assert(!HasHexadecimal<AStringBuilder> && !HasHexadecimalOfBytes<AStringBuilder>);
static_assert(!HasAnsi<AStringBuilder> && !HasWideAnsi<AStringBuilder>);

/// The text of a builder.
std::wstring textOf(const astring & text)
{
    return text;
}

TEST(AStringBuilder, IsEmptyAtTheStart)
{
    const AStringBuilder builder;
    EXPECT_EQ(textOf(builder), L"");
    EXPECT_EQ(builder.getSize(), 0U);
    EXPECT_EQ(std::wstring(builder.c_str()), L"");
}

TEST(AStringBuilder, GivesItsTextByReferenceAndNotByCopy)
{
    AStringBuilder builder;
    builder.append(L"some text that is too long for the place inside a string");
    const astring & first = builder;
    const astring & second = builder;
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(builder.c_str(), first.c_str());
    EXPECT_EQ(builder.getSize(), first.size());
}

TEST(AStringBuilder, ReturnsItselfFromEveryOperation)
{
    AStringBuilder builder;
    EXPECT_EQ(&builder.append(std::wstring(L"a")), &builder);
    EXPECT_EQ(&builder.append(L"b"), &builder);
    EXPECT_EQ(&builder.append(u8string("c")), &builder);
    EXPECT_EQ(&builder.append(-1), &builder);
    EXPECT_EQ(&builder.append(1U), &builder);
    EXPECT_EQ(&builder.appendEndl(), &builder);
    EXPECT_EQ(textOf(builder), L"abc-11\n");
}

TEST(AStringBuilder, EndsEveryTextAtItsFirstNul)
{
    EXPECT_EQ(textOf(AStringBuilder().append(wideUnits({'a', 0, 'b'}))), L"a");
    EXPECT_EQ(textOf(AStringBuilder().append(L"a\0b")), L"a");
    EXPECT_EQ(textOf(AStringBuilder().append(u8string("a\0b", 3))), L"a");
    EXPECT_EQ(
        textOf(AStringBuilder().append(std::wstring(1, L'\0')).append(u8string("\0", 1)).append(L"")), L"");
}

TEST(AStringBuilder, AppendsUtf8AsItsWideForm)
{
    AStringBuilder builder;
    builder.append(u8string("caf\xC3\xA9 \xF0\x9F\x98\x80 \xFF"));
    EXPECT_EQ(textOf(builder), wide(u"caf\u00E9 \U0001F600 \uFFFD"));
    EXPECT_EQ(builder.getSize(), 9U) << "in code units";
}

TEST(AStringBuilder, AppendsCodeUnitsAsTheyStand)
{
    const std::wstring units = wideUnits({0xDC00, 'a', 0xD800});
    EXPECT_EQ(textOf(AStringBuilder().append(units)), units);
    EXPECT_EQ(textOf(AStringBuilder().append(units.c_str())), units);
}

TEST(AStringBuilder, AppendsItsOwnText)
{
    AStringBuilder builder;
    builder.append(L"0123456789");
    builder.append(static_cast<const astring &>(builder)).append(builder.c_str());
    EXPECT_EQ(textOf(builder), L"0123456789012345678901234567890123456789");
}

TEST(AStringBuilder, AppendsNumbersInDecimal)
{
    EXPECT_EQ(textOf(AStringBuilder().append(0)), L"0");
    EXPECT_EQ(textOf(AStringBuilder().append(1234567)), L"1234567");
    EXPECT_EQ(textOf(AStringBuilder().append(std::numeric_limits<int>::max())), L"2147483647");
    EXPECT_EQ(textOf(AStringBuilder().append(std::numeric_limits<int>::min())), L"-2147483648");
    EXPECT_EQ(textOf(AStringBuilder().append(0U)), L"0");
    EXPECT_EQ(textOf(AStringBuilder().append(4294967295U)), L"4294967295");
}

TEST(AStringBuilder, CopiesAndMovesItsText)
{
    AStringBuilder builder;
    builder.append(L"some text that is too long for the place inside a string");
    const std::wstring text = textOf(builder);
    AStringBuilder copy(builder);
    copy.append(L"!");
    EXPECT_EQ(textOf(builder), text) << "a copy has a text of its own";
    AStringBuilder moved(std::move(copy));
    EXPECT_EQ(textOf(moved), text + L"!");
    AStringBuilder assigned;
    assigned = builder;
    EXPECT_EQ(textOf(assigned), text);
    assigned = std::move(moved);
    EXPECT_EQ(textOf(assigned), text + L"!");
}

} // namespace
