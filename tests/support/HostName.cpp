#include "support/HostName.h"

#include <algorithm>

#ifdef _WIN32
#include <windows.h>
#else
#include <fstream>
#endif

namespace testsupport
{

namespace
{

std::string systemName()
{
#ifdef _WIN32
    char name[512] = {};
    DWORD size = sizeof name;
    return GetComputerNameExA(ComputerNameDnsHostname, name, &size) ? name : "";
#else
    std::ifstream file("/proc/sys/kernel/hostname");
    std::string name;
    std::getline(file, name);
    return name;
#endif
}

} // namespace

std::string hostName()
{
    std::string name = systemName();
    name.resize(std::min(name.find('.'), name.size()));
    for (char & c : name)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return name;
}

} // namespace testsupport
