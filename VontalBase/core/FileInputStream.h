/// @file
/// An open standard file as a stream.
#pragma once

#include "VontalBase/core/InputStream.h"
#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <cstdio>

namespace qvbase
{

/// A stream over a standard file, which it closes in the end. It is made through a class that counts, as
/// `ReferencedImpl<FileInputStream>` for instance.
///
/// Kept: copies share the file, which each of them closes.
class VONTALBASE_API FileInputStream : public InputStream
{
public:
    /// Shares the file.
    FileInputStream(const FileInputStream &) = default;
    /// Shares the file. What this stream held is not closed.
    FileInputStream & operator=(const FileInputStream &) = default;

    /// Owns @p file, which is open for reading in binary mode, from here on. A former file is not closed.
    void init(std::FILE * file) noexcept;
    /// Owns @p file from here on. `std::bad_alloc` may leave the call; the file is still the caller's then.
    /// @param file open for reading in binary mode.
    /// @param name its path.
    /// @param deleteOnClose whether closing deletes what has this path then.
    ///
    /// Kept: a stream that has met the end of a file gives 0 for the next one as well.
    void init(std::FILE * file, const Vontal::u8string & name, bool deleteOnClose);

    /// Reads the next bytes. Once it has met the end of the file it gives 0 and no longer looks, even if the
    /// file grows. A negative size gives 0.
    ///
    /// Kept: a failure is not told apart from a short read.
    int read(void * buffer, int size) override;
    /// Closes the file, and deletes it if that was asked for. Whether either works is not told. If
    /// `std::bad_alloc` leaves the call, the file is closed and not deleted.
    ///
    /// Kept: a second call deletes again what has the path then, and so does the destructor.
    void close() override;

protected:
    /// A stream that is not open.
    FileInputStream() = default;
    /// Closes the file, and deletes it if that was asked for. Where memory is too short for that, the file
    /// stays where it is.
    ~FileInputStream() override;

    /// What `close` and the destructor do. `std::bad_alloc` may leave it as it may leave `close`.
    void closeImpl();

private:
    std::FILE * m_file = nullptr;
    Vontal::u8string m_name;
    bool m_deleteOnClose = false;
    bool m_atEnd = false;
};

} // namespace qvbase
