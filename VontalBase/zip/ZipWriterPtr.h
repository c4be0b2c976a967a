/// @file
/// An owner of a zip archive that is being written.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/zip/ziphandle.h"

namespace qvzip
{

/// Holds the handle of an archive and closes it, which is what completes an archive that is being written. It
/// may hold a reader's or a writer's handle; which of the two it is, is asked when it is closed.
///
/// The operations tell by their result only; `FormatZipMessageZ` with code 1 tells more. An object serves one
/// thread at a time.
///
/// Kept: a copy holds the same handle, and assignment does not close what was held before. Both objects close
/// what they hold, so one of them must `release` it first.
class VONTALBASE_API ZipWriterPtr
{
public:
    /// Takes the ownership of a handle; null is none.
    // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): callers pass handles as they
    // are.
    ZipWriterPtr(HZIP__ * handle = nullptr) noexcept : m_handle(handle)
    {
    }
    /// Holds the same handle as the other one.
    ZipWriterPtr(const ZipWriterPtr &) = default;
    /// Holds the same handle as the other one from then on. What was held before is not closed.
    ZipWriterPtr & operator=(const ZipWriterPtr &) = default;
    /// Closes what is held.
    virtual ~ZipWriterPtr();

    /// The handle, which stays owned; null for none.
    // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): so that it serves as a handle.
    operator HZIP__ *() noexcept
    {
        return m_handle;
    }
    /// The handle, which stays owned; null for none.
    HZIP__ * get() noexcept
    {
        return m_handle;
    }
    /// Gives the handle up to the caller, who closes it; null for none. Nothing is held then.
    HZIP__ * release() noexcept;
    /// Closes what is held and takes the ownership of a handle; null is none.
    void attach(HZIP__ * handle);
    /// Closes what is held. Nothing is held then. Whether the archive could be completed is told by
    /// `FormatZipMessageZ`, or by `CloseZipZ` for who releases the handle.
    void close();

    /// Closes what is held, and makes a new archive in a file, in the place of any file of that name.
    /// @return whether that worked; otherwise nothing is held.
    bool createZipFile(const Vontal::u8string & path);

    /// Adds a file as an item.
    /// @param itemName its name in the archive; a `\` in it becomes a `/`.
    /// @param filePath the file, which nobody may have open for writing.
    /// @return false where nothing is held, or where `ZipAdd` gives a code.
    bool addItemFromFile(const Vontal::u8string & itemName, const Vontal::u8string & filePath);

    /// Adds bytes as an item.
    /// @param itemName its name in the archive; a `\` in it becomes a `/`.
    /// @param data the bytes, which are only read.
    /// @param length in bytes; 0 is refused.
    /// @return false where nothing is held, or where `ZipAdd` gives a code.
    bool addItemFromMemory(const Vontal::u8string & itemName, char * data, unsigned int length);

    /// Adds a directory with all that is in it, under the directory's own last name.
    ///
    /// Kept: the place of the directory is found by erasing that name from the path where it occurs first, so
    /// that a path in which it occurs earlier, as in `C:\data\x\data`, leads elsewhere.
    ///
    /// @param dirPath without a separator at its end.
    /// @return false where nothing is held, or where an item could not be added; those before it stay.
    bool addDirContent(const Vontal::u8string & dirPath);

private:
    HZIP m_handle;
};

} // namespace qvzip
