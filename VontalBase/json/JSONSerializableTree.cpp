// Filling the members of a bound class from a tree.

#include "VontalBase/json/Array.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/fieldtargets.h"

#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace qvjson
{

namespace
{

/// A null pointer and JSON's null are the same to a field.
bool isNull(Item * item)
{
    return item == nullptr || item->getType() == TypeNull;
}

Object * asObject(Item * item)
{
    return item == nullptr ? nullptr : static_cast<Object *>(*item);
}

Array * asArray(Item * item)
{
    return item == nullptr ? nullptr : static_cast<Array *>(*item);
}

/// Fills a list from an array by one getter for all elements.
template <class Element, class List, class Insert>
bool fillList(Item * item, List & list, bool (Array::*get)(unsigned int, Element &) const, Insert insert)
{
    const Array * const array = asArray(item);
    if (array == nullptr)
        return false;
    list.clear();
    for (unsigned int i = 0; i < array->getLength(); ++i)
    {
        Element element{};
        if (!(array->*get)(i, element))
            return false;
        insert(list, std::move(element));
    }
    return true;
}

template <class Element>
bool fillVector(Item * item, const JSONField & field, bool (Array::*get)(unsigned int, Element &) const)
{
    return fillList(item, targetOf<std::vector<Element>>(field), get,
        [](std::vector<Element> & list, Element && element) { list.push_back(std::move(element)); });
}

bool fillSet(Item * item, const JSONField & field)
{
    return fillList(item, targetOf<std::set<Vontal::u8string>>(field), &Array::getString,
        [](std::set<Vontal::u8string> & list, Vontal::u8string && element)
        { list.insert(std::move(element)); });
}

bool fillTree(Item * item, const JSONField & field)
{
    qvbase::Reference<Object> & member = targetOf<qvbase::Reference<Object>>(field);
    member = asObject(item);
    return member.get() != nullptr || isNull(item);
}

/// Makes an object and fills it. Returns false if either refuses.
bool makeFilled(Item * item, const FactoryHolder & holder, qvbase::Reference<JSONSerializable> & object)
{
    Object * const source = asObject(item);
    return source != nullptr && makeObject(holder, object) && object->fromJson(source);
}

bool fillRawObject(Item * item, const FactoryHolder & holder)
{
    JSONSerializable *& member = rawObjectOf(holder);
    releaseRaw(member);
    if (isNull(item))
        return true;
    qvbase::Reference<JSONSerializable> object;
    if (!makeFilled(item, holder, object))
        return false;
    object->addRef();
    member = object;
    return true;
}

bool fillReferencedObject(Item * item, const FactoryHolder & holder)
{
    if (isNull(item))
    {
        referencedObjectOf(holder) = nullptr;
        return true;
    }
    // Kept: the object is filled and let go; the member is not assigned.
    qvbase::Reference<JSONSerializable> object;
    return makeFilled(item, holder, object);
}

bool fillObjectVector(Item * item, const FactoryHolder & holder)
{
    if (holder.member == nullptr)
        return isNull(item);
    objectVectorOf(holder).clear();
    if (isNull(item))
        return true;
    const Array * const array = asArray(item);
    if (array == nullptr)
        return false;
    for (unsigned int i = 0; i < array->getLength(); ++i)
    {
        qvbase::Reference<Item> element;
        array->getItem(i, element);
        if (isNull(element))
            continue;
        // Kept: the objects are filled and let go; nothing is appended.
        qvbase::Reference<JSONSerializable> object;
        if (!makeFilled(element, holder, object))
            return false;
    }
    return true;
}

bool fillProvider(Item * item, const ArrayProviderPointer & provider)
{
    if (provider == nullptr)
        return isNull(item);
    provider->clear();
    if (isNull(item))
        return true;
    const Array * const array = asArray(item);
    if (array == nullptr)
        return false;
    for (unsigned int i = 0; i < array->getLength(); ++i)
    {
        qvbase::Reference<Item> element;
        array->getItem(i, element);
        Object * const source = asObject(element);
        if (source == nullptr)
            return false;
        JSONSerializable * const target = provider->createElement();
        if (target == nullptr)
            return false;
        if (!target->fromJson(source))
        {
            provider->removeLastElement();
            return false;
        }
    }
    return true;
}

bool fillRefObj(Item * item, const RefObjPointer & object)
{
    if (isNull(item))
        return true;
    Object * const source = asObject(item);
    if (source == nullptr || object == nullptr)
        return false;
    JSONSerializable * const target = object->createObject();
    return target != nullptr && target->fromJson(source);
}

} // namespace

bool JSONSerializable::fromItem(const JSONField & field, Item * item)
{
    switch (field.type)
    {
    case FieldBool:
        return item != nullptr && item->getBool(targetOf<bool>(field));
    case FieldInt:
        return item != nullptr && item->getInt(targetOf<int>(field));
    case FieldULong:
    case FieldInt64:
        // Kept: these members are left as they are on this route.
        return true;
    case FieldString:
        return item != nullptr && item->getString(targetOf<Vontal::u8string>(field));
    case FieldStringSet:
        return fillSet(item, field);
    case FieldStringVector:
        return fillVector<Vontal::u8string>(item, field, &Array::getString);
    case FieldIntVector:
        return fillVector<int>(item, field, &Array::getInt);
    case FieldInt64Vector:
        return fillVector<std::int64_t>(item, field, &Array::getInt64);
    case FieldTree:
        return fillTree(item, field);
    case FieldRawObject:
        return fillRawObject(item, holderOf(field));
    case FieldReferencedObject:
        return fillReferencedObject(item, holderOf(field));
    case FieldObjectVector:
        return fillObjectVector(item, holderOf(field));
    case FieldArrayProvider:
        return fillProvider(item, providerOf(field));
    case FieldRefObj:
        return fillRefObj(item, refObjOf(field));
    default:
        return false;
    }
}

bool JSONSerializable::fromJson(Object * object)
{
    jsonFieldsDeclare();
    if (object == nullptr)
        return false;
    // A tree member may be what keeps the object alive, and a factory may declare more fields.
    const qvbase::Reference<Object> source(object);
    for (std::size_t i = 0; i < m_fields.size(); ++i)
    {
        const std::shared_ptr<JSONField> field = m_fields[i];
        qvbase::Reference<Item> item;
        if (!source->getItem(field->key, item) || !fromItem(*field, item))
            return false;
    }
    return onParseEnd();
}

} // namespace qvjson
