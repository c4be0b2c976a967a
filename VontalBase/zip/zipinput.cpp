#include "VontalBase/zip/zipinput.h"

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/zip/ziphandle.h"

#include <algorithm>

namespace zip
{

Input::~Input()
{
    if (qvplatform::isHandle(m_handle))
        qvplatform::closeHandle(m_handle);
}

Result Input::open(void * source, unsigned int length, Vontal::ulong32 kind)
{
    switch (kind)
    {
    case ZipKindHandle:
        return openHandle(source);
    case ZipKindFile:
        return openFile(static_cast<const wchar_t *>(source));
    case ZipKindMemory:
        m_isMemory = true;
        if (source != nullptr)
            m_memory = {static_cast<const unsigned char *>(source), length};
        return result::success;
    default:
        return result::faultyArguments;
    }
}

Result Input::openHandle(qvplatform::Handle handle) noexcept
{
    if (!qvplatform::isHandle(handle) || !qvplatform::isDiskFile(handle))
        return result::unseekable;
    m_handle = qvplatform::duplicateHandle(handle);
    if (!qvplatform::isHandle(m_handle))
        return result::noDuplicate;
    return qvplatform::tellPosition(m_handle, m_initialOffset) ? result::success : result::unseekable;
}

Result Input::openFile(const wchar_t * path)
{
    if (path != nullptr)
        m_handle = qvplatform::openForReading(path);
    return qvplatform::isHandle(m_handle) ? result::success : result::noFile;
}

bool Input::readSize(std::uint64_t & size) const noexcept
{
    if (!m_isMemory)
        return qvplatform::readFileSize(m_handle, size);
    size = m_memory.size();
    return true;
}

std::size_t Input::readAt(std::uint64_t position, void * buffer, std::size_t size) const noexcept
{
    std::size_t count = 0;
    return qvplatform::readBytesAt(m_handle, position, buffer, size, count) ? count : 0;
}

std::span<const unsigned char> InputWindow::held(std::uint64_t position) const noexcept
{
    const std::uint64_t begin = m_input->isMemory() ? 0 : m_position;
    const std::span<const unsigned char> all =
        m_input->isMemory() ? m_input->memory() : std::span<const unsigned char>(m_buffer.get(), m_size);
    if (position < begin || position - begin > all.size())
        return {};
    return all.subspan(static_cast<std::size_t>(position - begin));
}

std::span<const unsigned char> InputWindow::view(
    std::uint64_t position, std::size_t needed, std::size_t wanted)
{
    std::span<const unsigned char> found = held(position);
    if (found.size() >= needed || m_input->isMemory())
        return found;
    if (m_buffer == nullptr)
        m_buffer = std::make_unique_for_overwrite<unsigned char[]>(capacity);
    m_size = m_input->readAt(position, m_buffer.get(), std::min(std::max(needed, wanted), capacity));
    m_position = position;
    return held(position);
}

void InputWindow::release() noexcept
{
    m_buffer.reset();
    m_size = 0;
}

} // namespace zip
