#include "VontalBase/text/U8StringBuilder.h"

#include "text/wide.h"

#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using Vontal::u8string;
using Vontal::U8StringBuilder;

static_assert(!std::is_polymorphic_v<U8StringBuilder>);
static_assert(sizeof(U8StringBuilder) == sizeof(u8string), "one field");
static_assert(std::is_default_constructible_v<U8StringBuilder> &&
              std::is_copy_constructible_v<U8StringBuilder> &&
              std::is_move_constructible_v<U8StringBuilder> && std::is_copy_assignable_v<U8StringBuilder> &&
              std::is_move_assignable_v<U8StringBuilder>);
static_assert(std::is_convertible_v<U8StringBuilder, const u8string &>);
static_assert(std::is_same_v<decltype(std::declval<const U8StringBuilder &>().c_str()), const char *>);
static_assert(std::is_same_v<decltype(std::declval<const U8StringBuilder &>().getSize()), std::uint64_t>);

/// The text of a builder.
std::string textOf(const u8string & text)
{
    return text;
}

TEST(U8StringBuilder, IsEmptyAtTheStart)
{
    const U8StringBuilder builder;
    EXPECT_EQ(textOf(builder), "");
    EXPECT_EQ(builder.getSize(), 0U);
    EXPECT_STREQ(builder.c_str(), "");
}

TEST(U8StringBuilder, GivesItsTextByReferenceAndNotByCopy)
{
    U8StringBuilder builder;
    builder.append("some text that is too long for the place inside a string");
    const u8string & first = builder;
    const u8string & second = builder;
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(builder.c_str(), first.c_str());
    EXPECT_EQ(builder.getSize(), first.size());
    builder.append("!");
    EXPECT_EQ(first.back(), '!');
}

TEST(U8StringBuilder, CountsBytes)
{
    U8StringBuilder builder;
    builder.append("\xC3\xA9");
    EXPECT_EQ(builder.getSize(), 2U);
}

TEST(U8StringBuilder, ReturnsItselfFromEveryOperation)
{
    U8StringBuilder builder;
    const unsigned char bytes[] = {1};
    const std::wstring units = L"w";
    EXPECT_EQ(&builder.append(u8string("a")), &builder);
    EXPECT_EQ(&builder.append("a"), &builder);
    EXPECT_EQ(&builder.append("a", 1), &builder);
    EXPECT_EQ(&builder.append(units), &builder);
    EXPECT_EQ(&builder.append(L"w"), &builder);
    EXPECT_EQ(&builder.append(1), &builder);
    EXPECT_EQ(&builder.append(1U), &builder);
    EXPECT_EQ(&builder.append(1UL), &builder);
    EXPECT_EQ(&builder.append(std::int64_t{1}), &builder);
    EXPECT_EQ(&builder.appendEndl(), &builder);
    EXPECT_EQ(&builder.appendInAcp(std::string("a")), &builder);
    EXPECT_EQ(&builder.appendInAcp("a"), &builder);
    EXPECT_EQ(&builder.appendInAcp(units), &builder);
    EXPECT_EQ(&builder.appendInAcp(L"w"), &builder);
    EXPECT_EQ(&builder.appendInHex(1L), &builder);
    EXPECT_EQ(&builder.appendInHex(1UL), &builder);
    EXPECT_EQ(&builder.appendInHex(nullptr), &builder);
    EXPECT_EQ(&builder.appendInHex(bytes, 1), &builder);
    EXPECT_EQ(&builder.appendInHexLE(bytes, 1), &builder);
    EXPECT_EQ(textOf(builder), "aaaww1111\naaww0000000100000001"
                               "0000000000000000"
                               "0101");
}

