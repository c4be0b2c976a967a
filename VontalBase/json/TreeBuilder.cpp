#include "VontalBase/json/TreeBuilder.h"

#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueNull.h"
#include "VontalBase/json/ValueString.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace qvjson
{

namespace
{

/// What `qvbase::ReferencedImpl` makes of a concrete class, within a chunk of an arena. It begins with one
/// reference.
template <class T>
class ArenaNode final : public T
{
public:
    explicit ArenaNode(std::uint16_t place)
    {
        TreeAccess::setPlace(*this, place);
    }
    ArenaNode(const ArenaNode &) = delete;
    ArenaNode & operator=(const ArenaNode &) = delete;

    void addRef() override
    {
        ++m_count;
    }

    void release() override
    {
        if (--m_count != 0)
            return;
        NodeChunk * const chunk = chunkOf(this, TreeAccess::place(*this));
        this->~ArenaNode();
        markDead(this, sizeof(*this));
        leaveChunkSoon(chunk);
    }

private:
    std::uint32_t m_count = 1;
};

} // namespace

template <class Node>
Node * TreeBuilder::makeNode(std::size_t extraBytes)
{
    const ArenaPlace place = m_arena.allocate(sizeof(ArenaNode<Node>) + extraBytes);
    return ::new (place.memory) ArenaNode<Node>(place.place);
}

TreeBuilder::~TreeBuilder()
{
    for (const ObjectEntry & entry : m_entries)
    {
        if (entry.item != nullptr)
            entry.item->release();
    }
    for (Item * const element : m_elements)
        element->release();
}

Object & TreeBuilder::innermostObject() noexcept
{
    return static_cast<Object &>(*m_open.back().container);
}

bool TreeBuilder::attach(OwnedItem && item)
{
    if (m_isBroken)
        return false;
    if (m_root.get() == nullptr)
    {
        m_root = item.get();
        return true;
    }
    if (m_open.empty())
        return false;
    if (TreeAccess::type(*m_open.back().container) == TypeArray)
    {
        m_elements.push_back(item.get());
        static_cast<void>(item.release());
        return true;
    }
    if (!m_keyWaits)
        return m_isSeen && innermostObject().add(item.get());
    m_entries.back().item = item.release();
    m_keyWaits = false;
    return true;
}

bool TreeBuilder::beginContainer(OwnedItem && container)
{
    Item * const item = container.get();
    if (!attach(std::move(container)))
        return false;
    m_open.push_back({item, m_entries.size(), m_elements.size()});
    return true;
}

bool TreeBuilder::beginObject()
{
    return beginContainer(OwnedItem(makeNode<Object>()));
}

bool TreeBuilder::beginArray()
{
    return beginContainer(OwnedItem(makeNode<Array>()));
}

bool TreeBuilder::endObject()
{
    return endContainer(TypeObject);
}

bool TreeBuilder::endArray()
{
    return endContainer(TypeArray);
}

bool TreeBuilder::endContainer(Type type)
{
    if (m_isBroken || m_open.empty() || TreeAccess::type(*m_open.back().container) != type)
        return false;
    m_isBroken = true;
    handKeyOver();
    giveChildren(m_open.back());
    m_open.pop_back();
    m_isBroken = false;
    return true;
}

bool TreeBuilder::key(std::string_view text)
{
    if (m_isBroken || m_open.empty() || TreeAccess::type(*m_open.back().container) != TypeObject ||
        m_keyWaits)
        return false;
    if (m_isSeen && !innermostObject().addKey({}))
        return false;
    // Kept: an empty key is taken, and then the value behind it refused.
    if (text.empty())
        return true;
    m_entries.push_back({ObjectKey(text), nullptr});
    m_keyWaits = true;
    return true;
}

bool TreeBuilder::integer(std::string_view digits)
{
    ValueInt * const value = makeNode<ValueInt>();
    OwnedItem owned(value);
    return value->parseInt(digits.data(), static_cast<unsigned int>(digits.size())) &&
           attach(std::move(owned));
}

bool TreeBuilder::string(std::string_view text)
{
    if (TreeAccess::fitsWithin(text) ||
        text.size() > NodeArena::largestRequest - sizeof(ArenaNode<ValueString>))
    {
        ValueString * const value = makeNode<ValueString>();
        OwnedItem owned(value);
        value->set(text.data(), static_cast<unsigned int>(text.size()));
        return attach(std::move(owned));
    }
    ValueString * const value = makeNode<ValueString>(text.size());
    OwnedItem owned(value);
    char * const behind = reinterpret_cast<char *>(static_cast<ArenaNode<ValueString> *>(value) + 1);
    std::memcpy(behind, text.data(), text.size());
    TreeAccess::borrowText(*value, {behind, text.size()});
    return attach(std::move(owned));
}

bool TreeBuilder::boolean(bool isTrue)
{
    ValueBool * const value = makeNode<ValueBool>();
    OwnedItem owned(value);
    value->set(isTrue);
    return attach(std::move(owned));
}

bool TreeBuilder::null()
{
    return attach(OwnedItem(makeNode<ValueNull>()));
}

const qvbase::Reference<Item> & TreeBuilder::root()
{
    if (m_isBroken)
        return m_root;
    m_isSeen = true;
    m_isBroken = true;
    handKeyOver();
    for (auto open = m_open.rbegin(); open != m_open.rend(); ++open)
        giveChildren(*open);
    for (Open & open : m_open)
        open.firstEntry = open.firstElement = 0;
    m_isBroken = false;
    return m_root;
}

/// Gives the key that waits to its object. Only the innermost container can have one.
void TreeBuilder::handKeyOver()
{
    if (!m_keyWaits)
        return;
    const std::string_view key = m_entries.back().key.view();
    innermostObject().addKey(Vontal::u8string(key.data(), key.size()));
    m_entries.pop_back();
    m_keyWaits = false;
}

void TreeBuilder::giveChildren(const Open & open)
{
    if (TreeAccess::type(*open.container) == TypeArray)
        giveElements(static_cast<Array &>(*open.container), open.firstElement);
    else
        giveEntries(static_cast<Object &>(*open.container), open.firstEntry);
}

/// An empty block for so many elements, within the arena where that is small.
ItemBlock * TreeBuilder::makeBlock(std::size_t count, std::size_t elementSize)
{
    if (count >= ItemBlock::large)
        throw std::length_error("JSON container");
    const std::size_t size = sizeof(ItemBlock) + count * elementSize;
    const ArenaPlace place =
        size <= NodeArena::largestRequest ? m_arena.allocate(size) : ArenaPlace{::operator new(size), 0};
    ItemBlock * const block = ::new (place.memory) ItemBlock;
    block->capacity = static_cast<std::uint32_t>(count);
    block->place = place.place;
    return block;
}

void TreeBuilder::giveElements(Array & array, std::size_t first)
{
    const std::size_t count = m_elements.size() - first;
    if (count == 0)
        return;
    SharedSlot<ItemBlock> & items = TreeAccess::items(array);
    ItemBlock * const former = items.get();
    const std::size_t formerCount = former == nullptr ? 0 : former->size;
    ItemBlock * const block = makeBlock(formerCount + count, sizeof(Item *));
    if (formerCount != 0)
        std::memcpy(block->elements<Item *>(), former->elements<Item *>(), formerCount * sizeof(Item *));
    std::memcpy(block->elements<Item *>() + formerCount, m_elements.data() + first, count * sizeof(Item *));
    block->size = block->capacity;
    items.set(block);
    freeBlock(former);
    m_elements.resize(first);
}

/// Sorts entries by key and, where those are equal, by their coming.
void TreeBuilder::rank(std::size_t first, std::vector<Rank> & ranks) const
{
    const ObjectEntry * const entries = m_entries.data() + first;
    const auto isBefore = [entries](const Rank & a, const Rank & b)
    {
        if (a.prefix != b.prefix)
            return a.prefix < b.prefix;
        const int order = entries[a.index].key.view().compare(entries[b.index].key.view());
        return order != 0 ? order < 0 : a.index < b.index;
    };
    const auto count = static_cast<std::uint32_t>(m_entries.size() - first);
    ranks.clear();
    for (std::uint32_t i = 0; i < count; ++i)
        ranks.push_back({entries[i].key.prefix(), i});
    if (!std::is_sorted(ranks.begin(), ranks.end(), isBefore))
        std::sort(ranks.begin(), ranks.end(), isBefore);
}

bool TreeBuilder::hasKeysOf(const Shape & shape, std::size_t first) const noexcept
{
    const auto isSame = [](const ObjectKey & a, const ObjectEntry & b)
    {
        return a.isSame(b.key);
    };
    return std::equal(shape.keys.begin(), shape.keys.end(),
        m_entries.begin() + static_cast<std::ptrdiff_t>(first), m_entries.end(), isSame);
}

/// The entries from `first` on in the order of their keys.
const std::vector<TreeBuilder::Rank> & TreeBuilder::ranked(std::size_t first)
{
    const std::size_t count = m_entries.size() - first;
    if (count >= ItemBlock::large)
        throw std::length_error("JSON object");
    if (count > mostKeysOfShape)
    {
        rank(first, m_ranks);
        return m_ranks;
    }
    Shape & shape = m_shapes[count];
    if (!hasKeysOf(shape, first))
    {
        shape.keys.clear();
        rank(first, shape.ranks);
        for (std::size_t i = first; i < m_entries.size(); ++i)
            shape.keys.push_back(m_entries[i].key);
    }
    return shape.ranks;
}

void TreeBuilder::giveEntries(Object & object, std::size_t first)
{
    if (m_entries.size() == first)
        return;
    SharedSlot<ItemBlock> & items = TreeAccess::items(object);
    if (items.get() == nullptr)
        items.set(makeEntryBlock(first));
    else
        addEntries(items, first);
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(first), m_entries.end());
}

/// A block of the entries from `first` on. Of entries with one key the last stands.
ItemBlock * TreeBuilder::makeEntryBlock(std::size_t first)
{
    const std::vector<Rank> & ranks = ranked(first);
    ItemBlock * const block = makeBlock(ranks.size(), sizeof(ObjectEntry));
    ObjectEntry * const target = block->elements<ObjectEntry>();
    for (const Rank & rank : ranks)
    {
        ObjectEntry & entry = m_entries[first + rank.index];
        Item * const item = std::exchange(entry.item, nullptr);
        if (block->size != 0 && target[block->size - 1].key.isSame(entry.key))
            std::exchange(target[block->size - 1].item, item)->release();
        else
            ::new (target + block->size++) ObjectEntry{std::move(entry.key), item};
    }
    return block;
}

/// Adds the entries from `first` on to an object that has some already.
void TreeBuilder::addEntries(SharedSlot<ItemBlock> & items, std::size_t first)
{
    for (std::size_t i = first; i < m_entries.size(); ++i)
    {
        Item *& place = placeOf(items, m_entries[i].key.view());
        const OwnedItem former(std::exchange(place, std::exchange(m_entries[i].item, nullptr)));
    }
}

} // namespace qvjson
