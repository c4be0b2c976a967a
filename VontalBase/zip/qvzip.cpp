// Unpacking a whole archive of one's own, and every failure that names this file.

#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/missingdirectories.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/platform/filehandles.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/zip/ZipPtr.h"
#include "VontalBase/zip/unzip.h"
#include "VontalBase/zip/zipoutput.h"
#include "VontalBase/zip/zipreader.h"

#include <cstddef>
#include <new>
#include <string>
#include <unordered_set>

namespace qvzip
{

namespace
{

// The positions that failures have.
constexpr int lineOfOpening = 15;
constexpr int lineOfCount = 22;
constexpr int lineOfItem = 30;
constexpr int lineOfDirectory = 39;
constexpr int lineOfParent = 45;
constexpr int lineOfFile = 51;
constexpr int lineOfUnzipping = 57;

constexpr int allItems = -1;

/// What is being done: the position and the text of the failure that it would be.
struct Step
{
    int line = lineOfOpening;
    const char * text = "Failed to open zip";
    Vontal::u8string path;

    void set(int newLine, const char * newText, const Vontal::u8string & newPath = {})
    {
        line = newLine;
        text = newText;
        path = newPath;
    }
};

/// Adds an entry to the record. Returns false, for the caller to return.
bool refuse(VontalException & error, const Step & step)
{
    error.add("qvzip", step.line, step.text + step.path);
    return false;
}

/// The same, as far as there is memory for it.
bool refuseForMemory(VontalException & error, const Step & step) noexcept
{
    try
    {
        return refuse(error, step);
    }
    catch (const std::bad_alloc &)
    {
        return false;
    }
}

/// Unpacks items one by one into a directory.
class Unpacking
{
public:
    Unpacking(HZIP archive, const Vontal::u8string & targetDir, Step & step)
        : m_archive(archive), m_target(targetDir.toAstring()), m_step(step)
    {
        qvdisk::addLastSlash(m_target);
    }

    bool unpack(int index)
    {
        ZIPENTRYW entry{};
        m_step.set(lineOfItem, "Failed to get item info");
        if (GetZipItemW(m_archive, index, &entry) != 0)
            return false;
        const std::wstring path = m_target + entry.name;
        return (entry.attr & qvplatform::attribute::directory) != 0 ? makeDirectory(path)
                                                                    : unpackFile(index, path);
    }

private:
    bool makeDirectory(const std::wstring & path)
    {
        m_step.set(lineOfDirectory, "Failed to create directory: ", path.c_str());
        return qvdisk::createDirectories(path);
    }

    /// A directory is made, or looked for, once.
    bool makeParent(const Vontal::u8string & parent)
    {
        const Vontal::pstring path(parent);
        if (m_made.contains(path))
            return true;
        m_step.set(lineOfParent, "Failed to create directory: ", parent);
        if (!qvdisk::createMissingDirectories(path, lengthOfMade(path)))
            return false;
        std::size_t length = path.size();
        while (length + 1 >= m_target.size() && m_made.insert(path.substr(0, length)).second)
            length = lengthOfParent(path, length);
        return true;
    }

    /// What is in front of the last separator of the first so many units; 0 for nothing.
    static std::size_t lengthOfParent(const std::wstring & path, std::size_t length) noexcept
    {
        const std::size_t last = length == 0 ? 0 : path.find_last_of(L"/\\", length - 1);
        return last == std::wstring::npos ? 0 : last;
    }

    /// The length of the part of a path that has been made for other items; 0 for none.
    std::size_t lengthOfMade(const std::wstring & path) const
    {
        std::size_t length = lengthOfParent(path, path.size());
        while (length > 0 && !m_made.contains(path.substr(0, length)))
            length = lengthOfParent(path, length);
        return length;
    }

    bool unpackFile(int index, const std::wstring & path)
    {
        const Vontal::u8string name(path.c_str());
        if (!makeParent(qvdisk::extractParentDir(name)))
            return false;
        m_step.set(lineOfFile, "Failed to create file: ", name);
        zip::Output file(path, qvplatform::attribute::normal);
        if (!file.isOpen())
            return false;
        m_step.set(lineOfUnzipping, "Failed to unzip file: ", name);
        const bool isUnzipped = UnzipItem(m_archive, index, file.handle(), 0, ZipKindHandle) == 0;
        return file.close() && isUnzipped;
    }

    HZIP m_archive;
    std::wstring m_target;
    std::unordered_set<std::wstring> m_made;
    Step & m_step;
};

bool unzipAll(const Vontal::u8string & zipPath, const Vontal::u8string & targetDir, Step & step)
{
    Vontal::astring name = zipPath.toAstring();
    ZipPtr archive(OpenZipU(name.data(), 0, ZipKindFile));
    if (archive.get() == nullptr)
        return false;
    ZIPENTRYW all{};
    step.set(lineOfCount, "Failed to get zip info");
    if (GetZipItemW(archive, allItems, &all) != 0)
        return false;
    Unpacking unpacking(archive, targetDir, step);
    for (int index = 0; index < all.index; ++index)
    {
        if (!unpacking.unpack(index))
            return false;
    }
    return true;
}

} // namespace

bool unzip(const Vontal::u8string & zipPath, const Vontal::u8string & targetDir, VontalException & error)
{
    Step step;
    try
    {
        return unzipAll(zipPath, targetDir, step) || refuse(error, step);
    }
    catch (const std::bad_alloc &)
    {
        return refuseForMemory(error, step);
    }
}

} // namespace qvzip
