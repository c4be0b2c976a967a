/// @internal
/// @file
/// The directory of an archive: the record of its end, and the record of each item.
#pragma once

#include "VontalBase/zip/NameIndex.h"
#include "VontalBase/zip/zipinput.h"
#include "VontalBase/zip/zipresults.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zip
{

/// What the record of the archive's end says.
struct EndRecord
{
    std::uint16_t entryCount = 0;
    std::uint32_t directorySize = 0;
    std::uint32_t directoryOffset = 0;
    /// How many bytes are in front of the archive proper: added to every offset in the directory.
    std::uint64_t bytesBefore = 0;
};

/// Looks for the record of the archive's end, reads it and judges it.
/// @return `noEndRecord` where there is none or it cannot be read, `badArchive` where it cannot be right.
Result readEndRecord(const Input & input, InputWindow & window, EndRecord & record);

/// What the directory says of an item.
struct CentralEntry
{
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    /// The DOS date in the high half, the DOS time in the low one.
    std::uint32_t dosTimestamp = 0;
    std::uint32_t crc = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint16_t nameLength = 0;
    std::uint16_t extraLength = 0;
    std::uint16_t commentLength = 0;
    std::uint32_t externalAttributes = 0;
    /// As it is stored.
    std::uint32_t localHeaderOffset = 0;

    /// Where the record is, from the beginning of the input.
    std::uint64_t position = 0;
    /// Where its name begins among the directory's names.
    std::size_t nameStart = 0;
    /// How many bytes of the name are there.
    std::uint16_t heldName = 0;
};

/// The records of the items. They are read one after the other as far as they are asked for, and kept; one of
/// them is the current one.
class Directory
{
public:
    /// How much of a name is kept.
    static constexpr std::size_t longestName = 259;
    /// How much of a name is compared.
    static constexpr std::size_t longestKey = 255;

    /// @param input must be open when this is used, and outlive it.
    explicit Directory(const Input & input) noexcept;

    /// Reads the record of the end, and goes to the first entry, which need not be readable.
    Result open();

    [[nodiscard]] const EndRecord & endRecord() const noexcept
    {
        return m_end;
    }

    /// Makes an entry the current one. From an entry that is no record no other one behind it is reached.
    /// @return false where its record or one on the way to it is none.
    bool goTo(std::size_t index);

    /// The index of the current entry.
    [[nodiscard]] std::size_t currentIndex() const noexcept
    {
        return m_current;
    }

    /// The current entry. It stays until the next call of `goTo` or `find`.
    [[nodiscard]] const CentralEntry & current() const noexcept
    {
        return m_entries[m_current];
    }

    /// The current entry's name, up to its first NUL and at most `longestName` bytes of it. It stays as long
    /// as the entry.
    /// @return false where the name cannot be read; it is read again when it is next asked for.
    bool readName(std::string_view & name);

    /// All bytes of the current entry's name.
    /// @return false where the name cannot be read.
    bool readWholeName(std::string & name);

    /// Makes the first entry with a name the current one. Names are compared by their first `longestKey`
    /// bytes, up to the first NUL.
    /// @return false, with the current entry left alone, where there is none or the current entry is invalid.
    bool find(std::string_view name, Case compared);

private:
    bool loadTo(std::size_t index);
    bool loadNext();
    void takeName(CentralEntry & entry);
    void takeMissingNames();
    [[nodiscard]] std::uint64_t nextPosition() const noexcept;
    NameIndex & indexFor(Case compared);

    const Input * m_input;
    InputWindow m_window;
    EndRecord m_end;
    /// Those that have been read, in their order and without a gap.
    std::vector<CentralEntry> m_entries;
    std::string m_names;
    /// How many entries at the front have all of the name that is kept.
    std::size_t m_namedEntries = 0;
    std::size_t m_current = 0;
    bool m_isCurrentValid = false;
    NameIndex m_exactIndex;
    NameIndex m_foldedIndex;
};

} // namespace zip
