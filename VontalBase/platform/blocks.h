/// @internal
/// @file
/// Large blocks of memory for many small objects that live and die together.
#pragma once

#include <cstddef>

namespace qvplatform
{

/// Smaller blocks are better taken from the heap.
constexpr std::size_t leastBlock = std::size_t{128} * 1024;

/// Takes a block of zeros straight from the system, where it can do that with all its pages in place: to
/// fetch them one by one, each when it is first written to, costs as much as what is written.
/// @param size in bytes, at least `leastBlock`.
/// @return null where memory is short.
void * takeBlock(std::size_t size) noexcept;

/// Gives a block back; null is none.
/// @param size what was asked for.
void giveBlock(void * block, std::size_t size) noexcept;

} // namespace qvplatform
