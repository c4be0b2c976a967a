/// @file
/// A name whose file is deleted with the object.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/pstring.h"

namespace Vontal
{
class u8string;
}

namespace qvdisk
{

/// Holds the path of a file and deletes the file in the end. An empty path means that none is held. The file
/// need not exist; whether a deletion succeeded is never told.
///
/// An object belongs to one thread at a time. None of the operations fails but by `std::bad_alloc`.
class VONTALBASE_API AutoDeleteFile
{
public:
    /// Holds nothing.
    AutoDeleteFile() = default;
    /// Kept: holds the same path, so that both objects delete the file, the second without effect.
    AutoDeleteFile(const AutoDeleteFile &) = default;
    /// Holds @p name.
    AutoDeleteFile(const Vontal::pstring & name);
    /// Holds @p name, which is UTF-8.
    AutoDeleteFile(const Vontal::u8string & name);
    /// Deletes the file held.
    ~AutoDeleteFile();

    /// Kept: takes the other's path without deleting the file held so far.
    AutoDeleteFile & operator=(const AutoDeleteFile &) = default;

    /// Deletes the file held, then holds @p name.
    void attach(const Vontal::pstring & name);

    /// Deletes the file held, then makes an empty file in the system's directory for temporary files and
    /// holds it.
    /// @param prefix the name begins with it, cleaned as `createTempFile` does, and with "-" behind it.
    /// @param suffix what stands behind the dot; may be empty.
    /// @return false, with nothing held, if no file could be made.
    bool create(const Vontal::pstring & prefix, const Vontal::pstring & suffix);
    /// The same without a suffix.
    bool create(const Vontal::pstring & prefix);

    /// Deletes the file held and holds nothing.
    void freeFile();

    /// The path held.
    const Vontal::pstring & get() const noexcept
    {
        return path;
    }

    /// Whether nothing is held.
    bool isEmpty() const noexcept
    {
        return path.empty();
    }

    /// Holds nothing from then on, and leaves the file on the disk.
    /// @return the path in UTF-8.
    Vontal::u8string release();

private:
    Vontal::pstring path;
};

} // namespace qvdisk
