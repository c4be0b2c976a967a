#include "VontalBase/platform/processor.h"

namespace qvplatform
{

bool canPickBytes() noexcept
{
    return __builtin_cpu_supports("ssse3") != 0;
}

} // namespace qvplatform
