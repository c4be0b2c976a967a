#include "VontalBase/platform/languages.h"

#include "VontalBase/text/utf.h"

#include <algorithm>
#include <cstddef>

namespace qvplatform
{

namespace
{

bool isUntranslated(std::string_view locale) noexcept
{
    return locale == "C" || locale == "POSIX";
}

/// What a locale is called without its encoding and modifier.
std::string_view bareName(std::string_view locale) noexcept
{
    return locale.substr(0, std::min(locale.find_first_of(".@"), locale.size()));
}

std::string_view localeOf(const LanguageVariables & variables) noexcept
{
    for (const std::string_view locale : {variables.all, variables.messages, variables.usual})
    {
        if (!locale.empty())
            return locale;
    }
    return {};
}

} // namespace

std::vector<std::string> languagesOfEnvironment(const LanguageVariables & variables)
{
    std::vector<std::string> names;
    const std::string_view locale = localeOf(variables);
    if (locale.empty() || isUntranslated(locale))
        return names;
    std::string_view left = variables.languages.empty() ? locale : variables.languages;
    while (!left.empty())
    {
        const std::size_t end = std::min(left.find(':'), left.size());
        const std::string_view name = bareName(left.substr(0, end));
        left.remove_prefix(std::min(end + 1, left.size()));
        if (isUntranslated(name))
            break;
        // What has no language in front names none.
        if (name.empty() || name[0] == '_' || name[0] == '-')
            continue;
        std::string & added = names.emplace_back(name);
        std::replace(added.begin(), added.end(), '_', '-');
    }
    return names;
}

std::vector<std::string> languagesOfList(std::wstring_view list)
{
    std::vector<std::string> names;
    while (!list.empty() && list[0] != L'\0')
    {
        const std::size_t end = std::min(list.find(L'\0'), list.size());
        Vontal::utf8FromWide(list.substr(0, end), names.emplace_back());
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return names;
}

} // namespace qvplatform
