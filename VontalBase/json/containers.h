/// @internal
/// @file
/// What arrays and objects hold.
#pragma once

#include "VontalBase/json/Array.h"
#include "VontalBase/json/CompactText.h"
#include "VontalBase/json/NodeArena.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/ValueString.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>

namespace qvjson
{

using ObjectKey = CompactText<24>;

/// The head of a block whose elements lie directly behind it: pointers for an array, sorted entries for an
/// object. An object of many items has a `LargeBlock` in its place.
struct alignas(8) ItemBlock
{
    static constexpr std::uint32_t large = 0xFFFFFFFF;

    /// The next block that waits to be taken apart.
    ItemBlock * nextDying = nullptr;
    std::uint32_t size = 0;
    /// For how many elements there is room; `large` for a `LargeBlock`.
    std::uint32_t capacity = 0;
    /// Where the block lies in the chunk of an arena; 0 for a block of its own.
    std::uint32_t chunkOffset = 0;

    template <class Element>
    Element * elements() noexcept
    {
        return reinterpret_cast<Element *>(this + 1);
    }
    template <class Element>
    const Element * elements() const noexcept
    {
        return reinterpret_cast<const Element *>(this + 1);
    }
};

struct ObjectEntry
{
    ObjectKey key;
    Item * item;
};

/// Compares keys as unsigned bytes, also with plain text.
struct KeyLess
{
    using is_transparent = void;

    static std::string_view text(std::string_view key) noexcept
    {
        return key;
    }
    static std::string_view text(const ObjectKey & key) noexcept
    {
        return key.view();
    }
    template <class A, class B>
    bool operator()(const A & a, const B & b) const noexcept
    {
        return text(a) < text(b);
    }
};

using ItemMap = std::map<ObjectKey, Item *, KeyLess>;

/// The items of an object that has outgrown a sorted block.
struct LargeBlock : ItemBlock
{
    ItemMap map;
};

/// Appends a pointer to the block of an array. No count changes.
void appendItem(ItemBlock *& block, Item * item);

/// The place of the item under `key` in the block of an object, made with a null item if it is not there.
/// Valid until the next call.
Item *& placeOf(ItemBlock *& block, ObjectKey && key);

/// The place of the item under `key` in the block of an object, or null if it is not there.
Item * const * findItem(const ItemBlock * block, std::string_view key) noexcept;

/// How many items the block of an object has.
std::size_t countItems(const ItemBlock * block) noexcept;

/// Walks over the block of an object in the order of the keys.
class ObjectCursor
{
public:
    explicit ObjectCursor(const ItemBlock * block) noexcept;

    bool atEnd() const noexcept
    {
        return m_isLarge ? m_position == m_end : m_entry == m_entriesEnd;
    }
    std::string_view key() const noexcept
    {
        return m_isLarge ? m_position->first.view() : m_entry->key.view();
    }
    Item * item() const noexcept
    {
        return m_isLarge ? m_position->second : m_entry->item;
    }
    void next() noexcept
    {
        if (m_isLarge)
            ++m_position;
        else
            ++m_entry;
    }

private:
    bool m_isLarge;
    const ObjectEntry * m_entry = nullptr;
    const ObjectEntry * m_entriesEnd = nullptr;
    ItemMap::const_iterator m_position;
    ItemMap::const_iterator m_end;
};

/// Lets every element of an array's block go and frees the block. Depth costs no stack.
void takeApartArray(ItemBlock * block) noexcept;

/// Lets every item of an object's block go and frees the block. Depth costs no stack.
void takeApartObject(ItemBlock * block) noexcept;

/// Gives back the memory of a block whose elements are of no more concern; null is allowed.
void freeBlock(ItemBlock * block) noexcept;

/// Gives back one user's part of an arena's chunk, together with others while a tree is taken apart.
void leaveChunkSoon(NodeChunk * chunk) noexcept;

/// Compares two containers of one type. Depth costs no stack.
bool equalContainers(const Item & a, const Item & b);

/// The way of the house to what a container holds.
struct TreeAccess
{
    static const ItemBlock * block(const Array & array) noexcept
    {
        return array.m_items.contents();
    }
    static const ItemBlock * block(const Object & object) noexcept
    {
        return object.m_items.contents();
    }
    static ItemBlock *& block(Array & array) noexcept
    {
        return array.m_items.contents();
    }
    static ItemBlock *& block(Object & object) noexcept
    {
        return object.m_items.contents();
    }
    /// Whether a string node holds such a text within itself.
    static bool fitsWithin(std::string_view text) noexcept
    {
        return text.size() <= decltype(ValueString::m_text)::inlineCapacity;
    }
    /// Makes a string node show a text that it does not own.
    static void borrowText(ValueString & value, std::string_view text) noexcept
    {
        value.m_text.borrow(text);
    }
    static bool setPendingKey(Object & object, std::string_view key)
    {
        return object.setPendingKey(key);
    }
};

} // namespace qvjson
