#include "support/LoadedLibrary.h"

#include <cstdio>

#ifdef _WIN32
#include <windows.h>
#include <filesystem>
#else
#include <dlfcn.h>
#include <fstream>
#endif

namespace testsupport
{

#ifdef _WIN32

namespace
{

std::wstring wideName(const std::string & name)
{
    return std::filesystem::path(std::u8string(name.begin(), name.end())).make_preferred().wstring();
}

} // namespace

LoadedLibrary::LoadedLibrary(const std::string & path) : m_handle(LoadLibraryW(wideName(path).c_str()))
{
    if (m_handle == nullptr)
        std::fprintf(stderr, "%s: error %lu\n", path.c_str(), GetLastError());
}

LoadedLibrary::~LoadedLibrary()
{
    if (m_handle != nullptr)
        FreeLibrary(static_cast<HMODULE>(m_handle));
}

void * LoadedLibrary::address(const char * name) const noexcept
{
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

void loadSystemLibraries()
{
    LoadLibraryW(L"ole32.dll");
}

bool isInProcess(const std::string & fileName)
{
    return GetModuleHandleW(wideName(fileName).c_str()) != nullptr;
}

#else

LoadedLibrary::LoadedLibrary(const std::string & path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr)
        std::fprintf(stderr, "%s\n", dlerror());
}

LoadedLibrary::~LoadedLibrary()
{
    if (m_handle != nullptr)
        dlclose(m_handle);
}

void * LoadedLibrary::address(const char * name) const noexcept
{
    return dlsym(m_handle, name);
}

void loadSystemLibraries()
{
}

bool isInProcess(const std::string & fileName)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
    {
        if (line.find("/" + fileName) != std::string::npos)
            return true;
    }
    return false;
}

#endif

} // namespace testsupport
