#include "VontalBase/zip/ziputfield.h"

#include "VontalBase/zip/zipformat.h"

namespace zip
{

namespace
{

constexpr std::size_t stampSize = 4;

/// The bytes from the flags of a "UT" block to the end of the field; none where there is no such block.
std::span<const unsigned char> findBlock(std::span<const unsigned char> extra) noexcept
{
    while (extra.size() > format::extraHeaderSize)
    {
        if (extra[0] == 'U' && extra[1] == 'T')
            return extra.subspan(format::extraHeaderSize);
        // Kept: only the low byte of a block's length counts, and it is signed.
        const int step = static_cast<int>(format::extraHeaderSize) + static_cast<std::int8_t>(extra[2]);
        if (step <= 0 || static_cast<std::size_t>(step) > extra.size())
            break;
        extra = extra.subspan(static_cast<std::size_t>(step));
    }
    return {};
}

} // namespace

UtTimes findUtTimes(std::span<const unsigned char> extra) noexcept
{
    UtTimes times;
    std::span<const unsigned char> rest = findBlock(extra);
    if (rest.empty())
        return times;
    const unsigned int flags = rest.front();
    rest = rest.subspan(1);
    const auto take = [&](std::uint8_t flag, std::optional<std::int32_t> & time)
    {
        if ((flags & flag) == 0 || rest.size() < stampSize)
            return;
        time = static_cast<std::int32_t>(format::FieldReader(rest.data()).take32());
        rest = rest.subspan(stampSize);
    };
    take(format::hasModificationTime, times.modification);
    take(format::hasAccessTime, times.access);
    take(format::hasCreationTime, times.creation);
    return times;
}

} // namespace zip
