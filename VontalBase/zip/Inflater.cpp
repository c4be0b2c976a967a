#include "VontalBase/zip/Inflater.h"

#include "VontalBase/zip/zlibstream.h"

#include <algorithm>
#include <limits>
#include <new>

namespace zip
{

namespace
{

uInt pieceOf(std::size_t size) noexcept
{
    return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

} // namespace

void Inflater::Deleter::operator()(z_stream_s * stream) const noexcept
{
    inflateEnd(stream);
    delete stream; // NOLINT(cppcoreguidelines-owning-memory)
}

Inflater::Inflater() noexcept = default;

Inflater::~Inflater() = default;

void Inflater::start()
{
    if (m_stream != nullptr && inflateReset(m_stream.get()) == Z_OK)
        return;
    auto stream = std::make_unique<z_stream>();
    useOwnMemory(*stream);
    if (inflateInit2(stream.get(), rawWindowBits) != Z_OK)
        throw std::bad_alloc();
    m_stream.reset(stream.release());
}

Inflater::Step Inflater::step(const unsigned char *& source, std::size_t & sourceSize,
    unsigned char *& target, std::size_t & targetSize) noexcept
{
    const uInt given = pieceOf(sourceSize);
    const uInt room = pieceOf(targetSize);
    m_stream->next_in = const_cast<unsigned char *>(source);
    m_stream->avail_in = given;
    m_stream->next_out = target;
    m_stream->avail_out = room;
    const int outcome = inflate(m_stream.get(), Z_SYNC_FLUSH);
    source += given - m_stream->avail_in;
    sourceSize -= given - m_stream->avail_in;
    target += room - m_stream->avail_out;
    targetSize -= room - m_stream->avail_out;
    if (outcome == Z_STREAM_END)
        return Step::Ended;
    return outcome == Z_OK ? Step::Done : Step::Failed;
}

} // namespace zip
