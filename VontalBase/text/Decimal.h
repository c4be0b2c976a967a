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
        const auto result = std::to_chars(m_digits.data(), m_digits.data() + m_digits.size(), value);
        m_size = static_cast<std::size_t>(result.ptr - m_digits.data());
    }

    /// Valid as long as this object.
    std::string_view text() const noexcept
    {
        return {m_digits.data(), m_size};
    }

private:
    std::array<char, 24> m_digits;
    std::size_t m_size = 0;
};

} // namespace Vontal
