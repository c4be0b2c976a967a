#include "VontalBase/parse/SemicolonSeparatedOptions.h"

#include <utility>

namespace qvparse
{

bool SemicolonSeparatedOptions::parse(const std::string & text, VontalException &)
{
    std::string key;
    std::string value;
    bool inValue = false;
    for (const char c : text)
    {
        switch (c)
        {
        case '\t':
        case '\n':
        case '\r':
            break;
        case '=':
            // Kept: also within a value, which so loses it.
            inValue = true;
            break;
        case ';':
            // Kept: without a key nothing changes, and what follows an early '=' stays a value for ever.
            if (key.empty())
                break;
            options[key] = value;
            key.clear();
            value.clear();
            inValue = false;
            break;
        default:
            if (inValue)
                value += c;
            else if (c != ' ')
                key += c;
        }
    }
    if (!key.empty())
        options[key] = std::move(value);
    return true;
}

bool SemicolonSeparatedOptions::get(const std::string & key, std::string & value) const
{
    const auto found = options.find(key);
    if (found == options.end())
        return false;
    value = found->second;
    return true;
}

void SemicolonSeparatedOptions::set(const std::string & key, const std::string & value)
{
    options[key] = value;
}

bool SemicolonSeparatedOptions::remove(const std::string & key)
{
    return options.erase(key) != 0;
}

void SemicolonSeparatedOptions::store(std::string & text) const
{
    std::string result;
    for (const auto & [key, value] : options)
    {
        if (!result.empty())
            result += ';';
        result.append(key).append(1, '=').append(value);
    }
    text.swap(result);
}

} // namespace qvparse
