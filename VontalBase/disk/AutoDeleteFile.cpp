#include "VontalBase/disk/AutoDeleteFile.h"

#include "VontalBase/disk/files.h"
#include "VontalBase/disk/temporaryfiles.h"
#include "VontalBase/text/u8string.h"

#include <new>
#include <utility>

namespace qvdisk
{

AutoDeleteFile::AutoDeleteFile(const Vontal::pstring & name) : path(name)
{
}

AutoDeleteFile::AutoDeleteFile(const Vontal::u8string & name) : path(name)
{
}

AutoDeleteFile::~AutoDeleteFile()
{
    try
    {
        freeFile();
    }
    catch (const std::bad_alloc &)
    {
        // The file stays, as it does where the system refuses.
    }
}

void AutoDeleteFile::attach(const Vontal::pstring & name)
{
    Vontal::pstring next = name;
    freeFile();
    path = std::move(next);
}

bool AutoDeleteFile::create(const Vontal::pstring & prefix, const Vontal::pstring & suffix)
{
    // Copies, because either may be the path that is about to go.
    const Vontal::pstring nextPrefix = prefix; // NOLINT(performance-unnecessary-copy-initialization)
    const Vontal::pstring nextSuffix = suffix; // NOLINT(performance-unnecessary-copy-initialization)
    freeFile();
    return createTempFile(nextPrefix, nextSuffix, path);
}

bool AutoDeleteFile::create(const Vontal::pstring & prefix)
{
    return create(prefix, Vontal::pstring());
}

void AutoDeleteFile::freeFile()
{
    if (!path.empty())
        deleteFile(path);
    path.clear();
}

Vontal::u8string AutoDeleteFile::release()
{
    Vontal::u8string released(path.c_str());
    path.clear();
    return released;
}

} // namespace qvdisk
