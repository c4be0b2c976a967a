#include "VontalBase/json/ValueInt.h"

#include "VontalBase/text/numberscan.h"

#include <string_view>

namespace qvjson
{

bool ValueInt::equals(Item const * other) const
{
    if (other == nullptr || other->getType() != getType())
        return false;
    return static_cast<const ValueInt *>(other)->m_value == m_value;
}

bool ValueInt::parseInt(char const * text, unsigned int length)
{
    bool ok = false;
    const auto value = Vontal::scanInteger<std::int64_t>(std::string_view(text, length), ok);
    m_value = std::bit_cast<decltype(m_value)>(value);
    return ok;
}

} // namespace qvjson
