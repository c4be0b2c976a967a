#include "VontalBase/json/Object.h"

#include "VontalBase/json/containers.h"

#include <utility>

namespace qvjson
{

Object::~Object()
{
    takeApartObject(m_items.leave());
}

bool Object::equals(Item const * other) const
{
    if (other == nullptr || other->getType() != getType())
        return false;
    return equalContainers(*this, *other);
}

Object::Object() noexcept : Item(TypeObject)
{
}

Object::Object(const Object & other)
    : Item(other),
      m_pendingKey(
          other.m_pendingKey == nullptr ? nullptr : std::make_unique<Vontal::u8string>(*other.m_pendingKey)),
      m_items(other.m_items)
{
}

Object & Object::operator=(const Object & other)
{
    if (this == &other)
        return *this;
    auto pendingKey =
        other.m_pendingKey == nullptr ? nullptr : std::make_unique<Vontal::u8string>(*other.m_pendingKey);
    m_items = other.m_items;
    m_pendingKey = std::move(pendingKey);
    Item::operator=(other);
    return *this;
}

void Object::put(std::string_view key, Item * item)
{
    Item ** place = &placeOf(m_items, key);
    while (Item * const former = std::exchange(*place, nullptr))
    {
        former->release();
        // Found anew, because what the former item did at its end may have moved it or filled it again.
        place = &placeOf(m_items, key);
    }
    *place = item;
    if (item != nullptr)
        item->addRef();
}

void Object::add(Vontal::u8string const & key, Item * item)
{
    put(key, item);
}

bool Object::addKey(Vontal::u8string const & key)
{
    if (m_pendingKey != nullptr)
        return false;
    // Kept: an empty key is taken, but none is pending then.
    if (!key.empty())
        m_pendingKey = std::make_unique<Vontal::u8string>(key);
    return true;
}

bool Object::add(Item * item)
{
    if (m_pendingKey == nullptr)
        return false;
    // A copy, because what the former item does at its end may use up the pending key.
    const Vontal::u8string key = *m_pendingKey;
    put(key, item);
    m_pendingKey = nullptr;
    return true;
}

template <class Target>
bool Object::getChild(std::string_view key, qvbase::Reference<Target> & target) const
{
    Item * const * const place = findItem(m_items.get(), key);
    if (place == nullptr)
        return false;
    storeChild(*place, target);
    return true;
}

bool Object::getItem(Vontal::u8string const & key, qvbase::Reference<Item> & item) const
{
    return getChild(key, item);
}

bool Object::getArray(Vontal::u8string const & key, qvbase::Reference<Array> & array) const
{
    return getChild(key, array);
}

bool Object::getObject(Vontal::u8string const & key, qvbase::Reference<Object> & object) const
{
    return getChild(key, object);
}

const Item * Object::child(std::string_view key) const noexcept
{
    Item * const * const place = findItem(m_items.get(), key);
    return place == nullptr ? nullptr : *place;
}

bool Object::getValue(Vontal::u8string const & key, int & value) const
{
    const Item * const found = child(key);
    return found != nullptr && found->getInt(value);
}

bool Object::getValue(Vontal::u8string const & key, Vontal::u8string & value) const
{
    const Item * const found = child(key);
    return found != nullptr && found->getString(value);
}

bool Object::getValue(Vontal::u8string const & key, bool & value) const
{
    const Item * const found = child(key);
    return found != nullptr && found->getBool(value);
}

void Object::getItems(std::map<Vontal::u8string, qvbase::Reference<Item>> & items) const
{
    std::map<Vontal::u8string, qvbase::Reference<Item>> copy;
    for (ChildCursor cursor(*this); !cursor.atEnd(); cursor.next())
        copy.emplace_hint(
            copy.end(), Vontal::u8string(cursor.key().data(), cursor.key().size()), cursor.item());
    items = std::move(copy);
}

} // namespace qvjson
