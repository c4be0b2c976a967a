#include "VontalBase/zip/ZipPtr.h"

#include "VontalBase/text/astring.h"
#include "VontalBase/zip/ArchiveReader.h"
#include "VontalBase/zip/closing.h"
#include "VontalBase/zip/zipreader.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace qvzip
{

ZipPtr::~ZipPtr()
{
    attach(nullptr);
}

HZIP__ * ZipPtr::release() noexcept
{
    return std::exchange(m_handle, nullptr);
}

void ZipPtr::attach(HZIP__ * handle)
{
    closeAnyZip(std::exchange(m_handle, handle));
}

bool ZipPtr::openZipFile(const Vontal::u8string & path)
{
    Vontal::astring name = path.toAstring();
    HZIP__ * const opened = OpenZipU(name.data(), 0, ZipKindFile);
    if (opened == nullptr)
        return false;
    attach(opened);
    return true;
}

bool ZipPtr::readFileTo(const wchar_t * name, std::vector<char> & out)
{
    int index = -1;
    ZIPENTRYW entry{};
    if (m_handle == nullptr || FindZipItemW(m_handle, name, true, &index, &entry) != 0)
        return false;
    const auto told = static_cast<std::uint32_t>(entry.uncompressedSize);
    // What cannot be there would fail in the end, and take much memory before.
    const auto * const reader = static_cast<const zip::ArchiveReader *>(m_handle->state);
    const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(told, reader->mostBytesOf(entry)));
    out.resize(size);
    // An empty vector has no place for anything.
    char none = 0;
    return UnzipItem(m_handle, index, size != 0 ? out.data() : &none, size, ZipKindMemory) == 0 &&
           size == told;
}

} // namespace qvzip
