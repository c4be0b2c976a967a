#include "VontalBase/disk/files.h"

#include "VontalBase/core/InputStream.h"
#include "VontalBase/core/MallocPtr.h"
#include "VontalBase/core/Md5Sum.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/search.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>

namespace qvdisk
{

namespace
{

constexpr std::uint64_t blockSize = 65536;
constexpr std::uint64_t largeBlockSize = 16 * blockSize;

/// A size that the system tells is believed up to here; what lies behind may be a hole.
constexpr std::uint64_t mostAtOnce = std::uint64_t(512) << 20U;

template <class Path>
std::int64_t sizeOf(const Path & path)
{
    qvplatform::FileStatus status;
    return qvplatform::readFileStatus(path, status) ? status.size : -1;
}

/// A text that is filled from its end on, and gives back in the end what was not used.
class GrowingText
{
public:
    explicit GrowingText(std::string & text) : m_text(text), m_used(text.size())
    {
    }
    GrowingText(const GrowingText &) = delete;
    GrowingText & operator=(const GrowingText &) = delete;
    ~GrowingText()
    {
        m_text.resize(m_used);
    }

    /// Makes room for so many bytes more than are used.
    void makeRoom(std::uint64_t size)
    {
        m_text.resize(m_used + size);
    }

    /// Reads as much as there is room for.
    std::uint64_t fill(FileReader & reader)
    {
        const std::uint64_t count = reader.read(m_text.data() + m_used, m_text.size() - m_used);
        m_used += count;
        return count;
    }

    [[nodiscard]] bool isFull() const noexcept
    {
        return m_used == m_text.size();
    }

    [[nodiscard]] std::size_t used() const noexcept
    {
        return m_used;
    }

private:
    std::string & m_text;
    std::size_t m_used;
};

bool copyStream(FileReader & reader, FileWriter & writer)
{
    const qvbase::MallocPtr block(blockSize);
    if (block.get() == nullptr)
        return false;
    // The blocks are large enough; a buffer between would cut each of them in two.
    std::setvbuf(writer.getFile(), nullptr, _IONBF, 0);
    while (reader.hasMoreData())
    {
        const std::uint64_t count = reader.read(block.get(), blockSize);
        if (count == 0)
            return !reader.hasMoreData();
        if (!writer.write(block.get(), count))
            return false;
    }
    return true;
}

} // namespace

std::int64_t getFileSize(const std::string & path)
{
    return sizeOf(path);
}

std::int64_t getFileSize(const std::wstring & path)
{
    return sizeOf(path);
}

std::int64_t getFileSize(const Vontal::u8string & path)
{
    return getFileSize(Vontal::pstring(path));
}

bool fileExists(const std::string & path)
{
    // Kept: the path as it was given, so that one with a '\' at its end is not found.
    return qvplatform::matchesSomething(path);
}

bool fileExists(const std::wstring & path)
{
    std::wstring stripped = path;
    if (!stripped.empty() && stripped.back() == L'\\')
        stripped.pop_back();
    return qvplatform::Search().begin(stripped);
}

bool fileExists(const Vontal::u8string & path)
{
    return fileExists(Vontal::pstring(path));
}

bool isDirectory(const Vontal::u8string & path)
{
    qvplatform::Search search;
    return search.begin(Vontal::pstring(path)) && search.isDirectory();
}

bool readRawFile(const Vontal::u8string & path, std::string & out)
{
    File file(path);
    const std::unique_ptr<FileReader> reader(file.openForRead());
    if (reader == nullptr)
        return false;
    GrowingText text(out);
    // One byte more, so that the read which takes the last byte sees the end too. Files whose size is not
    // known, or has grown, take further steps.
    const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(file.getFileSize(), 0));
    text.makeRoom(std::min(size, mostAtOnce) + 1);
    while (reader->hasMoreData())
    {
        if (text.isFull())
            text.makeRoom(std::clamp<std::uint64_t>(text.used(), blockSize, mostAtOnce));
        // Kept: a read that fails is an end like any other.
        if (text.fill(*reader) == 0)
            break;
    }
    return true;
}

bool writeTextFile(const Vontal::u8string & path, const std::string & text)
{
    FileWriter writer(File(path).open("wb"));
    return writer.write(text.data(), text.size()) && writer.close();
}

bool writeBinaryData(const Vontal::u8string & path, const char * data, unsigned int size)
{
    if (data == nullptr)
        return false;
    const std::unique_ptr<FileWriter> writer(File(path).openForWrite());
    return writer != nullptr && writer->write(data, size) && writer->close();
}

bool save(qvbase::InputStream * stream, const Vontal::u8string & path)
{
    const std::unique_ptr<FileWriter> writer(File(path).openForWrite());
    if (writer == nullptr)
        return false;
    std::array<char, 4096> buffer;
    constexpr int room = static_cast<int>(buffer.size());
    for (;;)
    {
        const int count = stream->read(buffer.data(), room);
        if (count == 0)
            return writer->close();
        if (count < 0 || count > room || !writer->write(buffer.data(), static_cast<std::uint64_t>(count)))
            return false;
    }
}

bool deleteFile(const std::wstring & path)
{
    if (qvplatform::removeFile(path))
        return true;
    qvplatform::clearReadOnly(path);
    return qvplatform::removeFile(path);
}

bool deleteFile(const Vontal::u8string & path)
{
    return deleteFile(Vontal::pstring(path));
}

bool copy(const Vontal::u8string & source, const Vontal::u8string & target)
{
    // Both are opened before either is tested, so that a missing source empties the target.
    const std::unique_ptr<FileReader> reader(File(source).openForRead());
    const std::unique_ptr<FileWriter> writer(File(target).openForWrite());
    return reader != nullptr && writer != nullptr && copyStream(*reader, *writer) && writer->close();
}

bool countMD5sum(const Vontal::u8string & path, Vontal::u8string & digest)
{
    File file(path);
    const std::unique_ptr<FileReader> reader(file.openForRead());
    if (reader == nullptr)
        return false;
    qvbase::Md5Sum sum;
    // Large files are read in fewer steps, each of which costs the system something.
    const bool isLarge = file.getFileSize() >= std::int64_t(16 * largeBlockSize);
    const std::uint64_t room = isLarge ? largeBlockSize : blockSize;
    const auto buffer = std::make_unique_for_overwrite<unsigned char[]>(room);
    std::uint64_t total = 0;
    while (reader->hasMoreData())
    {
        const std::uint64_t count = reader->read(buffer.get(), room);
        if (count == 0)
            return !reader->hasMoreData();
        sum.add(buffer.get(), static_cast<unsigned int>(count));
        total += count;
    }
    // Kept: a file with nothing behind its last whole block leaves no digest.
    if (total % blockSize != 0)
        sum.finish(digest);
    return true;
}

} // namespace qvdisk
