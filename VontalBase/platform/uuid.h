/// @internal
/// @file
/// Identifiers that nobody else has.
#pragma once

#include <array>
#include <cstdint>

namespace qvplatform
{

/// The fields of a UUID as numbers, the last one in the order of its bytes.
struct Uuid
{
    std::uint32_t first = 0;
    std::uint16_t second = 0;
    std::uint16_t third = 0;
    std::array<unsigned char, 8> rest{};
};

/// Makes a new one, a random one of version 4. Any thread may call this.
/// @param uuid receives it; untouched where there is none.
/// @return false where the system refuses.
bool makeUuid(Uuid & uuid) noexcept;

} // namespace qvplatform
