/// @internal
/// @file
/// What a handle of a memory block stands for.
#pragma once

#include <cstddef>

namespace qvplatform
{

/// Bytes that can grow.
class Block
{
public:
    Block() noexcept = default;
    Block(const Block &) = delete;
    Block & operator=(const Block &) = delete;
    ~Block();

    /// Keeps the bytes up to the smaller of both sizes; new ones are not set.
    /// @return false, with nothing changed, where memory is short.
    bool resize(std::size_t size) noexcept;

    [[nodiscard]] unsigned char * bytes() const noexcept
    {
        return m_bytes;
    }
    [[nodiscard]] std::size_t size() const noexcept
    {
        return m_size;
    }
    void * lock() noexcept
    {
        ++m_locks;
        return m_bytes;
    }
    /// Whether it is still locked.
    bool unlock() noexcept
    {
        return m_locks != 0 && --m_locks != 0;
    }

private:
    unsigned char * m_bytes = nullptr;
    std::size_t m_size = 0;
    unsigned int m_locks = 0;
};

} // namespace qvplatform
