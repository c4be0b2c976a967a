#include "VontalBase/platform/handles.h"

#include "VontalBase/platform/windows/windows_headers.h"

namespace qvplatform
{

void closeHandle(Handle handle) noexcept
{
    CloseHandle(handle);
}

} // namespace qvplatform
