#include "VontalBase/zip/NameIndex.h"

#include "VontalBase/text/asciicase.h"

#include <algorithm>

namespace zip
{

std::string_view NameIndex::text(const Key & key) const noexcept
{
    return std::string_view(m_text).substr(key.start, key.length);
}

void NameIndex::append(std::string & text, std::string_view name) const
{
    const std::size_t start = text.size();
    text += name;
    if (m_case == Case::AsciiIgnored)
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
            text.begin() + static_cast<std::ptrdiff_t>(start), Vontal::lowerAscii);
}

void NameIndex::start(std::size_t count, std::size_t bytes)
{
    m_count = 0;
    m_expected = count;
    m_text.clear();
    m_keys.clear();
    m_text.reserve(bytes);
    m_keys.reserve(count);
}

void NameIndex::add(std::string_view name, std::size_t number)
{
    m_keys.push_back({m_text.size(), name.size(), number});
    append(m_text, name);
}

void NameIndex::finish()
{
    std::sort(m_keys.begin(), m_keys.end(),
        [&](const Key & left, const Key & right)
        {
            const int order = text(left).compare(text(right));
            return order != 0 ? order < 0 : left.number < right.number;
        });
    m_count = m_expected;
}

bool NameIndex::find(std::string_view name, std::size_t & number) const
{
    std::string wanted;
    append(wanted, name);
    const auto found = std::lower_bound(m_keys.begin(), m_keys.end(), wanted,
        [&](const Key & key, const std::string & sought) { return text(key) < sought; });
    if (found == m_keys.end() || text(*found) != wanted)
        return false;
    number = found->number;
    return true;
}

} // namespace zip
