#include "support/MemoryUse.h"

#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#include <psapi.h>
#endif

namespace testsupport
{

std::size_t memoryUse()
{
#ifdef _WIN32
    PROCESS_MEMORY_COUNTERS counters = {};
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters))
        std::abort();
    return counters.PagefileUsage;
#else
    constexpr std::size_t pageSize = 4096;
    std::FILE * const file = std::fopen("/proc/self/statm", "r");
    std::size_t pages = 0;
    if (file == nullptr || std::fscanf(file, "%zu", &pages) != 1)
        std::abort();
    std::fclose(file);
    return pages * pageSize;
#endif
}

} // namespace testsupport
