/// @file
/// Writing zip archives: plain functions on a handle.
///
/// An archive goes to a file, to a file handle, or into memory, in one pass, item by item. An item comes from
/// a file, a file handle or memory, or is a bare directory. The target may be a pipe, and how much a source
/// has may be unknown until it has been read. Archives are of the plain 32-bit format, without encryption and
/// comments; an archive with everything in it, and each item, stay below 4 GiB. `ZipWriterPtr.h` owns a
/// handle.
///
/// Each function but `AddFolderContent`, `FormatZipMessageZ` and `IsZipHandleZ` records its result code as
/// the writer's last one, which all handles and threads share; one result of `ZipAdd` is left out, as is told
/// there. 0 is success. A null handle gives 0x10000, the handle of an archive that is open for reading
/// 0x80000, and 0x300 is given where memory ran out. No function throws. A handle serves one thread at a
/// time.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/zip/ziphandle.h"

#include <concepts>

/// Whether a handle is that of an archive that is being written.
///
/// Kept: null is taken for one.
///
/// @param hz null, or the handle of an archive that is open.
/// @return false for the handle of an archive that is open for reading.
VONTALBASE_API bool IsZipHandleZ(HZIP hz);

/// Begins an archive. What the environment says of the process's time zone is taken up for it, so that no
/// other thread may change the environment meanwhile.
///
/// @param z what @p flags tells. With `ZipKindFile` the wide name of a file, which is made anew, and which
///     nobody else may open while it is written. With `ZipKindHandle` a handle, of which the writer makes one
///     of its own; a disk file is written from where it stands, and its position moves along, unless the
///     handle was opened for appending, which is one that cannot be repositioned. With `ZipKindMemory` a
///     block of memory, which must live until the archive is closed, or null for memory of
///     the writer's own.
/// @param len of the memory in bytes, above 0; of no meaning otherwise. Memory that turns out too small is
///     left as it is by then, and the archive goes on in memory of the writer's own: a block that is to hold
///     the archive must be larger than that, by one byte at least.
/// @param flags one of the three kinds.
/// @return the archive, which the caller closes with `CloseZipZ`; null with the result recorded where that
///     fails: 0x200 where the file cannot be made, 0x100 where the handle cannot be duplicated, 0x30000 for
///     no length, 0x300 where memory is short, 0x10000 for other @p flags.
VONTALBASE_API HZIP CreateZipZ(void * z, unsigned int len, Vontal::ulong32 flags);

/// Adds an item, whose bytes are with the system when the call returns.
///
/// A name is stored in the system's ANSI code page, with `/` in the place of `\`. Items whose names end in
/// .Z, .zip, .zoo, .arc, .lzh, .arj, .gz or .tgz, in small letters or capitals, are stored, the others
/// deflated. A file is added as a whole, wherever its handle stands, and with its times and attributes; its
/// handle stands at its end afterwards. Anything else has the present time.
///
/// Where the call fails, the item is not in the archive, which can be gone on with unless told otherwise
/// here. What was written of the item stays in the archive without harm.
///
/// @param hz the archive.
/// @param dstName of the item, of at most 517 bytes when converted. A directory gets the `/` at its end.
/// @param src what @p flags tells. With `ZipKindFile` the wide name of a file that nobody writes to; with
///     `ZipKindHandle` a handle, which stays the caller's; with `ZipKindMemory` a block of memory; ignored
///     with `ZipKindFolder`, which adds a directory. The handle of a directory gives an item with its times
///     and attributes and without bytes.
/// @param len of the memory in bytes, above 0; of what comes from a pipe, where 0 is for unknown; ignored
///     otherwise. A source that gives more or less than that is added as it is.
/// @param flags one of the four kinds.
/// @return 0; 0x10000 for a name that is null or too long (that result alone is not recorded), for an empty
///     name, for a source that is null or empty memory or no handle, and for other @p flags; 0x200 where the
///     file does not open or tells nothing of itself; 0x400 where the target refuses bytes, where the archive
///     or the item becomes too long, and where there is no memory for deflating; 0x50000 after
///     `ZipGetMemory`; 0x40000 after a result that ends additions.
///
///     0x4000000 from a target that cannot be repositioned, where an item is stored and its size was not
///     known beforehand, or is 2 GiB or more.
///
///     0x2000000 where the target does not go where it should. A file can be gone on with then, memory that
///     is full cannot:
///
/// Kept: memory for an archive ends additions with 0x2000000 when it is full to the last byte at the end of
/// an item, which it is when an item's last piece, of at most 16384 bytes, needs twice of it or more. Begin
/// with enough.
///
/// Kept: the time stamps are made as if it were summer or winter all year, like now.
VONTALBASE_API Vontal::ulong32 ZipAdd(
    HZIP hz, const wchar_t * dstName, void * src, unsigned int len, Vontal::ulong32 flags);

