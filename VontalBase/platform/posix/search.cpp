#include "VontalBase/platform/search.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/descriptors.h"
#include "VontalBase/platform/posix/kernelpath.h"
#include "VontalBase/platform/wildcards.h"
#include "VontalBase/text/utf.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qvplatform
{

namespace
{

constexpr std::string_view dots[] = {".", ".."};
constexpr std::wstring_view everything = L"*";

std::wstring wideName(std::string_view bytes)
{
    std::wstring name;
    Vontal::wideFromUtf8(bytes, name);
    // To the library it would be a separator, and the name that of something else.
    std::replace(name.begin(), name.end(), L'\\', L'\xFFFD');
    return name;
}

enum class Kind : std::uint8_t
{
    Unknown,
    Directory,
    Link,
    File,
    Other
};

Kind kindOf(unsigned char type)
{
    switch (type)
    {
    case DT_UNKNOWN:
        return Kind::Unknown;
    case DT_DIR:
        return Kind::Directory;
    case DT_LNK:
        return Kind::Link;
    case DT_REG:
        return Kind::File;
    default:
        return Kind::Other;
    }
}

Kind kindOf(const struct stat & status)
{
    if (S_ISDIR(status.st_mode))
        return Kind::Directory;
    if (S_ISLNK(status.st_mode))
        return Kind::Link;
    return S_ISREG(status.st_mode) ? Kind::File : Kind::Other;
}

} // namespace

struct Search::System
{
    System() = default;
    System(const System &) = delete;
    System & operator=(const System &) = delete;
    ~System()
    {
        closeListing();
    }

    bool lookUp(const KernelPath & path);
    bool list(int descriptor);
    bool goOn();
    [[nodiscard]] Kind kindAtEnd() const;
    void closeListing() noexcept;

    [[nodiscard]] bool matches(std::string_view candidate) const
    {
        return pattern == everything || matchesWildcards(pattern, wideName(candidate));
    }

    DIR * listing = nullptr;
    std::wstring pattern;
    /// What the present entry is called in truth.
    std::string name;
    Kind kind = Kind::Other;
    /// What a link leads to where one name was looked up.
    Kind target = Kind::Other;
    /// How many of "." and ".." have been dealt with.
    unsigned int dotsDone = 0;
    bool hasFailed = false;
    bool isSuspended = false;
    /// Of the directory that is listed; read when the search is suspended.
    dev_t device = 0;
    ino_t inode = 0;
};

bool Search::System::lookUp(const KernelPath & path)
{
    struct stat status
    {
    };
    if (fstatat(path.directory(), path.name(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    kind = kindOf(status);
    if (kind == Kind::Link && fstatat(path.directory(), path.name(), &status, 0) == 0)
        target = kindOf(status);
    return true;
}

/// With a link followed.
Kind Search::System::kindAtEnd() const
{
    if (kind != Kind::Link || listing == nullptr)
        return kind == Kind::Link ? target : kind;
    struct stat status
    {
    };
    return fstatat(dirfd(listing), name.c_str(), &status, 0) == 0 ? kindOf(status) : Kind::Other;
}

/// Takes the descriptor over, also where it fails.
bool Search::System::list(int descriptor)
{
    Descriptor owner(descriptor);
    if (!owner.isOpen())
        return false;
    listing = fdopendir(owner.get());
    if (listing == nullptr)
        return false;
    owner.release();
    return true;
}

bool Search::System::goOn()
{
    if (listing == nullptr || gateFails("next entry"))
    {
        hasFailed = listing != nullptr;
        return false;
    }
    while (dotsDone < std::size(dots))
    {
        name = dots[dotsDone++];
        kind = Kind::Directory;
        if (matches(name))
            return true;
    }
    for (;;)
    {
        errno = 0;
        // A listing belongs to one thread at a time, as the search does.
        const dirent * const entry = readdir(listing);
        if (entry == nullptr)
        {
            hasFailed = errno != 0;
            return false;
        }
        name = entry->d_name;
        if (name == dots[0] || name == dots[1] || !matches(name))
            continue;
        kind = kindOf(entry->d_type);
        struct stat status
        {
        };
        if (kind == Kind::Unknown && fstatat(dirfd(listing), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
            kind = kindOf(status);
        return true;
    }
}

void Search::System::closeListing() noexcept
{
    if (listing != nullptr)
        closedir(listing);
    listing = nullptr;
}

Search::Search() noexcept = default;
Search::Search(Search &&) noexcept = default;
Search & Search::operator=(Search &&) noexcept = default;
Search::~Search() = default;

bool Search::begin(const std::wstring & pattern)
{
    end();
    // NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
    const std::wstring path = pattern.c_str();
    const std::size_t start = path.find_last_of(L"\\/") + 1;
    if (start == path.size() || gateFails("begin search"))
        return false;
    auto system = std::make_unique<System>();
    system->pattern = path.substr(start);
    if (!hasWildcards(system->pattern))
    {
        Vontal::utf8FromWide(system->pattern, system->name);
        if (!system->lookUp(KernelPath(path)))
            return false;
        m_system = std::move(system);
        return true;
    }
    // The separator in front of the pattern goes with the directory, so that "/" is one.
    const KernelPath directory(start == 0 ? L"." : path.substr(0, start));
    if (!system->list(openat(directory.directory(), directory.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) ||
        !system->goOn())
    {
        return false;
    }
    m_system = std::move(system);
    return true;
}

bool Search::next()
{
    return m_system != nullptr && m_system->goOn();
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
    return wideName(m_system->name);
}

bool Search::isDots() const noexcept
{
    return m_system->name == dots[0] || m_system->name == dots[1];
}

bool Search::isDirectory() const
{
    return m_system->kindAtEnd() == Kind::Directory;
}

bool Search::isFile() const
{
    return m_system->kindAtEnd() == Kind::File;
}

bool Search::isLink() const noexcept
{
    return m_system->kind == Kind::Link;
}

bool Search::removeEntry()
{
    if (m_system->listing == nullptr || gateFails("remove entry"))
        return false;
    const int flags = m_system->kind == Kind::Directory ? AT_REMOVEDIR : 0;
    return unlinkat(dirfd(m_system->listing), m_system->name.c_str(), flags) == 0;
}

Search Search::enterEntry()
{
    Search inside;
    if (m_system->listing == nullptr || gateFails("enter directory"))
        return inside;
    auto system = std::make_unique<System>();
    system->pattern = everything;
    if (system->list(openat(dirfd(m_system->listing), m_system->name.c_str(),
            O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) &&
        system->goOn())
    {
        inside.m_system = std::move(system);
    }
    return inside;
}

void Search::suspend() noexcept
{
    struct stat status
    {
    };
    if (m_system->listing != nullptr && fstat(dirfd(m_system->listing), &status) == 0)
    {
        m_system->device = status.st_dev;
        m_system->inode = status.st_ino;
    }
    m_system->closeListing();
    m_system->isSuspended = true;
}

bool Search::isSuspended() const noexcept
{
    return m_system->isSuspended;
}

bool Search::resume(const Search & inside)
{
    if (inside.m_system == nullptr || inside.m_system->listing == nullptr || gateFails("resume search"))
        return false;
    Descriptor parent(openat(dirfd(inside.m_system->listing), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status
    {
    };
    if (!parent.isOpen() || fstat(parent.get(), &status) != 0 || status.st_dev != m_system->device ||
        status.st_ino != m_system->inode || !m_system->list(parent.release()))
    {
        return false;
    }
    m_system->dotsDone = 0;
    m_system->isSuspended = false;
    return true;
}

bool matchesSomething(const std::string & pattern)
{
    // A pattern that is no UTF-8 matches nothing with a wildcard, and a name is looked up by its bytes.
    const std::string path = withSlashes(pattern);
    const std::string last = path.substr(path.rfind('/') + 1);
    if (last.find_first_of("*?") == std::string::npos)
    {
        struct stat status
        {
        };
        const KernelPath kernelPath(pattern);
        return !last.empty() && !gateFails("begin search") &&
               fstatat(kernelPath.directory(), kernelPath.name(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    }
    std::wstring wide;
    Vontal::wideFromUtf8(pattern, wide);
    return Search().begin(wide);
}

} // namespace qvplatform
