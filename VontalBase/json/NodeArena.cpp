#include "VontalBase/json/NodeArena.h"

#include <algorithm>
#include <new>

namespace qvjson
{

namespace
{

constexpr std::uint32_t smallestChunk = 1024;
constexpr std::uint32_t largestChunk = 65536;
static_assert(sizeof(NodeChunk) + NodeArena::largestRequest <= largestChunk);

/// More users than a chunk can ever have.
constexpr std::uint32_t usersOfOpenChunk = 1U << 30;

} // namespace

void NodeArena::openChunk(std::size_t request)
{
    const std::uint32_t needed = static_cast<std::uint32_t>(sizeof(NodeChunk) + request);
    const std::uint32_t usual = std::clamp(2 * m_capacity, smallestChunk, largestChunk);
    const std::uint32_t capacity = std::max(usual, needed);
    void * const memory = ::operator new(capacity);
    retire();
    m_chunk = ::new (memory) NodeChunk{usersOfOpenChunk};
    m_capacity = capacity;
    m_fill = sizeof(NodeChunk);
}

void NodeArena::retire() noexcept
{
    if (m_chunk != nullptr)
        leaveChunk(m_chunk, usersOfOpenChunk - m_users);
    m_chunk = nullptr;
    m_users = 0;
}

void leaveChunk(NodeChunk * chunk, std::uint32_t count) noexcept
{
    if (chunk->users.fetch_sub(count, std::memory_order_acq_rel) == count)
        ::operator delete(chunk);
}

} // namespace qvjson
