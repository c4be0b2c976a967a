#include "VontalBase/zip/UnzipPlan.h"

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/places.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/zip/unzip.h"
#include "VontalBase/zip/zipentry.h"
#include "VontalBase/zip/zipformat.h"
#include "VontalBase/zip/zipnames.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

namespace zip
{

namespace
{

/// Where an item lies in the archive, from its header to the end of its data.
struct Extent
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::size_t index = 0;
};

/// The name of a source file alone.
std::string sourceName(const std::source_location & position)
{
    const std::string_view path = position.file_name();
    const std::size_t start = path.find_last_of("/\\") + 1;
    return std::string(path.substr(start, path.rfind('.') - start));
}

/// Looks through an archive, item by item.
class Planning
{
public:
    Planning(
        OpenArchive & archive, const qvzip::UnzipOptions & options, UnzipPlan & plan, VontalException & error)
        : m_archive(archive), m_options(options), m_plan(plan), m_error(error)
    {
    }

    bool plan()
    {
        const std::size_t count = m_archive.directory.endRecord().entryCount;
        if (count > m_options.maxItems)
            return refuseItem(
                m_error, "The archive has " + std::to_string(count) + " items, which is too many");
        m_plan.items.reserve(count);
        m_extents.reserve(count);
        for (std::size_t index = 0; index < count; ++index)
        {
            if (!planItem(index))
                return false;
        }
        return nothingOverlaps();
    }

private:
    bool refuse(
        const std::string & reason, const std::source_location position = std::source_location::current())
    {
        return refuseItem(m_error, "Item " + quotedName(m_name) + " " + reason, position);
    }

    bool planItem(std::size_t index)
    {
        m_name.clear();
        if (!m_archive.directory.goTo(index) || !m_archive.directory.readWholeName(m_name))
            return refuseItem(m_error, "The directory is damaged at item " + std::to_string(index));
        const CentralEntry & entry = m_archive.directory.current();
        ScreenedName name = screenName(m_name, !qvplatform::mayNamesHoldColons());
        if (name.fault != NameFault::None)
            return refuse(std::string(textOf(name.fault)));
        const bool isDirectory = name.endsInSeparator || (attributesOf(entry.externalAttributes) &
                                                             qvplatform::attribute::directory) != 0;
        if (name.path.empty() && !isDirectory)
            return refuse("names the target directory");
        if (static_cast<std::size_t>(std::count(name.path.begin(), name.path.end(), L'\\')) >
            m_options.maxDepth)
            return refuse("lies too deep");
        if (!isAllowed(entry, isDirectory) || !takeExtent(index, entry))
            return false;
        m_plan.bytes += entry.uncompressedSize;
        m_plan.items.push_back({std::move(name.path), entry.uncompressedSize, isDirectory});
        return true;
    }

    static std::size_t headerAndName(const CentralEntry & entry) noexcept
    {
        return std::min(format::localHeaderSize + entry.nameLength, InputWindow::capacity);
    }

    bool isAllowed(const CentralEntry & entry, bool isDirectory)
    {
        if ((entry.flags & format::flagEncrypted) != 0)
            return refuse("is encrypted");
        if (entry.method != format::methodStored && entry.method != format::methodDeflated)
            return refuse("is packed by method " + std::to_string(entry.method));
        if (isDirectory && entry.uncompressedSize != 0)
            return refuse("is a directory with data");
        if (entry.method == format::methodStored && entry.compressedSize != entry.uncompressedSize)
            return refuse("has sizes that do not agree");
        if (entry.uncompressedSize > m_options.maxItemBytes)
            return refuse("is too large");
        if (entry.uncompressedSize > m_options.maxTotalBytes - m_plan.bytes)
            return refuse("makes all items together too large");
        return true;
    }

    bool takeExtent(std::size_t index, const CentralEntry & entry)
    {
        const EndRecord & end = m_archive.directory.endRecord();
        LocalHeader header;
        if (!readLocalHeader(m_archive.window, entry, end.bytesBefore, headerAndName(entry), header))
            return refuse("has a header that does not agree with the directory");
        if (!hasSameName(entry, end.bytesBefore))
            return refuse("has another name in its header");
        const Extent extent{
            entry.localHeaderOffset + end.bytesBefore, header.dataPosition + entry.compressedSize, index};
        if (extent.end > end.directoryOffset + end.bytesBefore)
            return refuse("reaches into the directory");
        m_extents.push_back(extent);
        return true;
    }

    /// Some tools go by the name in front of the data.
    bool hasSameName(const CentralEntry & entry, std::uint64_t bytesBefore)
    {
        const std::uint64_t position = entry.localHeaderOffset + bytesBefore + format::localHeaderSize;
        const std::span<const unsigned char> found =
            m_archive.window.view(position, entry.nameLength, entry.nameLength);
        return found.size() >= m_name.size() &&
               std::equal(m_name.begin(), m_name.end(), found.begin(),
                   [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
    }

    bool nothingOverlaps()
    {
        std::sort(m_extents.begin(), m_extents.end(),
            [](const Extent & a, const Extent & b) { return a.begin < b.begin; });
        const auto found = std::adjacent_find(m_extents.begin(), m_extents.end(),
            [](const Extent & a, const Extent & b) { return a.end > b.begin; });
        if (found == m_extents.end())
            return true;
        m_archive.directory.goTo(std::next(found)->index);
        m_archive.directory.readWholeName(m_name);
        return refuse("overlaps another one");
    }

    OpenArchive & m_archive;
    const qvzip::UnzipOptions & m_options;
    UnzipPlan & m_plan;
    VontalException & m_error;
    std::vector<Extent> m_extents;
    /// Of the item being looked at.
    std::string m_name;
};

} // namespace

bool makePlan(
    OpenArchive & archive, const qvzip::UnzipOptions & options, UnzipPlan & plan, VontalException & error)
{
    return Planning(archive, options, plan, error).plan();
}

bool refuseItem(VontalException & error, const std::string & text, const std::source_location position)
{
    error.add(sourceName(position), static_cast<int>(position.line()), text);
    return false;
}

std::string quotedName(const std::string & name)
{
    constexpr std::size_t longest = 255;
    std::wstring text;
    Vontal::wideFromUtf8(name, text);
    if (text.size() > longest)
        text.replace(longest, std::wstring::npos, L"...");
    // What a terminal takes for an order is not to come from a stranger.
    const auto isControl = [](wchar_t unit)
    {
        return unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
    };
    std::replace_if(text.begin(), text.end(), isControl, L'?');
    std::string shown;
    Vontal::utf8FromWide(text, shown);
    return "'" + shown + "'";
}

} // namespace zip
