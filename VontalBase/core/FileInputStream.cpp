#include "VontalBase/core/FileInputStream.h"

#include "VontalBase/disk/files.h"
#include "VontalBase/platform/streams.h"

#include <cstddef>
#include <new>
#include <utility>

namespace qvbase
{

FileInputStream::~FileInputStream()
{
    try
    {
        closeImpl();
    }
    catch (const std::bad_alloc &) // NOLINT(bugprone-empty-catch): the file is closed, and stays where it is.
    {
    }
}

void FileInputStream::init(std::FILE * file) noexcept
{
    m_file = file;
}

void FileInputStream::init(std::FILE * file, const Vontal::u8string & name, bool deleteOnClose)
{
    // First what may fail, so that the caller knows whose the file is.
    m_name = name;
    m_file = file;
    m_deleteOnClose = deleteOnClose;
}

int FileInputStream::read(void * buffer, int size)
{
    if (m_file == nullptr)
        return -1;
    if (m_atEnd || size <= 0)
        return 0;
    const std::size_t wanted = static_cast<std::size_t>(size);
    const std::size_t count = std::fread(buffer, 1, wanted, m_file);
    if (count < wanted && std::feof(m_file) != 0)
        m_atEnd = true;
    return static_cast<int>(count);
}

void FileInputStream::close()
{
    closeImpl();
}

void FileInputStream::closeImpl()
{
    if (m_file != nullptr)
    {
        qvplatform::closeStream(std::exchange(m_file, nullptr));
    }
    // Kept: also where there was nothing to close.
    if (m_deleteOnClose)
        qvdisk::deleteFile(m_name);
}

} // namespace qvbase
