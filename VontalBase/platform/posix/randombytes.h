/// @internal
/// @file
/// Random bytes from the kernel.
#pragma once

#include "VontalBase/platform/gates.h"

#include <cerrno>
#include <cstddef>
#include <sys/random.h>

namespace qvplatform
{

/// Fills a buffer with random bytes. @return false where the kernel refuses.
inline bool fillRandom(void * buffer, std::size_t size) noexcept
{
    unsigned char * next = static_cast<unsigned char *>(buffer);
    while (size != 0)
    {
        const GateAnswer answer = passGate("random bytes");
        if (answer == GateAnswer::Fail)
            return false;
        if (answer == GateAnswer::Interrupt)
            continue;
        const ssize_t count = getrandom(next, answer == GateAnswer::CutShort ? 1 : size, 0);
        if (count < 0)
        {
            if (errno != EINTR)
                return false;
            continue;
        }
        next += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace qvplatform
