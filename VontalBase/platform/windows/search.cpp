#include "VontalBase/platform/search.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/kernelpath.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <cstdio>
#include <cwchar>
#include <string_view>
#include <utility>

namespace qvplatform
{

namespace
{

constexpr wchar_t everything[] = L"*";

bool isDotName(std::wstring_view name)
{
    return name == L"." || name == L"..";
}

} // namespace

struct Search::System
{
    System() = default;
    System(const System &) = delete;
    System & operator=(const System &) = delete;
    ~System()
    {
        close();
    }

    bool open()
    {
        handle = FindFirstFileW(kernelPath(directory + pattern).c_str(), &data);
        return handle != INVALID_HANDLE_VALUE;
    }

    void close() noexcept
    {
        if (handle != INVALID_HANDLE_VALUE)
            FindClose(handle);
        handle = INVALID_HANDLE_VALUE;
    }

    [[nodiscard]] std::wstring entryPath() const
    {
        return kernelPath(directory + data.cFileName);
    }

    HANDLE handle = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW data = {};
    /// With its last separator.
    std::wstring directory;
    std::wstring pattern;
    bool hasFailed = false;
    bool isSuspended = false;
    /// A suspended search was taken up again, and its listing is still to be begun.
    bool isToBegin = false;
};

Search::Search() noexcept = default;
Search::Search(Search &&) noexcept = default;
Search & Search::operator=(Search &&) noexcept = default;
Search::~Search() = default;

bool Search::begin(const std::wstring & pattern)
{
    end();
    auto system = std::make_unique<System>();
    const std::wstring path = pattern.c_str();
    const std::size_t start = path.find_last_of(L"\\/:") + 1;
    system->directory = path.substr(0, start);
    system->pattern = path.substr(start);
    if (system->pattern.empty() || gateFails("begin search") || !system->open())
        return false;
    m_system = std::move(system);
    return true;
}

bool Search::next()
{
    if (m_system == nullptr)
        return false;
    if (gateFails("next entry"))
    {
        m_system->hasFailed = true;
        return false;
    }
    if (m_system->isToBegin)
    {
        m_system->isToBegin = false;
        m_system->hasFailed = !m_system->open();
        return !m_system->hasFailed;
    }
    if (m_system->handle == INVALID_HANDLE_VALUE)
        return false;
    if (FindNextFileW(m_system->handle, &m_system->data))
        return true;
    m_system->hasFailed = GetLastError() != ERROR_NO_MORE_FILES;
    return false;
}

bool Search::hasFailed() const noexcept
{
    return m_system == nullptr || m_system->hasFailed;
}

void Search::end() noexcept
{
    m_system.reset();
}

std::wstring Search::name() const
{
    return m_system->data.cFileName;
}

bool Search::isDots() const noexcept
{
    return isDotName(m_system->data.cFileName);
}

bool Search::isDirectory() const
{
    return (m_system->data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool Search::isFile() const
{
    return !isDirectory();
}

bool Search::isLink() const noexcept
{
    return (m_system->data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(m_system->data.dwReserved0);
}

bool Search::removeEntry()
{
    if (gateFails("remove entry"))
        return false;
    const std::wstring path = m_system->entryPath();
    const auto remove = [&]
    {
        return isDirectory() ? RemoveDirectoryW(path.c_str()) != FALSE : _wremove(path.c_str()) == 0;
    };
    if (remove())
        return true;
    SetFileAttributesW(path.c_str(), isDirectory() ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE);
    return remove();
}

Search Search::enterEntry()
{
    Search inside;
    if (!isDirectory() || isLink() || gateFails("enter directory"))
        return inside;
    auto system = std::make_unique<System>();
    system->directory = m_system->directory + m_system->data.cFileName + L'\\';
    system->pattern = everything;
    if (system->open())
        inside.m_system = std::move(system);
    return inside;
}

void Search::suspend() noexcept
{
    m_system->close();
    m_system->isSuspended = true;
    // The directories of a deep branch would hold all of each other's paths.
    std::wstring().swap(m_system->directory);
}

bool Search::isSuspended() const noexcept
{
    return m_system->isSuspended;
}

bool Search::resume(const Search & inside)
{
    if (inside.m_system == nullptr || gateFails("resume search"))
        return false;
    const std::wstring & path = inside.m_system->directory;
    m_system->directory = path.substr(0, path.size() - std::wcslen(m_system->data.cFileName) - 1);
    m_system->isToBegin = true;
    m_system->isSuspended = false;
    return true;
}

bool matchesSomething(const std::string & pattern)
{
    WIN32_FIND_DATAA data = {};
    if (gateFails("begin search"))
        return false;
    const HANDLE search = FindFirstFileA(pattern.c_str(), &data);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    return true;
}

} // namespace qvplatform
