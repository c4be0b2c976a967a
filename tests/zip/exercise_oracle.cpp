#include "zip/exercise_oracle.h"

#include "VontalBase/zip/zipreader.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ziptest
{

namespace
{

/// More than this is not read of an item.
constexpr std::size_t mostBytes = std::size_t{1} << 20;
/// More than this is not looked at in an archive.
constexpr int mostItems = 300;

void require(bool holds, const char * what)
{
    if (!holds)
        throw std::logic_error(what);
}

bool isOneOf(unsigned long result, std::initializer_list<unsigned long> expected)
{
    return std::find(expected.begin(), expected.end(), result) != expected.end();
}

/// A number for everything that came of an archive, in its order.
class Record
{
public:
    void add(std::uint64_t number)
    {
        add(&number, sizeof number);
    }

    void add(const void * bytes, std::size_t size)
    {
        const std::string_view text(static_cast<const char *>(bytes), size);
        m_value = m_value * 31 + std::hash<std::string_view>()(text);
    }

    bool operator==(const Record &) const = default;

private:
    std::uint64_t m_value = 0;
};

/// A file for one archive after the other, as long as the program runs.
class ScratchFile
{
public:
    ScratchFile()
        : m_path(std::filesystem::temp_directory_path() /
                 ("vontal archive " + std::to_string(std::random_device()())))
    {
    }
    ScratchFile(const ScratchFile &) = delete;
    ScratchFile & operator=(const ScratchFile &) = delete;
    ~ScratchFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    /// The path of the file, which then holds these bytes.
    std::wstring write(const void * bytes, std::size_t size)
    {
        std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
        file.write(static_cast<const char *>(bytes), static_cast<std::streamsize>(size));
        file.close();
        require(!file.fail(), "the archive cannot be written to a file");
        const std::u16string path = m_path.u16string();
        return {path.begin(), path.end()};
    }

private:
    std::filesystem::path m_path;
};

/// Reads an item in pieces. @return false where it cannot be read.
bool readItem(
    HZIP zip, int index, std::size_t pieceSize, std::size_t told, std::size_t & calls, Record & record)
{
    std::vector<char> piece(pieceSize + 1, '?');
    unsigned long result = 0x600;
    for (std::size_t done = 0; result == 0x600 && done <= mostBytes; done += pieceSize)
    {
        result = UnzipItem(zip, index, piece.data(), static_cast<unsigned int>(pieceSize), ZipKindMemory);
        require(piece.back() == '?', "it wrote behind the block");
        record.add(result);
        record.add(piece.data(), piece.size());
        require(isOneOf(result, {0, 0x600, 0x5000000}), "an undocumented result of an extraction");
        require(result != 0x600 || done <= told, "more pieces than the item has bytes");
        ++calls;
    }
    return result != 0x5000000;
}

void findItem(HZIP zip, const ZIPENTRYW & entry, Record & record)
{
    // What begins with a NUL in the archive, or is no UTF-8, is not found or another item.
    for (const bool ignoreCase : {false, true})
    {
        int index = -7;
        ZIPENTRYW found{};
        const unsigned long result = FindZipItemW(zip, entry.name, ignoreCase, &index, &found);
        require(isOneOf(result, {0, 0x500, 0x700, 0x800}), "an undocumented result of a search");
        record.add(result);
        record.add(static_cast<std::uint64_t>(index));
        require(result != 0 || (index >= 0 && index <= entry.index && found.index == index),
            "the first item of a name is not the one that is found");
        require(result != 0x500 || (index == -1 && found.index == -1), "nothing is found somewhere");
    }
}

/// Does everything with an archive, and closes it; null is for none that opens.
std::size_t exerciseOpened(HZIP zip, Record & record)
{
    record.add(zip != nullptr ? 1 : 0);
    if (zip == nullptr)
        return 0;
    ZIPENTRY all{};
    require(GetZipItemA(zip, -1, &all) == 0 && all.index >= 0 && all.index <= 65'535, "no count");
    std::size_t readable = 0;
    std::size_t calls = 0;
    for (int index = 0; index < std::min(all.index, mostItems); ++index)
    {
        ZIPENTRYW entry{};
        const unsigned long result = GetZipItemW(zip, index, &entry);
        require(isOneOf(result, {0, 0x700, 0x800}), "an undocumented result for an entry");
        record.add(result);
        if (result == 0)
        {
            require(entry.index == index && (entry.attr & 0x80U) != 0, "an entry that cannot be");
            require(
                std::find(entry.name, entry.name + 260, L'\0') != entry.name + 260, "a name without an end");
            record.add(entry.name, sizeof entry.name);
            record.add(entry.attr);
            record.add((std::uint64_t{entry.mtime.dwHighDateTime} << 32) | entry.mtime.dwLowDateTime);
            findItem(zip, entry, record);
        }
        const auto told = static_cast<std::uint32_t>(entry.uncompressedSize);
        if (result == 0 && told <= mostBytes)
            readItem(zip, index, told, told, calls, record);
        if (readItem(zip, index, result == 0 ? 4096 : 16, std::size_t{1} << 32, calls, record))
            ++readable;
    }
    require(isOneOf(FindZipItemA(zip, L"", false, nullptr, nullptr), {0, 0x500}),
        "an undocumented result of a search without an entry");
    require(CloseZipU(zip) == 0, "an archive that does not close");
    return readable;
}

std::size_t exerciseInMemory(const void * archive, std::size_t size, Record & record)
{
    return exerciseOpened(
        OpenZipU(const_cast<void *>(archive), static_cast<unsigned int>(size), ZipKindMemory), record);
}

} // namespace

std::size_t exercise(const void * archive, std::size_t size)
{
    Record record;
    return exerciseInMemory(archive, size, record);
}

std::size_t exerciseInFileToo(const void * archive, std::size_t size)
{
    Record inMemory;
    const std::size_t readable = exerciseInMemory(archive, size, inMemory);
    static ScratchFile file;
    std::wstring path = file.write(archive, size);
    Record inFile;
    exerciseOpened(OpenZipU(path.data(), 0, ZipKindFile), inFile);
    require(inFile == inMemory, "the archive is another one in a file");
    return readable;
}

} // namespace ziptest
