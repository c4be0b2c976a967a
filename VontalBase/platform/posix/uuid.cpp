#include "VontalBase/platform/uuid.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/randombytes.h"

namespace qvplatform
{

bool makeUuid(Uuid & uuid) noexcept
{
    Uuid made;
    if (gateFails("make uuid") || !fillRandom(&made.first, sizeof made.first) ||
        !fillRandom(&made.second, sizeof made.second) || !fillRandom(&made.third, sizeof made.third) ||
        !fillRandom(made.rest.data(), made.rest.size()))
        return false;
    // Version 4, in the variant of the standard.
    made.third = static_cast<std::uint16_t>((made.third & 0x0FFFU) | 0x4000U);
    made.rest[0] = static_cast<unsigned char>((made.rest[0] & 0x3FU) | 0x80U);
    uuid = made;
    return true;
}

} // namespace qvplatform
