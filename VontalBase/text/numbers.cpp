#include "VontalBase/text/numbers.h"

#include "VontalBase/text/numberscan.h"

#include <string_view>

namespace Vontal
{

namespace
{

template <class Char>
unsigned int scanLeadingDigits(std::basic_string_view<Char> text) noexcept
{
    unsigned int accumulator = 0;
    for (const Char c : text)
    {
        if (!isDecimalDigit(c))
            break;
        accumulator = pushDigit(accumulator, c);
    }
    return accumulator;
}

template <class Char>
double scanReal(std::basic_string_view<Char> text) noexcept
{
    double value = 0.0;
    double scale = 0.1;
    bool negative = false;
    bool inFraction = false;
    for (const Char c : text)
    {
        if (isDecimalDigit(c))
        {
            const double digit = static_cast<double>(c - Char('0'));
            if (inFraction)
            {
                value += digit * scale;
                scale /= 10.0;
                continue;
            }
            // It never falls, not even when it becomes infinite, so there is no overflow to notice.
            value = digit + value * 10.0;
        }
        else if ((c == Char(',') || c == Char('.')) && !inFraction)
        {
            inFraction = true;
        }
        else if (c == Char('-') && !inFraction)
        {
            negative = !negative;
        }
        else
        {
            break;
        }
    }
    return negative ? value * -1.0 : value;
}

} // namespace

int string2Int(const std::string & text, bool & ok)
{
    return scanInteger<int>(std::string_view(text), ok);
}

int string2Int(const std::wstring & text, bool & ok)
{
    return scanInteger<int>(std::wstring_view(text), ok);
}

std::int64_t string2Int64(const std::string & text, bool & ok)
{
    return scanInteger<std::int64_t>(std::string_view(text), ok);
}

std::int64_t string2Int64(const std::wstring & text, bool & ok)
{
    return scanInteger<std::int64_t>(std::wstring_view(text), ok);
}

unsigned int string2UInt(const std::string & text)
{
    return scanLeadingDigits(std::string_view(text));
}

unsigned int string2UInt(const std::wstring & text)
{
    return scanLeadingDigits(std::wstring_view(text));
}

ulong32 string2ULong(const std::string & text, bool & ok)
{
    return scanInteger<ulong32>(std::string_view(text), ok);
}

ulong32 string2ULong(const std::wstring & text, bool & ok)
{
    return scanInteger<ulong32>(std::wstring_view(text), ok);
}

double string2double(const std::string & text, bool & ok)
{
    // Kept: the flag is false for good text as well; callers must not test it.
    ok = false;
    return scanReal(std::string_view(text));
}

double string2double(const std::wstring & text, bool & ok)
{
    // Kept: as in the narrow form.
    ok = false;
    return scanReal(std::wstring_view(text));
}

} // namespace Vontal
