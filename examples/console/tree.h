// What several of the programs do with directories.
#pragma once

#include "VontalBase/VontalBase.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace console
{

inline Vontal::u8string sizeText(std::int64_t size)
{
    std::string text;
    qvdisk::formatFileSize(size, text);
    return text;
}

inline Vontal::u8string utf8(const Vontal::pstring & wide)
{
    Vontal::u8string text;
    Vontal::c_u16u8(text, wide);
    return text;
}

/// A path of the library for the standard library.
inline std::filesystem::path nativePath(const Vontal::u8string & path)
{
    const Vontal::u8string native = qvdisk::nativePath(path);
    return {std::u8string(native.begin(), native.end())};
}

inline bool isLink(const qvdisk::File & file)
{
    std::error_code error;
    return std::filesystem::is_symlink(nativePath(utf8(file.getPath())), error);
}

/// A name without what a terminal takes for an order.
inline Vontal::u8string printable(Vontal::u8string name)
{
    std::replace_if(
        name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; },
        '?');
    return name;
}

//! [entries]
/// Collects what one directory holds.
class Entries final : public qvdisk::FileEnumerator
{
public:
    bool onEntry(qvdisk::File & entry) override
    {
        entries.push_back(entry);
        return true;
    }

    std::vector<qvdisk::File> entries;
};
//! [entries]

/// Reads what a directory holds, the last name first, so that who takes entries from the end takes them in
/// order.
inline bool readEntries(qvdisk::File & directory, std::vector<qvdisk::File> & entries)
{
    Entries found;
    if (!directory.getEntries(&found))
        return false;
    std::sort(found.entries.begin(), found.entries.end(),
        [](const qvdisk::File & a, const qvdisk::File & b) { return a.getPath() > b.getPath(); });
    entries = std::move(found.entries);
    return true;
}

} // namespace console
