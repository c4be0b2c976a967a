/// @internal
/// @file
/// The items of a store of settings, by their names.
#pragma once

#include "VontalBase/utils/Config.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace qvutils
{

/// Finds items by name without comparing many: a hash table. They are put into their order when somebody asks
/// for all of them, which is seldom. The items belong to the caller.
class Config::ItemTable
{
public:
    /// The item of a name, or null.
    Item * find(std::string_view name) const noexcept;
    /// Enters an item whose name is not there yet.
    void insert(Item * item);
    /// Takes an item out.
    void erase(Item * item) noexcept;
    /// All items in the order of their names.
    std::vector<Item *> inOrder() const;
    /// Calls @p visit with each item, in no order.
    template <class Visit>
    void forEach(Visit visit) const
    {
        for (const Place & place : m_places)
        {
            if (place.item != nullptr)
                visit(place.item);
        }
    }

private:
    struct Place
    {
        std::size_t hash = 0;
        Item * item = nullptr;
    };

    void makeRoom();
    void enter(const Place & entered) noexcept;
    std::size_t next(std::size_t place) const noexcept
    {
        return (place + 1) & (m_places.size() - 1);
    }

    std::vector<Place> m_places;
    std::size_t m_used = 0;
};

} // namespace qvutils
