/// @internal
/// @file
/// What the fields of a bound class point at.
#pragma once

#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/JSONSerializableFactory.h"
#include "VontalBase/text/numberscan.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace qvjson
{

using JSONField = JSONSerializable::JSONField;
using FactoryHolder = JSONSerializable::FactoryHolder;
using ArrayProviderPointer = std::shared_ptr<JSONSerializableArrayProviderInterface>;
using RefObjPointer = std::shared_ptr<JSONRefObjInterface>;

/// A field that owns what its target points at.
template <class Holder>
class HoldingField final : public JSONField
{
public:
    HoldingField(std::uint32_t fieldType, const Vontal::u8string & fieldKey, Holder holder)
        : JSONField(fieldType, fieldKey, &m_holder), m_holder(std::move(holder))
    {
    }

private:
    Holder m_holder;
};

template <class Target>
Target & targetOf(const JSONField & field) noexcept
{
    return *static_cast<Target *>(field.target);
}

inline const FactoryHolder & holderOf(const JSONField & field) noexcept
{
    return targetOf<FactoryHolder>(field);
}

inline const ArrayProviderPointer & providerOf(const JSONField & field) noexcept
{
    return targetOf<ArrayProviderPointer>(field);
}

inline const RefObjPointer & refObjOf(const JSONField & field) noexcept
{
    return targetOf<RefObjPointer>(field);
}

inline JSONSerializable *& rawObjectOf(const FactoryHolder & holder) noexcept
{
    return *static_cast<JSONSerializable **>(holder.member);
}

inline qvbase::Reference<JSONSerializable> & referencedObjectOf(const FactoryHolder & holder) noexcept
{
    return *static_cast<qvbase::Reference<JSONSerializable> *>(holder.member);
}

inline std::vector<qvbase::Reference<JSONSerializable>> & objectVectorOf(
    const FactoryHolder & holder) noexcept
{
    return *static_cast<std::vector<qvbase::Reference<JSONSerializable>> *>(holder.member);
}

/// Gives the reference of a raw member back.
inline void releaseRaw(JSONSerializable *& member)
{
    if (JSONSerializable * const object = std::exchange(member, nullptr))
        object->release();
}

/// Has the factory make an object. Returns false if there is no factory or it made none.
inline bool makeObject(const FactoryHolder & holder, qvbase::Reference<JSONSerializable> & object)
{
    return holder.factory.get() != nullptr && holder.factory->createObject(object) && object.get() != nullptr;
}

/// Stores through bytes, because an unsigned member may be the low half of a wider one.
template <class Number>
void storeNumber(Number value, void * target) noexcept
{
    std::memcpy(target, &value, sizeof(value));
}

template <class Number>
Number loadNumber(const void * target) noexcept
{
    Number value = 0;
    std::memcpy(&value, target, sizeof(value));
    return value;
}

/// Sets a number from text, and leaves it alone where that is none or does not fit.
template <class Number>
bool readNumber(std::string_view digits, const JSONField & field) noexcept
{
    bool ok = false;
    const Number value = Vontal::scanInteger<Number>(digits, ok);
    if (ok)
        storeNumber(value, field.target);
    return ok;
}

template <class Number>
bool appendNumber(std::string_view digits, const JSONField & field)
{
    bool ok = false;
    const Number value = Vontal::scanInteger<Number>(digits, ok);
    if (ok)
        targetOf<std::vector<Number>>(field).push_back(value);
    return ok;
}

} // namespace qvjson
