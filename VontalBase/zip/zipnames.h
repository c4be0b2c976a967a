/// @internal
/// @file
/// Which names of items may be unpacked into a directory.
#pragma once

#include <string>
#include <string_view>

namespace zip
{

/// What is wrong with a name.
enum class NameFault
{
    None,
    Empty,
    HoldsNul,
    Absolute,
    /// It begins with a drive letter, or holds a colon where that ends a name.
    Drive,
    LeavesTarget,
    Device,
    /// A component ends in a dot or a blank.
    Ending
};

/// A name of an item, seen as a path below some directory.
struct ScreenedName
{
    NameFault fault = NameFault::None;
    /// Its components with `\` between them, without any that is `.` or `..`. Empty for the directory itself,
    /// and where there is a fault.
    std::wstring path;
    /// It ends in a separator.
    bool endsInSeparator = false;
};

/// Looks through a name of UTF-8 component by component; `/` and `\` both separate.
/// @param colonsEndNames whether what stands behind a colon is no part of a name, as on Windows.
ScreenedName screenName(std::string_view name, bool colonsEndNames);

/// What is wrong, as the end of a sentence that begins with the name; nothing for none.
std::string_view textOf(NameFault fault) noexcept;

} // namespace zip
