#include "VontalBase/zip/Compressor.h"

#include "VontalBase/zip/zipsource.h"
#include "VontalBase/zip/ziptarget.h"
#include "VontalBase/zip/zlibstream.h"

#include <new>
#include <string_view>

namespace zip
{

namespace
{

constexpr int level = 8;
constexpr int memoryLevel = 8;

} // namespace

Compressor::~Compressor()
{
    if (m_isReady)
        deflateEnd(&m_stream);
}

bool Compressor::begin() noexcept
{
    if (m_isReady)
        return deflateReset(&m_stream) == Z_OK;
    if (m_output == nullptr)
        m_output.reset(new (std::nothrow) unsigned char[pieceSize]);
    if (m_output == nullptr)
        return false;
    useOwnMemory(m_stream);
    m_isReady =
        deflateInit2(&m_stream, level, Z_DEFLATED, rawWindowBits, memoryLevel, Z_DEFAULT_STRATEGY) == Z_OK;
    return m_isReady;
}

bool Compressor::deflateAll(Source & source, Target & target, std::uint32_t & size) noexcept
{
    size = 0;
    if (!begin())
        return false;
    m_stream.next_out = m_output.get();
    m_stream.avail_out = pieceSize;
    m_stream.avail_in = 0;
    bool isAtEnd = false;
    int done = Z_OK;
    while (done != Z_STREAM_END)
    {
        if (m_stream.avail_in == 0 && !isAtEnd)
        {
            const std::string_view piece = source.next();
            m_stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(piece.data()));
            m_stream.avail_in = static_cast<uInt>(piece.size());
            isAtEnd = piece.empty();
        }
        done = deflate(&m_stream, isAtEnd ? Z_FINISH : Z_NO_FLUSH);
        if (done != Z_OK && done != Z_STREAM_END)
            return false;
        const bool isFull = m_stream.avail_out == 0;
        if ((isFull || done == Z_STREAM_END) && !write(target, size))
            return false;
    }
    return true;
}

/// Empties what has been put out.
bool Compressor::write(Target & target, std::uint32_t & size) noexcept
{
    const std::size_t count = pieceSize - m_stream.avail_out;
    if (!target.write(m_output.get(), count))
        return false;
    size += static_cast<std::uint32_t>(count);
    m_stream.next_out = m_output.get();
    m_stream.avail_out = pieceSize;
    return true;
}

} // namespace zip
