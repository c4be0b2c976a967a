/// @file
/// Reading zip archives: plain functions on a handle.
///
/// An archive is a file, an open file handle, or a block of memory. Its items are asked for by index or by
/// name, and extracted into a file, through a handle, or into memory, there in pieces if wanted. Archives are
/// of the plain 32-bit format on one disk; items are stored or deflated. `unzip.h` unpacks a whole archive.
///
/// Each function but `FormatZipMessageU` and `IsZipHandleU` gives a result code or a handle, and records the
/// code as the reader's last result, which all handles and threads share. 0 is success. A null handle gives
/// 0x10000, the handle of an archive that is being written 0x80000, and 0x300 is given where memory ran out;
/// only where it runs out in the middle of inflating does the item count as one that cannot be read. A call
/// that fails leaves the handle usable. No function throws.
///
/// A handle serves one thread at a time. What an archive holds beyond its format's rules, or lies about,
/// gives one of the results told here, whatever it is.
///
/// Kept: the CRC-32 of an item is not checked, so that a damaged item may be extracted with result 0.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/platform/filetime.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/zip/ziphandle.h"

#include <cstdint>

/// What the directory of an archive says of an item, with its name as it is stored.
///
/// The three times are those of the item's DOS date, taken as UTC, or all zeros where that is no date; a "UT"
/// extra field in front of the item's data replaces those that it holds.
struct ZIPENTRY
{
    /// The item's index, or the count of items where index -1 was asked for.
    std::int32_t index;
    /// At most 259 bytes of the name, UTF-8 by agreement, with a NUL behind them.
    char name[260];
    /// File attributes with their values on Windows.
    Vontal::ulong32 attr;
    /// Last access.
    FILETIME atime;
    /// Creation.
    FILETIME ctime;
    /// Last change.
    FILETIME mtime;
    /// In bytes; negative where the archive tells 2 GiB or more.
    std::int32_t compressedSize;
    /// In bytes; negative where the archive tells 2 GiB or more.
    std::int32_t uncompressedSize;
};

/// A `ZIPENTRY` whose name is wide.
struct ZIPENTRYW
{
    /// The item's index, or the count of items where index -1 was asked for.
    std::int32_t index;
    /// At most 259 units of the name, with a NUL behind them. What is not UTF-8 is U+FFFD.
    wchar_t name[260];
    /// File attributes with their values on Windows.
    Vontal::ulong32 attr;
    /// Last access.
    FILETIME atime;
    /// Creation.
    FILETIME ctime;
    /// Last change.
    FILETIME mtime;
    /// In bytes; negative where the archive tells 2 GiB or more.
    std::int32_t compressedSize;
    /// In bytes; negative where the archive tells 2 GiB or more.
    std::int32_t uncompressedSize;
};

/// Opens an archive. The process's working directory at this moment is the one under which directories are
/// made when items are extracted.
/// @param z what @p flags tells. With `ZipKindFile` the wide name of a file. With `ZipKindHandle` that of a
///     disk file: the archive begins where it stands at the earliest, the reader makes a handle of its own,
///     and where the two have one position, as on Windows, reading moves it. With `ZipKindMemory` a block of
///     memory, which must live and stay as it is while the archive is open.
/// @param len of a block of memory in bytes; of no meaning otherwise.
/// @param flags one of the three kinds.
/// @return the archive, which the caller closes with `CloseZipU`; null with the result recorded where that
///     fails: 0x10000 for other @p flags, 0x100 where the handle cannot be duplicated, 0x2000000 where it is
///     not that of a disk file, 0x200 where the file does not open. Two results have no text: -1 where there
///     is no record of an archive's end or it cannot be read, -103 where that record cannot be right.
VONTALBASE_API HZIP OpenZipU(void * z, unsigned int len, Vontal::ulong32 flags);

/// Closes an archive; the handle is then no longer one.
/// @param hz the archive.
/// @return 0.
VONTALBASE_API Vontal::ulong32 CloseZipU(HZIP hz);

/// Tells of an item, by its index. An item that is being extracted in pieces is ended, but not where the
/// result is 0x10000.
/// @param hz the archive.
/// @param index from 0 on, or -1 for the count of items.
/// @param ze receives what is told. For index -1 that is the count in `index`, and nothing in the rest.
/// @return 0; with @p ze left alone 0x10000 for any other index or a null @p ze, 0x700 where the item's
///     directory entry or the header in front of its data cannot be read or do not agree, 0x800 where its
///     extra field cannot be read.
///
/// Kept: in an archive with other bytes in front of it the extra field is looked for too early by as many
/// bytes; only the times are at stake.
VONTALBASE_API Vontal::ulong32 GetZipItemA(HZIP hz, int index, ZIPENTRY * ze);
/// The same with a wide name.
/// @param hz, index, ze as for `GetZipItemA`.
/// @return as `GetZipItemA`.
VONTALBASE_API Vontal::ulong32 GetZipItemW(HZIP hz, int index, ZIPENTRYW * ze);

