/// @internal
/// @file
/// How the files and languages of bundles are named.
#pragma once

#include "VontalBase/disk/paths.h"
#include "VontalBase/text/u8string.h"

#include <algorithm>
#include <string_view>

namespace qvutils
{

constexpr char bundleExtension[] = ".properties";

/// A path within a directory.
inline Vontal::u8string inDirectory(Vontal::u8string directory, std::string_view name)
{
    qvdisk::addLastSlash(directory);
    directory.append(name);
    return directory;
}

/// What stands in front of the first "_" or "-" of a language's name.
inline std::string_view familyOf(std::string_view language) noexcept
{
    return language.substr(0, std::min(language.find_first_of("_-"), language.size()));
}

} // namespace qvutils
