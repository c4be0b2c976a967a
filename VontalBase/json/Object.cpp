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

void Object::put(Key && key, Item * item)
{
    Item *& place = placeOf(m_items.contents(), std::move(key));
    if (place != nullptr)
        place->release();
    place = item;
    if (item != nullptr)
        item->addRef();
}

void Object::add(Vontal::u8string const & key, Item * item)
{
    put(Key(key), item);
}

bool Object::setPendingKey(std::string_view key)
{
    if (!m_pendingKey.empty())
        return false;
    m_pendingKey = Key(key);
    return true;
}

bool Object::addKey(Vontal::u8string const & key)
{
    return setPendingKey(key);
}

bool Object::add(Item * item)
{
    if (m_pendingKey.empty())
        return false;
    put(std::move(m_pendingKey), item);
    m_pendingKey = Key();
    return true;
}

namespace
{

/// Puts `item` in `target`, which may be what keeps the item's container alive.
template <class Target>
bool store(Item * const * place, qvbase::Reference<Target> & target)
{
    if (place == nullptr)
        return false;
    const qvbase::Reference<Item> keep(*place);
    // Kept: also where the item is of another type.
    target = static_cast<Target *>(keep.get());
    return true;
}

} // namespace

bool Object::getItem(Vontal::u8string const & key, qvbase::Reference<Item> & item) const
{
    return store(findItem(m_items.contents(), key), item);
}

bool Object::getArray(Vontal::u8string const & key, qvbase::Reference<Array> & array) const
{
    return store(findItem(m_items.contents(), key), array);
}

bool Object::getObject(Vontal::u8string const & key, qvbase::Reference<Object> & object) const
{
    return store(findItem(m_items.contents(), key), object);
}

bool Object::getValue(Vontal::u8string const & key, int & value) const
{
    Item * const * const place = findItem(m_items.contents(), key);
    return place != nullptr && *place != nullptr && (*place)->getInt(value);
}

bool Object::getValue(Vontal::u8string const & key, Vontal::u8string & value) const
{
    Item * const * const place = findItem(m_items.contents(), key);
    return place != nullptr && *place != nullptr && (*place)->getString(value);
}

bool Object::getValue(Vontal::u8string const & key, bool & value) const
{
    Item * const * const place = findItem(m_items.contents(), key);
    return place != nullptr && *place != nullptr && (*place)->getBool(value);
}

void Object::getItems(std::map<Vontal::u8string, qvbase::Reference<Item>> & items) const
{
    std::map<Vontal::u8string, qvbase::Reference<Item>> copy;
    for (ObjectCursor cursor(m_items.contents()); !cursor.atEnd(); cursor.next())
        copy.emplace_hint(
            copy.end(), Vontal::u8string(cursor.key().data(), cursor.key().size()), cursor.item());
    items = std::move(copy);
}

} // namespace qvjson
