#include "VontalBase/xml/MemoryStream.h"

#include "VontalBase/disk/FileWriter.h"

#include <algorithm>
#include <array>
#include <istream>
#include <memory>

namespace qvxml
{

bool MemoryStream::create()
{
    return SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, m_stream.receive())) && m_stream.get() != nullptr;
}

bool MemoryStream::write(const char * data, std::uint32_t size)
{
    ULONG written = 0;
    return SUCCEEDED(m_stream->Write(data, size, &written)) && written == size;
}

bool MemoryStream::writeAll(std::istream & in)
{
    std::array<char, 1024> block;
    std::streamsize size = 0;
    do
    {
        in.read(block.data(), block.size());
        size = in.gcount();
        if (!write(block.data(), static_cast<std::uint32_t>(size)))
            return false;
    } while (static_cast<std::size_t>(size) == block.size());
    return true;
}

bool MemoryStream::rewind()
{
    return SUCCEEDED(m_stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
}

bool MemoryStream::readSize(std::uint64_t & size)
{
    STATSTG status = {};
    if (FAILED(m_stream->Stat(&status, STATFLAG_NONAME)))
        return false;
    size = status.cbSize.QuadPart;
    return true;
}

bool MemoryStream::appendTo(std::string & out, std::uint64_t size)
{
    constexpr std::uint64_t blockSize = 65536;
    const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
    while (size > 0)
    {
        ULONG read = 0;
        const ULONG wanted = static_cast<ULONG>(std::min(size, blockSize));
        if (FAILED(m_stream->Read(block.get(), wanted, &read)) || read == 0)
            return false;
        out.append(block.get(), read);
        size -= read;
    }
    return true;
}

bool MemoryStream::writeTo(qvdisk::FileWriter & out)
{
    HGLOBAL memory = nullptr;
    if (FAILED(GetHGlobalFromStream(m_stream.get(), &memory)))
        return false;
    const void * const bytes = GlobalLock(memory);
    if (bytes == nullptr)
        return false;
    std::uint64_t size = 0;
    const bool written = readSize(size) && out.write(bytes, size);
    GlobalUnlock(memory);
    return written;
}

} // namespace qvxml
