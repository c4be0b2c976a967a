#include "VontalBase/json/containers.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qvjson
{

namespace
{

/// An object with more items than this has a map. A block of `2^k - 1` elements fills what the usual
/// allocators give for it.
constexpr std::uint32_t mostEntriesInBlock = 31;

template <class Element>
ItemBlock * allocateBlock(std::size_t capacity)
{
    // NOLINTNEXTLINE(bugprone-sizeof-expression): pointers are among the elements.
    void * const memory = ::operator new(sizeof(ItemBlock) + capacity * sizeof(Element));
    ItemBlock * const block = ::new (memory) ItemBlock;
    block->capacity = static_cast<std::uint32_t>(capacity);
    return block;
}

/// The capacity to give to a block that is full.
std::size_t nextCapacity(const ItemBlock * block)
{
    const std::size_t capacity = block == nullptr ? 1 : 2 * std::size_t{block->size} + 1;
    if (capacity >= ItemBlock::large)
        throw std::length_error("JSON array");
    return capacity;
}

bool isFull(const ItemBlock * block) noexcept
{
    return block == nullptr || block->size == block->capacity;
}

const ObjectEntry * lowerBound(const ItemBlock & block, std::string_view key) noexcept
{
    const ObjectEntry * const entries = block.elements<ObjectEntry>();
    return std::lower_bound(entries, entries + block.size, key,
        [](const ObjectEntry & entry, std::string_view wanted) { return entry.key.view() < wanted; });
}

LargeBlock & asLarge(ItemBlock * block) noexcept
{
    return *static_cast<LargeBlock *>(block);
}

const LargeBlock & asLarge(const ItemBlock * block) noexcept
{
    return *static_cast<const LargeBlock *>(block);
}

bool isLarge(const ItemBlock * block) noexcept
{
    return block != nullptr && block->capacity == ItemBlock::large;
}

void dropKeys(ItemBlock & block) noexcept
{
    for (std::uint32_t i = 0; i < block.size; ++i)
        block.elements<ObjectEntry>()[i].key.~ObjectKey();
}

/// A larger block with the elements of `block`, which is freed. Elements are moved by their bytes.
template <class Element>
ItemBlock * grow(ItemBlock * block)
{
    ItemBlock * const larger = allocateBlock<Element>(nextCapacity(block));
    if (block != nullptr)
    {
        // NOLINTNEXTLINE(bugprone-sizeof-expression): pointers are among the elements.
        const std::size_t bytes = block->size * sizeof(Element);
        std::memcpy(static_cast<void *>(larger->elements<Element>()),
            static_cast<const void *>(block->elements<Element>()), bytes);
        larger->size = block->size;
    }
    freeBlock(block);
    return larger;
}

/// Replaces a block of entries by a map of the same items.
void growIntoMap(ItemBlock *& block)
{
    auto map = std::make_unique<LargeBlock>();
    map->capacity = ItemBlock::large;
    const ObjectEntry * const entries = block->elements<ObjectEntry>();
    for (std::uint32_t i = 0; i < block->size; ++i)
        map->map.emplace_hint(map->map.end(), entries[i].key, entries[i].item);
    ItemBlock * const former = std::exchange(block, map.release());
    dropKeys(*former);
    freeBlock(former);
}

} // namespace

void freeBlock(ItemBlock * block) noexcept
{
    if (block != nullptr && block->place != 0)
        leaveChunkSoon(chunkOf(block, block->place));
    else
        ::operator delete(block);
}

ItemBlock * appendItem(ItemBlock * block, Item * item)
{
    if (isFull(block))
        block = grow<Item *>(block);
    block->elements<Item *>()[block->size++] = item;
    return block;
}

Item *& placeOf(SharedSlot<ItemBlock> & items, std::string_view key)
{
    ItemBlock * block = items.get();
    if (Item * const * const found = findItem(block, key))
        return const_cast<Item *&>(*found);
    ObjectKey ownKey(key);
    if (!isLarge(block) && block != nullptr && block->size >= mostEntriesInBlock)
        growIntoMap(block);
    else if (!isLarge(block) && isFull(block))
        block = grow<ObjectEntry>(block);
    items.set(block);
    if (isLarge(block))
        return asLarge(block).map.emplace(std::move(ownKey), nullptr).first->second;

    ObjectEntry * const entries = block->elements<ObjectEntry>();
    const std::size_t index = static_cast<std::size_t>(lowerBound(*block, key) - entries);
    std::memmove(static_cast<void *>(entries + index + 1), static_cast<const void *>(entries + index),
        (block->size - index) * sizeof(ObjectEntry));
    ++block->size;
    return (::new (entries + index) ObjectEntry{std::move(ownKey), nullptr})->item;
}

Item * const * findItem(const ItemBlock * block, std::string_view key) noexcept
{
    if (block == nullptr)
        return nullptr;
    if (isLarge(block))
    {
        const auto found = asLarge(block).map.find(key);
        return found == asLarge(block).map.end() ? nullptr : &found->second;
    }
    const ObjectEntry * const found = lowerBound(*block, key);
    const bool isThere = found != block->elements<ObjectEntry>() + block->size && found->key.view() == key;
    return isThere ? &found->item : nullptr;
}

ChildCursor::ChildCursor(const Item & container) noexcept
    : m_kind(TreeAccess::type(container) == TypeArray ? Kind::Elements : Kind::Entries)
{
    const bool isArray = m_kind == Kind::Elements;
    const ItemBlock * const block = isArray ? TreeAccess::items(static_cast<const Array &>(container)).get()
                                            : TreeAccess::items(static_cast<const Object &>(container)).get();
    if (block == nullptr)
        return;
    m_left = block->size;
    if (isArray)
    {
        m_place.element = block->elements<Item *>();
    }
    else if (!isLarge(block))
    {
        m_place.entry = block->elements<ObjectEntry>();
    }
    else
    {
        m_kind = Kind::Nodes;
        m_node = asLarge(block).map.begin();
        m_left = asLarge(block).map.size();
    }
}

namespace
{

/// What the calling thread still has to take apart, if it is about that. A container that dies meanwhile
/// adds its block here in place of taking it apart within its own destructor.
struct DyingBlocks
{
    ItemBlock * first = nullptr;
    /// The chunk that was left last, and by how many users that it has not been told of yet.
    NodeChunk * chunk = nullptr;
    std::uint32_t users = 0;

    void tellChunk() noexcept
    {
        if (users != 0)
            leaveChunk(chunk, std::exchange(users, 0U));
    }
};

thread_local DyingBlocks * dyingBlocks = nullptr;

void letGo(Item * item)
{
    if (item != nullptr)
        item->release();
}

void takeApartOne(ItemBlock * block)
{
    if (isLarge(block))
    {
        const std::unique_ptr<LargeBlock> owner(static_cast<LargeBlock *>(block));
        for (const auto & [key, item] : owner->map)
            letGo(item);
        return;
    }
    Item ** const items = block->elements<Item *>();
    for (std::uint32_t i = 0; i < block->size; ++i)
        letGo(items[i]);
    freeBlock(block);
}

/// Makes an array's block of a block of entries: frees the keys and moves the items together.
void keepItemsOnly(ItemBlock & block) noexcept
{
    ObjectEntry * const entries = block.elements<ObjectEntry>();
    unsigned char * to = reinterpret_cast<unsigned char *>(entries);
    for (std::uint32_t i = 0; i < block.size; ++i)
    {
        Item * const item = entries[i].item;
        entries[i].key.~ObjectKey();
        std::memcpy(to, &item, sizeof(Item *));
        to += sizeof(Item *);
    }
}

} // namespace

void takeApartArray(ItemBlock * block) noexcept
{
    if (block == nullptr)
        return;
    if (dyingBlocks != nullptr)
    {
        block->nextDying = std::exchange(dyingBlocks->first, block);
        return;
    }
    DyingBlocks dying;
    dying.first = block;
    dyingBlocks = &dying;
    while (dying.first != nullptr)
    {
        ItemBlock * const next = dying.first;
        dying.first = next->nextDying;
        takeApartOne(next);
    }
    dyingBlocks = nullptr;
    dying.tellChunk();
}

void leaveChunkSoon(NodeChunk * chunk) noexcept
{
    DyingBlocks * const dying = dyingBlocks;
    if (dying == nullptr)
    {
        leaveChunk(chunk, 1);
        return;
    }
    if (dying->chunk != chunk)
    {
        dying->tellChunk();
        dying->chunk = chunk;
    }
    ++dying->users;
}

void takeApartObject(ItemBlock * block) noexcept
{
    if (block == nullptr)
        return;
    if (!isLarge(block))
        keepItemsOnly(*block);
    takeApartArray(block);
}

namespace
{

/// Places in two containers of one type that are equal so far.
struct PairOfCursors
{
    ChildCursor a;
    ChildCursor b;
};

bool isContainer(Type type) noexcept
{
    return type == TypeArray || type == TypeObject;
}

} // namespace

bool equalContainers(const Item & a, const Item & b)
{
    std::vector<PairOfCursors> open;
    const auto begin = [&open](const Item & left, const Item & right)
    {
        open.push_back({ChildCursor(left), ChildCursor(right)});
        return open.back().a.left() == open.back().b.left();
    };
    if (!begin(a, b))
        return false;
    while (!open.empty())
    {
        auto & [left, right] = open.back();
        if (left.atEnd())
        {
            open.pop_back();
            continue;
        }
        if (!left.isArray() && left.key() != right.key())
            return false;
        const Item * const leftItem = left.item();
        const Item * const rightItem = right.item();
        left.next();
        right.next();
        if (leftItem == nullptr || rightItem == nullptr)
        {
            if (leftItem != rightItem)
                return false;
            continue;
        }
        const Type type = leftItem->getType();
        const bool areEqual = isContainer(type) && rightItem->getType() == type ? begin(*leftItem, *rightItem)
                                                                                : leftItem->equals(rightItem);
        if (!areEqual)
            return false;
    }
    return true;
}

} // namespace qvjson
