/// @internal
/// @file
/// The items of an archive: the header in front of the data, and the data.
#pragma once

#include "VontalBase/zip/Inflater.h"
#include "VontalBase/zip/zipdirectory.h"
#include "VontalBase/zip/zipinput.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace zip
{

/// What the header in front of an item's data tells. Positions are from the beginning of the input.
struct LocalHeader
{
    std::uint64_t dataPosition = 0;
    std::uint16_t extraLength = 0;
    /// Kept: without the bytes in front of the archive, so that their extra field is looked for too early.
    std::uint64_t extraPosition = 0;
};

/// Reads the header of an item and holds it against the item's entry.
/// @param wanted how many bytes are worth reading with it, as for `InputWindow::view`.
/// @return false where it cannot be read or does not agree.
bool readLocalHeader(InputWindow & window, const CentralEntry & entry, std::uint64_t bytesBefore,
    std::size_t wanted, LocalHeader & header);

/// What came of a reading.
struct ItemPiece
{
    /// How many bytes came, also in front of a failure.
    std::size_t count = 0;
    /// The archive's bytes are not there, or are no compressed stream.
    bool hasFailed = false;
};

/// What can be said of an item in the end.
enum class ItemEnd
{
    /// Not all bytes were read.
    Partial,
    /// The bytes have the CRC-32 that the archive tells.
    Matched,
    /// They have another one.
    Mismatched
};

/// Reads the data of one item after the other.
class ItemReader
{
public:
    /// @param window must outlive this.
    explicit ItemReader(InputWindow & window) noexcept : m_window(&window)
    {
    }

    /// Begins with an item. Throws `std::bad_alloc`, and then no item is open.
    /// @param entry with the method stored or deflated.
    void begin(const CentralEntry & entry, const LocalHeader & header);

    [[nodiscard]] bool isOpen() const noexcept
    {
        return m_isOpen;
    }

    /// The size of the open item, in bytes, as the directory tells it.
    [[nodiscard]] std::uint32_t size() const noexcept
    {
        return m_size;
    }

    /// Reads the next bytes of the open item.
    /// @return fewer than @p size bytes at the item's end, which comes early where its compressed data do, or
    ///     at a failure. None and no failure where it is at its end.
    ItemPiece read(void * buffer, std::size_t size);

    /// Whether all bytes of the open item were read, and the data in the archive end with them.
    bool isWhole();

    /// Ends the item, if one is open.
    ItemEnd end() noexcept;

private:
    /// Whether a reading is to go on.
    enum class Progress
    {
        More,
        Ended,
        Failed
    };

    bool takeInput();
    Progress inflate(unsigned char *& target, std::size_t & room) noexcept;
    Progress copy(unsigned char *& target, std::size_t & room) noexcept;

    InputWindow * m_window;
    Inflater m_inflater;
    bool m_isOpen = false;
    bool m_isStored = false;
    /// The compressed stream has come to its end.
    bool m_hasEnded = false;
    std::uint32_t m_size = 0;
    std::uint32_t m_expectedCrc = 0;
    std::uint32_t m_crc = 0;
    std::uint32_t m_restUncompressed = 0;
    /// What is still to be looked at, from `m_position` on.
    std::uint32_t m_restCompressed = 0;
    std::uint64_t m_position = 0;
    /// What is being looked at.
    std::span<const unsigned char> m_input;
};

} // namespace zip
