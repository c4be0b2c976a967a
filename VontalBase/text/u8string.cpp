#include "VontalBase/text/u8string.h"

#include "VontalBase/text/astring.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/numbers.h"

namespace Vontal
{

u8string::u8string(const wchar_t * text)
{
    c_u16u8(*this, text);
}

unsigned int u8string::toUInt() const
{
    return string2UInt(*this);
}

ulong32 u8string::toULong(bool & ok) const
{
    return string2ULong(*this, ok);
}

double u8string::toDouble(bool & ok) const
{
    return string2double(*this, ok);
}

double u8string::toDouble() const
{
    bool ignored = false;
    return toDouble(ignored);
}

astring u8string::toAstring() const
{
    astring wide;
    c_u8u16(wide, c_str());
    return wide;
}

} // namespace Vontal
