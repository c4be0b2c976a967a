/// @internal
/// @file
/// Descriptors, and how they are handles.
#pragma once

#include "VontalBase/platform/handles.h"

namespace qvplatform
{

/// The first descriptor that is no standard stream.
constexpr int firstFreeDescriptor = 3;

inline int descriptorOf(Handle handle) noexcept
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

inline Handle handleOf(int descriptor) noexcept
{
    return reinterpret_cast<Handle>(static_cast<std::intptr_t>(descriptor));
}

/// Gives a descriptor a number behind those of the standard streams, where the program does not have them: a
/// child that gets one of them as another stream would lose it, and 0 is no handle.
/// @param descriptor is taken over; -1 comes back as it is.
/// @return the descriptor, or -1 where the system refuses.
int aboveStandardStreams(int descriptor) noexcept;

/// A descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) noexcept : m_descriptor(descriptor)
    {
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor & operator=(const Descriptor &) = delete;
    ~Descriptor();

    [[nodiscard]] bool isOpen() const noexcept
    {
        return m_descriptor >= 0;
    }
    [[nodiscard]] int get() const noexcept
    {
        return m_descriptor;
    }
    /// Gives it up to the caller.
    int release() noexcept;

private:
    int m_descriptor;
};

} // namespace qvplatform
