/// @file
/// An owner of a zip archive that is open for reading.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/zip/ziphandle.h"

#include <vector>

namespace qvzip
{

/// Holds the handle of an archive and closes it. It may hold a reader's or a writer's handle; which of the
/// two it is, is asked when it is closed.
///
/// The operations tell by their result only; `FormatZipMessageU` with code 1 tells more. An object serves one
/// thread at a time.
///
/// Kept: a copy holds the same handle, and assignment does not close what was held before. Both objects close
/// what they hold, so one of them must `release` it first.
class VONTALBASE_API ZipPtr
{
public:
    /// Takes the ownership of a handle; null is none.
    // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): callers pass handles as they
    // are.
    ZipPtr(HZIP__ * handle = nullptr) noexcept : m_handle(handle)
    {
    }
    /// Holds the same handle as the other one.
    ZipPtr(const ZipPtr &) = default;
    /// Holds the same handle as the other one from then on. What was held before is not closed.
    ZipPtr & operator=(const ZipPtr &) = default;
    /// Closes what is held.
    ~ZipPtr();

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

    /// Opens the archive of a file.
    /// @return whether that worked. Only then is what was held closed; otherwise it stays.
    bool openZipFile(const Vontal::u8string & path);

    /// Reads one item whole.
    ///
    /// Kept: an item whose data give no byte at all counts as read, whatever size it is said to have, unless
    /// the archive could not hold as much. A wrong checksum is no failure.
    ///
    /// @param name of the item, all of it as it stands in the archive; the case of ASCII letters does not
    ///     matter.
    /// @param out receives the bytes. It is left as it was where the item is not found; where reading fails,
    ///     what it holds is not settled.
    /// @return false where nothing is held, or where the item is not there or cannot be read.
    bool readFileTo(const wchar_t * name, std::vector<char> & out);

private:
    HZIP m_handle;
};

} // namespace qvzip
