#include "VontalBase/json/TreeBuilder.h"

#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueNull.h"
#include "VontalBase/json/ValueString.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
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
        leaveChunkSoon(chunk);
    }

private:
    std::uint32_t m_count = 1;
};

static_assert(sizeof(ArenaNode<ValueInt>) <= 24);
static_assert(sizeof(ArenaNode<ValueString>) <= 40);
static_assert(sizeof(ArenaNode<Array>) <= 32);
static_assert(sizeof(ArenaNode<Object>) <= 40);

} // namespace

template <class Node>
Node * TreeBuilder::makeNode(std::size_t extraBytes)
{
    const ArenaPlace place = m_arena.allocate(sizeof(ArenaNode<Node>) + extraBytes);
    return ::new (place.memory) ArenaNode<Node>(place.place);
}

TreeBuilder::~TreeBuilder()
{
    for (const CollectedEntry & entry : m_entries)
    {
        if (entry.item != nullptr)
            entry.item->release();
    }
    for (Item * const element : m_elements)
        element->release();
}

bool TreeBuilder::attach(OwnedItem && item)
{
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
        return false;
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
    if (m_open.empty() || TreeAccess::type(*m_open.back().container) != type)
        return false;
    giveChildren(m_open.back());
    m_open.pop_back();
    return true;
}

bool TreeBuilder::key(std::string_view text)
{
    if (m_open.empty() || TreeAccess::type(*m_open.back().container) != TypeObject || m_keyWaits)
        return false;
    // Kept: an empty key is taken, and then the value behind it refused.
    if (text.empty())
        return true;
    m_entries.push_back({m_keyText.size(), text.size(), nullptr});
    m_keyText.insert(m_keyText.end(), text.begin(), text.end());
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
    // Only the innermost container can have a key that waits.
    if (m_keyWaits)
    {
        const std::string_view key = keyOf(m_entries.back());
        static_cast<Object &>(*m_open.back().container).addKey(Vontal::u8string(key.data(), key.size()));
        m_keyText.resize(m_entries.back().keyStart);
        m_entries.pop_back();
        m_keyWaits = false;
    }
    for (auto open = m_open.rbegin(); open != m_open.rend(); ++open)
        giveChildren(*open);
    return m_root;
}

void TreeBuilder::giveChildren(const Open & open)
{
    if (TreeAccess::type(*open.container) == TypeArray)
        giveElements(static_cast<Array &>(*open.container), open.firstElement);
    else
        giveEntries(static_cast<Object &>(*open.container), open.firstEntry);
}

std::string_view TreeBuilder::keyOf(const CollectedEntry & entry) const noexcept
{
    return {m_keyText.data() + entry.keyStart, entry.keySize};
}

/// An empty block for so many elements, which need so many bytes.
ItemBlock * TreeBuilder::makeBlock(std::size_t count, std::size_t bytes)
{
    if (count >= ItemBlock::large)
        throw std::length_error("JSON container");
    const std::size_t size = sizeof(ItemBlock) + bytes;
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
    ItemBlock * const block = makeBlock(formerCount + count, (formerCount + count) * sizeof(Item *));
    if (formerCount != 0)
        std::memcpy(block->elements<Item *>(), former->elements<Item *>(), formerCount * sizeof(Item *));
    std::memcpy(block->elements<Item *>() + formerCount, m_elements.data() + first, count * sizeof(Item *));
    block->size = block->capacity;
    items.set(block);
    freeBlock(former);
    m_elements.resize(first);
}

namespace
{

/// The first eight bytes as a number, whose order is that of the texts as far as it goes.
std::uint64_t prefixOf(std::string_view text) noexcept
{
    std::array<unsigned char, 8> bytes = {};
    std::memcpy(bytes.data(), text.data(), std::min(text.size(), bytes.size()));
    std::uint64_t number = 0;
    for (const unsigned char byte : bytes)
        number = number << 8 | byte;
    return number;
}

} // namespace

/// Puts the entries from `first` on into `m_ranks`, in the order of their keys and of their coming.
void TreeBuilder::rankEntries(std::size_t first)
{
    constexpr std::size_t fewEntries = 32;
    const CollectedEntry * const entries = m_entries.data() + first;
    const auto isBefore = [this, entries](const Rank & a, const Rank & b)
    {
        if (a.prefix != b.prefix)
            return a.prefix < b.prefix;
        const int order = keyOf(entries[a.index]).compare(keyOf(entries[b.index]));
        return order != 0 ? order < 0 : a.index < b.index;
    };
    const std::size_t count = m_entries.size() - first;
    m_ranks.clear();
    m_ranks.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const Rank rank{prefixOf(keyOf(entries[i])), i};
        m_ranks.push_back(rank);
        if (count > fewEntries)
            continue;
        std::size_t place = i;
        for (; place != 0 && isBefore(rank, m_ranks[place - 1]); --place)
            m_ranks[place] = m_ranks[place - 1];
        m_ranks[place] = rank;
    }
    if (count > fewEntries && !std::is_sorted(m_ranks.begin(), m_ranks.end(), isBefore))
        std::sort(m_ranks.begin(), m_ranks.end(), isBefore);
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
    m_keyText.resize(m_entries[first].keyStart);
    m_entries.resize(first);
}

/// A block of the entries from `first` on, with the keys that are too long for an entry behind them. Of
/// entries with one key the last stands.
ItemBlock * TreeBuilder::makeEntryBlock(std::size_t first)
{
    rankEntries(first);
    std::size_t textSize = 0;
    for (const Rank & rank : m_ranks)
    {
        const std::size_t keySize = m_entries[first + rank.index].keySize;
        textSize += keySize > ObjectKey::inlineCapacity ? keySize : 0;
    }
    ItemBlock * const block = makeBlock(m_ranks.size(), m_ranks.size() * sizeof(ObjectEntry) + textSize);
    ObjectEntry * const target = block->elements<ObjectEntry>();
    char * text = reinterpret_cast<char *>(target + m_ranks.size());
    for (const Rank & rank : m_ranks)
    {
        CollectedEntry & entry = m_entries[first + rank.index];
        Item * const item = std::exchange(entry.item, nullptr);
        const std::string_view key = keyOf(entry);
        if (block->size != 0 && target[block->size - 1].key.view() == key)
        {
            std::exchange(target[block->size - 1].item, item)->release();
            continue;
        }
        ObjectEntry & made = *::new (target + block->size++) ObjectEntry{{}, item};
        if (key.size() <= ObjectKey::inlineCapacity)
        {
            made.key = ObjectKey(key);
            continue;
        }
        std::memcpy(text, key.data(), key.size());
        made.key.borrow({text, key.size()});
        text += key.size();
    }
    return block;
}

/// Adds the entries from `first` on to an object that has some already.
void TreeBuilder::addEntries(SharedSlot<ItemBlock> & items, std::size_t first)
{
    for (std::size_t i = first; i < m_entries.size(); ++i)
    {
        Item *& place = placeOf(items, keyOf(m_entries[i]));
        const OwnedItem former(std::exchange(place, std::exchange(m_entries[i].item, nullptr)));
    }
}

} // namespace qvjson