/// Looks for an item by its whole name, as it is stored: directories are part of it, and `/` is not `\`. The
/// first in the order of the directory is taken. Once one is found, an item that is being extracted in
/// pieces is ended.
///
/// Where the item that was last asked for could not be reached, since the directory's record of it or of one
/// in front of it cannot be read, no name is found until an item that can be reached is asked for.
/// @param hz the archive.
/// @param name of fewer than 256 units, and of no more than 255 bytes as UTF-8; an item with a longer one is
///     not found. Null is not found either.
/// @param ignoreCase takes the letters A to Z for those from a to z. Other letters keep their case.
/// @param index receives the item's index, or -1 where it is not found; null is allowed.
/// @param ze receives what `GetZipItemA` tells of the item. Where it is not found, all of it becomes 0 but
///     `index`, which becomes -1. Null is allowed; what the item's own header says is then not looked at.
/// @return 0; 0x500 where it is not found; what `GetZipItemA` gives where that fails, with @p ze left alone.
///     A handle that is none to be read from leaves @p index alone too.
///
/// Kept: only the first 255 bytes of a stored name are compared, so that a longer one is found by them.
VONTALBASE_API Vontal::ulong32 FindZipItemA(
    HZIP hz, const wchar_t * name, bool ignoreCase, int * index, ZIPENTRY * ze);
/// The same with a wide name in what is told.
/// @param hz, name, ignoreCase, index, ze as for `FindZipItemA`.
/// @return as `FindZipItemA`.
VONTALBASE_API Vontal::ulong32 FindZipItemW(
    HZIP hz, const wchar_t * name, bool ignoreCase, int * index, ZIPENTRYW * ze);

/// Extracts an item.
///
/// Into memory: writes the item's bytes into the block. Where the block has exactly the size of the item, one
/// call does it. Otherwise each call with the same index gives the next bytes with 0x600, the last ones too,
/// and one more call gives none with 0; how many bytes came is to be worked out from the sizes. A block of
/// size 0 ends that with 0. Extracting another item, or any into a file or through a handle, and asking for
/// an item or finding one end it too: the next call begins anew. A call that is refused for its kind, its
/// block or its entry leaves it alone, as do a search that finds nothing and `GetZipItemA` with an index that
/// is none; `UnzipItem` with such an index ends it.
///
/// Into a file: makes it, or empties it, with the attributes of the item, and gives it the item's times. The
/// directory part of its name is made under the directory that was the working one at opening, unless it
/// begins with a separator, has a ":" as its second character or contains "../" or "..\"; failures there are
/// not told. The name itself counts from the present working directory. For an item that is a directory the
/// name does not count: the directory of the stored name is made under the working directory of the opening.
///
/// Through a handle: writes at its position, and leaves it open. A disk file gets the item's times. For an
/// item that is a directory nothing happens.
///
/// What was made before a failure stays.
///
/// @param hz the archive.
/// @param index of the item, from 0 on.
/// @param dst what @p flags tells: with `ZipKindMemory` the block, with `ZipKindFile` the wide name of the
///     file, with `ZipKindHandle` the handle.
/// @param len of the block in bytes; of no meaning otherwise.
/// @param flags one of the three kinds.
/// @return 0, or 0x600; 0x10000 for other @p flags, an index not below the count of items, or a null block of
///     a size other than 0. Into memory 0x5000000 where the item cannot be read. Into a file 0x200 where that
///     does not open, and 0x400 where the item cannot be read or its bytes not written, be it told only at
///     the closing. A negative index is that of an item that cannot be read, so that a file is made and
///     stays empty.
///
/// Kept: the stored name of a directory is not screened, so that an archive may make directories anywhere.
VONTALBASE_API Vontal::ulong32 UnzipItem(
    HZIP hz, int index, void * dst, unsigned int len, Vontal::ulong32 flags);

/// Gives the text for a result code. Any thread may call it.
/// @param code a result; 1 asks for the reader's last one.
/// @param buf receives the text, cut to @p len - 1 characters, with a NUL behind it; null for none.
/// @param len of @p buf in bytes; 0 for no copy.
/// @return the length of the whole text in bytes.
VONTALBASE_API unsigned int FormatZipMessageU(Vontal::ulong32 code, char * buf, unsigned int len);

/// Whether a handle is that of an archive that is open for reading.
/// @param hz any handle that an archive was opened or begun with and that is not closed, or null.
/// @return whether `OpenZipU` gave it.
///
/// Kept: null is taken for one.
VONTALBASE_API bool IsZipHandleU(HZIP hz);