TEST(U8StringBuilder, AppendsTextInEveryForm)
{
    const u8string withNul("a\0b", 3);
    const std::wstring wideWithNul = wideUnits({0xE9, 0, 'x'});
    U8StringBuilder builder;
    builder.append(withNul);
    EXPECT_EQ(textOf(builder), std::string("a\0b", 3)) << "all bytes of a u8string";
    builder = U8StringBuilder();
    builder.append("a\0b");
    EXPECT_EQ(textOf(builder), "a") << "up to the first NUL";
    builder = U8StringBuilder();
    builder.append("a\0b\xFF", 4);
    EXPECT_EQ(textOf(builder), std::string("a\0b\xFF", 4)) << "exactly so many bytes";
    builder.append("xyz", 0);
    EXPECT_EQ(builder.getSize(), 4U);
    builder = U8StringBuilder();
    builder.append(wideWithNul);
    EXPECT_EQ(textOf(builder), "\xC3\xA9") << "wide text, converted up to its first NUL";
    builder.append(wide(u"\u20AC\U0001F600").c_str());
    EXPECT_EQ(textOf(builder), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    builder.append(wideUnits({0xD800}).c_str());
    EXPECT_EQ(builder.getSize(), 12U);
    builder.append("").append(u8string()).append(L"").append(std::wstring());
    EXPECT_EQ(builder.getSize(), 12U);
}

TEST(U8StringBuilder, AppendsItsOwnText)
{
    U8StringBuilder builder;
    builder.append("0123456789");
    builder.append(static_cast<const u8string &>(builder));
    builder.append(builder.c_str());
    builder.append(builder.c_str() + 38, 2);
    EXPECT_EQ(textOf(builder), "0123456789012345678901234567890123456789"
                               "89");
}

/// The first bytes of a builder, as the operations for bytes take them.
const unsigned char * bytesOf(const U8StringBuilder & builder)
{
    return reinterpret_cast<const unsigned char *>(builder.c_str());
}

TEST(U8StringBuilder, AppendsItsOwnBytesInHexadecimal)
{
    U8StringBuilder builder;
    builder.append("0Az");
    builder.appendInHex(bytesOf(builder), 3);
    EXPECT_EQ(textOf(builder), "0Az30417A");
    builder.appendInHexLE(bytesOf(builder) + 1, 2);
    EXPECT_EQ(textOf(builder), "0Az30417A7A41");

    // So long that its place must move while it grows.
    builder = U8StringBuilder();
    builder.append(u8string(std::string(1000, 'A')));
    builder.appendInHex(bytesOf(builder), 1000);
    EXPECT_EQ(builder.getSize(), 3000U);
    EXPECT_EQ(textOf(builder).substr(998, 6), "AA4141");
    EXPECT_EQ(textOf(builder).substr(2996), "4141");
    builder.appendInHexLE(bytesOf(builder) + 2998, 2);
    EXPECT_EQ(textOf(builder).substr(3000), "3134");
}

TEST(U8StringBuilder, AppendsItsOwnTextInTheAnsiCodePage)
{
    U8StringBuilder builder;
    builder.append("a\x80\xE9");
    builder.appendInAcp(static_cast<const u8string &>(builder));
    EXPECT_EQ(textOf(builder), "a\x80\xE9"
                               "a\xE2\x82\xAC\xC3\xA9");
    builder = U8StringBuilder();
    builder.append("a\x80\xE9");
    builder.appendInAcp(builder.c_str() + 2);
    EXPECT_EQ(textOf(builder), "a\x80\xE9\xC3\xA9");
}

TEST(U8StringBuilder, AppendsBytesThatAreNoUtf8AsTheyStand)
{
    U8StringBuilder builder;
    builder.append("\xFF\xC0").append(u8string("\x80")).append("\xED\xA0\x80", 3);
    EXPECT_EQ(textOf(builder), "\xFF\xC0\x80\xED\xA0\x80");
}

TEST(U8StringBuilder, AppendsNumbersInDecimal)
{
    struct Row
    {
        const char * label;
        U8StringBuilder builder;
        const char * text;
    };
    const Row rows[] = {
        {"int 0", U8StringBuilder().append(0), "0"},
        {"int -1", U8StringBuilder().append(-1), "-1"},
        {"the greatest int", U8StringBuilder().append(std::numeric_limits<int>::max()), "2147483647"},
        {"the least int", U8StringBuilder().append(std::numeric_limits<int>::min()), "-2147483648"},
        {"no separators", U8StringBuilder().append(1234567), "1234567"},
        {"unsigned 0", U8StringBuilder().append(0U), "0"},
        {"the greatest unsigned", U8StringBuilder().append(4294967295U), "4294967295"},
        {"unsigned long", U8StringBuilder().append(4294967295UL), "4294967295"},
        {"ulong32", U8StringBuilder().append(Vontal::ulong32{3000000000U}), "3000000000"},
        {"int64 0", U8StringBuilder().append(std::int64_t{0}), "0"},
        {"int64 -1", U8StringBuilder().append(std::int64_t{-1}), "-1"},
        {"the greatest int64", U8StringBuilder().append(std::numeric_limits<std::int64_t>::max()),
            "9223372036854775807"},
        {"the least int64", U8StringBuilder().append(std::numeric_limits<std::int64_t>::min()),
            "-9223372036854775808"},
        {"long long", U8StringBuilder().append(-5000000000LL), "-5000000000"},
        {"long", U8StringBuilder().append(-5L), "-5"},
        {"long32", U8StringBuilder().append(Vontal::long32{-5}), "-5"},
        {"a character is a number", U8StringBuilder().append('A'), "65"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(textOf(row.builder), row.text);
    }
}

TEST(U8StringBuilder, KeepsTheLow32BitsOfAnUnsignedLong)
{
    // Where the type has 32 bits this is its greatest value, and so it is where it has 64.
    U8StringBuilder builder;
    builder.append(std::numeric_limits<unsigned long>::max());
    EXPECT_EQ(textOf(builder), "4294967295");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(std::numeric_limits<unsigned long>::max())), "FFFFFFFF");
    EXPECT_EQ(textOf(U8StringBuilder().append(static_cast<unsigned long>(0x100000005ULL))), "5");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(static_cast<unsigned long>(0x100000005ULL))), "00000005");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(static_cast<long>(0x100000005LL))), "00000005");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(static_cast<long>(-0x100000005LL))), "FFFFFFFB");
}

