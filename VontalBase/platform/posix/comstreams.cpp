#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comblock.h"
#include "VontalBase/platform/posix/comobject.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

namespace qvplatform
{

namespace
{

/// The bytes that a stream and its clones have in common.
struct SharedBytes
{
    ~SharedBytes()
    {
        if (ownsBlock)
            delete block;
    }

    /// Makes room for so many bytes, with more in reserve than is asked for.
    bool reserve(std::uint64_t wanted) noexcept
    {
        if (wanted <= block->size())
            return true;
        if (wanted > std::numeric_limits<std::size_t>::max() / 2)
            return false;
        const std::size_t needed = static_cast<std::size_t>(wanted);
        const std::size_t generous = std::max(needed, block->size() + block->size() / 2);
        return block->resize(generous) || (generous != needed && block->resize(needed));
    }

    /// Changes the length; new bytes are zeros.
    bool setLength(std::uint64_t wanted) noexcept
    {
        if (!reserve(wanted))
            return false;
        if (wanted > length)
            std::memset(block->bytes() + length, 0, static_cast<std::size_t>(wanted - length));
        length = wanted;
        return true;
    }

    Block * block = nullptr;
    bool ownsBlock = false;
    /// Up to the size of the block.
    std::uint64_t length = 0;
};

/// So that the block of a stream can be asked for.
constexpr GUID memoryStreamId = {
    0x5e0b1d2a, 0x93c4, 0x4f6e, {0x8a, 0x11, 0x2d, 0x7c, 0x90, 0x5b, 0xe3, 0x46}};

class MemoryStream final : public CountedObject<IStream, ISequentialStream>
{
public:
    MemoryStream(std::shared_ptr<SharedBytes> bytes, std::uint64_t position) noexcept
        : m_bytes(std::move(bytes)), m_position(position)
    {
    }

    [[nodiscard]] Block * block() const noexcept
    {
        return m_bytes->block;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object != nullptr && iid == memoryStreamId)
        {
            AddRef();
            *object = this;
            return S_OK;
        }
        return CountedObject::QueryInterface(iid, object);
    }

