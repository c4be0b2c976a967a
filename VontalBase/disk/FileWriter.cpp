#include "VontalBase/disk/FileWriter.h"

#include "VontalBase/platform/streams.h"

#include <utility>

namespace qvdisk
{

FileWriter::~FileWriter()
{
    close();
}

bool FileWriter::write(const void * data, std::uint64_t size)
{
    if (file == nullptr)
        return false;
    return size == 0 || qvplatform::writeStream(file, data, size);
}

bool FileWriter::close()
{
    return file != nullptr && qvplatform::closeStream(std::exchange(file, nullptr));
}

} // namespace qvdisk
