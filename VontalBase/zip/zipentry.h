/// @internal
/// @file
/// Making the entry that tells of an item.
#pragma once

#include "VontalBase/zip/zipdirectory.h"
#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/ziputfield.h"

#include <cstdint>
#include <string_view>

namespace zip
{

/// An entry in which nothing is told but an index or a count.
ZIPENTRY emptyEntry(std::int32_t index) noexcept;

/// The file attributes for the external attributes of an item.
std::uint32_t attributesOf(std::uint32_t externalAttributes) noexcept;

/// The entry of an item.
/// @param name without a NUL, of at most `Directory::longestName` bytes.
ZIPENTRY entryOf(
    std::int32_t index, std::string_view name, const CentralEntry & entry, const UtTimes & times) noexcept;

/// The same entry with its name wide. Throws `std::bad_alloc`.
ZIPENTRYW wideEntryOf(const ZIPENTRY & entry);

} // namespace zip
