#include "VontalBase/utils/ItemTable.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace qvutils
{

namespace
{

std::size_t hashOf(std::string_view name) noexcept
{
    return std::hash<std::string_view>()(name);
}

constexpr std::size_t firstSize = 16;

} // namespace

Config::Item * Config::ItemTable::find(std::string_view name) const noexcept
{
    if (m_places.empty())
        return nullptr;
    const std::size_t hash = hashOf(name);
    for (std::size_t at = hash & (m_places.size() - 1); m_places[at].item != nullptr; at = next(at))
    {
        if (m_places[at].hash == hash && m_places[at].item->getName() == name)
            return m_places[at].item;
    }
    return nullptr;
}

void Config::ItemTable::makeRoom()
{
    // Two thirds at the most, so that searches are short.
    if ((m_used + 1) * 3 <= m_places.size() * 2)
        return;
    ItemTable wider;
    wider.m_places.resize(m_places.empty() ? firstSize : m_places.size() * 2);
    for (const Place & place : m_places)
    {
        if (place.item != nullptr)
            wider.enter(place);
    }
    *this = std::move(wider);
}

void Config::ItemTable::insert(Item * item)
{
    makeRoom();
    enter({hashOf(item->getName()), item});
}

void Config::ItemTable::enter(const Place & entered) noexcept
{
    std::size_t at = entered.hash & (m_places.size() - 1);
    while (m_places[at].item != nullptr)
        at = next(at);
    m_places[at] = entered;
    ++m_used;
}

void Config::ItemTable::erase(Item * item) noexcept
{
    std::size_t hole = hashOf(item->getName()) & (m_places.size() - 1);
    while (m_places[hole].item != item)
        hole = next(hole);
    // What stands behind the hole moves up, unless it would then stand before its own place.
    for (std::size_t at = next(hole); m_places[at].item != nullptr; at = next(at))
    {
        const std::size_t wayToHole = (hole - m_places[at].hash) & (m_places.size() - 1);
        const std::size_t wayToPlace = (at - m_places[at].hash) & (m_places.size() - 1);
        if (wayToHole > wayToPlace)
            continue;
        m_places[hole] = m_places[at];
        hole = at;
    }
    m_places[hole] = {};
    --m_used;
}

std::vector<Config::Item *> Config::ItemTable::inOrder() const
{
    std::vector<Item *> sorted;
    sorted.reserve(m_used);
    for (const Place & place : m_places)
    {
        if (place.item != nullptr)
            sorted.push_back(place.item);
    }
    std::sort(sorted.begin(), sorted.end(),
        [](const Item * left, const Item * right) { return left->getName() < right->getName(); });
    return sorted;
}

} // namespace qvutils
