#include "VontalBase/zip/zipentry.h"

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/filetimeunits.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/zip/ziptimes.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

namespace zip
{

namespace
{

namespace external
{
constexpr std::uint32_t directory = 0x40000010;
constexpr std::uint32_t ownerMayWrite = 0x00800000;
} // namespace external

} // namespace

ZIPENTRY emptyEntry(std::int32_t index) noexcept
{
    ZIPENTRY entry{};
    entry.index = index;
    return entry;
}

std::uint32_t attributesOf(std::uint32_t externalAttributes) noexcept
{
    namespace attribute = qvplatform::attribute;
    std::uint32_t attributes = attribute::normal;
    if ((externalAttributes & external::directory) != 0)
        attributes |= attribute::directory;
    attributes |= externalAttributes & (attribute::archive | attribute::hidden | attribute::system);
    // Kept: an item of a tool that leaves the upper half empty comes out read-only.
    if ((externalAttributes & external::ownerMayWrite) == 0 ||
        (externalAttributes & attribute::readOnly) != 0)
        attributes |= attribute::readOnly;
    return attributes;
}

ZIPENTRY entryOf(
    std::int32_t index, std::string_view name, const CentralEntry & entry, const UtTimes & times) noexcept
{
    ZIPENTRY told = emptyEntry(index);
    std::copy(name.begin(), name.end(), std::begin(told.name));
    told.attr = attributesOf(entry.externalAttributes);
    const FILETIME dosTime = qvplatform::fileTimeOf(fileTimeOfDosDate(entry.dosTimestamp));
    const auto timeOf = [&](const std::optional<std::int32_t> & seconds)
    {
        return seconds ? qvplatform::fileTimeOf(fileTimeOfSeconds(*seconds)) : dosTime;
    };
    told.atime = timeOf(times.access);
    told.ctime = timeOf(times.creation);
    told.mtime = timeOf(times.modification);
    told.compressedSize = static_cast<std::int32_t>(entry.compressedSize);
    told.uncompressedSize = static_cast<std::int32_t>(entry.uncompressedSize);
    return told;
}

ZIPENTRYW wideEntryOf(const ZIPENTRY & entry)
{
    // No byte of UTF-8 gives more than one unit, so that all of the name has room.
    std::wstring name;
    Vontal::wideFromUtf8(std::string_view(entry.name), name);
    ZIPENTRYW wide{};
    wide.index = entry.index;
    std::copy(name.begin(), name.end(), std::begin(wide.name));
    wide.attr = entry.attr;
    wide.atime = entry.atime;
    wide.ctime = entry.ctime;
    wide.mtime = entry.mtime;
    wide.compressedSize = entry.compressedSize;
    wide.uncompressedSize = entry.uncompressedSize;
    return wide;
}

} // namespace zip
