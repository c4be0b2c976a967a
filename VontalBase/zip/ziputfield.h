/// @internal
/// @file
/// The time stamps in an item's extra field.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace zip
{

/// Those of the times that a "UT" block holds, in seconds since 1970 in UTC.
struct UtTimes
{
    std::optional<std::int32_t> modification;
    std::optional<std::int32_t> access;
    std::optional<std::int32_t> creation;
};

/// Looks for a "UT" block.
/// @param extra a local extra field, whatever it holds. A time that is not wholly in it is none.
UtTimes findUtTimes(std::span<const unsigned char> extra) noexcept;

} // namespace zip
