/// @file
/// What reading and writing zip archives share: the handle, and the kinds of source and target. Both have one
/// set of result codes, whose texts `FormatZipMessageZ` and `FormatZipMessageU` give.
#pragma once

#include "VontalBase/text/integers.h"

/// An archive that is open for reading, or one that is being written. Which of the two it is stands in it; a
/// handle serves one thread at a time.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
struct HZIP__
{
    /// 1 for a reader, 2 for a writer.
    Vontal::ulong32 kind;
    /// The library's own affair.
    void * state;
};

/// The opaque form in which applications hold an archive; null for none.
using HZIP = HZIP__ *;

/// A source or target is an open file handle: on Windows the system's own, elsewhere a descriptor cast
/// through `std::intptr_t` to `void *`. Null and -1 are no handle.
constexpr Vontal::ulong32 ZipKindHandle = 1;
/// A source or target is a file, given by its wide name, a `const wchar_t *`.
constexpr Vontal::ulong32 ZipKindFile = 2;
/// A source or target is a block of memory.
constexpr Vontal::ulong32 ZipKindMemory = 3;
/// A source is a bare directory; what is given for it is ignored.
constexpr Vontal::ulong32 ZipKindFolder = 4;
