#include "VontalBase/utils/uuid.h"

#include "VontalBase/platform/uuid.h"
#include "VontalBase/text/U8StringBuilder.h"
#include "VontalBase/utils/uuidtext.h"

#include <array>
#include <cstdint>

namespace qvutils
{

Vontal::u8string uuidText(const qvplatform::Uuid & uuid)
{
    const auto bytesOf = [](std::uint16_t number)
    {
        return std::array{static_cast<unsigned char>(number >> 8), static_cast<unsigned char>(number & 0xFF)};
    };
    Vontal::U8StringBuilder text;
    text.appendInHex(uuid.first).append("-").appendInHex(bytesOf(uuid.second).data(), 2).append("-");
    text.appendInHex(bytesOf(uuid.third).data(), 2).append("-").appendInHex(uuid.rest.data(), 2).append("-");
    text.appendInHex(uuid.rest.data() + 2, 6);
    return text;
}

bool generateUUID(Vontal::u8string & out)
{
    qvplatform::Uuid uuid;
    if (!qvplatform::makeUuid(uuid))
        return false;
    out = uuidText(uuid);
    return true;
}

} // namespace qvutils
