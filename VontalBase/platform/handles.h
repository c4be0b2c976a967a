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

/// Closes a handle when it dies.
class OwnedHandle
{
public:
    /// Holds none.
    OwnedHandle() noexcept = default;
    OwnedHandle(const OwnedHandle &) = delete;
    OwnedHandle & operator=(const OwnedHandle &) = delete;
    ~OwnedHandle()
    {
        if (isHandle(m_handle))
            closeHandle(m_handle);
    }

    /// The handle; stays this object's.
    Handle get() const noexcept
    {
        return m_handle;
    }
    /// The place into which a call puts a handle. Nothing may be held.
    Handle & receive() noexcept
    {
        return m_handle;
    }

private:
    Handle m_handle = invalidHandle();
};

} // namespace qvplatform
