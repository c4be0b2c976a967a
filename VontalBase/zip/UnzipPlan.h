/// @internal
/// @file
/// What is to be unpacked of an archive from a stranger, after all of its directory has been looked through.
#pragma once

#include "VontalBase/zip/zipdirectory.h"
#include "VontalBase/zip/zipinput.h"
#include "VontalBase/zip/zipitem.h"

#include <cstddef>
#include <cstdint>
#include <source_location>
#include <string>
#include <vector>

class VontalException;

namespace qvzip
{
struct UnzipOptions;
}

namespace zip
{

/// An archive's bytes, its directory and the data of its items.
struct OpenArchive
{
    OpenArchive() = default;
    OpenArchive(const OpenArchive &) = delete;
    OpenArchive & operator=(const OpenArchive &) = delete;

    Input input;
    Directory directory{input};
    InputWindow window{input};
    ItemReader reader{window};
};

/// An item that may be unpacked.
struct PlannedItem
{
    /// Below the target, with `\` between components; empty for the target itself.
    std::wstring path;
    std::uint32_t size = 0;
    bool isDirectory = false;
};

/// What an archive holds: the items by their indices, and how many bytes they give.
struct UnzipPlan
{
    std::vector<PlannedItem> items;
    std::uint64_t bytes = 0;
};

/// Looks through the directory of an archive that has just been opened.
/// @param error receives one entry where something is refused.
/// @return false where something is refused.
bool makePlan(
    OpenArchive & archive, const qvzip::UnzipOptions & options, UnzipPlan & plan, VontalException & error);

/// Adds an entry of the calling line to a record. @return false, for the caller to return.
bool refuseItem(VontalException & error, const std::string & text,
    std::source_location position = std::source_location::current());

/// The name of an item or path for people to read, in quotes.
std::string quotedName(const std::string & name);

} // namespace zip
