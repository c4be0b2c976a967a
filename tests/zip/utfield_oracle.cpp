#include "zip/utfield_oracle.h"

#include <string>

namespace ziptest
{

namespace
{

std::string describe(const std::optional<std::int32_t> & time)
{
    return time ? std::to_string(*time) : "none";
}

} // namespace

zip::UtTimes utTimesPlainly(const std::vector<unsigned char> & extra)
{
    zip::UtTimes times;
    const int length = static_cast<int>(extra.size());
    const auto byteAt = [&](int position)
    {
        return static_cast<int>(extra.at(static_cast<std::size_t>(position)));
    };
    int position = 0;
    while (true)
    {
        if (position + 4 >= length)
            return times;
        if (byteAt(position) == 'U' && byteAt(position + 1) == 'T')
            break;
        const int low = byteAt(position + 2);
        const int step = 4 + (low < 128 ? low : low - 256);
        if (step <= 0)
            return times;
        position += step;
    }
    const int flags = byteAt(position + 4);
    int at = position + 5;
    const auto take = [&](std::optional<std::int32_t> & time)
    {
        if (at + 4 > length)
            return;
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i)
            value = value * 256 + static_cast<std::uint32_t>(byteAt(at + i));
        time = static_cast<std::int32_t>(value);
        at += 4;
    };
    if (flags % 2 == 1)
        take(times.modification);
    if (flags / 2 % 2 == 1)
        take(times.access);
    if (flags / 4 % 2 == 1)
        take(times.creation);
    return times;
}

std::string describe(const zip::UtTimes & times)
{
    return "modification " + describe(times.modification) + ", access " + describe(times.access) +
           ", creation " + describe(times.creation);
}

} // namespace ziptest
