#include "VontalBase/zip/zipreader.h"

#include "VontalBase/zip/ArchiveReader.h"
#include "VontalBase/zip/zipentry.h"

#include <memory>
#include <new>

using zip::ArchiveReader;
using zip::Result;

namespace
{

constinit zip::LastResult lastResult;

/// Does something and records its result.
template <class Action>
Result perform(Action action) noexcept
{
    try
    {
        return lastResult.record(action());
    }
    catch (const std::bad_alloc &)
    {
        return lastResult.record(zip::result::noMemory);
    }
}

/// Does something with the reader that a handle stands for, and records its result.
template <class Action>
Result performOn(HZIP handle, Action action) noexcept
{
    const Result checked = zip::checkHandle(handle, zip::side::reader);
    if (checked != zip::result::success)
        return lastResult.record(checked);
    auto & reader = *static_cast<ArchiveReader *>(handle->state);
    const Result result = perform([&] { return action(reader); });
    if (result == zip::result::noMemory)
        reader.endItem();
    return result;
}

/// An entry in the form that the caller takes.
void tell(const ZIPENTRY & entry, ZIPENTRY & told) noexcept
{
    told = entry;
}

void tell(const ZIPENTRY & entry, ZIPENTRYW & told)
{
    told = zip::wideEntryOf(entry);
}

template <class Entry>
Result getItem(ArchiveReader & reader, int index, Entry & told)
{
    ZIPENTRY entry{};
    const Result result = reader.getItem(index, entry);
    if (result == zip::result::success)
        tell(entry, told);
    return result;
}

template <class Entry>
Result findItem(HZIP handle, const wchar_t * name, bool ignoreCase, int * index, Entry * told) noexcept
{
    const auto find = [&](ArchiveReader & reader)
    {
        int found = -1;
        const Result result = reader.findItem(name, ignoreCase, found);
        if (index != nullptr)
            *index = found;
        if (told == nullptr)
            return result;
        if (result == zip::result::success)
            return getItem(reader, found, *told);
        *told = Entry{};
        told->index = -1;
        return result;
    };
    return performOn(handle, find);
}

} // namespace

HZIP OpenZipU(void * z, unsigned int len, Vontal::ulong32 flags)
{
    HZIP handle = nullptr;
    perform(
        [&]
        {
            auto reader = std::make_unique<ArchiveReader>();
            const Result result = reader->open(z, len, flags);
            if (result != zip::result::success)
                return result;
            handle = new HZIP__{zip::side::reader, reader.get()};
            static_cast<void>(reader.release());
            return result;
        });
    return handle;
}

Vontal::ulong32 CloseZipU(HZIP hz)
{
    return performOn(hz,
        [&](ArchiveReader & reader)
        {
            const std::unique_ptr<ArchiveReader> owner(&reader);
            const std::unique_ptr<HZIP__> handle(hz);
            return zip::result::success;
        });
}

Vontal::ulong32 GetZipItemA(HZIP hz, int index, ZIPENTRY * ze)
{
    return performOn(hz, [&](ArchiveReader & reader)
        { return ze != nullptr ? getItem(reader, index, *ze) : zip::result::faultyArguments; });
}

Vontal::ulong32 GetZipItemW(HZIP hz, int index, ZIPENTRYW * ze)
{
    return performOn(hz, [&](ArchiveReader & reader)
        { return ze != nullptr ? getItem(reader, index, *ze) : zip::result::faultyArguments; });
}

Vontal::ulong32 FindZipItemA(HZIP hz, const wchar_t * name, bool ignoreCase, int * index, ZIPENTRY * ze)
{
    return findItem(hz, name, ignoreCase, index, ze);
}

Vontal::ulong32 FindZipItemW(HZIP hz, const wchar_t * name, bool ignoreCase, int * index, ZIPENTRYW * ze)
{
    return findItem(hz, name, ignoreCase, index, ze);
}

Vontal::ulong32 UnzipItem(HZIP hz, int index, void * dst, unsigned int len, Vontal::ulong32 flags)
{
    return performOn(hz,
        [&](ArchiveReader & reader)
        {
            switch (flags)
            {
            case ZipKindMemory:
                return reader.unzipToMemory(index, dst, len);
            case ZipKindFile:
                return reader.unzipToFile(index, static_cast<const wchar_t *>(dst));
            case ZipKindHandle:
                return reader.unzipToHandle(index, dst);
            default:
                return zip::result::faultyArguments;
            }
        });
}

unsigned int FormatZipMessageU(Vontal::ulong32 code, char * buf, unsigned int len)
{
    return zip::formatMessage(code, lastResult.get(), buf, len);
}

bool IsZipHandleU(HZIP hz)
{
    return hz == nullptr || hz->kind == zip::side::reader;
}
