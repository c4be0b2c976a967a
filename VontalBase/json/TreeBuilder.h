/// @internal
/// @file
/// Building a tree from the events of a parse.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/NodeArena.h"
#include "VontalBase/json/containers.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace qvjson
{

struct ItemReleaser
{
    void operator()(Item * item) const noexcept
    {
        item->release();
    }
};

/// One reference on a node.
using OwnedItem = std::unique_ptr<Item, ItemReleaser>;

/// Collects the children of open containers, and gives each container its children all at once when it ends.
/// Every operation answers whether the event was in place.
class TreeBuilder
{
public:
    TreeBuilder() = default;
    TreeBuilder(const TreeBuilder &) = delete;
    TreeBuilder & operator=(const TreeBuilder &) = delete;
    ~TreeBuilder();

    bool beginObject();
    bool beginArray();
    bool endObject();
    bool endArray();
    bool key(std::string_view text);
    bool integer(std::string_view digits);
    bool string(std::string_view text);
    bool boolean(bool isTrue);
    bool null();

    /// For whoever goes on although `std::bad_alloc` has left an operation, and an event is lost.
    void refuseFromNowOn() noexcept
    {
        m_isBroken = true;
    }

    /// The tree so far, or null. Containers that are still open have the children that came by now.
    const qvbase::Reference<Item> & root();

private:
    /// A container that has begun and not ended, with the number of children of others that were collected
    /// before it.
    struct Open
    {
        /// Counted, since the tree may be changed as soon as somebody has seen its root.
        qvbase::Reference<Item> container;
        std::size_t firstEntry;
        std::size_t firstElement;
    };

    /// Where an entry goes in the order of the keys: compared by the first eight bytes, and then in full.
    struct Rank
    {
        std::uint64_t prefix;
        std::uint32_t index;
    };

    /// The order of the keys of an object that has ended. Objects of one kind mostly have the same keys in
    /// the same order, so it is kept for the next.
    struct Shape
    {
        std::vector<ObjectKey> keys;
        std::vector<Rank> ranks;
    };
    static constexpr std::size_t mostKeysOfShape = 31;

    Object & innermostObject() noexcept;
    bool attach(OwnedItem && item);
    bool beginContainer(OwnedItem && container);
    bool endContainer(Type type);
    void handKeyOver();
    void giveChildren(const Open & open);
    void giveElements(Array & array, std::size_t first);
    void giveEntries(Object & object, std::size_t first);
    const std::vector<Rank> & ranked(std::size_t first);
    bool hasKeysOf(const Shape & shape, std::size_t first) const noexcept;
    void rank(std::size_t first, std::vector<Rank> & ranks) const;
    ItemBlock * makeEntryBlock(std::size_t first);
    void addEntries(SharedSlot<ItemBlock> & items, std::size_t first);
    ItemBlock * makeBlock(std::size_t count, std::size_t elementSize);
    template <class Node>
    Node * makeNode(std::size_t extraBytes = 0);

    NodeArena m_arena;
    qvbase::Reference<Item> m_root;
    std::vector<Open> m_open;
    /// Elements of the open arrays, each with one reference that is owned here.
    std::vector<Item *> m_elements;
    /// Entries of the open objects, each with one reference that is owned here. While a key waits for its
    /// value, it is the last one and has no item.
    std::vector<ObjectEntry> m_entries;
    /// By number of keys.
    std::array<Shape, mostKeysOfShape + 1> m_shapes;
    std::vector<Rank> m_ranks;
    bool m_keyWaits = false;
    /// Set while children are given away. It stays set if memory ran short meanwhile: every event is refused
    /// then.
    bool m_isBroken = false;
    /// Whether somebody has seen the tree. From then on an object that is open may have a key pending.
    bool m_isSeen = false;
};

} // namespace qvjson
