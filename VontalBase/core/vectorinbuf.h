/// @file
/// The bytes of a vector as a stream buffer.
#pragma once

#include "VontalBase/export.h"

#include <streambuf>
#include <vector>

namespace qvbase
{

/// A buffer whose get area is the content of a vector, which must live, and keep its size, as long as the
/// buffer is used. It can neither seek nor refill.
class VONTALBASE_API vectorinbuf : public std::basic_streambuf<char>
{
public:
    /// Begins at the first byte of @p data.
    explicit vectorinbuf(std::vector<char> & data);
    vectorinbuf(const vectorinbuf &) = delete;
    vectorinbuf & operator=(const vectorinbuf &) = delete;
    /// Takes over what is left to @p other, and gives it what is left here.
    // NOLINTNEXTLINE(performance-noexcept-move-constructor): swapping locales may fail.
    vectorinbuf & operator=(vectorinbuf && other);
    /// Leaves the vector alone.
    ~vectorinbuf() override;
};

} // namespace qvbase
