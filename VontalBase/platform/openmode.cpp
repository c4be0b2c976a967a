#include "VontalBase/platform/openmode.h"

#include <algorithm>

namespace qvplatform
{

namespace
{

constexpr std::string_view withoutEffect = "btcnNSRTDe ";

} // namespace

std::optional<OpenMode> parseOpenMode(std::string_view mode) noexcept
{
    mode.remove_prefix(std::min(mode.find_first_not_of(' '), mode.size()));
    if (mode.empty())
        return std::nullopt;
    OpenMode result;
    const char chief = mode.front();
    result.reads = chief == 'r';
    result.writes = result.creates = chief == 'w' || chief == 'a';
    result.empties = chief == 'w';
    result.appends = chief == 'a';
    if (!result.reads && !result.writes)
        return std::nullopt;
    mode.remove_prefix(1);
    for (const char c : mode.substr(0, mode.find(',')))
    {
        if (c == '+')
            result.reads = result.writes = true;
        else if (c == 'x' && chief == 'w')
            result.isExclusive = true;
        else if (withoutEffect.find(c) == std::string_view::npos)
            return std::nullopt;
    }
    return result;
}

} // namespace qvplatform
