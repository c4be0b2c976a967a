/// @internal
/// @file
/// Asking a COM object for its interfaces.
#pragma once

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"

namespace qvplatform
{

/// Another interface of an object; null where it has none, or where there is no object.
template <class Interface>
qvbase::ReferenceMSCom<Interface> queryFor(IUnknown * object)
{
    qvbase::ReferenceMSCom<Interface> queried;
    void * found = nullptr;
    if (object != nullptr && SUCCEEDED(object->QueryInterface(idOf<Interface>(), &found)))
        *queried.receive() = static_cast<Interface *>(found);
    return queried;
}

} // namespace qvplatform
