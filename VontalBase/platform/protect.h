/// @internal
/// @file
/// Memory that only this process can read.
///
/// The key is of the process and made on first use; it is never stored, and what it protects means nothing to
/// any other process. Equal bytes give equal protected bytes. Any thread may call the functions.
#pragma once

#include <cstddef>

namespace qvplatform
{

/// What is protected consists of whole blocks of so many bytes.
constexpr std::size_t protectedBlock = 16;

/// Protects bytes in place.
/// @param size a multiple of `protectedBlock`, not 0.
/// @return false where the system refuses; the bytes are not to be used then.
bool protectMemory(void * bytes, std::size_t size) noexcept;

/// Undoes `protectMemory`.
/// @param size the same that was protected.
/// @return false where the system refuses; the bytes are not to be used then.
bool unprotectMemory(void * bytes, std::size_t size) noexcept;

} // namespace qvplatform
