#include "VontalBase/platform/computername.h"

namespace platform
{

std::string fullComputerName(std::string_view host, std::string_view domain)
{
    std::string name(host);
    if (host.find('.') == std::string_view::npos && !domain.empty() && domain != "(none)")
        name.append(1, '.').append(domain);
    return name;
}

} // namespace platform
