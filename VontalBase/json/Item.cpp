#include "VontalBase/json/Item.h"

#include "VontalBase/json/Array.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueNull.h"
#include "VontalBase/json/ValueString.h"

namespace qvjson
{

Type Item::getType() const
{
    return static_cast<Type>(m_type);
}

bool Item::isValue() const
{
    return m_type >= TypeString && m_type <= TypeBool;
}

bool Item::getBool(bool & value) const
{
    if (m_type != TypeBool)
        return false;
    value = static_cast<const ValueBool *>(this)->getValue();
    return true;
}

bool Item::getInt(int & value) const
{
    if (m_type != TypeInt)
        return false;
    value = static_cast<const ValueInt *>(this)->getInt();
    return true;
}

bool Item::getInt64(std::int64_t & value) const
{
    if (m_type != TypeInt)
        return false;
    value = static_cast<const ValueInt *>(this)->getInt64();
    return true;
}

bool Item::getString(Vontal::u8string & value) const
{
    if (m_type != TypeString)
        return false;
    value = static_cast<const ValueString *>(this)->getValue();
    return true;
}

Item::operator Array *()
{
    return m_type == TypeArray ? static_cast<Array *>(this) : nullptr;
}

Item::operator Object *()
{
    return m_type == TypeObject ? static_cast<Object *>(this) : nullptr;
}

Item::operator ValueBool *()
{
    return m_type == TypeBool ? static_cast<ValueBool *>(this) : nullptr;
}

Item::operator ValueInt *()
{
    return m_type == TypeInt ? static_cast<ValueInt *>(this) : nullptr;
}

Item::operator ValueNull *()
{
    return m_type == TypeNull ? static_cast<ValueNull *>(this) : nullptr;
}

Item::operator ValueString *()
{
    return m_type == TypeString ? static_cast<ValueString *>(this) : nullptr;
}

} // namespace qvjson
