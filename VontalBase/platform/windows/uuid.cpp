#include "VontalBase/platform/uuid.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <algorithm>
#include <iterator>
#include <objbase.h>

namespace qvplatform
{

bool makeUuid(Uuid & uuid) noexcept
{
    GUID made{};
    if (gateFails("make uuid") || FAILED(CoCreateGuid(&made)))
        return false;
    uuid.first = made.Data1;
    uuid.second = made.Data2;
    uuid.third = made.Data3;
    std::copy(std::begin(made.Data4), std::end(made.Data4), uuid.rest.begin());
    return true;
}

} // namespace qvplatform