    HRESULT STDMETHODCALLTYPE Read(void * buffer, ULONG size, ULONG * read) override
    {
        if (read != nullptr)
            *read = 0;
        if (buffer == nullptr)
            return STG_E_INVALIDPOINTER;
        if (gateFails("stream read"))
            return STG_E_READFAULT;
        const std::uint64_t left = m_bytes->length - std::min(m_position, m_bytes->length);
        const ULONG count = static_cast<ULONG>(std::min<std::uint64_t>(size, left));
        if (count != 0)
            std::memcpy(buffer, m_bytes->block->bytes() + m_position, count);
        m_position += count;
        if (read != nullptr)
            *read = count;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Write(const void * buffer, ULONG size, ULONG * written) override
    {
        if (written != nullptr)
            *written = 0;
        if (buffer == nullptr)
            return STG_E_INVALIDPOINTER;
        if (size == 0)
            return S_OK;
        if (gateFails("stream write"))
            return STG_E_WRITEFAULT;
        const std::uint64_t end = m_position + size;
        if (end < m_position || !m_bytes->reserve(end))
            return STG_E_MEDIUMFULL;
        if (m_position > m_bytes->length && !m_bytes->setLength(m_position))
            return STG_E_MEDIUMFULL;
        std::memcpy(m_bytes->block->bytes() + m_position, buffer, size);
        m_bytes->length = std::max(m_bytes->length, end);
        m_position = end;
        if (written != nullptr)
            *written = size;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER * position) override
    {
        if (gateFails("stream seek"))
            return STG_E_SEEKERROR;
        std::uint64_t base = 0;
        if (origin == STREAM_SEEK_CUR)
            base = m_position;
        else if (origin == STREAM_SEEK_END)
            base = m_bytes->length;
        else if (origin != STREAM_SEEK_SET)
            return STG_E_INVALIDFUNCTION;
        const std::uint64_t moved = base + static_cast<std::uint64_t>(move.QuadPart);
        const bool isInFront = move.QuadPart < 0 ? moved > base : moved < base;
        if (isInFront || moved > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return STG_E_INVALIDFUNCTION;
        m_position = moved;
        if (position != nullptr)
            position->QuadPart = m_position;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override
    {
        return m_bytes->setLength(size.QuadPart) ? S_OK : STG_E_MEDIUMFULL;
    }

    HRESULT STDMETHODCALLTYPE CopyTo(
        IStream * target, ULARGE_INTEGER size, ULARGE_INTEGER * read, ULARGE_INTEGER * written) override
    {
        if (target == nullptr)
            return STG_E_INVALIDPOINTER;
        std::uint64_t totalRead = 0;
        std::uint64_t totalWritten = 0;
        HRESULT result = S_OK;
        // Through a buffer, since the target may share the bytes.
        unsigned char buffer[4096];
        while (totalRead < size.QuadPart && SUCCEEDED(result))
        {
            ULONG count = 0;
            const std::uint64_t wanted = std::min<std::uint64_t>(size.QuadPart - totalRead, sizeof buffer);
            result = Read(buffer, static_cast<ULONG>(wanted), &count);
            if (FAILED(result) || count == 0)
                break;
            totalRead += count;
            ULONG taken = 0;
            result = target->Write(buffer, count, &taken);
            totalWritten += taken;
        }
        if (read != nullptr)
            read->QuadPart = totalRead;
        if (written != nullptr)
            written->QuadPart = totalWritten;
        return FAILED(result) ? result : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Commit(DWORD) override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Revert() override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return STG_E_INVALIDFUNCTION;
    }

    HRESULT STDMETHODCALLTYPE Stat(STATSTG * state, DWORD) override
    {
        if (state == nullptr)
            return STG_E_INVALIDPOINTER;
        if (gateFails("stream state"))
            return STG_E_READFAULT;
        *state = {};
        state->type = STGTY_STREAM;
        state->cbSize.QuadPart = m_bytes->length;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IStream ** stream) override
    {
        if (stream == nullptr)
            return STG_E_INVALIDPOINTER;
        *stream = new (std::nothrow) MemoryStream(m_bytes, m_position);
        return *stream != nullptr ? S_OK : E_OUTOFMEMORY;
    }

private:
    std::shared_ptr<SharedBytes> m_bytes;
    std::uint64_t m_position;
};

} // namespace

} // namespace qvplatform

HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL freeWithStream, LPSTREAM * stream)
{
    if (stream == nullptr)
        return E_INVALIDARG;
    *stream = nullptr;
    if (qvplatform::gateFails("stream creation"))
        return E_OUTOFMEMORY;
    return qvplatform::withoutThrowing(
        [&]
        {
            auto bytes = std::make_shared<qvplatform::SharedBytes>();
            std::unique_ptr<qvplatform::Block> made;
            if (block == nullptr)
                made = std::make_unique<qvplatform::Block>();
            qvplatform::Block * const used =
                block != nullptr ? static_cast<qvplatform::Block *>(block) : made.get();
            *stream = new qvplatform::MemoryStream(bytes, 0);
            // Only now that nothing can fail any more does the block change hands.
            bytes->block = used;
            bytes->length = used->size();
            bytes->ownsBlock = freeWithStream != FALSE;
            static_cast<void>(made.release());
            return S_OK;
        });
}

HRESULT GetHGlobalFromStream(LPSTREAM stream, HGLOBAL * block)
{
    if (stream == nullptr || block == nullptr)
        return E_INVALIDARG;
    *block = nullptr;
    void * found = nullptr;
    if (FAILED(stream->QueryInterface(qvplatform::memoryStreamId, &found)) || found == nullptr)
        return E_INVALIDARG;
    *block = static_cast<qvplatform::MemoryStream *>(found)->block();
    stream->Release();
    return S_OK;
}
