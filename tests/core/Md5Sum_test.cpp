#include "VontalBase/core/Md5Sum.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <type_traits>

namespace
{

using qvbase::Md5Sum;

static_assert(std::has_virtual_destructor_v<Md5Sum>);
static_assert(sizeof(Md5Sum) == 2 * sizeof(void *));
static_assert(std::is_copy_constructible_v<Md5Sum>);
static_assert(std::is_copy_assignable_v<Md5Sum>);

std::string digestOf(const std::string & bytes)
{
    Md5Sum sum;
    sum.add(bytes);
    std::string out;
    sum.finish(out);
    return out;
}

/// `bytes` and what MD5 puts behind them.
std::string padded(std::string bytes)
{
    const std::uint64_t bits = bytes.size() * 8;
    bytes += '\x80';
    while (bytes.size() % 64 != 56)
        bytes += '\0';
    for (int i = 0; i < 8; ++i)
        bytes += static_cast<char>(bits >> (8 * i) & 0xFF);
    return bytes;
}

/// MD5 as it was published, with its table reckoned from the sine and a number at a time.
std::string slowDigestOf(const std::string & bytes)
{
    constexpr int shifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    constexpr int factors[4] = {1, 5, 3, 7};
    constexpr int offsets[4] = {0, 1, 5, 0};
    std::uint64_t state[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    constexpr std::uint64_t modulus = 0x100000000;
    const std::string all = padded(bytes);
    for (std::size_t block = 0; block < all.size(); block += 64)
    {
        std::uint64_t words[16] = {};
        for (std::size_t i = 0; i < 64; ++i)
        {
            const std::uint64_t byte = static_cast<unsigned char>(all[block + i]);
            words[i / 4] += byte << (8 * (i % 4));
        }
        std::uint64_t a = state[0];
        std::uint64_t b = state[1];
        std::uint64_t c = state[2];
        std::uint64_t d = state[3];
        for (int i = 0; i < 64; ++i)
        {
            const int round = i / 16;
            const std::uint64_t notB = modulus - 1 - b;
            const std::uint64_t notD = modulus - 1 - d;
            const std::uint64_t mixed[4] = {
                (b & c) | (notB & d), (b & d) | (c & notD), b ^ c ^ d, c ^ (b | notD)};
            const auto sine =
                static_cast<std::uint64_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 4294967296.0));
            const std::uint64_t sum =
                (a + mixed[round] + sine + words[(factors[round] * i + offsets[round]) % 16]) % modulus;
            const int shift = shifts[round][i % 4];
            const std::uint64_t rotated = (sum << shift) % modulus + (sum >> (32 - shift));
            a = d;
            d = c;
            c = b;
            b = (b + rotated) % modulus;
        }
        state[0] = (state[0] + a) % modulus;
        state[1] = (state[1] + b) % modulus;
        state[2] = (state[2] + c) % modulus;
        state[3] = (state[3] + d) % modulus;
    }
    std::string out;
    for (const std::uint64_t word : state)
    {
        for (int i = 0; i < 4; ++i)
        {
            const std::uint64_t byte = word >> (8 * i) & 0xFF;
            out += "0123456789abcdef"[byte / 16];
            out += "0123456789abcdef"[byte % 16];
        }
    }
    return out;
}

/// Bytes of every value, in no simple order.
std::string someBytes(std::size_t size)
{
    std::string bytes;
    std::uint32_t number = 1;
    while (bytes.size() < size)
    {
        number = number * 1103515245 + 12345;
        bytes += static_cast<char>(number >> 16 & 0xFF);
    }
    return bytes;
}

const struct
{
    const char * text;
    const char * digest;
} published[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
        "57edf4a22be3c955ac49da2e2107b67a"},
};

TEST(Md5Sum, GivesThePublishedDigests)
{
    for (const auto & row : published)
        EXPECT_EQ(digestOf(row.text), row.digest) << row.text;
}

TEST(Md5Sum, IsHeldAgainstASlowOneThatGivesThePublishedDigests)
{
    for (const auto & row : published)
        EXPECT_EQ(slowDigestOf(row.text), row.digest) << row.text;
}

TEST(Md5Sum, GivesADigestForEveryLengthRoundTheBlocks)
{
    const std::string bytes = someBytes(400);
    for (std::size_t size = 0; size <= bytes.size(); ++size)
        ASSERT_EQ(digestOf(bytes.substr(0, size)), slowDigestOf(bytes.substr(0, size))) << size;
}

TEST(Md5Sum, GivesTheSameDigestHoweverTheBytesAreCut)
{
    const std::string bytes = someBytes(200);
    const std::string expected = slowDigestOf(bytes);
    for (std::size_t first = 0; first <= bytes.size(); ++first)
    {
        for (std::size_t second = first; second <= bytes.size(); second += 7)
        {
            Md5Sum sum;
            sum.add(bytes.substr(0, first));
            sum.add(bytes.substr(first, second - first));
            sum.add(bytes.substr(second));
            std::string out;
            sum.finish(out);
            ASSERT_EQ(out, expected) << first << ' ' << second;
        }
    }
}

TEST(Md5Sum, TakesBytesByTheirAddressAsWell)
{
    std::string bytes = someBytes(1000);
    Md5Sum sum;
    sum.add(reinterpret_cast<unsigned char *>(bytes.data()), 999);
    sum.add(nullptr, 0);
    sum.add(reinterpret_cast<unsigned char *>(bytes.data()) + 999, 1);
    std::string out;
    sum.finish(out);
    EXPECT_EQ(out, slowDigestOf(bytes));
}

TEST(Md5Sum, AppendsTheDigestToWhatIsThere)
{
    Md5Sum sum;
    std::string out = "before ";
    sum.finish(out);
    EXPECT_EQ(out, "before d41d8cd98f00b204e9800998ecf8427e");
}

TEST(Md5Sum, TakesZeroBytesOfAText)
{
    EXPECT_EQ(digestOf(std::string("a\0b", 3)), slowDigestOf(std::string("a\0b", 3)));
    EXPECT_NE(digestOf(std::string("a\0b", 3)), digestOf("a"));
}

TEST(Md5Sum, KeepsSharingItsStateWithCopies)
{
    Md5Sum sum;
    // Never destroyed, since both would free the state.
    alignas(Md5Sum) std::byte storage[sizeof(Md5Sum)];
    Md5Sum * const copy = ::new (storage) Md5Sum(sum);
    copy->add("a");
    std::string out;
    sum.finish(out);
    EXPECT_EQ(out, "0cc175b9c0f1b6a831c399e269772661");
}

TEST(Md5Sum, KeepsItsPaddedStateAfterTheDigest)
{
    for (const std::size_t size :
        {std::size_t{0}, std::size_t{5}, std::size_t{55}, std::size_t{56}, std::size_t{64}})
    {
        const std::string bytes = someBytes(size);
        Md5Sum sum;
        sum.add(bytes);
        std::string first;
        sum.finish(first);
        sum.add("more");
        std::string second;
        sum.finish(second);
        EXPECT_EQ(second, slowDigestOf(padded(bytes) + "more")) << size;
    }
}

TEST(Md5Sum, CountsMoreBitsThan32)
{
    // 513 MiB of "a"; the digest is that of another program, md5sum.
    const std::string block(std::size_t{1} << 20, 'a');
    Md5Sum sum;
    for (int i = 0; i < 513; ++i)
        sum.add(block);
    std::string out;
    sum.finish(out);
    EXPECT_EQ(out, "f0abebcac19eb4914e7cb04084dd54a6");
}

} // namespace
