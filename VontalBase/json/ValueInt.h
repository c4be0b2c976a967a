/// @file
/// JSON's integers.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/text/integers.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qvjson
{

/// The node of a signed 64-bit integer. It is made as `qvbase::ReferencedImpl<ValueInt>`.
class VONTALBASE_API ValueInt : public Item
{
public:
    /// True if @p other is an integer with the same 64 bits.
    bool equals(Item const * other) const override;

    /// The low 32 bits, signed.
    int getInt() const noexcept
    {
        return static_cast<int>(getInt64());
    }
    /// The low 32 bits, unsigned.
    Vontal::ulong32 getULong() const noexcept
    {
        return static_cast<Vontal::ulong32>(getInt64());
    }
    /// The value.
    std::int64_t getInt64() const noexcept
    {
        return std::bit_cast<std::int64_t>(m_value);
    }
    /// Reads the value as `Vontal::string2Int64` does.
    /// @param text the digits.
    /// @param length how many bytes of @p text count.
    /// @return what `string2Int64` tells, which some numbers that do not fit pass. The value is what it
    ///     gives, on failure too.
    bool parseInt(char const * text, unsigned int length);

protected:
    /// A 0.
    ValueInt() noexcept : Item(TypeInt)
    {
    }

private:
    /// Bytes rather than a number, so that they need no alignment and the node is small.
    std::array<std::byte, sizeof(std::int64_t)> m_value = {};
};

} // namespace qvjson
