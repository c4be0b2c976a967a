#include "support/ResourceSnapshot.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#ifdef _WIN32
#include <windows.h>
#include <tlhelp32.h>
#else
#include <dirent.h>
#endif

namespace testsupport
{

#ifdef _WIN32

namespace
{

std::size_t countThreads()
{
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (list == INVALID_HANDLE_VALUE)
        std::abort();
    std::size_t count = 0;
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(list, &entry); more; more = Thread32Next(list, &entry))
    {
        if (entry.th32OwnerProcessID == GetCurrentProcessId())
            ++count;
    }
    CloseHandle(list);
    return count;
}

} // namespace

/// Handles are multiples of four and are given out from the lowest one on, so the end is where many in a row
/// are free. GetProcessHandleCount would be simpler, but gives 0 under Wine, whose server in turn now and
/// then drops who asks for the table of all handles while other programs run.
std::size_t countDescriptors()
{
    constexpr std::uintptr_t step = 4;
    constexpr std::size_t freeInARow = 256;
    std::size_t count = 0;
    std::size_t misses = 0;
    for (std::uintptr_t value = step; misses != freeInARow; value += step)
    {
        DWORD flags = 0;
        const bool isOpen = GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
        count += isOpen ? 1 : 0;
        misses = isOpen ? 0 : misses + 1;
    }
    return count;
}

#else

namespace
{

/// The number of entries that are numbers.
std::size_t countEntries(const char * path)
{
    DIR * const directory = opendir(path);
    if (directory == nullptr)
    {
        std::perror(path);
        std::abort();
    }
    std::size_t count = 0;
    while (const dirent * const entry = readdir(directory))
    {
        if (entry->d_name[0] != '.')
            ++count;
    }
    closedir(directory);
    return count;
}

std::size_t countThreads()
{
    return countEntries("/proc/self/task");
}

} // namespace

std::size_t countDescriptors()
{
    return countEntries("/proc/self/fd") - 1; // the folder's own
}

#endif

ResourceSnapshot ResourceSnapshot::take()
{
    return {countDescriptors(), countThreads()};
}

std::string describe(const ResourceSnapshot & snapshot)
{
    return std::to_string(snapshot.descriptors) + " descriptors, " + std::to_string(snapshot.threads) +
           " threads";
}

void PrintTo(const ResourceSnapshot & snapshot, std::ostream * stream)
{
    *stream << describe(snapshot);
}

} // namespace testsupport
