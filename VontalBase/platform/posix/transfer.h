/// @internal
/// @file
/// Reading and writing whole pieces, however often the kernel takes a part of them.
#pragma once

#include "VontalBase/platform/gates.h"

#include <cerrno>
#include <cstddef>
#include <sys/types.h>

namespace qvplatform
{

/// One call of the system for a piece, again and again until none of it is left.
///
/// @param transfer takes the place of the piece and its size, gives what `read` and `write` give.
/// @return how much was done before the system refused, or gave nothing; `hasFailed` tells which.
template <class Transfer>
std::size_t transferAll(const char * service, std::size_t size, bool & hasFailed, Transfer transfer) noexcept
{
    GateAnswer answer = passGate(service);
    hasFailed = answer == GateAnswer::Fail;
    std::size_t done = 0;
    while (done < size && !hasFailed)
    {
        const std::size_t left = size - done;
        const bool isInterrupted = answer == GateAnswer::Interrupt;
        const ssize_t count =
            isInterrupted ? -1 : transfer(done, answer == GateAnswer::CutShort ? (left + 1) / 2 : left);
        answer = GateAnswer::Pass;
        if (count == 0)
            break;
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else
            hasFailed = !isInterrupted && errno != EINTR;
    }
    return done;
}

} // namespace qvplatform
