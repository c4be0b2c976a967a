/// @internal
/// @file
/// Matching names with wildcards, for systems whose search knows none.
#pragma once

#include <string_view>

namespace qvplatform
{

/// Whether a name has wildcards in it: `*` or `?`.
bool hasWildcards(std::wstring_view name) noexcept;

/// Whether a pattern matches a whole name. `*` stands for any run of elements, an empty one too, `?` for one
/// element, `*.*` for every name, and all others for themselves. The time is at most the product of the
/// lengths.
bool matchesWildcards(std::wstring_view pattern, std::wstring_view name) noexcept;

} // namespace qvplatform
