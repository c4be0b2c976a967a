#include "VontalBase/utils/languages.h"

#include "VontalBase/disk/File.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/platform/languages.h"
#include "VontalBase/text/asciicase.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/bundlefiles.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qvutils
{

using Vontal::u8string;

namespace
{

/// Whether two names of languages are of one family.
bool agree(std::string_view one, std::string_view other) noexcept
{
    return Vontal::isSameButForCase(familyOf(one), familyOf(other));
}

bool holdsBundle(const u8string & directory, const u8string & bundleName)
{
    // By their exact names, which may hold what is a pattern elsewhere.
    return qvdisk::File(directory).isDirectory() &&
           qvdisk::File(inDirectory(directory, bundleName + bundleExtension)).exists();
}

} // namespace

bool listAvailableLanguages(
    const u8string & rootDirectory, const u8string & bundleName, std::list<u8string> & out)
{
    std::list<u8string> names;
    const bool isListed = !rootDirectory.empty() && qvdisk::getDirectoryContent(rootDirectory, names);
    if (!isListed)
        names.clear();
    names.remove_if(
        [&](const u8string & name) { return !holdsBundle(inDirectory(rootDirectory, name), bundleName); });
    out = std::move(names);
    return isListed;
}

u8string detectSystemLanguage(const std::list<u8string> & available)
{
    if (available.empty())
        return {};
    std::vector<std::string> wanted;
    if (!qvplatform::readPreferredLanguages(wanted))
        wanted.clear();
    wanted.emplace_back("en");
    for (const std::string & language : wanted)
    {
        for (const u8string & candidate : available)
        {
            if (agree(language, candidate))
                return candidate;
        }
    }
    // Kept: the last resort need not be there.
    return "en";
}

} // namespace qvutils
