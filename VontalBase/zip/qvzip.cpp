// Unpacking a whole archive of one's own, and every failure that names this file.

#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/platform/filehandles.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/zip/ZipPtr.h"
#include "VontalBase/zip/unzip.h"
#include "VontalBase/zip/zipreader.h"

#include <optional>
#include <string>

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

/// Adds an entry to the record. Returns false, for the caller to return.
bool refuse(VontalException & error, int line, const Vontal::u8string & text)
{
    error.add("qvzip", line, text);
    return false;
}

/// A file that is open for writing.
class OutputFile
{
public:
    explicit OutputFile(const std::wstring & path)
        : m_handle(platform::createForWriting(path, platform::attribute::normal))
    {
    }
    OutputFile(const OutputFile &) = delete;
    OutputFile & operator=(const OutputFile &) = delete;
    ~OutputFile()
    {
        if (isOpen())
            platform::closeHandle(m_handle);
    }

    [[nodiscard]] bool isOpen() const noexcept
    {
        return platform::isHandle(m_handle);
    }
    [[nodiscard]] platform::Handle get() const noexcept
    {
        return m_handle;
    }

private:
    platform::Handle m_handle;
};

/// Unpacks items one by one into a directory.
class Unpacking
{
public:
    Unpacking(HZIP archive, const Vontal::u8string & targetDir, VontalException & error)
        : m_archive(archive), m_target(targetDir.toAstring()), m_error(error)
    {
        qvdisk::addLastSlash(m_target);
    }

    bool unpack(int index)
    {
        ZIPENTRYW entry{};
        if (GetZipItemW(m_archive, index, &entry) != 0)
            return refuse(m_error, lineOfItem, "Failed to get item info");
        const std::wstring path = m_target + entry.name;
        return (entry.attr & platform::attribute::directory) != 0 ? makeDirectory(path)
                                                                  : unpackFile(index, path);
    }

private:
    bool makeDirectory(const std::wstring & path)
    {
        return qvdisk::createDirectories(path) ||
               refuse(
                   m_error, lineOfDirectory, "Failed to create directory: " + Vontal::u8string(path.c_str()));
    }

    /// Items of one directory mostly follow each other, so that it is made, or looked for, once.
    bool makeParent(const Vontal::u8string & parent)
    {
        if (parent == m_lastParent)
            return true;
        if (!qvdisk::createDirectories(parent))
            return refuse(m_error, lineOfParent, "Failed to create directory: " + parent);
        m_lastParent = parent;
        return true;
    }

    bool unpackFile(int index, const std::wstring & path)
    {
        const Vontal::u8string name(path.c_str());
        if (!makeParent(qvdisk::extractParentDir(name)))
            return false;
        const OutputFile file(path);
        if (!file.isOpen())
            return refuse(m_error, lineOfFile, "Failed to create file: " + name);
        return UnzipItem(m_archive, index, file.get(), 0, ZipKindHandle) == 0 ||
               refuse(m_error, lineOfUnzipping, "Failed to unzip file: " + name);
    }

    HZIP m_archive;
    std::wstring m_target;
    std::optional<Vontal::u8string> m_lastParent;
    VontalException & m_error;
};

} // namespace

bool unzip(const Vontal::u8string & zipPath, const Vontal::u8string & targetDir, VontalException & error)
{
    Vontal::astring name = zipPath.toAstring();
    ZipPtr archive(OpenZipU(name.data(), 0, ZipKindFile));
    if (archive.get() == nullptr)
        return refuse(error, lineOfOpening, "Failed to open zip");
    ZIPENTRYW all{};
    if (GetZipItemW(archive, allItems, &all) != 0)
        return refuse(error, lineOfCount, "Failed to get zip info");
    Unpacking unpacking(archive, targetDir, error);
    for (int index = 0; index < all.index; ++index)
    {
        if (!unpacking.unpack(index))
            return false;
    }
    return true;
}

} // namespace qvzip
