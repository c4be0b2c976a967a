#include "VontalBase/parse/splitting.h"

#include <algorithm>
#include <cstddef>

namespace qvparse
{

namespace
{

template <class Text, class Item>
void split(const Text & text, std::list<Item> & items, typename Text::value_type separator)
{
    using Character = typename Text::value_type;
    const std::size_t end = std::min(text.find(Character()), text.size());
    std::size_t begin = text.find_first_not_of(separator);
    while (begin < end)
    {
        const std::size_t behind = std::min(text.find(separator, begin), end);
        items.emplace_back(text.substr(begin, behind - begin));
        begin = text.find_first_not_of(separator, behind);
    }
}

} // namespace

void splitString(const std::string & text, std::list<std::string> & items, char separator)
{
    split(text, items, separator);
}

void splitString(const std::wstring & text, std::list<std::wstring> & items, wchar_t separator)
{
    split(text, items, separator);
}

void splitString(const Vontal::u8string & text, std::list<Vontal::u8string> & items, char separator)
{
    split<std::string>(text, items, separator);
}

} // namespace qvparse
