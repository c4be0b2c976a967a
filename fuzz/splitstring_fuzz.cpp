/// Any bytes cut at their first one: all forms give the same items, and these with the separators between
/// them make up the text again.

#include "VontalBase/parse/splitting.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <string>

namespace
{

using fuzzing::require;

/// Finds the items again, one behind the other, with nothing but separators between them.
void checkPlaces(const std::string & text, const std::list<std::string> & items, char separator)
{
    std::size_t place = 0;
    for (const std::string & item : items)
    {
        require(!item.empty() && item.find(separator) == std::string::npos);
        while (place < text.size() && text[place] == separator)
            ++place;
        require(text.compare(place, item.size(), item) == 0);
        place += item.size();
        require(place == text.size() || text[place] == separator);
    }
    require(text.find_first_not_of(separator, place) == std::string::npos);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    if (size == 0)
        return 0;
    const char separator = static_cast<char>(data[0]);
    const std::string text(data + 1, data + size);
    std::list<std::string> items;
    qvparse::splitString(text, items, separator);
    checkPlaces(text.c_str(), items, separator);

    std::list<Vontal::u8string> texts;
    qvparse::splitString(Vontal::u8string(text), texts, separator);
    require(std::list<std::string>(texts.begin(), texts.end()) == items);

    std::list<std::wstring> wide;
    qvparse::splitString(std::wstring(data + 1, data + size), wide, static_cast<wchar_t>(data[0]));
    require(wide.size() == items.size());
    auto item = items.begin();
    for (const std::wstring & wideItem : wide)
    {
        std::string narrow;
        for (const wchar_t c : wideItem)
            narrow += static_cast<char>(c);
        require(narrow == *item++);
    }
    return 0;
}
