/// @internal
/// @file
/// Escapes of JSON strings.
#pragma once

#include <string>
#include <string_view>

namespace qvjson
{

/// Appends the bytes of `text` as they stand within the quotes of a JSON string.
void appendEscaped(std::string_view text, std::string & out);

} // namespace qvjson
