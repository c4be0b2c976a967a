/// @file
/// Bytes in memory as a stream.
#pragma once

#include "VontalBase/core/InputStream.h"
#include "VontalBase/export.h"

#include <cstdint>

namespace qvbase
{

/// A stream over a private copy of bytes. It is made through a class that counts, as
/// `ReferencedImpl<ByteArrayInputStream>` for instance, and initialised once.
///
/// Kept: copies share the bytes, which each of them frees.
class VONTALBASE_API ByteArrayInputStream : public InputStream
{
public:
    /// Shares the bytes.
    ByteArrayInputStream(const ByteArrayInputStream &) = default;
    /// Shares the bytes. What this stream held is not freed.
    ByteArrayInputStream & operator=(const ByteArrayInputStream &) = default;

    /// Copies @p size bytes, which the stream then delivers.
    ///
    /// Kept: a second call neither frees the bytes of the first one nor goes back to the beginning.
    ///
    /// @param data the bytes; may be null if @p size is 0.
    /// @param size how many.
    /// @return false where memory is short; the stream is not open then.
    bool init(const void * data, unsigned int size);

    /// Reads the next bytes: as many as there are, and not more than @p size. A negative size gives 0.
    int read(void * buffer, int size) override;
    /// Frees the bytes.
    void close() override;

protected:
    /// A stream that is not open.
    ByteArrayInputStream() = default;
    /// Frees the bytes.
    ~ByteArrayInputStream() override;

private:
    unsigned char * m_data = nullptr;
    std::uint32_t m_size = 0;
    std::int32_t m_position = 0;
};

} // namespace qvbase
