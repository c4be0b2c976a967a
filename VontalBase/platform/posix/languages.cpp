#include "VontalBase/platform/languages.h"

#include "VontalBase/platform/gates.h"

#include <cstdlib>

namespace qvplatform
{

namespace
{

std::string_view variable(const char * name) noexcept
{
    const char * const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

} // namespace

bool readPreferredLanguages(std::vector<std::string> & names)
{
    if (gateFails("preferred languages"))
        return false;
    names = languagesOfEnvironment(
        {variable("LANGUAGE"), variable("LC_ALL"), variable("LC_MESSAGES"), variable("LANG")});
    return true;
}

} // namespace qvplatform
