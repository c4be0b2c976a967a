/// @internal
/// @file
/// The scanner's stack of open brackets.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace qvjson
{

/// What an open bracket was.
enum class Mode : unsigned char
{
    Array,
    Object
};

/// One byte for each open bracket, on the heap, so that depth costs no stack.
class ModeStack
{
public:
    /// Takes the first memory. @return false if there is none.
    bool open() noexcept
    {
        return resize(256);
    }

    bool empty() const noexcept
    {
        return m_fill == 0;
    }
    /// The innermost bracket; there must be one.
    Mode top() const noexcept
    {
        return m_modes[m_fill - 1];
    }
    /// @return false if there is no memory for it.
    bool push(Mode mode) noexcept
    {
        if (m_fill == m_capacity && !resize(2 * m_capacity))
            return false;
        m_modes[m_fill++] = mode;
        return true;
    }
    /// Takes the innermost bracket off. @return false if there is none, or if it is not `mode`.
    bool pop(Mode mode) noexcept
    {
        return m_fill != 0 && m_modes[--m_fill] == mode;
    }

private:
    bool resize(std::size_t capacity) noexcept
    {
        std::unique_ptr<Mode[]> larger(new (std::nothrow) Mode[capacity]);
        if (!larger)
            return false;
        if (m_fill != 0)
            std::memcpy(larger.get(), m_modes.get(), m_fill);
        m_modes = std::move(larger);
        m_capacity = capacity;
        return true;
    }

    std::unique_ptr<Mode[]> m_modes;
    std::size_t m_fill = 0;
    std::size_t m_capacity = 0;
};

} // namespace qvjson
