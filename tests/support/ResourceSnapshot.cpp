#include "support/ResourceSnapshot.h"

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

namespace
{

#ifdef _WIN32

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

/// An entry of the system's table of handles, and the table, as NtQuerySystemInformation gives them.
struct HandleEntry
{
    void * object;
    ULONG_PTR process;
    ULONG_PTR value;
    ULONG access;
    USHORT backTrace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct HandleTable
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry entries[1];
};

using QuerySystem = LONG(WINAPI *)(ULONG what, void * buffer, ULONG size, ULONG * needed);

constexpr ULONG extendedHandleInformation = 64;
constexpr LONG lengthMismatch = static_cast<LONG>(0xC0000004);

/// GetProcessHandleCount would be simpler, but gives 0 under Wine.
std::size_t countDescriptors()
{
    static const QuerySystem query = reinterpret_cast<QuerySystem>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    for (ULONG size = 1 << 20; size != 0; size *= 2)
    {
        void * const buffer = std::malloc(size);
        if (buffer == nullptr)
            std::abort();
        const LONG status = query(extendedHandleInformation, buffer, size, nullptr);
        std::size_t count = 0;
        if (status >= 0)
        {
            const HandleTable * const table = static_cast<const HandleTable *>(buffer);
            for (ULONG_PTR i = 0; i < table->count; ++i)
                count += table->entries[i].process == GetCurrentProcessId() ? 1 : 0;
        }
        std::free(buffer);
        if (status >= 0)
            return count;
        if (status != lengthMismatch)
            std::abort();
    }
    std::abort();
}

#else

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

std::size_t countDescriptors()
{
    return countEntries("/proc/self/fd") - 1; // the folder's own
}

#endif

} // namespace

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
