#include "VontalBase/disk/directories.h"

#include "VontalBase/disk/listing.h"
#include "VontalBase/disk/missingdirectories.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/disk/trees.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/places.h"
#include "VontalBase/platform/search.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include <cstddef>

namespace qvdisk
{

namespace
{

/// Kept: a directory is not seen through a separator behind it, and one that is there cannot be made, so that
/// a path which ends in a separator fails.
bool ensureDirectory(const std::wstring & path)
{
    qvplatform::Search search;
    const bool isThere = search.begin(path) && search.isDirectory();
    return isThere || qvplatform::makeDirectory(path);
}

/// The length of what is there without being made; false where the root is not well formed.
bool readRootLength(const std::wstring & path, std::size_t & length)
{
    int prefixLength = 0;
    if (!computePrefix(prefixLength, path.c_str()))
        return false;
    length = static_cast<std::size_t>(prefixLength);
    if (length == 0 && qvplatform::isSlashRoot() && path.starts_with(L'/'))
        length = 1;
    return true;
}

} // namespace

bool createDirectory(const Vontal::u8string & path)
{
    return qvplatform::makeDirectory(Vontal::pstring(path));
}

bool createDirectories(const Vontal::u8string & path)
{
    return createMissingDirectories(Vontal::pstring(path), 0);
}

bool createMissingDirectories(const std::wstring & path, std::size_t known)
{
    std::size_t begin = known;
    if (known == 0 && !readRootLength(path, begin))
        return false;
    std::wstring current = path.substr(0, begin);
    for (std::size_t i = begin; i < path.size(); ++i)
    {
        const bool ends = path[i] == L'\\' || path[i] == L'/';
        const bool isKnown = known > 0 && i == known;
        if (ends && !isKnown && !ensureDirectory(current))
            return false;
        current += path[i];
    }
    return current.size() == begin || ensureDirectory(current);
}

bool createDirectories(const std::wstring & path)
{
    std::wstring current;
    for (const wchar_t c : path)
    {
        current += c;
        // Kept: '/' does not separate here.
        if (c == L'\\')
            qvplatform::makeDirectory(current);
    }
    if (!current.empty() && current.back() != L'\\')
        qvplatform::makeDirectory(current);
    // Kept: whatever happened.
    return true;
}

bool deleteDirContent(const Vontal::u8string & directory)
{
    return removeContent(Vontal::pstring(directory));
}

bool deleteDirectory(const Vontal::u8string & directory)
{
    Vontal::u8string path(directory.c_str());
    removeLastSlash(path);
    return removeTree(Vontal::pstring(path));
}

bool getDirectoryContent(const Vontal::u8string & directory, std::list<Vontal::u8string> & names)
{
    qvplatform::Search search;
    if (!search.begin(allEntriesOf(Vontal::pstring(directory))))
        return false;
    do
    {
        if (!search.isDots())
            names.emplace_back(search.name().c_str());
    } while (search.next());
    return !search.hasFailed();
}

} // namespace qvdisk
