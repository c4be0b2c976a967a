#include "VontalBase/platform/handles.h"

#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

void closeHandle(Handle handle) noexcept
{
    CloseHandle(handle);
}

} // namespace qvplatform
