#include "VontalBase/core/Md5Sum.h"

#include "VontalBase/core/md5bytes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qvbase
{

namespace
{

constexpr std::size_t blockSize = 64;
constexpr std::size_t digestSize = 16;
/// Where the length stands in the last block.
constexpr std::size_t lengthPlace = 56;

using Chain = std::array<std::uint32_t, 4>;

std::uint32_t readWord(const unsigned char * bytes) noexcept
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big)
        word = word >> 24 | (word >> 8 & 0xFF00U) | (word << 8 & 0xFF0000U) | word << 24;
    return word;
}

// The four functions, each in the form that waits least for its first argument, which is the one that was
// reckoned last. In the second one no bit is set in both halves, so that they may be added one by one.

struct RoundF
{
    static std::uint32_t mix(std::uint32_t sum, std::uint32_t x, std::uint32_t y, std::uint32_t z) noexcept
    {
        return sum + (z ^ (x & (y ^ z)));
    }
};

struct RoundG
{
    static std::uint32_t mix(std::uint32_t sum, std::uint32_t x, std::uint32_t y, std::uint32_t z) noexcept
    {
        return sum + (~z & y) + (z & x);
    }
};

struct RoundH
{
    static std::uint32_t mix(std::uint32_t sum, std::uint32_t x, std::uint32_t y, std::uint32_t z) noexcept
    {
        return sum + (x ^ (y ^ z));
    }
};

struct RoundI
{
    static std::uint32_t mix(std::uint32_t sum, std::uint32_t x, std::uint32_t y, std::uint32_t z) noexcept
    {
        return sum + (y ^ (x | ~z));
    }
};

template <class Round, int Shift>
inline void step(std::uint32_t & a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t word,
    std::uint32_t constant) noexcept
{
    a = b + std::rotl(Round::mix(a + word + constant, b, c, d), Shift);
}

/// Takes whole blocks.
void takeBlocks(Chain & chain, const unsigned char * bytes, std::size_t count) noexcept
{
    std::uint32_t a = chain[0];
    std::uint32_t b = chain[1];
    std::uint32_t c = chain[2];
    std::uint32_t d = chain[3];
    for (; count != 0; --count, bytes += blockSize)
    {
        const std::uint32_t oldA = a;
        const std::uint32_t oldB = b;
        const std::uint32_t oldC = c;
        const std::uint32_t oldD = d;
        const auto word = [bytes](std::size_t index)
        {
            return readWord(bytes + 4 * index);
        };
        step<RoundF, 7>(a, b, c, d, word(0), 0xD76AA478);
        step<RoundF, 12>(d, a, b, c, word(1), 0xE8C7B756);
        step<RoundF, 17>(c, d, a, b, word(2), 0x242070DB);
        step<RoundF, 22>(b, c, d, a, word(3), 0xC1BDCEEE);
        step<RoundF, 7>(a, b, c, d, word(4), 0xF57C0FAF);
        step<RoundF, 12>(d, a, b, c, word(5), 0x4787C62A);
        step<RoundF, 17>(c, d, a, b, word(6), 0xA8304613);
        step<RoundF, 22>(b, c, d, a, word(7), 0xFD469501);
        step<RoundF, 7>(a, b, c, d, word(8), 0x698098D8);
        step<RoundF, 12>(d, a, b, c, word(9), 0x8B44F7AF);
        step<RoundF, 17>(c, d, a, b, word(10), 0xFFFF5BB1);
        step<RoundF, 22>(b, c, d, a, word(11), 0x895CD7BE);
        step<RoundF, 7>(a, b, c, d, word(12), 0x6B901122);
        step<RoundF, 12>(d, a, b, c, word(13), 0xFD987193);
        step<RoundF, 17>(c, d, a, b, word(14), 0xA679438E);
        step<RoundF, 22>(b, c, d, a, word(15), 0x49B40821);
        step<RoundG, 5>(a, b, c, d, word(1), 0xF61E2562);
        step<RoundG, 9>(d, a, b, c, word(6), 0xC040B340);
        step<RoundG, 14>(c, d, a, b, word(11), 0x265E5A51);
        step<RoundG, 20>(b, c, d, a, word(0), 0xE9B6C7AA);
        step<RoundG, 5>(a, b, c, d, word(5), 0xD62F105D);
        step<RoundG, 9>(d, a, b, c, word(10), 0x02441453);
        step<RoundG, 14>(c, d, a, b, word(15), 0xD8A1E681);
        step<RoundG, 20>(b, c, d, a, word(4), 0xE7D3FBC8);
        step<RoundG, 5>(a, b, c, d, word(9), 0x21E1CDE6);
        step<RoundG, 9>(d, a, b, c, word(14), 0xC33707D6);
        step<RoundG, 14>(c, d, a, b, word(3), 0xF4D50D87);
        step<RoundG, 20>(b, c, d, a, word(8), 0x455A14ED);
        step<RoundG, 5>(a, b, c, d, word(13), 0xA9E3E905);
        step<RoundG, 9>(d, a, b, c, word(2), 0xFCEFA3F8);
        step<RoundG, 14>(c, d, a, b, word(7), 0x676F02D9);
        step<RoundG, 20>(b, c, d, a, word(12), 0x8D2A4C8A);
        step<RoundH, 4>(a, b, c, d, word(5), 0xFFFA3942);
        step<RoundH, 11>(d, a, b, c, word(8), 0x8771F681);
        step<RoundH, 16>(c, d, a, b, word(11), 0x6D9D6122);
        step<RoundH, 23>(b, c, d, a, word(14), 0xFDE5380C);
        step<RoundH, 4>(a, b, c, d, word(1), 0xA4BEEA44);
        step<RoundH, 11>(d, a, b, c, word(4), 0x4BDECFA9);
        step<RoundH, 16>(c, d, a, b, word(7), 0xF6BB4B60);
        step<RoundH, 23>(b, c, d, a, word(10), 0xBEBFBC70);
        step<RoundH, 4>(a, b, c, d, word(13), 0x289B7EC6);
        step<RoundH, 11>(d, a, b, c, word(0), 0xEAA127FA);
        step<RoundH, 16>(c, d, a, b, word(3), 0xD4EF3085);
        step<RoundH, 23>(b, c, d, a, word(6), 0x04881D05);
        step<RoundH, 4>(a, b, c, d, word(9), 0xD9D4D039);
        step<RoundH, 11>(d, a, b, c, word(12), 0xE6DB99E5);
        step<RoundH, 16>(c, d, a, b, word(15), 0x1FA27CF8);
        step<RoundH, 23>(b, c, d, a, word(2), 0xC4AC5665);
        step<RoundI, 6>(a, b, c, d, word(0), 0xF4292244);
        step<RoundI, 10>(d, a, b, c, word(7), 0x432AFF97);
        step<RoundI, 15>(c, d, a, b, word(14), 0xAB9423A7);
        step<RoundI, 21>(b, c, d, a, word(5), 0xFC93A039);
        step<RoundI, 6>(a, b, c, d, word(12), 0x655B59C3);
        step<RoundI, 10>(d, a, b, c, word(3), 0x8F0CCC92);
        step<RoundI, 15>(c, d, a, b, word(10), 0xFFEFF47D);
        step<RoundI, 21>(b, c, d, a, word(1), 0x85845DD1);
        step<RoundI, 6>(a, b, c, d, word(8), 0x6FA87E4F);
        step<RoundI, 10>(d, a, b, c, word(15), 0xFE2CE6E0);
        step<RoundI, 15>(c, d, a, b, word(6), 0xA3014314);
        step<RoundI, 21>(b, c, d, a, word(13), 0x4E0811A1);
        step<RoundI, 6>(a, b, c, d, word(4), 0xF7537E82);
        step<RoundI, 10>(d, a, b, c, word(11), 0xBD3AF235);
        step<RoundI, 15>(c, d, a, b, word(2), 0x2AD7D2BB);
        step<RoundI, 21>(b, c, d, a, word(9), 0xEB86D391);
        a += oldA;
        b += oldB;
        c += oldC;
        d += oldD;
    }
    chain = {a, b, c, d};
}

} // namespace

