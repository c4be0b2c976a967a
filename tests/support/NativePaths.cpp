#include "support/NativePaths.h"

#include <filesystem>
#include <system_error>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace testsupport
{

namespace
{

namespace fs = std::filesystem;

fs::path fromUtf8(const std::string & text)
{
    return {std::u8string(text.begin(), text.end())};
}

constexpr fs::perms writeBits = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

} // namespace

bool makeLink(const std::string & target, const std::string & link)
{
    std::error_code error;
    fs::create_symlink(fromUtf8(target), fromUtf8(link), error);
    return !error;
}

bool isReadOnly(const std::string & path)
{
    return (fs::status(fromUtf8(path)).permissions() & writeBits) == fs::perms::none;
}

void setReadOnly(const std::string & path, bool isReadOnly)
{
    if (isReadOnly)
        fs::permissions(fromUtf8(path), writeBits, fs::perm_options::remove);
    else
        fs::permissions(fromUtf8(path), fs::perms::owner_write, fs::perm_options::add);
}

#ifdef _WIN32

bool hasDrives()
{
    return true;
}

bool canMakeLinks()
{
    return false;
}

std::string fullDevice()
{
    return {};
}

std::string deviceThatIsNoFile()
{
    return {};
}

bool makeFileOfBytes(const std::string &, const std::string &)
{
    return false;
}

bool dropPrivileges()
{
    return false;
}

bool limitFileSize(unsigned int)
{
    return false;
}

#else

bool hasDrives()
{
    return false;
}

bool canMakeLinks()
{
    return true;
}

std::string fullDevice()
{
    return "/dev/full";
}

std::string deviceThatIsNoFile()
{
    return "/dev/null";
}

bool makeFileOfBytes(const std::string & directory, const std::string & name)
{
    const int descriptor = open((directory + '/' + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    return descriptor >= 0 && close(descriptor) == 0;
}

bool dropPrivileges()
{
    constexpr uid_t nobody = 65534;
    return geteuid() != 0 || (setgid(nobody) == 0 && setuid(nobody) == 0);
}

bool limitFileSize(unsigned int bytes)
{
    const rlimit limit = {bytes, bytes};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

#endif

} // namespace testsupport
