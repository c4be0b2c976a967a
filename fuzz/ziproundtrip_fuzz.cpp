/// Any bytes as items: they are written into an archive in memory, which then holds what was written.

#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using fuzzing::require;

struct Item
{
    std::string name;
    std::string bytes;
    bool isFolder = false;
};

/// Takes pieces off the input.
class Pieces
{
public:
    Pieces(const std::uint8_t * data, std::size_t size) : m_rest(reinterpret_cast<const char *>(data), size)
    {
    }

    [[nodiscard]] bool isEmpty() const
    {
        return m_rest.empty();
    }

    std::size_t takeNumber()
    {
        const std::string_view byte = take(1);
        return byte.empty() ? 0 : static_cast<unsigned char>(byte[0]);
    }

    std::string_view take(std::size_t size)
    {
        const std::string_view piece = m_rest.substr(0, size);
        m_rest.remove_prefix(piece.size());
        return piece;
    }

private:
    std::string_view m_rest;
};

/// A name of printable ASCII.
std::string nameOf(std::string_view bytes)
{
    std::string name = "n";
    for (const char c : bytes)
        name += static_cast<char>(' ' + (static_cast<unsigned char>(c) % 95));
    return name;
}

Item takeItem(Pieces & pieces)
{
    Item item;
    item.name = nameOf(pieces.take(pieces.takeNumber() % 64));
    const std::size_t kind = pieces.takeNumber();
    item.isFolder = kind % 8 == 0;
    // Bytes repeat, so that there is something to pack and sizes go beyond those of the input.
    const std::string_view bytes = pieces.take(pieces.takeNumber());
    for (std::size_t i = 0; i <= kind && !item.isFolder; ++i)
        item.bytes += bytes;
    return item;
}

std::string storedName(const Item & item)
{
    std::string name = item.name;
    std::replace(name.begin(), name.end(), '\\', '/');
    return item.isFolder && !name.ends_with('/') ? name + '/' : name;
}

enum class Added
{
    Yes,
    /// It is none that can be added.
    No,
    /// Kept: memory that grows to just what is needed cannot be written on.
    Stuck
};

Added add(HZIP archive, Item & item)
{
    const std::wstring name(item.name.begin(), item.name.end());
    const Vontal::ulong32 kind = item.isFolder ? ZipKindFolder : ZipKindMemory;
    const Vontal::ulong32 result =
        ZipAdd(archive, name.c_str(), item.bytes.data(), static_cast<unsigned int>(item.bytes.size()), kind);
    if (result == 0x2000000U)
        return Added::Stuck;
    const bool isPossible = item.isFolder || !item.bytes.empty();
    require(result == (isPossible ? 0U : 0x10000U), "An addition has another result.");
    return isPossible ? Added::Yes : Added::No;
}

void check(HZIP archive, const std::vector<Item> & items)
{
    ZIPENTRY entry{};
    require(GetZipItemA(archive, -1, &entry) == 0 && static_cast<std::size_t>(entry.index) == items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        const Item & item = items[i];
        const int index = static_cast<int>(i);
        require(
            GetZipItemA(archive, index, &entry) == 0 && entry.name == storedName(item), "A name differs.");
        require(((entry.attr & 0x10U) != 0) == item.isFolder, "A folder is none, or the other way round.");
        std::string bytes(item.bytes.size() + 1, '\0');
        const auto size = static_cast<unsigned int>(item.bytes.size());
        require(UnzipItem(archive, index, bytes.data(), size, ZipKindMemory) == 0, "An item is not whole.");
        bytes.resize(item.bytes.size());
        require(bytes == item.bytes, "The bytes differ.");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    Pieces pieces(data, size);
    const auto room = static_cast<unsigned int>(pieces.takeNumber() + 1);
    const HZIP writer = CreateZipZ(nullptr, room, ZipKindMemory);
    require(writer != nullptr);
    std::vector<Item> items;
    Added added = Added::Yes;
    while (!pieces.isEmpty() && added != Added::Stuck)
    {
        Item item = takeItem(pieces);
        added = add(writer, item);
        if (added == Added::Yes)
            items.push_back(std::move(item));
    }
    if (added == Added::Stuck)
    {
        CloseZipZ(writer);
        return 0;
    }
    void * block = nullptr;
    Vontal::ulong32 length = 0;
    require(ZipGetMemory(writer, &block, &length) == 0);
    const HZIP reader = OpenZipU(block, static_cast<unsigned int>(length), ZipKindMemory);
    // Kept: an archive without items does not open.
    require((reader != nullptr) == !items.empty());
    if (reader != nullptr)
    {
        check(reader, items);
        require(CloseZipU(reader) == 0);
    }
    require(CloseZipZ(writer) == 0);
    return 0;
}
