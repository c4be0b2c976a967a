#include "VontalBase/platform/wildcards.h"

#include <cstddef>

namespace qvplatform
{

bool hasWildcards(std::wstring_view name) noexcept
{
    return name.find_first_of(L"*?") != std::wstring_view::npos;
}

bool matchesWildcards(std::wstring_view pattern, std::wstring_view name) noexcept
{
    if (pattern == L"*.*")
        return true;
    std::size_t p = 0;
    std::size_t n = 0;
    // Where to go on when the last '*' has to take one element more.
    std::size_t behindStar = std::wstring_view::npos;
    std::size_t takenByStar = 0;
    while (n < name.size())
    {
        if (p < pattern.size() && pattern[p] == L'*')
        {
            behindStar = ++p;
            takenByStar = n;
        }
        else if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == name[n]))
        {
            ++p;
            ++n;
        }
        else if (behindStar != std::wstring_view::npos)
        {
            p = behindStar;
            n = ++takenByStar;
        }
        else
        {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == std::wstring_view::npos;
}

} // namespace qvplatform
