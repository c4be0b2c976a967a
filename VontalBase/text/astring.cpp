#include "VontalBase/text/astring.h"

#include "VontalBase/text/numbers.h"

namespace Vontal
{

unsigned int astring::toUInt() const
{
    return string2UInt(*this);
}

double astring::toDouble(bool & ok) const
{
    return string2double(*this, ok);
}

double astring::toDouble() const
{
    bool ignored = false;
    return toDouble(ignored);
}

} // namespace Vontal
