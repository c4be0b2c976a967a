#include "VontalBase/disk/places.h"

#include "VontalBase/disk/paths.h"
#include "VontalBase/platform/places.h"
#include "VontalBase/text/u8string.h"

#include <cstddef>
#include <string>

namespace qvdisk
{

namespace
{

/// The room for a path, its NUL included.
constexpr std::size_t room = 512;

bool tell(const std::wstring & path, Vontal::u8string & out)
{
    if (path.empty() || path.size() >= room)
        return false;
    out = Vontal::u8string(path.c_str());
    return true;
}

/// The path of the program, and its name; false where it has none.
bool readModulePath(Vontal::u8string & path, Vontal::u8string & name)
{
    if (!getModuleFullName(path))
        return false;
    name = extractLastItem(path);
    return !name.empty();
}

} // namespace

bool getModuleFullName(Vontal::u8string & out)
{
    return tell(qvplatform::programPath(), out);
}

bool getModuleDir(Vontal::u8string & out)
{
    Vontal::u8string path;
    Vontal::u8string name;
    if (!readModulePath(path, name))
        return false;
    out = path.substr(0, path.size() - name.size());
    return true;
}

bool getModuleName(Vontal::u8string & out)
{
    Vontal::u8string path;
    Vontal::u8string name;
    if (!readModulePath(path, name))
        return false;
    out = name;
    return true;
}

bool getTempDir(Vontal::u8string & out)
{
    return tell(qvplatform::temporaryDirectory(), out);
}

} // namespace qvdisk
