/// @file
/// Erasing bytes that nobody is to find.
///
/// The functions act on their arguments alone and do not fail. The stores are not optimised away.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <string>

namespace qvbase
{

/// Overwrites @p size bytes with zeros. Nothing happens for a null pointer or a size of 0.
VONTALBASE_API void wipeBuffer(void * data, std::uint64_t size) noexcept;

/// Overwrites the content with zeros, gives its memory back and leaves the string empty.
///
/// Kept: memory that the string has in reserve behind its content is not overwritten. What a longer content
/// left there before stays there.
VONTALBASE_API void wipeString(std::string & text) noexcept;
/// The same for wide text.
VONTALBASE_API void wipeString(std::wstring & text) noexcept;

} // namespace qvbase
