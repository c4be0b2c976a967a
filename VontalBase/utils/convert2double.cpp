#include "VontalBase/utils/convert2double.h"

#include "VontalBase/text/numberscan.h"

namespace qvutils
{

unsigned int convert2double(const char * text, double & value) noexcept
{
    if (text == nullptr)
        return 0;
    enum class Mode
    {
        Integer,
        Fraction,
        Stopped
    };
    Mode mode = Mode::Integer;
    double number = 0.0;
    double scale = 1.0;
    double sign = 1.0;
    unsigned int count = 0;
    for (; *text != '\0' && mode != Mode::Stopped; ++text)
    {
        ++count;
        const char c = *text;
        if (c == ',' || c == '.')
        {
            mode = Mode::Fraction;
        }
        else if (c == '-')
        {
            // Kept: at any position, any number of times.
            sign = -sign;
        }
        else if (!Vontal::isDecimalDigit(c))
        {
            // Kept: this character has been counted.
            mode = Mode::Stopped;
        }
        else if (mode == Mode::Integer)
        {
            number = number * 10.0 + (c - '0');
        }
        else
        {
            scale /= 10.0;
            number += (c - '0') * scale;
        }
    }
    value = sign * number;
    return count;
}

} // namespace qvutils
