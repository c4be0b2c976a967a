#include "VontalBase/core/wipe.h"

#include <cstddef>
#include <cstring>

namespace qvbase
{

namespace
{

template <class Text>
void wipe(Text & text) noexcept
{
    if (!text.empty())
        wipeBuffer(text.data(), text.size() * sizeof(typename Text::value_type));
    Text().swap(text);
}

} // namespace

void wipeBuffer(void * data, std::uint64_t size) noexcept
{
    if (data == nullptr || size == 0)
        return;
    // Which function is called is read anew each time, so no compiler can know that it has no effect.
    static void * (*const volatile fill)(void *, int, std::size_t) = std::memset;
    fill(data, 0, static_cast<std::size_t>(size));
}

void wipeString(std::string & text) noexcept
{
    wipe(text);
}

void wipeString(std::wstring & text) noexcept
{
    wipe(text);
}

} // namespace qvbase
