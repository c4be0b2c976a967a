/// @file
/// The bytes of a vector as a standard input stream.
#pragma once

#include "VontalBase/core/vectorinbuf.h"
#include "VontalBase/export.h"

#include <istream>
#include <vector>

namespace qvbase
{

/// Reads the bytes of a vector in place, by the standard operations.
///
/// The vector must live, and keep its size, as long as the stream is used; a change made to its bytes is
/// seen.
///
/// Kept: the stream cannot seek. `seekg` fails and `tellg` gives -1.
class VONTALBASE_API ivectorstream : public std::basic_istream<char>
{
public:
    /// Begins at the first byte of @p data.
    ivectorstream(std::vector<char> & data);
    /// Takes over the bytes left to @p other and its state, and gives it those of this stream.
    // NOLINTNEXTLINE(performance-noexcept-move-constructor): swapping locales may fail.
    ivectorstream & operator=(ivectorstream && other);
    /// Leaves the vector alone.
    ~ivectorstream() override;

private:
    vectorinbuf m_buffer;
};

} // namespace qvbase
