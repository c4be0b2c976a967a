#include "VontalBase/zip/ziptarget.h"

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/zip/ziphandle.h"

#include <algorithm>
#include <cstring>

namespace zip
{

namespace
{

/// Small items go to the system whole.
constexpr std::size_t bufferSize = std::size_t{128} * 1024;

constexpr std::uint64_t largestPosition = 0xFFFFFFFF;

} // namespace

Target::~Target()
{
    close();
}

bool Target::close() noexcept
{
    if (!qvplatform::isHandle(m_handle))
        return true;
    const bool isClosed = qvplatform::closeWritten(m_handle);
    m_handle = qvplatform::invalidHandle();
    return isClosed;
}

Result Target::open(void * target, unsigned int size, Vontal::ulong32 kind)
{
    switch (kind)
    {
    case ZipKindFile:
        return openFile(static_cast<const wchar_t *>(target));
    case ZipKindHandle:
        return duplicate(target);
    case ZipKindMemory:
        return takeMemory(target, size);
    default:
        return result::faultyArguments;
    }
}

Result Target::openFile(const wchar_t * path)
{
    m_buffer = std::make_unique<char[]>(bufferSize);
    if (path != nullptr)
        m_handle = qvplatform::createForWriting(path, qvplatform::attribute::normal);
    if (!qvplatform::isHandle(m_handle))
        return result::noFile;
    m_canSeek = true;
    return result::success;
}

Result Target::duplicate(qvplatform::Handle handle)
{
    m_buffer = std::make_unique<char[]>(bufferSize);
    if (qvplatform::isHandle(handle))
        m_handle = qvplatform::duplicateHandle(handle);
    if (!qvplatform::isHandle(m_handle))
        return result::noDuplicate;
    std::uint64_t position = 0;
    // No position beyond this one can be told in an archive.
    m_canSeek = qvplatform::isDiskFile(m_handle) && !qvplatform::alwaysAppends(m_handle) &&
                qvplatform::tellPosition(m_handle, position) && position <= largestPosition;
    if (m_canSeek)
    {
        m_base = static_cast<std::uint32_t>(position);
        m_end = largestPosition - position;
    }
    return result::success;
}

Result Target::takeMemory(void * block, unsigned int size)
{
    if (size == 0)
        return result::memoryTooSmall;
    if (block == nullptr)
    {
        if (!m_mapping.grow(size))
            return result::noMemory;
        block = m_mapping.data();
    }
    m_memory = static_cast<char *>(block);
    m_memorySize = size;
    m_canSeek = true;
    return result::success;
}

bool Target::write(const void * data, std::size_t size) noexcept
{
    if (m_position + size + m_keptFree > m_end)
        return false;
    if (m_memory != nullptr)
        return writeToMemory(data, size);
    const char * from = static_cast<const char *>(data);
    while (size > 0)
    {
        const auto at = static_cast<std::size_t>(m_position - m_bufferStart);
        const std::size_t count = std::min(size, bufferSize - at);
        if (count == 0)
        {
            if (!flush())
                return false;
            continue;
        }
        std::memcpy(&m_buffer[at], from, count);
        m_bufferUsed = std::max(m_bufferUsed, at + count);
        m_position += count;
        from += count;
        size -= count;
    }
    return true;
}

bool Target::writeToMemory(const void * data, std::size_t size) noexcept
{
    // Kept: a block that would be full to its last byte is too small.
    if (m_memorySize <= m_position + size && !growMemory(m_position + size))
        return false;
    std::memcpy(m_memory + m_position, data, size);
    m_position += size;
    return true;
}

/// Goes on in a mapping of the writer's own. The caller's block is left with what it held.
bool Target::growMemory(std::uint64_t needed) noexcept
{
    const bool isCallers = m_mapping.data() == nullptr;
    // Kept: what outgrows twice the memory fills the new one to its last byte.
    const std::uint64_t size = std::max(needed, 2 * m_memorySize);
    if (!m_mapping.grow(static_cast<std::size_t>(size)))
        return false;
    if (isCallers)
        std::memcpy(m_mapping.data(), m_memory, static_cast<std::size_t>(m_memorySize));
    m_memory = m_mapping.data();
    m_memorySize = size;
    return true;
}

bool Target::flush() noexcept
{
    if (m_bufferUsed == 0)
        return true;
    if (m_isDisplaced && !moveHandle(m_bufferStart))
        return false;
    std::size_t count = 0;
    const bool isWritten = qvplatform::writeBytes(m_handle, m_buffer.get(), m_bufferUsed, count);
    m_reached = std::max(m_reached, m_bufferStart + count);
    m_bufferStart += m_bufferUsed;
    m_bufferUsed = 0;
    m_isDisplaced = !isWritten;
    return isWritten;
}

bool Target::finish() noexcept
{
    if (!flush())
        return false;
    if (!m_canSeek || m_reached <= m_position)
        return true;
    std::uint64_t size = 0;
    if (!qvplatform::readFileSize(m_handle, size))
        return false;
    return size > m_base + m_reached || qvplatform::cutFile(m_handle, m_base + m_position);
}

bool Target::moveHandle(std::uint64_t position) noexcept
{
    m_isDisplaced = m_canSeek && !qvplatform::seekTo(m_handle, m_base + position);
    return !m_isDisplaced;
}

Result Target::seek(std::uint64_t position) noexcept
{
    if (m_memory != nullptr)
        return seekInMemory(position);
    if (!qvplatform::isHandle(m_handle))
        m_error = result::notInitialised;
    else if (!m_canSeek)
        m_error = result::unseekable;
    if (m_error != result::success)
        return result::unseekable;
    if (position < m_bufferStart || position > m_bufferStart + m_bufferUsed)
    {
        if (!flush())
            return result::writeFailed;
        if (!moveHandle(position))
            return result::unseekable;
        m_bufferStart = position;
    }
    m_position = position;
    return result::success;
}

Result Target::seekInMemory(std::uint64_t position) noexcept
{
    // Kept: memory that is full to its last byte ends all additions.
    if (position >= m_memorySize)
    {
        m_error = result::memoryTooSmall;
        return result::unseekable;
    }
    m_position = position;
    return result::success;
}

std::uint64_t Target::recover(std::uint64_t position) noexcept
{
    if (!m_canSeek)
        position = m_reached;
    m_position = position;
    if (m_memory == nullptr)
    {
        m_bufferStart = position;
        m_bufferUsed = 0;
        m_isDisplaced = true;
    }
    return position;
}

} // namespace zip
