#include "VontalBase/platform/handles.h"

#include "VontalBase/platform/posix/descriptors.h"

#include <unistd.h>

namespace qvplatform
{

void closeHandle(Handle handle) noexcept
{
    ::close(descriptorOf(handle));
}

} // namespace qvplatform
