#include "VontalBase/logging/banners.h"

#include "VontalBase/core/EarthTime.h"
#include "VontalBase/platform/computername.h"

#include <string>

namespace qvutils
{

void appendDateAndTime(const qvbase::EarthTime & time, Vontal::u8string & out)
{
    std::string text;
    time.printDate(text, 0, true, true);
    out.append(text).append(" ");
    time.printTime(text, 2);
    out.append(text);
}

Vontal::u8string startBanner(const Vontal::u8string & moment)
{
    Vontal::u8string banner("Logging started - ");
    banner.append(moment);
    std::string name;
    if (platform::readComputerName(name))
        banner.append(" (").append(name).append(")");
    banner += '\n';
    return banner;
}

Vontal::u8string stopBanner(const Vontal::u8string & moment)
{
    // Kept: the misspelling is the format of the file.
    Vontal::u8string banner("Logging stoped - ");
    banner.append(moment).append("\n");
    return banner;
}

} // namespace qvutils
