#include "VontalBase/platform/handles.h"

#include "VontalBase/platform/windows/windows_headers.h"

namespace platform
{

void closeHandle(Handle handle) noexcept
{
    CloseHandle(handle);
}

} // namespace platform
