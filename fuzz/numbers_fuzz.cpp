/// Any text as a number: the readers give what a second, slow statement of their rules gives, and the narrow
/// and wide forms agree.

#include "VontalBase/text/numbers.h"

#include "require.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using fuzzing::require;

/// A number of so many bits in limbs of 16, the lowest first. It wraps because it has no more limbs.
class Limbs
{
public:
    explicit Limbs(std::size_t bits) : m_limbs(bits / 16, 0)
    {
    }

    void timesTenPlus(unsigned int digit)
    {
        std::uint32_t carry = digit;
        for (std::uint32_t & limb : m_limbs)
        {
            const std::uint32_t value = limb * 10 + carry;
            limb = value % 65536;
            carry = value / 65536;
        }
    }

    bool isNegative() const
    {
        return m_limbs.back() >= 32768;
    }

    /// From the highest limb down, as numbers without a sign.
    bool isBelow(const Limbs & other) const
    {
        for (std::size_t i = m_limbs.size(); i != 0; --i)
        {
            if (m_limbs[i - 1] != other.m_limbs[i - 1])
                return m_limbs[i - 1] < other.m_limbs[i - 1];
        }
        return false;
    }

    std::uint64_t value() const
    {
        std::uint64_t value = 0;
        for (std::size_t i = m_limbs.size(); i != 0; --i)
            value = value * 65536 + m_limbs[i - 1];
        return value;
    }

private:
    std::vector<std::uint32_t> m_limbs;
};

struct Result
{
    std::uint64_t magnitude;
    bool negative;
    bool ok;
};

enum class Signs
{
    None,
    Leading
};

bool isDigit(char c)
{
    return std::string("0123456789").find(c) != std::string::npos;
}

/// The rules of the readers with a flag.
Result readInteger(const std::string & text, std::size_t bits, Signs signs)
{
    std::size_t at = 0;
    if (signs == Signs::Leading)
    {
        while (at < text.size() && text[at] == '-')
            ++at;
    }
    const bool negative = at % 2 == 1;
    const std::size_t firstDigit = at;
    Limbs accumulator(bits);
    while (at < text.size() && isDigit(text[at]))
    {
        Limbs next = accumulator;
        next.timesTenPlus(static_cast<unsigned int>(text[at] - '0'));
        // The accumulator itself is never negative: whatever would make it so is below it.
        const bool isBelow = (signs == Signs::Leading && next.isNegative()) || next.isBelow(accumulator);
        if (isBelow)
            return {accumulator.value(), negative, false};
        accumulator = next;
        ++at;
    }
    return {accumulator.value(), negative, at == text.size() && at != firstDigit};
}

std::uint32_t readLeadingDigits(const std::string & text)
{
    Limbs accumulator(32);
    for (std::size_t at = 0; at < text.size() && isDigit(text[at]); ++at)
        accumulator.timesTenPlus(static_cast<unsigned int>(text[at] - '0'));
    return static_cast<std::uint32_t>(accumulator.value());
}

/// The rules of the reader of real numbers: the text is taken apart first, and only then reckoned.
double readReal(const std::string & text)
{
    std::string whole;
    std::string fraction;
    bool negative = false;
    std::size_t at = 0;
    for (; at < text.size() && (isDigit(text[at]) || text[at] == '-'); ++at)
    {
        if (text[at] == '-')
            negative = !negative;
        else
            whole += text[at];
    }
    if (at < text.size() && (text[at] == '.' || text[at] == ','))
    {
        for (++at; at < text.size() && isDigit(text[at]); ++at)
            fraction += text[at];
    }

    double value = 0.0;
    for (const char digit : whole)
        value = (digit - '0') + value * 10.0;
    double scale = 0.1;
    for (const char digit : fraction)
    {
        value += (digit - '0') * scale;
        scale /= 10.0;
    }
    return negative ? value * -1.0 : value;
}

/// The value in two's complement of 64 bits.
std::uint64_t signedBits(const Result & result)
{
    return result.negative ? ~result.magnitude + 1 : result.magnitude;
}

bool isSame(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

template <class Text>
void check(const std::string & plain, const Text & text)
{
    bool ok = false;
    const Result asInt = readInteger(plain, 32, Signs::Leading);
    const std::int64_t number = Vontal::string2Int(text, ok);
    require(static_cast<std::uint64_t>(number) == signedBits(asInt) && ok == asInt.ok);

    const Result asInt64 = readInteger(plain, 64, Signs::Leading);
    const std::int64_t number64 = Vontal::string2Int64(text, ok);
    require(static_cast<std::uint64_t>(number64) == signedBits(asInt64) && ok == asInt64.ok);

    const Result asULong = readInteger(plain, 32, Signs::None);
    require(Vontal::string2ULong(text, ok) == asULong.magnitude && ok == asULong.ok);

    require(Vontal::string2UInt(text) == readLeadingDigits(plain));

    ok = true;
    require(isSame(Vontal::string2double(text, ok), readReal(plain)) && !ok);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string text(data, data + size);
    check(text, text);
    check(text, std::wstring(data, data + size));
    return 0;
}
