/// @internal
/// @file
/// The modes in which streams are opened, for systems that must take them apart.
#pragma once

#include <optional>
#include <string_view>

namespace qvplatform
{

/// What a mode asks for.
struct OpenMode
{
    bool reads = false;
    bool writes = false;
    bool creates = false;
    /// Only a file that is not there yet will do.
    bool isExclusive = false;
    bool empties = false;
    bool appends = false;

    friend bool operator==(const OpenMode &, const OpenMode &) = default;
};

/// Reads a mode: `r`, `w` or `a`, then in any order `+`, `x` behind a `w`, and letters that change nothing
/// here, `b` and `t` among them, until a comma or the end. Blanks are skipped.
/// @return nothing where the mode means nothing.
std::optional<OpenMode> parseOpenMode(std::string_view mode) noexcept;

} // namespace qvplatform
