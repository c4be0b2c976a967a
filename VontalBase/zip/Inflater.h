/// @internal
/// @file
/// Raw inflate.
#pragma once

#include <cstddef>
#include <memory>

struct z_stream_s;

namespace zip
{

/// One inflate stream that serves item after item.
class Inflater
{
public:
    /// What became of a step.
    enum class Step
    {
        /// Bytes were taken or given.
        Done,
        /// The compressed stream is at its end.
        Ended,
        /// The bytes are no compressed stream, or more of them are needed, or memory ran out: zlib makes its
        /// window when it first needs one.
        Failed
    };

    Inflater() noexcept;
    Inflater(const Inflater &) = delete;
    Inflater & operator=(const Inflater &) = delete;
    ~Inflater();

    /// Makes it ready for a new stream. Throws `std::bad_alloc`.
    void start();

    /// Inflates some bytes. To be called behind `start`.
    /// @param source, sourceSize the compressed bytes; receive what is left of them.
    /// @param target, targetSize the room; receive what is left of it.
    Step step(const unsigned char *& source, std::size_t & sourceSize, unsigned char *& target,
        std::size_t & targetSize) noexcept;

private:
    struct Deleter
    {
        void operator()(z_stream_s * stream) const noexcept;
    };

    std::unique_ptr<z_stream_s, Deleter> m_stream;
};

} // namespace zip
