/// @internal
/// @file
/// What separates the parts of a path.
#pragma once

namespace Vontal
{

/// Whether a character separates the parts of a path: both slashes do, on every system.
template <class Character>
constexpr bool isPathSeparator(Character c) noexcept
{
    return c == Character('\\') || c == Character('/');
}

} // namespace Vontal
