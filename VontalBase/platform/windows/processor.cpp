#include "VontalBase/platform/processor.h"

#include <array>
#include <intrin.h>

namespace qvplatform
{

bool canPickBytes() noexcept
{
    constexpr int features = 1;
    constexpr unsigned int ssse3 = 1U << 9;
    std::array<int, 4> registers = {};
    __cpuid(registers.data(), features);
    return (static_cast<unsigned int>(registers[2]) & ssse3) != 0;
}

} // namespace qvplatform
