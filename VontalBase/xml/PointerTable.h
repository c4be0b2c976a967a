/// @internal
/// @file
/// A hash table whose keys are pointers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace qvxml
{

/// Maps pointers, none of which is null, to values. Entries are never removed one by one.
template <class Key, class Value>
class PointerTable
{
public:
    /// The value of a key, or null.
    Value * find(const Key * key) noexcept
    {
        if (m_places.empty())
            return nullptr;
        Place & place = placeOf(m_places, key);
        return place.key != nullptr ? &place.value : nullptr;
    }

    /// Sees to it that the next `insert` takes no memory.
    void makeRoom()
    {
        // Three quarters at the most, so that searches are short.
        if ((m_used + 1) * 4 > m_places.size() * 3)
            grow();
    }

    /// Enters a key that may be there already.
    /// @return whether it is new; otherwise its value stays.
    bool insert(Key * key, Value value)
    {
        makeRoom();
        Place & place = placeOf(m_places, key);
        if (place.key != nullptr)
            return false;
        place = {key, std::move(value)};
        ++m_used;
        return true;
    }

    /// Calls @p visit with each key and value, in no order.
    template <class Visit>
    void forEach(Visit visit)
    {
        for (Place & place : m_places)
        {
            if (place.key != nullptr)
                visit(place.key, place.value);
        }
    }

    /// Removes all entries.
    void clear() noexcept
    {
        m_places = {};
        m_used = 0;
    }

private:
    struct Place
    {
        Key * key = nullptr;
        Value value = {};
    };

    static constexpr std::size_t firstSize = 16;

    static Place & placeOf(std::vector<Place> & places, const Key * key) noexcept
    {
        // The upper half of the product depends on all bits of the address.
        const std::uint64_t product = reinterpret_cast<std::uintptr_t>(key) * 0x9E3779B97F4A7C15U;
        std::size_t at = static_cast<std::size_t>(product >> 32U) & (places.size() - 1);
        while (places[at].key != nullptr && places[at].key != key)
            at = (at + 1) & (places.size() - 1);
        return places[at];
    }

    void grow()
    {
        std::vector<Place> wider(m_places.empty() ? firstSize : m_places.size() * 2);
        for (Place & place : m_places)
        {
            if (place.key != nullptr)
                placeOf(wider, place.key) = std::move(place);
        }
        m_places = std::move(wider);
    }

    std::vector<Place> m_places;
    std::size_t m_used = 0;
};

} // namespace qvxml