/// Ends additions, writes the directory, and tells where the archive is in memory.
///
/// Kept: it gives 0 also where memory for the directory was short, which `CloseZipZ` alone tells. The length
/// then counts what is not there and may be more than the memory has, so that reading all of it goes beyond
/// the memory. That cannot happen to a block of the caller's own that is larger than the archive.
///
/// @param hz the archive.
/// @param pbuf receives the archive's beginning, valid until `CloseZipZ`; null for an archive that is not in
///     memory, and for a null handle. Null is allowed.
/// @param plen receives the archive's length in bytes, also of one that is not in memory; 0 for a null
///     handle. Null is allowed.
/// @return 0 for an archive in memory; 0x20000 for any other.
VONTALBASE_API Vontal::ulong32 ZipGetMemory(HZIP hz, void ** pbuf, Vontal::ulong32 * plen);

/// The same for a length of another type than the interface has, where the native `unsigned long` is wider.
template <class Length>
requires(std::same_as<Length, unsigned long> && !std::same_as<Length, Vontal::ulong32>) inline Vontal::ulong32
    ZipGetMemory(HZIP hz, void ** pbuf, Length * plen)
{
    Vontal::ulong32 length = 0;
    const Vontal::ulong32 result = ZipGetMemory(hz, pbuf, &length);
    if (plen != nullptr && IsZipHandleZ(hz))
        *plen = length;
    return result;
}

/// Writes the directory unless `ZipGetMemory` has, closes the target, gives the writer's own memory back, and
/// ends the handle.
/// @param hz the archive, whose handle is no longer one then; it is left as it is where it is null or one of
///     reading.
/// @return the result of writing the directory, now or then: 0, or 0x400 where the target refuses, be it only
///     when it is closed; then the archive is of no use.
VONTALBASE_API Vontal::ulong32 CloseZipZ(HZIP hz);

/// Adds a directory with everything in it: each file is added before what comes behind it in its directory,
/// and each directory before what is in it. What links lead to is added in their place, through at most 40
/// links.
///
/// It adds by `ZipAdd`, so that each item's result is the last one recorded until the next item.
///
/// @param hz the archive.
/// @param absolutePath where the directory is, without a separator at its end; no part of the stored names.
///     Not null.
/// @param dirToAdd the directory, from there. The names of all items begin with it. Not null.
/// @return 1 if everything was added; 0 at the first file that was not, whose result is then the last one
///     recorded; 0 also where a directory cannot be read, and where there is something that is neither file
///     nor directory: a pipe, a socket, a device, a link that leads nowhere. What was added before stays.
///
/// Kept: it does not matter whether a directory itself could be added, only what is in it.
VONTALBASE_API int AddFolderContent(HZIP hz, wchar_t * absolutePath, wchar_t * dirToAdd);

/// Gives the text for a result code. Any thread may call it.
/// @param code a result; 1 asks for the writer's last one.
/// @param buf receives the text, cut to @p len - 1 characters, with a NUL behind it; null for none.
/// @param len of @p buf in bytes; 0 for no copy.
/// @return the length of the whole text in bytes.
VONTALBASE_API unsigned int FormatZipMessageZ(Vontal::ulong32 code, char * buf, unsigned int len);
