/// @internal
/// @file
/// What the system gives for an open file or the end of a pipe.
///
/// Each handle belongs to one thread at a time.
#pragma once

#include <cstdint>

namespace qvplatform
{

/// An open file or the end of a pipe. Elsewhere than on Windows it is a descriptor in the form of a pointer,
/// so that descriptor 0 cannot be told.
using Handle = void *;

/// The value of no handle; null is no handle either.
inline Handle invalidHandle() noexcept
{
    return reinterpret_cast<Handle>(std::intptr_t{-1});
}

/// Whether a value can be a handle at all.
inline bool isHandle(Handle handle) noexcept
{
    return handle != nullptr && handle != invalidHandle();
}

/// Closes a handle.
void closeHandle(Handle handle) noexcept;

} // namespace qvplatform
