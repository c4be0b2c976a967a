#include "VontalBase/zip/ZipWriterPtr.h"

#include "VontalBase/disk/paths.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/zip/closing.h"
#include "VontalBase/zip/zipwriter.h"

#include <utility>

namespace qvzip
{

ZipWriterPtr::~ZipWriterPtr()
{
    attach(nullptr);
}

HZIP__ * ZipWriterPtr::release() noexcept
{
    return std::exchange(m_handle, nullptr);
}

void ZipWriterPtr::attach(HZIP__ * handle)
{
    closeAnyZip(std::exchange(m_handle, handle));
}

void ZipWriterPtr::close()
{
    attach(nullptr);
}

bool ZipWriterPtr::createZipFile(const Vontal::u8string & path)
{
    close();
    Vontal::astring name = path.toAstring();
    m_handle = CreateZipZ(name.data(), 0, ZipKindFile);
    return m_handle != nullptr;
}

bool ZipWriterPtr::addItemFromFile(const Vontal::u8string & itemName, const Vontal::u8string & filePath)
{
    if (m_handle == nullptr)
        return false;
    Vontal::astring source = filePath.toAstring();
    return ZipAdd(m_handle, itemName.toAstring().c_str(), source.data(), 0, ZipKindFile) == 0;
}

bool ZipWriterPtr::addItemFromMemory(const Vontal::u8string & itemName, char * data, unsigned int length)
{
    return m_handle != nullptr &&
           ZipAdd(m_handle, itemName.toAstring().c_str(), data, length, ZipKindMemory) == 0;
}

bool ZipWriterPtr::addDirContent(const Vontal::u8string & dirPath)
{
    if (m_handle == nullptr)
        return false;
    const Vontal::u8string lastItem = qvdisk::extractLastItem(dirPath);
    // Kept: where the name occurs first, and not at the end of the path.
    Vontal::u8string base = dirPath;
    base.erase(base.find(lastItem), lastItem.size());
    Vontal::astring absolutePath = base.toAstring();
    Vontal::astring directory = lastItem.toAstring();
    return AddFolderContent(m_handle, absolutePath.data(), directory.data()) != 0;
}

} // namespace qvzip
