/// @internal
/// @file
/// Memory for the nodes of one parse.
///
/// Nodes lie one behind the other in chunks, in the order of the text. Each chunk counts who still uses it,
/// and is freed with the last; so a node that outlives its tree keeps its chunk, which is of a bounded
/// size. The counts are atomic, because parts of a tree may end up in different threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VONTALBASE_POISONS_DEAD_NODES
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VONTALBASE_POISONS_DEAD_NODES
#endif
#if defined(VONTALBASE_POISONS_DEAD_NODES)
#include <sanitizer/asan_interface.h>
#endif

namespace qvjson
{

/// The head of a chunk; the memory lies behind it.
struct alignas(std::max_align_t) NodeChunk
{
    std::atomic<std::uint32_t> users;
};

/// What memory of an arena is aligned to and counted in.
constexpr std::size_t arenaUnit = 8;

/// Memory within a chunk.
struct ArenaPlace
{
    void * memory;
    /// How far `memory` lies behind the head of its chunk, in units of eight bytes; never 0.
    std::uint16_t place;
};

/// Hands out memory, chunk after chunk. It belongs to one thread.
class NodeArena
{
public:
    /// More than this is not to be asked for.
    static constexpr std::size_t largestRequest = 4096;

    NodeArena() = default;
    NodeArena(const NodeArena &) = delete;
    NodeArena & operator=(const NodeArena &) = delete;
    ~NodeArena()
    {
        retire();
    }

    /// Memory for one user, who gives it back by `leaveChunk`. It is aligned for pointers. `std::bad_alloc`
    /// may leave it.
    ArenaPlace allocate(std::size_t bytes)
    {
        const std::uint32_t rounded = static_cast<std::uint32_t>((bytes + arenaUnit - 1) & ~(arenaUnit - 1));
        if (m_capacity - m_fill < rounded)
            openChunk(rounded);
        const std::uint32_t offset = m_fill;
        m_fill += rounded;
        ++m_users;
        return {
            reinterpret_cast<std::byte *>(m_chunk) + offset, static_cast<std::uint16_t>(offset / arenaUnit)};
    }

private:
    void openChunk(std::size_t request);
    void retire() noexcept;

    NodeChunk * m_chunk = nullptr;
    std::uint32_t m_fill = 0;
    std::uint32_t m_capacity = 0;
    /// Users of the open chunk. Its own count holds a large number until it is retired.
    std::uint32_t m_users = 0;
};

/// Gives back the memory of `count` users of one chunk.
void leaveChunk(NodeChunk * chunk, std::uint32_t count) noexcept;

/// Marks memory of an arena as given back though its chunk lives on, so that an address checker finds whoever
/// still uses it. Without one it does nothing.
inline void markDead([[maybe_unused]] void * memory, [[maybe_unused]] std::size_t bytes) noexcept
{
#if defined(VONTALBASE_POISONS_DEAD_NODES)
    __asan_poison_memory_region(memory, bytes);
#endif
}

/// The chunk of some memory that an arena handed out.
inline NodeChunk * chunkOf(void * memory, std::uint16_t place) noexcept
{
    return reinterpret_cast<NodeChunk *>(static_cast<std::byte *>(memory) - place * arenaUnit);
}

} // namespace qvjson
