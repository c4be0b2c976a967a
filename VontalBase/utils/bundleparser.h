/// @internal
/// @file
/// Taking the text of a ".properties" file apart.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvutils
{

/// One text of a bundle, in the place where it was found.
struct BundleEntry
{
    std::string_view key;
    /// With its escapes, which are known to be good.
    std::string_view value;
};

/// Appends the entries of a text in their order, keys that are there twice among them. Takes time and memory
/// in proportion to the text. `std::bad_alloc` may leave it.
/// @return false where the text has a fault; some entries may then have been appended.
bool parseBundle(std::string_view text, std::vector<BundleEntry> & entries);

/// Appends a value with what its escapes stand for.
void appendUnescaped(std::string_view value, std::string & out);

} // namespace qvutils
