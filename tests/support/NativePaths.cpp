#include "support/NativePaths.h"

#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
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

// Beyond, Wine has no name for it on the system below.
unsigned int possiblePathLength()
{
    return 3000;
}

// Wine's copying loses it.
bool copiesStayReadOnly()
{
    return false;
}

std::string lineEnd()
{
    return "\r\n";
}

std::string fullDevice()
{
    return {};
}

std::string deviceThatIsNoFile()
{
    return {};
}

bool makePipeFile(const std::string &)
{
    return false;
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

SmallDisk::SmallDisk(const std::string & directory, unsigned int) : m_directory(directory), m_isThere(false)
{
}

SmallDisk::~SmallDisk() = default;

TemporaryPlace::TemporaryPlace(const std::string & directory) : m_wasSet(true)
{
    std::wstring before(32768, L'\0');
    before.resize(GetEnvironmentVariableW(L"TMP", before.data(), static_cast<DWORD>(before.size())));
    const std::u8string text = fs::path(before).u8string();
    m_before.assign(text.begin(), text.end());
    SetEnvironmentVariableW(L"TMP", fromUtf8(directory).c_str());
}

TemporaryPlace::~TemporaryPlace()
{
    SetEnvironmentVariableW(L"TMP", fromUtf8(m_before).c_str());
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

unsigned int possiblePathLength()
{
    return 10'000;
}

bool copiesStayReadOnly()
{
    return true;
}

std::string lineEnd()
{
    return "\n";
}

std::string fullDevice()
{
    return "/dev/full";
}

std::string deviceThatIsNoFile()
{
    return "/dev/null";
}

bool makePipeFile(const std::string & path)
{
    return mkfifo(path.c_str(), 0600) == 0;
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

TemporaryPlace::TemporaryPlace(const std::string & directory) : m_wasSet(std::getenv("TMPDIR") != nullptr)
{
    if (m_wasSet)
        m_before = std::getenv("TMPDIR");
    setenv("TMPDIR", directory.c_str(), 1);
}

TemporaryPlace::~TemporaryPlace()
{
    if (m_wasSet)
        setenv("TMPDIR", m_before.c_str(), 1);
    else
        unsetenv("TMPDIR");
}

SmallDisk::SmallDisk(const std::string & directory, unsigned int bytes)
    : m_directory(directory), m_isThere(mount("vontalbase-test", directory.c_str(), "tmpfs", 0,
                                            ("size=" + std::to_string(bytes)).c_str()) == 0)
{
}

SmallDisk::~SmallDisk()
{
    if (m_isThere)
        umount2(m_directory.c_str(), MNT_DETACH);
}

bool limitFileSize(unsigned int bytes)
{
    const rlimit limit = {bytes, bytes};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

#endif

} // namespace testsupport