struct Md5Context
{
    std::uint64_t bits = 0;
    Chain chain = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    std::array<unsigned char, blockSize> block{};

    std::size_t fill() const noexcept
    {
        return static_cast<std::size_t>(bits / 8 % blockSize);
    }

    void add(const unsigned char * data, std::size_t size) noexcept
    {
        if (size == 0)
            return;
        const std::size_t filled = fill();
        bits += std::uint64_t{size} * 8;
        if (filled != 0)
        {
            const std::size_t count = std::min(size, blockSize - filled);
            std::memcpy(block.data() + filled, data, count);
            data += count;
            size -= count;
            if (filled + count < blockSize)
                return;
            takeBlocks(chain, block.data(), 1);
        }
        takeBlocks(chain, data, size / blockSize);
        std::memcpy(block.data(), data + size / blockSize * blockSize, size % blockSize);
    }

    void pad() noexcept
    {
        constexpr std::array<unsigned char, blockSize> padding = {0x80};
        const std::uint64_t length = bits;
        const std::size_t filled = fill();
        add(padding.data(), (filled < lengthPlace ? lengthPlace : blockSize + lengthPlace) - filled);
        std::array<unsigned char, 8> lengthBytes;
        for (std::size_t i = 0; i < lengthBytes.size(); ++i)
            lengthBytes[i] = static_cast<unsigned char>(length >> (8 * i));
        add(lengthBytes.data(), lengthBytes.size());
    }
};

Md5Sum::Md5Sum() : m_context(new Md5Context)
{
}

Md5Sum::~Md5Sum()
{
    delete m_context;
}

void Md5Sum::add(const std::string & data) noexcept
{
    const std::string_view bytes = bytesToDigest(data);
    m_context->add(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
}

void Md5Sum::add(unsigned char * data, unsigned int size) noexcept
{
    m_context->add(data, size);
}

void Md5Sum::finish(std::string & out)
{
    constexpr char digits[] = "0123456789abcdef";
    m_context->pad();
    std::array<char, 2 * digestSize> text;
    for (std::size_t i = 0; i < digestSize; ++i)
    {
        const std::uint32_t byte = m_context->chain[i / 4] >> (8 * (i % 4)) & 0xFF;
        text[2 * i] = digits[byte / 16];
        text[2 * i + 1] = digits[byte % 16];
    }
    out.append(text.data(), text.size());
}

} // namespace qvbase
