#include "VontalBase/zip/zipwriter.h"

#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/encoding.h"
#include "VontalBase/zip/ArchiveWriter.h"
#include "VontalBase/zip/foldercontent.h"
#include "VontalBase/zip/zipresults.h"

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace
{

using zip::ArchiveWriter;
using zip::Result;

constinit zip::LastResult lastResult;

Result record(Result result) noexcept
{
    return lastResult.record(result);
}

Result checkHandle(HZIP hz) noexcept
{
    return zip::checkHandle(hz, zip::side::writer);
}

ArchiveWriter & writerOf(HZIP hz) noexcept
{
    return *static_cast<ArchiveWriter *>(hz->state);
}

/// The units in front of the first NUL, or as many as are wanted at most.
std::wstring_view textOf(const wchar_t * text, std::size_t most) noexcept
{
    std::size_t length = 0;
    while (length < most && text[length] != L'\0')
        ++length;
    return {text, length};
}

/// Kept: a name has at most so many bytes in the code page, its NUL included.
constexpr std::size_t nameBuffer = 518;

bool convertName(const wchar_t * name, std::string & converted)
{
    if (name == nullptr)
        return false;
    // No unit becomes nothing.
    const std::wstring_view text = textOf(name, nameBuffer);
    if (text.size() >= nameBuffer)
        return false;
    qvplatform::ansiFromWide(text, converted);
    return converted.size() < nameBuffer;
}

} // namespace

HZIP CreateZipZ(void * z, unsigned int len, Vontal::ulong32 flags)
{
    qvplatform::refreshTimeZone();
    try
    {
        auto writer = std::make_unique<ArchiveWriter>();
        auto handle = std::make_unique<HZIP__>();
        if (record(writer->open(z, len, flags)) != zip::result::success)
            return nullptr;
        handle->kind = zip::side::writer;
        handle->state = writer.release();
        return handle.release();
    }
    catch (const std::bad_alloc &)
    {
        record(zip::result::noMemory);
        return nullptr;
    }
}

Vontal::ulong32 ZipAdd(HZIP hz, const wchar_t * dstName, void * src, unsigned int len, Vontal::ulong32 flags)
{
    const Result checked = checkHandle(hz);
    if (checked != zip::result::success)
        return record(checked);
    try
    {
        std::string name;
        // Kept: this result is not recorded.
        if (!convertName(dstName, name))
            return zip::result::faultyArguments;
        return record(writerOf(hz).add(std::move(name), src, len, flags));
    }
    catch (const std::bad_alloc &)
    {
        return record(zip::result::noMemory);
    }
}

Vontal::ulong32 ZipGetMemory(HZIP hz, void ** pbuf, Vontal::ulong32 * plen)
{
    const Result checked = checkHandle(hz);
    if (checked == zip::result::mixedHandles)
        return record(checked);
    void * memory = nullptr;
    Vontal::ulong32 length = 0;
    if (hz != nullptr)
    {
        writerOf(hz).seal();
        memory = writerOf(hz).memory();
        length = writerOf(hz).written();
    }
    if (pbuf != nullptr)
        *pbuf = memory;
    if (plen != nullptr)
        *plen = length;
    if (checked != zip::result::success)
        return record(checked);
    return record(memory != nullptr ? zip::result::success : zip::result::notInMemory);
}

Vontal::ulong32 CloseZipZ(HZIP hz)
{
    const Result checked = checkHandle(hz);
    if (checked != zip::result::success)
        return record(checked);
    const std::unique_ptr<HZIP__> handle(hz);
    const std::unique_ptr<ArchiveWriter> writer(&writerOf(hz));
    return record(writer->close());
}

// NOLINTNEXTLINE(readability-non-const-parameter): the interface takes them so.
int AddFolderContent(HZIP hz, wchar_t * absolutePath, wchar_t * dirToAdd)
{
    try
    {
        return zip::addFolderContent(hz, absolutePath, dirToAdd) ? 1 : 0;
    }
    catch (const std::bad_alloc &)
    {
        return 0;
    }
}

unsigned int FormatZipMessageZ(Vontal::ulong32 code, char * buf, unsigned int len)
{
    return zip::formatMessage(code, lastResult.get(), buf, len);
}

bool IsZipHandleZ(HZIP hz)
{
    return hz == nullptr || hz->kind == zip::side::writer;
}
