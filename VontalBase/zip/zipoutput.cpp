#include "VontalBase/zip/zipoutput.h"

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/text/pathseparators.h"

#include <utility>

namespace zip
{

namespace
{

constexpr std::wstring_view separators = L"/\\";

bool leadsOut(std::wstring_view name) noexcept
{
    // Kept: two dots count wherever a separator follows them, as in "a../b".
    return Vontal::isPathSeparator(name.front()) || (name.size() > 1 && name[1] == L':') ||
           name.find(L"../") != std::wstring_view::npos || name.find(L"..\\") != std::wstring_view::npos;
}

} // namespace

void makeDirectories(const std::wstring & root, std::wstring_view path)
{
    if (root.empty())
        return;
    // A separator that begins the path or follows another one ends no name of its own.
    for (std::size_t i = 1; i < path.size(); ++i)
    {
        if (Vontal::isPathSeparator(path[i]) && !Vontal::isPathSeparator(path[i - 1]))
            qvplatform::makeDirectory(root + std::wstring(path.substr(0, i)));
    }
    if (!path.empty() && !Vontal::isPathSeparator(path.back()))
        qvplatform::makeDirectory(root + std::wstring(path));
}

std::wstring_view safeDirectoryPart(std::wstring_view name) noexcept
{
    const std::size_t last = name.find_last_of(separators);
    if (last == std::wstring_view::npos || leadsOut(name))
        return {};
    return name.substr(0, last);
}

Output::Output(qvplatform::Handle handle) noexcept : m_handle(handle), m_isOwned(false)
{
}

Output::Output(const std::wstring & path, std::uint32_t attributes)
    : m_handle(qvplatform::createForWriting(path, attributes)), m_isOwned(true)
{
}

Output::~Output()
{
    close();
}

bool Output::isOpen() const noexcept
{
    return qvplatform::isHandle(m_handle);
}

bool Output::isDiskFile() noexcept
{
    if (!m_isDiskFile)
        m_isDiskFile = isOpen() && qvplatform::isDiskFile(m_handle);
    return *m_isDiskFile;
}

bool Output::write(const void * data, std::size_t size) noexcept
{
    return isDiskFile() ? qvplatform::writeToDisk(m_handle, data, size)
                        : isOpen() && qvplatform::writeBytes(m_handle, data, size);
}

bool Output::close() noexcept
{
    return !m_isOwned || !isOpen() ||
           qvplatform::closeWritten(std::exchange(m_handle, qvplatform::invalidHandle()));
}

void Output::setTimes(std::uint64_t created, std::uint64_t accessed, std::uint64_t changed) noexcept
{
    if (isDiskFile())
        qvplatform::setFileTimes(m_handle, created, accessed, changed);
}

} // namespace zip
