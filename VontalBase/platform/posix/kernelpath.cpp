#include "VontalBase/platform/posix/kernelpath.h"

#include "VontalBase/text/pathseparators.h"
#include "VontalBase/text/utf.h"

#include <algorithm>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace qvplatform
{

namespace
{

/// What the kernel takes at once; the zero byte at the end comes on top.
constexpr std::size_t longestPath = PATH_MAX - 1;

/// Whether a path begins with a drive, or with two backslashes as those of a share do.
template <class Char>
bool beginsElsewhere(std::basic_string_view<Char> path) noexcept
{
    if (path.size() < 2)
        return false;
    if (path[0] == Char('\\') && path[1] == Char('\\'))
        return true;
    const Char letter = static_cast<Char>(path[0] | 0x20);
    return letter >= Char('a') && letter <= Char('z') && path[1] == Char(':') &&
           (path.size() == 2 || Vontal::isPathSeparator(path[2]));
}

/// The bytes of a wide path; none where it can name nothing.
std::string bytesOf(std::wstring_view path)
{
    std::string bytes;
    if (!beginsElsewhere(path))
        Vontal::utf8FromWide(path, bytes);
    return bytes;
}

} // namespace

std::string withSlashes(std::string_view path)
{
    std::string native(path.substr(0, path.find('\0')));
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

// NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
KernelPath::KernelPath(const std::wstring & path) : KernelPath(bytesOf(path.c_str()))
{
}

KernelPath::KernelPath(const std::string & path) : m_directory(AT_FDCWD)
{
    if (!beginsElsewhere(std::string_view(path)))
        m_path = withSlashes(path);
    // For a dot in the end, which must find its room while a directory is open.
    m_path.reserve(m_path.size() + 1);
    shorten();
}

KernelPath::~KernelPath()
{
    close();
}

void KernelPath::shorten()
{
    while (m_path.size() - m_start > longestPath)
    {
        const std::size_t slash = m_path.rfind('/', m_start + longestPath - 1);
        const bool hasPiece = slash != std::string::npos && slash > m_start;
        int next = -1;
        if (hasPiece)
        {
            m_path[slash] = '\0';
            next = openat(m_directory, m_path.c_str() + m_start, O_PATH | O_DIRECTORY | O_CLOEXEC);
            m_path[slash] = '/';
        }
        close();
        if (next < 0)
        {
            // A name too long for any file, or a directory that is not there.
            m_start = m_path.size();
            return;
        }
        m_directory = next;
        m_start = std::min(m_path.find_first_not_of('/', slash), m_path.size());
        if (m_start == m_path.size())
        {
            // Nothing but separators was left: the path names the directory itself.
            m_path += '.';
        }
    }
}

void KernelPath::close() noexcept
{
    if (m_directory >= 0)
        ::close(m_directory);
    m_directory = AT_FDCWD;
}

} // namespace qvplatform
