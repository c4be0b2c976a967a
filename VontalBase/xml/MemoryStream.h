/// @internal
/// @file
/// A COM stream in memory.
#pragma once

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace qvdisk
{
class FileWriter;
}

namespace qvxml
{

/// A stream in memory. Every operation tells by its result whether the service did it.
class MemoryStream
{
public:
    /// Makes the stream. The others need that this succeeded.
    bool create();
    /// Writes a block.
    bool write(const char * data, std::uint32_t size);
    /// Writes all that @p in still gives.
    bool writeAll(std::istream & in);
    /// Goes back to the start.
    bool rewind();
    /// How many bytes are in the stream.
    bool readSize(std::uint64_t & size);
    /// Appends @p size bytes from the current position on.
    bool appendTo(std::string & out, std::uint64_t size);
    /// Writes all that is in the stream, wherever its position is.
    bool writeTo(qvdisk::FileWriter & out);

    /// The stream, with no new reference.
    IStream * get() const noexcept
    {
        return m_stream.get();
    }

private:
    qvbase::ReferenceMSCom<IStream> m_stream;
};

} // namespace qvxml
