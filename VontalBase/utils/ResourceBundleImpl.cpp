#include "VontalBase/utils/ResourceBundleImpl.h"

#include "VontalBase/disk/File.h"
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
    // What is no regular file, such as a pipe, may have nothing to read for ever.
    if (!qvdisk::fileExists(path) || !qvdisk::File(path).isFile())
        return false;
    // Kept: a read that fails ends the text quietly, and what stands in front of it counts.
    return qvdisk::readUnicodeTextFile(path, text) && texts.read(text);
}

} // namespace qvutils
