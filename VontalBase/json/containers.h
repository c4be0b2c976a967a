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

using ObjectKey = CompactText<16>;

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
    /// Where the block lies in the memory of a parse, in units of eight bytes; 0 for a block of its own.
    std::uint16_t place = 0;

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

/// Appends a pointer to the block of an array, which may be null. No count changes.
/// @return the block, which may have moved.
ItemBlock * appendItem(ItemBlock * block, Item * item);

/// The place of the item under `key` in an object, made with a null item if it is not there. Valid until the
/// next call.
Item *& placeOf(SharedSlot<ItemBlock> & items, std::string_view key);

/// The place of the item under `key` in the block of an object, or null if it is not there.
Item * const * findItem(const ItemBlock * block, std::string_view key) noexcept;

/// Puts a child in `target`, which may be what keeps the child's container alive.
///
/// Kept: also where the child is of another type.
template <class Target>
void storeChild(Item * child, qvbase::Reference<Target> & target)
{
    const qvbase::Reference<Item> keep(child);
    target = static_cast<Target *>(child);
}

/// Walks over the children of a container: over elements in their order, or over items in that of their keys.
class ChildCursor
{
public:
    /// The container is an array or an object.
    explicit ChildCursor(const Item & container) noexcept;

    bool isArray() const noexcept
    {
        return m_kind == Kind::Elements;
    }
    bool atEnd() const noexcept
    {
        return m_left == 0;
    }
    /// How many children are to come.
    std::size_t left() const noexcept
    {
        return m_left;
    }
    /// The key of the present item of an object.
    std::string_view key() const noexcept
    {
        return m_kind == Kind::Entries ? m_place.entry->key.view() : m_node->first.view();
    }
    Item * item() const noexcept
    {
        switch (m_kind)
        {
        case Kind::Elements:
            return *m_place.element;
        case Kind::Entries:
            return m_place.entry->item;
        default:
            return m_node->second;
        }
    }
    void next() noexcept
    {
        --m_left;
        switch (m_kind)
        {
        case Kind::Elements:
            ++m_place.element;
            break;
        case Kind::Entries:
            ++m_place.entry;
            break;
        default:
            ++m_node;
            break;
        }
    }

private:
    enum class Kind : unsigned char
    {
        Elements,
        Entries,
        Nodes
    };

    union Place
    {
        Item * const * element;
        const ObjectEntry * entry;
    };

    Place m_place = {nullptr};
    /// In the place of the other where the object has a map.
    ItemMap::const_iterator m_node;
    std::size_t m_left = 0;
    Kind m_kind;
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

/// The way of the house to what a node holds.
struct TreeAccess
{
    static Type type(const Item & item) noexcept
    {
        return static_cast<Type>(item.m_type);
    }
    static std::uint16_t place(const Item & item) noexcept
    {
        return item.m_place;
    }
    static void setPlace(Item & item, std::uint16_t place) noexcept
    {
        item.m_place = place;
    }
    static SharedSlot<ItemBlock> & items(Array & array) noexcept
    {
        return array.m_items;
    }
    static SharedSlot<ItemBlock> & items(Object & object) noexcept
    {
        return object.m_items;
    }
    static const SharedSlot<ItemBlock> & items(const Array & array) noexcept
    {
        return array.m_items;
    }
    static const SharedSlot<ItemBlock> & items(const Object & object) noexcept
    {
        return object.m_items;
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
};

} // namespace qvjson
