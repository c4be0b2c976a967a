#include "VontalBase/logging/banners.h"

#include "VontalBase/platform/computername.h"

#include <string>

namespace qvutils
{

Vontal::u8string startBanner(const Vontal::u8string & moment)
{
    Vontal::u8string banner("Logging started - ");
    banner.append(moment);
    std::string name;
    if (qvplatform::readComputerName(name))
        banner.append(" (").append(name).append(")");
    banner += '\n';
    return banner;
}

} // namespace qvutils
