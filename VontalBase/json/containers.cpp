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
    void * const memory = ::operator new(sizeof(ItemBlock) + capacity * sizeof(Element));
    ItemBlock * const block = ::new (memory) ItemBlock;
    block->capacity = static_cast<std::uint32_t>(capacity);
    return block;
}

/// Makes room for one more element. Elements move by copying their bytes.
template <class Element>
void makeRoom(ItemBlock *& block)
{
    if (block != nullptr && block->size < block->capacity)
        return;
    const std::size_t size = block == nullptr ? 0 : block->size;
    const std::size_t capacity = 2 * size + 1;
    if (capacity >= ItemBlock::large)
        throw std::length_error("JSON array");
    ItemBlock * const larger = allocateBlock<Element>(capacity);
    if (size != 0)
        std::memcpy(
            static_cast<void *>(larger + 1), static_cast<const void *>(block + 1), size * sizeof(Element));
    larger->size = static_cast<std::uint32_t>(size);
    freeBlock(std::exchange(block, larger));
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

/// Replaces a full block of entries by a map of the same items.
void growIntoMap(ItemBlock *& block)
{
    auto map = std::make_unique<LargeBlock>();
    map->capacity = ItemBlock::large;
    ObjectEntry * const entries = block->elements<ObjectEntry>();
    for (std::uint32_t i = 0; i < block->size; ++i)
        map->map.emplace_hint(map->map.end(), entries[i].key, entries[i].item);
    for (std::uint32_t i = 0; i < block->size; ++i)
        entries[i].key.~ObjectKey();
    freeBlock(std::exchange(block, map.release()));
}

} // namespace

void freeBlock(ItemBlock * block) noexcept
{
    if (block != nullptr && block->chunkOffset != 0)
        leaveChunkSoon(chunkOf(block, block->chunkOffset));
    else
        ::operator delete(block);
}

void appendItem(ItemBlock *& block, Item * item)
{
    makeRoom<Item *>(block);
    block->elements<Item *>()[block->size++] = item;
}

Item *& placeOf(ItemBlock *& block, ObjectKey && key)
{
    if (!isLarge(block))
    {
        if (block != nullptr)
        {
            const ObjectEntry * const found = lowerBound(*block, key.view());
            ObjectEntry * const entries = block->elements<ObjectEntry>();
            const std::size_t index = static_cast<std::size_t>(found - entries);
            if (index != block->size && found->key.view() == key.view())
                return entries[index].item;
        }
        if (block == nullptr || block->size < mostEntriesInBlock)
        {
            makeRoom<ObjectEntry>(block);
            ObjectEntry * const entries = block->elements<ObjectEntry>();
            const std::size_t index = static_cast<std::size_t>(lowerBound(*block, key.view()) - entries);
            std::memmove(static_cast<void *>(entries + index + 1), static_cast<const void *>(entries + index),
                (block->size - index) * sizeof(ObjectEntry));
            ++block->size;
            return (::new (entries + index) ObjectEntry{std::move(key), nullptr})->item;
        }
        growIntoMap(block);
    }
    return asLarge(block).map.try_emplace(std::move(key), nullptr).first->second;
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

std::size_t countItems(const ItemBlock * block) noexcept
{
    if (block == nullptr)
        return 0;
    return isLarge(block) ? asLarge(block).map.size() : block->size;
}

ObjectCursor::ObjectCursor(const ItemBlock * block) noexcept : m_isLarge(isLarge(block))
{
    if (m_isLarge)
    {
        m_position = asLarge(block).map.begin();
        m_end = asLarge(block).map.end();
    }
    else if (block != nullptr)
    {
        m_entry = block->elements<ObjectEntry>();
        m_entriesEnd = m_entry + block->size;
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

/// Frees the keys of a block of entries and moves the items together, so that an array's block is left.
void dropKeys(ItemBlock & block) noexcept
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
        dropKeys(*block);
    takeApartArray(block);
}

namespace
{

/// A place in two containers of one type that are equal so far.
class PairOfContainers
{
public:
    PairOfContainers(const Item & a, const Item & b) noexcept
        : m_isArray(a.getType() == TypeArray), m_a(block(a)), m_b(block(b)),
          m_cursorA(m_isArray ? nullptr : m_a), m_cursorB(m_isArray ? nullptr : m_b)
    {
    }

    bool haveOneSize() const noexcept
    {
        return m_isArray ? length(m_a) == length(m_b) : countItems(m_a) == countItems(m_b);
    }

    bool atEnd() const noexcept
    {
        return m_isArray ? m_index == length(m_a) : m_cursorA.atEnd();
    }

    bool haveOneKey() const noexcept
    {
        return m_isArray || m_cursorA.key() == m_cursorB.key();
    }

    std::pair<const Item *, const Item *> items() const noexcept
    {
        if (m_isArray)
            return {m_a->elements<Item *>()[m_index], m_b->elements<Item *>()[m_index]};
        return {m_cursorA.item(), m_cursorB.item()};
    }

    void next() noexcept
    {
        if (m_isArray)
        {
            ++m_index;
            return;
        }
        m_cursorA.next();
        m_cursorB.next();
    }

private:
    static const ItemBlock * block(const Item & item) noexcept
    {
        if (item.getType() == TypeArray)
            return TreeAccess::block(static_cast<const Array &>(item));
        return TreeAccess::block(static_cast<const Object &>(item));
    }

    static std::uint32_t length(const ItemBlock * block) noexcept
    {
        return block == nullptr ? 0 : block->size;
    }

    bool m_isArray;
    const ItemBlock * m_a;
    const ItemBlock * m_b;
    std::uint32_t m_index = 0;
    ObjectCursor m_cursorA;
    ObjectCursor m_cursorB;
};

bool isContainer(const Item & item) noexcept
{
    return item.getType() == TypeArray || item.getType() == TypeObject;
}

} // namespace

bool equalContainers(const Item & a, const Item & b)
{
    std::vector<PairOfContainers> open;
    open.emplace_back(a, b);
    if (!open.back().haveOneSize())
        return false;
    while (!open.empty())
    {
        PairOfContainers & pair = open.back();
        if (pair.atEnd())
        {
            open.pop_back();
            continue;
        }
        if (!pair.haveOneKey())
            return false;
        const auto [left, right] = pair.items();
        pair.next();
        if (left == nullptr || right == nullptr)
        {
            if (left != right)
                return false;
        }
        else if (isContainer(*left) && left->getType() == right->getType())
        {
            open.emplace_back(*left, *right);
            if (!open.back().haveOneSize())
                return false;
        }
        else if (!left->equals(right))
        {
            return false;
        }
    }
    return true;
}

} // namespace qvjson
