/// Any text as a source path: the result is null-safe, within the argument, and never an empty rest.

#include "VontalBase/text/sourcepaths.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string text(data, data + size);
    const char * const path = text.c_str();
    const std::size_t length = std::strlen(path);

    const char * const trimmed = qvbase::trimSourcePath(path);
    if (trimmed < path || trimmed > path + length)
        std::abort();
    if (trimmed != path && (*trimmed == '\0' || *trimmed == '/' || *trimmed == '\\'))
        std::abort();
    return 0;
}
