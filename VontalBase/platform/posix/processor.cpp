#include "VontalBase/platform/processor.h"

namespace platform
{

bool canPickBytes() noexcept
{
    return __builtin_cpu_supports("ssse3") != 0;
}

} // namespace platform
