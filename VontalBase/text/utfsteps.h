/// @internal
/// @file
/// The inner loops of the codec between UTF-8 and wide text, in a plain form and in one for processors that
/// can pick bytes out of a register by a table (SSSE3). Both give the same results.
#pragma once

#include <cstddef>

namespace Vontal
{

/// How many elements, or bytes, an inner loop may write beyond what the characters up to `stop` need.
constexpr std::size_t spareElements = 80;
constexpr std::size_t spareBytes = 16;

/// A conversion to wide text under way.
struct Widening
{
    const unsigned char * p;
    /// At or behind this place no further character is begun.
    const unsigned char * stop;
    const unsigned char * end;
    /// Has room for one element a byte up to `stop`, and for `spareElements` more.
    wchar_t * to;
};

/// A conversion to UTF-8 under way.
struct Narrowing
{
    const wchar_t * p;
    /// At or behind this place no further character is begun.
    const wchar_t * stop;
    const wchar_t * end;
    /// Has room for four bytes an element up to `stop`, and for `spareBytes` more.
    char * to;
};

/// The inner loops. Each goes on from `p` to `stop`, or behind it by the rest of the last character.
struct UtfSteps
{
    void (*widen)(Widening & at) noexcept;
    void (*narrow)(Narrowing & at) noexcept;
};

extern const UtfSteps plainUtfSteps;
/// Only for processors that `qvplatform::canPickBytes`.
extern const UtfSteps pickingUtfSteps;

/// The quicker of those that this processor can do.
const UtfSteps & bestUtfSteps() noexcept;

} // namespace Vontal
