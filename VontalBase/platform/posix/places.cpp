#include "VontalBase/platform/places.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/kernelpath.h"
#include "VontalBase/text/utf.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace qvplatform
{

namespace
{

constexpr char programLink[] = "/proc/self/exe";
/// What the kernel puts behind the path of a program whose file was removed or replaced.
constexpr std::string_view deletedMark = " (deleted)";
constexpr std::string_view usualTemporaryDirectory = "/tmp";

std::string readProgramLink()
{
    std::string target(256, '\0');
    for (;;)
    {
        const ssize_t length = readlink(programLink, target.data(), target.size());
        if (length < 0)
            return {};
        if (static_cast<std::size_t>(length) < target.size())
        {
            target.resize(static_cast<std::size_t>(length));
            return target;
        }
        target.resize(2 * target.size());
    }
}

std::wstring wideFrom(std::string_view bytes)
{
    std::wstring text;
    Vontal::wideFromUtf8(bytes, text);
    return text;
}

bool isDirectory(const std::wstring & path)
{
    struct stat status
    {
    };
    const KernelPath kernelPath(path);
    return fstatat(kernelPath.directory(), kernelPath.name(), &status, 0) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

std::wstring programPath()
{
    if (gateFails("program path"))
        return {};
    std::string path = readProgramLink();
    if (path.ends_with(deletedMark) && access(path.c_str(), F_OK) != 0)
        path.resize(path.size() - deletedMark.size());
    return wideFrom(path);
}

std::wstring temporaryDirectory()
{
    if (gateFails("temporary directory"))
        return {};
    const char * const wish = std::getenv("TMPDIR");
    std::wstring directory = wideFrom(usualTemporaryDirectory);
    if (wish != nullptr && isDirectory(wideFrom(wish)))
        directory = wideFrom(wish);
    // One separator, and that the library's own, so that what is appended reads well.
    const std::size_t last = directory.find_last_not_of(L"\\/");
    if (last == std::wstring::npos)
        return L"/";
    return directory.substr(0, last + 1) + L'\\';
}

std::wstring workingDirectory()
{
    if (gateFails("working directory"))
        return {};
    std::string path(256, '\0');
    while (getcwd(path.data(), path.size()) == nullptr)
    {
        if (errno != ERANGE)
            return {};
        path.resize(2 * path.size());
    }
    path.resize(path.find('\0'));
    return wideFrom(path);
}

std::string nativePath(const std::string & path)
{
    return withSlashes(path);
}

bool isSlashRoot() noexcept
{
    return true;
}

bool mayNamesHoldColons() noexcept
{
    return true;
}

} // namespace qvplatform
