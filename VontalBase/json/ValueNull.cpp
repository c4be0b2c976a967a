#include "VontalBase/json/ValueNull.h"

namespace qvjson
{

bool ValueNull::equals(Item const * other) const
{
    return other != nullptr && other->getType() == getType();
}

} // namespace qvjson
