#include "VontalBase/platform/computername.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"
#include "VontalBase/text/conversions.h"

#include <array>

namespace qvplatform
{

bool readComputerName(std::string & name)
{
    std::array<wchar_t, 512> buffer{};
    DWORD size = static_cast<DWORD>(buffer.size());
    if (gateFails("computer name") ||
        !GetComputerNameExW(ComputerNameDnsFullyQualified, buffer.data(), &size))
    {
        return false;
    }
    Vontal::c_u16u8(name, buffer.data());
    return true;
}

} // namespace qvplatform
