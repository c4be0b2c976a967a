#include "VontalBase/platform/posix/descriptors.h"

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace qvplatform
{

int aboveStandardStreams(int descriptor) noexcept
{
    if (descriptor < 0 || descriptor >= firstFreeDescriptor)
        return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, firstFreeDescriptor);
    ::close(descriptor);
    return moved;
}

Descriptor::~Descriptor()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

int Descriptor::release() noexcept
{
    return std::exchange(m_descriptor, -1);
}

} // namespace qvplatform
