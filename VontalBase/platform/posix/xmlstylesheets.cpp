#include "VontalBase/platform/posix/xmlstylesheets.h"

namespace platform
{

HRESULT transformInto(const NodePlace &, IXMLDOMNode *, const VARIANT &) noexcept
{
    return E_NOTIMPL;
}

} // namespace platform
