/// @internal
/// @file
/// What deflating and inflating have in common.
#pragma once

#include <cstddef>
#include <new>
#include <zlib.h>

namespace zip
{

/// The largest window, and no header round the stream.
constexpr int rawWindowBits = -15;

/// Has a stream take its memory as everything else of ours does.
inline void useOwnMemory(z_stream & stream) noexcept
{
    stream.zalloc = [](void *, unsigned int count, unsigned int size) -> void *
    {
        return ::operator new (std::size_t{count} * size, std::nothrow);
    };
    stream.zfree = [](void *, void * block)
    {
        ::operator delete(block);
    };
}

} // namespace zip
