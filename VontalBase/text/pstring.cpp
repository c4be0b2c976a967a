#include "VontalBase/text/pstring.h"

#include "VontalBase/text/conversions.h"
#include "VontalBase/text/u8string.h"

namespace Vontal
{

static_assert(sizeof(pstring) == sizeof(std::wstring), "a path adds nothing to its base");

pstring::pstring(const u8string & text)
{
    c_u8u16(*this, text.c_str());
}

} // namespace Vontal
