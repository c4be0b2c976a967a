#include "VontalBase/platform/posix/xmlclasses.h"

namespace platform
{

IUnknown * makeXmlWriter() noexcept
{
    return nullptr;
}
IUnknown * makeXmlReader() noexcept
{
    return nullptr;
}

} // namespace platform
