#include "VontalBase/disk/File.h"

#include "VontalBase/core/EarthTime.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/disk/trees.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/search.h"
#include "VontalBase/platform/streams.h"
#include "VontalBase/text/u8string.h"

#include <algorithm>
#include <utility>

namespace qvdisk
{

namespace
{

using qvplatform::FileStatus;

bool isDrive(const std::wstring & path)
{
    return path.size() == 2 && path[1] == L':';
}

/// The path as the system must see it: with the `\` that belongs to the root of a drive.
std::wstring withRoot(const std::wstring & path)
{
    return isDrive(path) ? path + L'\\' : path;
}

bool isKind(const std::wstring & path, FileStatus::Kind kind)
{
    FileStatus status;
    return qvplatform::readFileStatus(withRoot(path), status) && status.kind == kind;
}

/// Whether nothing is in a directory. False where that cannot be found out.
bool hasNoEntries(const std::wstring & directory)
{
    qvplatform::Search search;
    if (!search.begin(directory + L"\\*"))
        return false;
    do
    {
        if (!search.isDots())
            return false;
    } while (search.next());
    return !search.hasFailed();
}

template <class Owner>
Owner * ownStream(std::FILE * stream)
{
    if (stream == nullptr)
        return nullptr;
    try
    {
        return new Owner(stream);
    }
    catch (...)
    {
        qvplatform::closeStream(stream);
        throw;
    }
}

} // namespace

File::File(const std::wstring & name) : path(name)
{
    stripLastSlash();
}

File::File(const Vontal::u8string & name) : path(name)
{
    stripLastSlash();
}

File::File(const wchar_t * name) : path(name == nullptr ? L"" : name)
{
    stripLastSlash();
}

File::File(const std::wstring & name, const std::wstring & child) : File(name)
{
    append(child);
}

File::File(const Vontal::u8string & name, const Vontal::u8string & child) : File(name)
{
    append(child);
}

Vontal::pstring File::getLeafName()
{
    return extractLastItem(path);
}

Vontal::pstring File::getLeafNameBody()
{
    const std::wstring leaf = extractLastItem(path);
    return leaf.substr(0, leaf.rfind(L'.'));
}

Vontal::pstring File::getExtension()
{
    return extractExtension(path);
}

Vontal::pstring File::getParentPath()
{
    // Kept: the separator stays.
    return path.substr(0, path.size() - extractLastItem(path).size());
}

bool File::isFile() const
{
    return isKind(path, FileStatus::Kind::Regular);
}

bool File::isDirectory() const
{
    if (!isDrive(path) && isUNC() && isUNCShareName())
        return true;
    return isKind(path, FileStatus::Kind::Directory);
}

bool File::isUNC() const
{
    return path.size() >= 2 && path[0] == L'\\' && path[1] == L'\\';
}

bool File::isUNCShareName() const
{
    if (path.size() < 5 || path[0] != L'\\' || path[1] != L'\\')
        return false;
    const auto backslashes = std::count(path.begin() + 2, path.end(), L'\\');
    return backslashes == (path.back() == L'\\' ? 2 : 1);
}

bool File::exists()
{
    if (isUNCShareName())
        return qvplatform::Search().begin(path + L"\\*");
    FileStatus status;
    return qvplatform::readFileStatus(withRoot(path), status);
}

std::FILE * File::open(const char * mode)
{
    return qvplatform::openStream(path, mode);
}

FileReader * File::openForRead()
{
    return ownStream<FileReader>(open("rb"));
}

FileWriter * File::openForWrite()
{
    return ownStream<FileWriter>(open("wb"));
}

std::int64_t File::getFileSize() const
{
    return qvdisk::getFileSize(path);
}

bool File::mkdir()
{
    return qvplatform::makeDirectory(path);
}

bool File::getEntries(FileEnumerator * enumerator)
{
    qvplatform::Search search;
    if (!search.begin(path + L"\\*"))
        return false;
    do
    {
        if (search.isDots())
            continue;
        File entry(*this);
        entry.append(search.name());
        if (!enumerator->onEntry(entry))
            return false;
    } while (search.next());
    return !search.hasFailed();
}

bool File::remove(bool recursive)
{
    if (isFile())
        return deleteFile(path);
    return recursive ? removeTree(path) : removeOneDirectory(path);
}

bool File::isEmpty() const
{
    if (isDirectory())
        return hasNoEntries(path);
    return isFile() && getFileSize() == 0;
}

bool File::getModificationTime(qvbase::EarthTime & time) const
{
    FileStatus status;
    if (!qvplatform::readFileStatus(path, status))
        return false;
    time = qvbase::EarthTime(status.modificationTime);
    return true;
}

void File::setPath(const std::wstring & name)
{
    path = name;
    stripLastSlash();
}

void File::setPath(const Vontal::u8string & name)
{
    path = Vontal::pstring(name);
    stripLastSlash();
}

File & File::append(const std::wstring & child)
{
    // A copy, since what is appended may be the path itself.
    Vontal::pstring longer = path;
    addLastSlash(longer);
    longer += child;
    path = std::move(longer);
    stripLastSlash();
    return *this;
}

File & File::append(const Vontal::u8string & child)
{
    return append(Vontal::pstring(child));
}

File & File::append(const wchar_t * child)
{
    return child == nullptr ? *this : append(std::wstring(child));
}

void File::stripLastSlash()
{
    if (!path.empty() && path.back() == L'\\' && path != L"\\\\")
        path.pop_back();
}

} // namespace qvdisk
