#include "VontalBase/utils/ResourceBundleImpl.h"

#include "VontalBase/disk/files.h"

namespace qvutils
{

using Vontal::u8string;

const u8string & ResourceBundleImpl::getString(const u8string & key)
{
    const u8string * const text = texts.find(key);
    return text == nullptr ? key : *text;
}

bool ResourceBundleImpl::load(const u8string & path)
{
    u8string text;
    return qvdisk::fileExists(path) && qvdisk::readUnicodeTextFile(path, text) && texts.read(text);
}

} // namespace qvutils
