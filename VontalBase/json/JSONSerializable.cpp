#include "VontalBase/json/JSONSerializable.h"

#include "VontalBase/json/JSONSerializableFactory.h"
#include "VontalBase/json/JSONTreeParser.h"
#include "VontalBase/json/fieldtargets.h"
#include "VontalBase/text/shortbytes.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace qvjson
{

JSONSerializable::JSONField::JSONField(
    std::uint32_t fieldType, const Vontal::u8string & fieldKey, void * fieldTarget)
    : type(fieldType), key(fieldKey), target(fieldTarget)
{
}

JSONSerializable::JSONField::~JSONField() = default;

JSONSerializable::~JSONSerializable() = default;

bool JSONSerializable::onParseEnd()
{
    return true;
}

bool JSONSerializable::jsonBeginParse()
{
    if (m_isParsing)
        return false;
    if (m_fields.empty())
        jsonFieldsDeclare();
    m_isParsing = true;
    clearField();
    return true;
}

bool JSONSerializable::jsonEndParse()
{
    if (!m_isParsing)
        return false;
    m_isParsing = false;
    if (m_field != nullptr || m_childParser != nullptr)
        return false;
    return onParseEnd();
}

/// Whether a value may come for a declared member.
bool JSONSerializable::isAtAnyField() const noexcept
{
    return m_isParsing && m_field != nullptr && m_childParser == nullptr;
}

bool JSONSerializable::isAtField(std::uint32_t type) const noexcept
{
    return isAtAnyField() && m_field->type == type;
}

void JSONSerializable::clearField() noexcept
{
    m_field = nullptr;
    m_isListOpen = false;
}

JSONParserAcceptor * JSONSerializable::parserBeginObject()
{
    if (!m_isParsing)
    {
        m_isParsing = true;
        clearField();
        return this;
    }
    if (!isAtAnyField())
        return nullptr;
    switch (m_field->type)
    {
    case FieldTree:
        return beginTree();
    case FieldRawObject:
        return beginRawObject(holderOf(*m_field));
    case FieldReferencedObject:
        return beginReferencedObject(holderOf(*m_field));
    case FieldObjectVector:
        return beginVectorElement(holderOf(*m_field));
    case FieldArrayProvider:
    {
        const auto & provider = providerOf(*m_field);
        return provider ? provider->parserBeginObject(m_field) : nullptr;
    }
    case FieldRefObj:
    {
        const auto & object = refObjOf(*m_field);
        return object ? object->parserBeginObject(m_field) : nullptr;
    }
    default:
        return nullptr;
    }
}

JSONParserAcceptor * JSONSerializable::beginTree()
{
    m_childParser = std::make_shared<JSONTreeParser>();
    return m_childParser->parserBeginObject();
}

JSONParserAcceptor * JSONSerializable::beginRawObject(const FactoryHolder & holder)
{
    JSONSerializable *& member = rawObjectOf(holder);
    releaseRaw(member);
    qvbase::Reference<JSONSerializable> object;
    if (!makeObject(holder, object) || !object->jsonBeginParse())
        return nullptr;
    object->addRef();
    member = object;
    return member;
}

JSONParserAcceptor * JSONSerializable::beginReferencedObject(const FactoryHolder & holder)
{
    qvbase::Reference<JSONSerializable> & member = referencedObjectOf(holder);
    member = nullptr;
    if (makeObject(holder, member) && member->jsonBeginParse())
        return member;
    member = nullptr;
    return nullptr;
}

JSONParserAcceptor * JSONSerializable::beginVectorElement(const FactoryHolder & holder)
{
    if (holder.member == nullptr)
        return nullptr;
    auto & elements = objectVectorOf(holder);
    qvbase::Reference<JSONSerializable> element;
    if (!makeObject(holder, element))
        return nullptr;
    elements.push_back(element);
    if (element->jsonBeginParse())
        return element;
    elements.pop_back();
    return nullptr;
}

bool JSONSerializable::parserEndChildObject(JSONParserAcceptor *)
{
    if (!m_isParsing)
        return true;
    if (m_field == nullptr)
        return false;
    switch (m_field->type)
    {
    case FieldTree:
    {
        const std::shared_ptr<JSONTreeParser> parser = std::exchange(m_childParser, nullptr);
        Item * const root = parser == nullptr ? nullptr : parser->root().get();
        Object * const object = root == nullptr ? nullptr : static_cast<Object *>(*root);
        if (object == nullptr)
            return false;
        targetOf<qvbase::Reference<Object>>(*m_field) = object;
        clearField();
        return true;
    }
    case FieldObjectVector:
    case FieldArrayProvider:
        return true;
    default:
        clearField();
        return true;
    }
}

bool JSONSerializable::parserEndObject()
{
    if (!m_isParsing || m_childParser != nullptr)
        return false;
    m_isParsing = false;
    return m_field == nullptr;
}

/// The first field with the key, or null. Fields mostly come in the order of their declaration, and the one
/// that is due next is the first with its key if none before it has it; that is looked at once for each
/// field.
JSONSerializable::JSONField * JSONSerializable::findField(const Vontal::u8string & key)
{
    const auto isWanted = [&key](const auto & field)
    {
        return Vontal::isSameText(field->key, key);
    };
    auto found = m_fields.begin() + static_cast<std::ptrdiff_t>(m_expected);
    if (m_expected >= m_knownFirst || !isWanted(*found))
        found = std::find_if(m_fields.begin(), m_fields.end(), isWanted);
    if (found == m_fields.end())
        return nullptr;
    m_expected = static_cast<std::size_t>(found - m_fields.begin()) + 1;
    // Found from the front, in order and without a gap: so far every field is the first with its key.
    if (m_expected == m_knownFirst + 1)
        m_knownFirst = m_expected;
    return found->get();
}

bool JSONSerializable::parseKey(Vontal::u8string const & key)
{
    if (!m_isParsing || m_field != nullptr || m_childParser != nullptr)
        return false;
    m_field = findField(key);
    return m_field != nullptr;
}

bool JSONSerializable::parseInt(char const * text, unsigned int length)
{
    if (!isAtAnyField())
        return false;
    const std::string_view digits(text, length);
    bool isRead = false;
    switch (m_field->type)
    {
    case FieldInt:
        isRead = readNumber<int>(digits, *m_field);
        break;
    case FieldULong:
        isRead = readULong(digits);
        break;
    case FieldInt64:
        isRead = readNumber<std::int64_t>(digits, *m_field);
        break;
    case FieldIntVector:
        return appendNumber<int>(digits, *m_field);
    case FieldInt64Vector:
        return appendNumber<std::int64_t>(digits, *m_field);
    default:
        return false;
    }
    if (isRead)
        clearField();
    return isRead;
}

/// Reads an unsigned number into a member of 32 bits or wider.
bool JSONSerializable::readULong(std::string_view digits)
{
    if (!m_field->m_isWide)
        return readNumber<Vontal::ulong32>(digits, *m_field);
    bool ok = false;
    const unsigned long value = Vontal::scanInteger<Vontal::ulong32>(digits, ok);
    if (ok)
        storeNumber(value, m_field->target);
    return ok;
}

bool JSONSerializable::parseString(char const * text, unsigned int length)
{
    if (!isAtAnyField())
        return false;
    switch (m_field->type)
    {
    case FieldString:
        targetOf<Vontal::u8string>(*m_field).assign(text, length);
        clearField();
        return true;
    case FieldStringSet:
        targetOf<std::set<Vontal::u8string>>(*m_field).emplace(text, length);
        return true;
    case FieldStringVector:
        targetOf<std::vector<Vontal::u8string>>(*m_field).emplace_back(text, length);
        return true;
    default:
        return false;
    }
}

bool JSONSerializable::parseBool(bool value)
{
    if (!isAtField(FieldBool))
        return false;
    targetOf<bool>(*m_field) = value;
    clearField();
    return true;
}

bool JSONSerializable::parseNull()
{
    if (!isAtAnyField())
        return false;
    switch (m_field->type)
    {
    case FieldTree:
        targetOf<qvbase::Reference<Object>>(*m_field) = nullptr;
        break;
    case FieldRawObject:
        releaseRaw(rawObjectOf(holderOf(*m_field)));
        break;
    case FieldReferencedObject:
        referencedObjectOf(holderOf(*m_field)) = nullptr;
        break;
    case FieldArrayProvider:
        if (const auto & provider = providerOf(*m_field))
            provider->clear();
        break;
    // Kept: also for FieldRefObj, though it prints null.
    default:
        return false;
    }
    clearField();
    return true;
}

namespace
{

/// Empties the list of a field. Returns false if the field holds no list.
bool clearList(const JSONField & field)
{
    switch (field.type)
    {
    case JSONSerializable::FieldStringSet:
        targetOf<std::set<Vontal::u8string>>(field).clear();
        return true;
    case JSONSerializable::FieldStringVector:
        targetOf<std::vector<Vontal::u8string>>(field).clear();
        return true;
    case JSONSerializable::FieldIntVector:
        targetOf<std::vector<int>>(field).clear();
        return true;
    case JSONSerializable::FieldInt64Vector:
        targetOf<std::vector<std::int64_t>>(field).clear();
        return true;
    case JSONSerializable::FieldObjectVector:
        if (holderOf(field).member == nullptr)
            return false;
        objectVectorOf(holderOf(field)).clear();
        return true;
    case JSONSerializable::FieldArrayProvider:
        if (providerOf(field) == nullptr)
            return false;
        providerOf(field)->clear();
        return true;
    default:
        return false;
    }
}

} // namespace

bool JSONSerializable::parserBeginArray()
{
    if (!isAtAnyField() || m_isListOpen || !clearList(*m_field))
        return false;
    m_isListOpen = true;
    return true;
}

bool JSONSerializable::parserEndArray()
{
    if (!isAtAnyField())
        return false;
    clearField();
    return true;
}

void JSONSerializable::jsonFieldAdd(JSONField * field)
{
    std::shared_ptr<JSONField> owned(field);
    if (owned != nullptr)
        m_fields.push_back(std::move(owned));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, bool * target)
{
    jsonFieldAdd(new JSONField(FieldBool, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, int * target)
{
    jsonFieldAdd(new JSONField(FieldInt, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, Vontal::ulong32 * target)
{
    jsonFieldAdd(new JSONField(FieldULong, key, target));
}

void JSONSerializable::addNativeULong(Vontal::u8string const & key, void * target)
{
    auto field = std::make_unique<JSONField>(FieldULong, key, target);
    field->m_isWide = true;
    jsonFieldAdd(field.release());
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, std::int64_t * target)
{
    jsonFieldAdd(new JSONField(FieldInt64, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, Vontal::u8string * target)
{
    jsonFieldAdd(new JSONField(FieldString, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, std::set<Vontal::u8string> * target)
{
    jsonFieldAdd(new JSONField(FieldStringSet, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, std::vector<Vontal::u8string> * target)
{
    jsonFieldAdd(new JSONField(FieldStringVector, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, std::vector<int> * target)
{
    jsonFieldAdd(new JSONField(FieldIntVector, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, std::vector<std::int64_t> * target)
{
    jsonFieldAdd(new JSONField(FieldInt64Vector, key, target));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key, qvbase::Reference<Object> * target)
{
    jsonFieldAdd(new JSONField(FieldTree, key, target));
}

void JSONSerializable::jsonFieldAdd(
    Vontal::u8string const & key, JSONSerializable ** target, JSONSerializableFactory * factory)
{
    jsonFieldAdd(new HoldingField<FactoryHolder>(FieldRawObject, key, {factory, target}));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key,
    qvbase::Reference<JSONSerializable> * target, JSONSerializableFactory * factory)
{
    jsonFieldAdd(new HoldingField<FactoryHolder>(FieldReferencedObject, key, {factory, target}));
}

void JSONSerializable::jsonFieldAdd(Vontal::u8string const & key,
    std::vector<qvbase::Reference<JSONSerializable>> * target, JSONSerializableFactory * factory)
{
    jsonFieldAdd(new HoldingField<FactoryHolder>(FieldObjectVector, key, {factory, target}));
}

void JSONSerializable::jsonFieldAdd(
    Vontal::u8string const & key, const std::shared_ptr<JSONSerializableArrayProviderInterface> & provider)
{
    jsonFieldAdd(new HoldingField<ArrayProviderPointer>(FieldArrayProvider, key, provider));
}

void JSONSerializable::jsonFieldAdd(
    Vontal::u8string const & key, const std::shared_ptr<JSONRefObjInterface> & object)
{
    jsonFieldAdd(new HoldingField<RefObjPointer>(FieldRefObj, key, object));
}

} // namespace qvjson
