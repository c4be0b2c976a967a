#include "VontalBase/json/Array.h"

#include "VontalBase/json/containers.h"

namespace qvjson
{

Array::~Array()
{
    takeApartArray(m_items.leave());
}

bool Array::equals(Item const * other) const
{
    if (other == nullptr || other->getType() != getType())
        return false;
    return equalContainers(*this, *other);
}

std::uint64_t Array::getLength() const noexcept
{
    const ItemBlock * const items = m_items.get();
    return items == nullptr ? 0 : items->size;
}

void Array::add(Item * item)
{
    m_items.set(appendItem(m_items.get(), item));
    if (item != nullptr)
        item->addRef();
}

bool Array::getItem(unsigned int index, qvbase::Reference<Item> & item) const
{
    if (index >= getLength())
        return false;
    storeChild(element(index), item);
    return item.get() != nullptr;
}

bool Array::getArray(unsigned int index, qvbase::Reference<Array> & array) const
{
    if (index >= getLength())
        return false;
    storeChild(element(index), array);
    return array.get() != nullptr;
}

bool Array::getObject(unsigned int index, qvbase::Reference<Object> & object) const
{
    if (index >= getLength())
        return false;
    storeChild(element(index), object);
    return object.get() != nullptr;
}

bool Array::getInt(unsigned int index, int & value) const
{
    const Item * const item = element(index);
    return item != nullptr && item->getInt(value);
}

bool Array::getInt64(unsigned int index, std::int64_t & value) const
{
    const Item * const item = element(index);
    return item != nullptr && item->getInt64(value);
}

bool Array::getString(unsigned int index, Vontal::u8string & value) const
{
    const Item * const item = element(index);
    return item != nullptr && item->getString(value);
}

Item * Array::element(unsigned int index) const noexcept
{
    return index < getLength() ? m_items.get()->elements<Item *>()[index] : nullptr;
}

} // namespace qvjson
