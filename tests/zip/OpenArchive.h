/// @file
/// Archives opened for reading in tests, from each kind of source.
#pragma once

#include "VontalBase/zip/zipreader.h"

#include "support/TempDirectory.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace ziptest
{

/// Where an archive lies.
enum class Source
{
    File,
    Handle,
    /// Behind other bytes, with the handle at its beginning.
    HandleMidFile,
    Memory
};

constexpr Source allSources[] = {Source::File, Source::Handle, Source::HandleMidFile, Source::Memory};

/// How a test's trace shows it.
std::string nameOf(Source source);

/// UTF-8 as wide text, for names of files and items.
std::wstring wide(const std::string & text);

/// The count of a file time.
std::uint64_t unitsOf(const FILETIME & time);

/// A moment in UTC as a count of 100 nanoseconds since 1601.
std::uint64_t moment(int year, int month, int day, int hour, int minute, int second);

/// The reader's last result and its text.
std::string lastMessage();

/// An archive, and the reader that has it open if it does open.
class OpenArchive
{
public:
    explicit OpenArchive(const std::string & bytes, Source source = Source::Memory);
    OpenArchive(const OpenArchive &) = delete;
    OpenArchive & operator=(const OpenArchive &) = delete;
    ~OpenArchive();

    [[nodiscard]] bool isOpen() const
    {
        return m_zip != nullptr;
    }

    /// The handle; null where it does not open.
    [[nodiscard]] HZIP get() const
    {
        return m_zip;
    }

    /// The count of items; -1 where that is not told.
    [[nodiscard]] int count() const;

    /// The entry of an item; a failure fails the test.
    [[nodiscard]] ZIPENTRY entry(int index) const;

    /// The index of an item, or -1.
    [[nodiscard]] int find(const std::string & name, bool ignoreCase = false) const;

    /// What an item holds, read in one call; a result other than 0 fails the test.
    [[nodiscard]] std::string content(int index) const;

private:
    HZIP m_zip = nullptr;
    testsupport::TempDirectory m_directory;
    bool m_hasFile = false;
    std::string m_bytes;
};

/// The bytes of an item read in pieces of so many bytes, with each result: "600 600 0".
struct Pieces
{
    std::string bytes;
    std::string results;
};

/// @param size of the item, which the calls themselves do not tell.
Pieces readInPieces(HZIP zip, int index, unsigned int pieceSize, std::size_t size);

} // namespace ziptest
