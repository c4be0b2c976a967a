#include "VontalBase/utils/SortedTexts.h"

#include "VontalBase/utils/bundleparser.h"

#include <algorithm>

namespace qvutils
{

namespace
{

/// @return false if a key is there twice.
bool sortByKey(std::vector<BundleEntry> & entries)
{
    const auto isLess = [](const BundleEntry & one, const BundleEntry & other)
    {
        return one.key < other.key;
    };
    const auto isSame = [](const BundleEntry & one, const BundleEntry & other)
    {
        return one.key == other.key;
    };
    // Many files are written in this order.
    if (!std::is_sorted(entries.begin(), entries.end(), isLess))
        std::sort(entries.begin(), entries.end(), isLess);
    return std::adjacent_find(entries.begin(), entries.end(), isSame) == entries.end();
}

std::size_t lengthOfKeys(const std::vector<BundleEntry> & entries)
{
    std::size_t length = 0;
    for (const BundleEntry & entry : entries)
        length += entry.key.size();
    return length;
}

} // namespace

bool SortedTexts::read(std::string_view file)
{
    std::vector<BundleEntry> entries;
    if (!parseBundle(file, entries) || !sortByKey(entries))
        return false;
    m_keys.reserve(lengthOfKeys(entries));
    m_texts.reserve(entries.size());
    for (const BundleEntry & entry : entries)
    {
        const std::size_t begin = m_keys.size();
        m_keys += entry.key;
        Text & text = m_texts.emplace_back();
        text.key = std::string_view(m_keys).substr(begin);
        appendUnescaped(entry.value, text.value);
    }
    return true;
}

const Vontal::u8string * SortedTexts::find(std::string_view key) const noexcept
{
    const auto isLess = [](const Text & text, std::string_view wanted)
    {
        return text.key < wanted;
    };
    const auto found = std::lower_bound(m_texts.begin(), m_texts.end(), key, isLess);
    return found != m_texts.end() && found->key == key ? &found->value : nullptr;
}

} // namespace qvutils
