#include "VontalBase/platform/computername.h"

#include "VontalBase/platform/gates.h"

#include <sys/utsname.h>

namespace platform
{

bool readComputerName(std::string & name)
{
    utsname system{};
    if (gateFails("computer name") || uname(&system) != 0 || system.nodename[0] == '\0')
        return false;
    name = fullComputerName(system.nodename, system.domainname);
    return true;
}

} // namespace platform
