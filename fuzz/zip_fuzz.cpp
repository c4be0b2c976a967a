/// Any bytes as a zip archive in memory and in a file: opened, listed, searched and read.

#include "zip/exercise_oracle.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    ziptest::exerciseInFileToo(data, size);
    return 0;
}
