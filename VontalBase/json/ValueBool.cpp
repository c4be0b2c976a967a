#include "VontalBase/json/ValueBool.h"

namespace qvjson
{

bool ValueBool::equals(Item const * other) const
{
    if (other == nullptr || other->getType() != getType())
        return false;
    return static_cast<const ValueBool *>(other)->m_value == m_value;
}

} // namespace qvjson
