#include "VontalBase/platform/computername.h"

#include "VontalBase/platform/gates.h"

#include <sys/utsname.h>

namespace qvplatform
{

bool readComputerName(std::string & name)
{
    utsname system{};
    if (gateFails("computer name") || uname(&system) != 0 || system.nodename[0] == '\0')
        return false;
    // The kernel's domain is that of a network's directory and says nothing of the name.
    name = system.nodename;
    return true;
}

} // namespace qvplatform
