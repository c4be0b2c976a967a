/// @internal
/// @file
/// Deflating the items of an archive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <zlib.h>

namespace zip
{

class Source;
class Target;

/// Deflates one source behind the other: raw streams, always with the same patience. Belongs to one thread at
/// a time.
class Compressor
{
public:
    Compressor() noexcept = default;
    Compressor(const Compressor &) = delete;
    Compressor & operator=(const Compressor &) = delete;
    ~Compressor();

    /// Writes the rest of a source as one stream.
    /// @param size receives how many bytes of it the target took; also where the call fails.
    /// @return false where the target refuses or memory is short.
    bool deflateAll(Source & source, Target & target, std::uint32_t & size) noexcept;

private:
    bool begin() noexcept;
    bool write(Target & target, std::uint32_t & size) noexcept;

    /// What the target gets at once.
    static constexpr std::size_t pieceSize = 16384;

    z_stream m_stream = {};
    std::unique_ptr<unsigned char[]> m_output;
    /// The stream has taken its memory, which it keeps for the next source.
    bool m_isReady = false;
};

} // namespace zip
