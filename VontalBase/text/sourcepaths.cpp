#include "VontalBase/text/sourcepaths.h"

#include "VontalBase/text/asciicase.h"
#include "VontalBase/text/pathseparators.h"

#include <array>
#include <cstddef>

namespace qvbase
{

namespace
{

constexpr std::array<const char *, 2> buildRoots = {
    "C:/Mirsa/Vontal/vontal.git",
    "C:/Mirsa/vontal.release64",
};

constexpr char foldPathChar(char c) noexcept
{
    return c == '\\' ? '/' : Vontal::lowerAscii(c);
}

/// Where the remainder of `path` begins behind `prefix`; 0 where the prefix does not match.
std::size_t matchSourcePrefix(const char * path, const char * prefix) noexcept
{
    std::size_t i = 0;
    for (; prefix[i] != '\0'; ++i)
    {
        if (path[i] == '\0' || foldPathChar(path[i]) != foldPathChar(prefix[i]))
            return 0;
    }
    if (i == 0)
        return 0;
    if (Vontal::isPathSeparator(path[i]))
    {
        while (Vontal::isPathSeparator(path[i]))
            ++i;
        return i;
    }
    return Vontal::isPathSeparator(prefix[i - 1]) ? i : 0;
}

} // namespace

const char * trimSourcePath(const char * path) noexcept
{
    if (path == nullptr)
        return nullptr;
    for (const char * root : buildRoots)
    {
        const std::size_t start = matchSourcePrefix(path, root);
        if (start != 0)
            return path[start] == '\0' ? path : path + start;
    }
    return path;
}

} // namespace qvbase
