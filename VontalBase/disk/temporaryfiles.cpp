#include "VontalBase/disk/temporaryfiles.h"

#include "VontalBase/disk/AutoDeleteFile.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/disk/places.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/search.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace qvdisk
{

namespace
{

constexpr int mostFileAttempts = 100000;
constexpr int mostDirectoryAttempts = 1000;

std::uint32_t secondsNow()
{
    return static_cast<std::uint32_t>(qvplatform::secondsSince1970());
}

/// Kept: these are not the characters that `normalizeFileName` replaces; the apostrophe is one more.
std::wstring cleanPrefix(std::wstring prefix)
{
    constexpr std::wstring_view unsafe = L":?*<>\"'|/\\";
    for (wchar_t & c : prefix)
    {
        if (unsafe.find(c) != std::wstring_view::npos)
            c = L'_';
    }
    return prefix;
}

template <class Text>
void appendDash(Text & name)
{
    using Character = typename Text::value_type;
    if (!name.empty() && name.back() != Character('-'))
        name.push_back(Character('-'));
}

/// Whether files can lie in a directory.
bool isPlace(const std::wstring & path)
{
    qvplatform::FileStatus status;
    return qvplatform::readFileStatus(path, status) && status.kind == qvplatform::FileStatus::Kind::Directory;
}

/// What a name ends in, its dot included.
std::wstring dottedSuffix(const std::wstring & suffix)
{
    return suffix.empty() || suffix.front() == L'.' ? suffix : L'.' + suffix;
}

bool readTempDir(std::wstring & directory)
{
    Vontal::u8string path;
    if (!getTempDir(path))
        return false;
    directory = Vontal::pstring(path);
    return true;
}

/// Does a step with a new file, which does not stay where memory ends in that.
template <class Step>
bool withNewFile(const std::wstring & path, const Step & step)
{
    try
    {
        return step();
    }
    catch (...)
    {
        deleteFile(path);
        throw;
    }
}

/// Gives the path of a new file to the caller.
template <class Receive>
bool handOver(const std::wstring & path, const Receive & receive)
{
    return withNewFile(path,
        [&]
        {
            receive();
            return true;
        });
}

} // namespace

bool createTempFile(const std::wstring & directory, const std::wstring & prefix, const std::wstring & suffix,
    std::wstring & out)
{
    if (directory.empty())
        return createTempFile(prefix, suffix, out);
    std::wstring place = directory;
    addLastSlash(place);
    std::wstring start = cleanPrefix(prefix);
    appendDash(start);
    const std::wstring end = dottedSuffix(suffix);
    for (int attempt = 0; attempt < mostFileAttempts; ++attempt)
    {
        std::wstring name = place + start + std::to_wstring(secondsNow());
        if (attempt > 0)
            name += L'-' + std::to_wstring(attempt);
        name += end;
        if (qvplatform::Search().begin(name))
            continue;
        if (qvplatform::createNewFile(name))
        {
            out.swap(name);
            return true;
        }
        // Further attempts would take seconds, and end no better.
        if (!isPlace(place + L"."))
            return false;
    }
    return false;
}

bool createTempFile(const std::wstring & prefix, const std::wstring & suffix, std::wstring & out)
{
    std::wstring directory;
    return readTempDir(directory) && createTempFile(directory, prefix, suffix, out);
}

bool createTempFile(const Vontal::u8string & directory, const Vontal::u8string & prefix,
    const Vontal::u8string & suffix, Vontal::u8string & out)
{
    std::wstring path;
    return createTempFile(
               Vontal::pstring(directory), Vontal::pstring(prefix), Vontal::pstring(suffix), path) &&
           handOver(path, [&] { out = Vontal::u8string(path.c_str()); });
}

bool createTempFile(const Vontal::u8string & directory, const Vontal::u8string & prefix,
    const Vontal::u8string & suffix, AutoDeleteFile & out)
{
    std::wstring path;
    return createTempFile(
               Vontal::pstring(directory), Vontal::pstring(prefix), Vontal::pstring(suffix), path) &&
           handOver(path, [&] { out.attach(path); });
}

bool createTempFile(const Vontal::u8string & prefix, const Vontal::u8string & suffix, Vontal::u8string & out)
{
    Vontal::u8string directory;
    return getTempDir(directory) && createTempFile(directory, prefix, suffix, out);
}

bool createTempFile(const Vontal::u8string & prefix, const Vontal::u8string & suffix, AutoDeleteFile & out)
{
    Vontal::u8string directory;
    return getTempDir(directory) && createTempFile(directory, prefix, suffix, out);
}

bool createTempFileCopy(const std::wstring & prefix, const std::wstring & source, std::wstring & out)
{
    std::wstring path;
    if (!createTempFile(prefix, extractExtension(source), path))
        return false;
    if (!withNewFile(path, [&] { return qvplatform::copyFile(source, path); }))
    {
        deleteFile(path);
        return false;
    }
    out.swap(path);
    return true;
}

bool createTempFileCopy(const Vontal::u8string & directory, const Vontal::u8string & prefix,
    const Vontal::u8string & source, Vontal::u8string & out)
{
    AutoDeleteFile file;
    if (!createTempFile(directory, prefix, extractExtension(source), file) ||
        !copy(source, Vontal::u8string(file.get().c_str())))
    {
        return false;
    }
    out = file.release();
    return true;
}

bool createTempDir(const Vontal::u8string & prefix, Vontal::u8string & out)
{
    Vontal::u8string parent;
    if (!getTempDir(parent))
        return false;
    Vontal::u8string start = prefix;
    appendDash(start);
    for (int attempt = 0; attempt < mostDirectoryAttempts; ++attempt)
    {
        // Kept: an application that seeds `rand`, or does not, gets the numbers that it expects.
        const int number = std::rand(); // NOLINT(cert-msc50-cpp)
        const Vontal::u8string name = start + std::to_string(secondsNow()) + '.' + std::to_string(number);
        const File directory(parent, name);
        Vontal::u8string path(directory.getPath().c_str());
        if (!directory.isDirectory() && createDirectory(path))
        {
            out = std::move(path);
            return true;
        }
    }
    return false;
}

} // namespace qvdisk
