#include "VontalBase/platform/com.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comblock.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <new>

namespace
{

/// What stands in front of the units of a string.
struct StringHead
{
    std::uint64_t length;
};

StringHead * headOf(BSTR string) noexcept
{
    return reinterpret_cast<StringHead *>(string) - 1;
}

} // namespace

BSTR SysAllocStringLen(const OLECHAR * units, UINT length)
{
    if (qvplatform::gateFails("string allocation"))
        return nullptr;
    const std::size_t size = sizeof(StringHead) + (std::size_t{length} + 1) * sizeof(OLECHAR);
    void * const memory = ::operator new(size, std::nothrow);
    if (memory == nullptr)
        return nullptr;
    StringHead * const head = new (memory) StringHead{length};
    OLECHAR * const string = reinterpret_cast<OLECHAR *>(head + 1);
    if (units != nullptr)
        std::copy_n(units, length, string);
    string[length] = 0;
    return string;
}

BSTR SysAllocString(const OLECHAR * units)
{
    if (units == nullptr)
        return nullptr;
    const std::size_t length = std::wcslen(units);
    if (length > std::numeric_limits<UINT>::max())
        return nullptr;
    return SysAllocStringLen(units, static_cast<UINT>(length));
}

void SysFreeString(BSTR string)
{
    if (string != nullptr)
        ::operator delete(headOf(string));
}

UINT SysStringLen(BSTR string)
{
    return string != nullptr ? static_cast<UINT>(headOf(string)->length) : 0;
}

UINT SysStringByteLen(BSTR string)
{
    return static_cast<UINT>(SysStringLen(string) * sizeof(OLECHAR));
}

LPVOID CoTaskMemAlloc(SIZE_T size)
{
    if (qvplatform::gateFails("task memory"))
        return nullptr;
    return std::malloc(std::max<SIZE_T>(size, 1));
}

LPVOID CoTaskMemRealloc(LPVOID memory, SIZE_T size)
{
    if (size == 0 && memory != nullptr)
    {
        std::free(memory);
        return nullptr;
    }
    if (qvplatform::gateFails("task memory"))
        return nullptr;
    return std::realloc(memory, std::max<SIZE_T>(size, 1));
}

void CoTaskMemFree(LPVOID memory)
{
    std::free(memory);
}

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size)
{
    qvplatform::Block * const block = new (std::nothrow) qvplatform::Block;
    if (block == nullptr)
        return nullptr;
    if (!block->resize(size))
    {
        delete block;
        return nullptr;
    }
    if ((flags & GMEM_ZEROINIT) != 0 && size != 0)
        std::memset(block->bytes(), 0, size);
    return block;
}

HGLOBAL GlobalFree(HGLOBAL block)
{
    delete static_cast<qvplatform::Block *>(block);
    return nullptr;
}

LPVOID GlobalLock(HGLOBAL block)
{
    return block != nullptr ? static_cast<qvplatform::Block *>(block)->lock() : nullptr;
}

BOOL GlobalUnlock(HGLOBAL block)
{
    return block != nullptr && static_cast<qvplatform::Block *>(block)->unlock() ? TRUE : FALSE;
}

SIZE_T GlobalSize(HGLOBAL block)
{
    return block != nullptr ? static_cast<qvplatform::Block *>(block)->size() : 0;
}