TEST(U8StringBuilder, AppendsOneLineFeed)
{
    U8StringBuilder builder;
    builder.append("a").appendEndl().appendEndl();
    EXPECT_EQ(textOf(builder), "a\n\n");
}

TEST(U8StringBuilder, ReadsTheAnsiCodePageInNarrowTextAlone)
{
    EXPECT_EQ(textOf(U8StringBuilder().appendInAcp("\x80 caf\xE9")), "\xE2\x82\xAC caf\xC3\xA9");
    EXPECT_EQ(textOf(U8StringBuilder().appendInAcp(std::string("\x80 caf\xE9"))), "\xE2\x82\xAC caf\xC3\xA9");
    EXPECT_EQ(textOf(U8StringBuilder().appendInAcp(std::string("a\0b", 3))), "a");
    // Kept: the wide forms do what append does, also with what the code page lacks.
    EXPECT_EQ(textOf(U8StringBuilder().appendInAcp(wide(u"\u4E2D\u0080"))), "\xE4\xB8\xAD\xC2\x80");
    EXPECT_EQ(textOf(U8StringBuilder().appendInAcp(wide(u"\u4E2D\u0080").c_str())), "\xE4\xB8\xAD\xC2\x80");
    EXPECT_EQ(textOf(U8StringBuilder().appendInAcp(wideUnits({'a', 0, 'b'}))), "a");
}

TEST(U8StringBuilder, AppendsNumbersInHexadecimalOfFullWidth)
{
    struct Row
    {
        const char * label;
        U8StringBuilder builder;
        const char * text;
    };
    const Row rows[] = {
        {"long -1", U8StringBuilder().appendInHex(-1L), "FFFFFFFF"},
        {"long 255", U8StringBuilder().appendInHex(255L), "000000FF"},
        {"long 0", U8StringBuilder().appendInHex(0L), "00000000"},
        {"long -2", U8StringBuilder().appendInHex(-2L), "FFFFFFFE"},
        {"the most significant digit first", U8StringBuilder().appendInHex(0x12345678L), "12345678"},
        {"all digits in upper case", U8StringBuilder().appendInHex(0x9ABCDEF0UL), "9ABCDEF0"},
        {"the greatest 32-bit value", U8StringBuilder().appendInHex(0xFFFFFFFFUL), "FFFFFFFF"},
        {"long32", U8StringBuilder().appendInHex(Vontal::long32{-1}), "FFFFFFFF"},
        {"ulong32", U8StringBuilder().appendInHex(Vontal::ulong32{0xCAFE}), "0000CAFE"},
        {"the least 32-bit value", U8StringBuilder().appendInHex(-2147483647L - 1L), "80000000"},
        {"int 255", U8StringBuilder().appendInHex(255), "000000FF"},
        {"int -1", U8StringBuilder().appendInHex(-1), "FFFFFFFF"},
        {"unsigned 255", U8StringBuilder().appendInHex(255U), "000000FF"},
        {"the greatest unsigned", U8StringBuilder().appendInHex(4294967295U), "FFFFFFFF"},
        {"a null pointer", U8StringBuilder().appendInHex(nullptr), "0000000000000000"},
        {"a pointer",
            U8StringBuilder().appendInHex(
                std::bit_cast<void *>(static_cast<std::uintptr_t>(0x0123456789ABCDEF))),
            "0123456789ABCDEF"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(textOf(row.builder), row.text);
    }
}

TEST(U8StringBuilder, AppendsBytesInHexadecimalInEitherOrder)
{
    const unsigned char bytes[] = {0x12, 0xAB};
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(bytes, 2)), "12AB");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHexLE(bytes, 2)), "AB12");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(bytes, 1)), "12");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHexLE(bytes, 1)), "12");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(bytes, 0).appendInHexLE(bytes, 0)), "");
    const unsigned char edges[] = {0x00, 0x0F, 0xF0, 0xFF, 0x90};
    EXPECT_EQ(textOf(U8StringBuilder().appendInHex(edges, 5)), "000FF0FF90");
    EXPECT_EQ(textOf(U8StringBuilder().appendInHexLE(edges, 5)), "90FFF00F00");
}

TEST(U8StringBuilder, CopiesAndMovesItsText)
{
    U8StringBuilder builder;
    builder.append("some text that is too long for the place inside a string");
    const u8string text = builder;
    U8StringBuilder copy(builder);
    copy.append("!");
    EXPECT_EQ(textOf(builder), text) << "a copy has a text of its own";
    U8StringBuilder moved(std::move(copy));
    EXPECT_EQ(textOf(moved), text + "!");
    U8StringBuilder assigned;
    assigned.append("before");
    assigned = builder;
    EXPECT_EQ(textOf(assigned), text);
    assigned = std::move(moved);
    EXPECT_EQ(textOf(assigned), text + "!");
}

} // namespace
