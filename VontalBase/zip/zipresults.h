/// @internal
/// @file
/// The result codes of zip archives and their texts.
#pragma once

#include "VontalBase/text/integers.h"
#include "VontalBase/zip/ziphandle.h"

#include <atomic>

namespace zip
{

/// A result code, as the functions of the interface return it.
using Result = Vontal::ulong32;

namespace result
{
constexpr Result success = 0;
constexpr Result noDuplicate = 0x100;
constexpr Result noFile = 0x200;
constexpr Result noMemory = 0x300;
constexpr Result writeFailed = 0x400;
constexpr Result notFound = 0x500;
constexpr Result moreData = 0x600;
constexpr Result corrupt = 0x700;
constexpr Result readFailed = 0x800;
constexpr Result faultyArguments = 0x10000;
constexpr Result notInMemory = 0x20000;
constexpr Result memoryTooSmall = 0x30000;
constexpr Result previousError = 0x40000;
constexpr Result alreadyEnded = 0x50000;
constexpr Result wrongSize = 0x60000;
constexpr Result partiallyUnzipped = 0x70000;
constexpr Result mixedHandles = 0x80000;
constexpr Result notInitialised = 0x1000000;
constexpr Result unseekable = 0x2000000;
constexpr Result mindChanged = 0x4000000;
constexpr Result flateFailed = 0x5000000;

// The two that opening an archive may end with, and that have no text.
constexpr Result noEndRecord = static_cast<Result>(-1);
constexpr Result badArchive = static_cast<Result>(-103);

/// Asks for the last result in the place of a code.
constexpr Result last = 1;
} // namespace result

/// What a handle is of, as it stands in the handle.
namespace side
{
constexpr Vontal::ulong32 reader = 1;
constexpr Vontal::ulong32 writer = 2;
} // namespace side

/// Whether a handle is that of one side.
/// @param wanted one of `side`.
/// @return success, or what a call with such a handle gives.
inline Result checkHandle(HZIP handle, Vontal::ulong32 wanted) noexcept
{
    if (handle == nullptr)
        return result::faultyArguments;
    return handle->kind == wanted ? result::success : result::mixedHandles;
}

/// The last result of one side. Kept: it is one for all handles and threads.
class LastResult
{
public:
    /// Takes a result down, and gives it on.
    Result record(Result newResult) noexcept
    {
        m_result.store(newResult, std::memory_order_relaxed);
        return newResult;
    }

    [[nodiscard]] Result get() const noexcept
    {
        return m_result.load(std::memory_order_relaxed);
    }

private:
    std::atomic<Result> m_result{result::success};
};

/// Copies the text for a code, or as much of it as there is room for, with a NUL behind it.
/// @param lastResult what stands for `result::last`.
/// @param buffer null for no copy.
/// @param size of the buffer in bytes; 0 for no copy.
/// @return the length of the whole text in bytes.
unsigned int formatMessage(Result code, Result lastResult, char * buffer, unsigned int size) noexcept;

} // namespace zip
