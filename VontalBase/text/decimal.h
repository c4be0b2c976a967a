/// @internal
/// @file
/// Integers as decimal text, without a locale and without the heap.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace Vontal
{

/// The decimal text of an integer.
class Decimal
{
public:
    template <class Int>
    explicit Decimal(Int value) noexcept
    {
        char * const begin = m_digits.data();
        m_size = static_cast<std::size_t>(std::to_chars(begin, begin + m_digits.size(), value).ptr - begin);
    }

    /// Valid as long as this object.
    std::string_view text() const noexcept
    {
        return {m_digits.data(), m_size};
    }

private:
    std::array<char, 24> m_digits;
    std::size_t m_size;
};

} // namespace Vontal
