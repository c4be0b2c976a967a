// The operations that say why they fail.

#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/listing.h"
#include "VontalBase/platform/search.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include <array>
#include <cstdint>
#include <istream>
#include <memory>
#include <source_location>
#include <streambuf>
#include <string>

namespace qvdisk
{

namespace
{

/// What stands in front of a failure's message: the place and the function.
std::string failurePrefix(const char * function, std::source_location where = std::source_location::current())
{
    return "qvdiskutils:" + std::to_string(where.line()) + ":'" + function + "': ";
}

constexpr char inSave[] = "qvdisk::save";
constexpr char inDeleteAllFiles[] = "qvdisk::deleteAllFiles";

std::wstring widePrefix(const std::string & prefix)
{
    return {prefix.begin(), prefix.end()};
}

/// Whether what is at hand is a file, or a link, and could be removed.
bool removeFileEntry(qvplatform::Search & search)
{
    return (search.isLink() || !search.isDirectory()) && search.removeEntry();
}

} // namespace

bool save(std::istream * stream, const Vontal::u8string & path, std::string & error)
{
    if (stream == nullptr)
    {
        error += failurePrefix(inSave) + "Wrong parameter istream==NULL";
        return false;
    }
    const std::unique_ptr<FileWriter> writer(File(path).openForWrite());
    if (writer == nullptr)
    {
        error += failurePrefix(inSave) + "Cannot create file: " + path;
        return false;
    }
    std::array<char, 1024> buffer;
    constexpr auto room = static_cast<std::streamsize>(buffer.size());
    std::streambuf * const source = stream->rdbuf();
    std::streamsize count = room;
    while (count == room)
    {
        count = source == nullptr ? 0 : source->sgetn(buffer.data(), room);
        if (count > 0 && !writer->write(buffer.data(), static_cast<std::uint64_t>(count)))
        {
            error += failurePrefix(inSave) + "Cannot write file: " + path;
            return false;
        }
    }
    if (!writer->close())
    {
        error += failurePrefix(inSave) + "Cannot write file: " + path;
        return false;
    }
    return true;
}

bool deleteAllFiles(const std::wstring & directory, std::wstring & error)
{
    if (directory.empty())
    {
        error += widePrefix(failurePrefix(inDeleteAllFiles)) + L"Wrong argument directory";
        return false;
    }
    std::wstring place = directory;
    if (place.back() == L'\\')
        place.pop_back();
    qvplatform::Search search;
    if (!search.begin(allEntriesOf(place)))
        return true;
    do
    {
        if (search.isDots() || removeFileEntry(search))
            continue;
        error += widePrefix(failurePrefix(inDeleteAllFiles)) + L"Cannot remove file: " + place + L'\\' +
                 search.name();
        return false;
    } while (search.next());
    return true;
}

} // namespace qvdisk
