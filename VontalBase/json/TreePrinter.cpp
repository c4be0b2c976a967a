#include "VontalBase/json/TreePrinter.h"

#include "VontalBase/json/JSONWriter.h"
#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueString.h"

namespace qvjson
{

bool TreePrinter::isPrintable(const Item * item) noexcept
{
    if (item == nullptr)
        return false;
    const Type type = TreeAccess::type(*item);
    return type <= TypeInt || type == TypeBool;
}

char * TreePrinter::putKey(char * to, std::string_view key)
{
    if (!m_isFirst)
        *to++ = ',';
    to = m_writer.putString(to, key);
    *to++ = ':';
    return to;
}

bool TreePrinter::print(const Item & root, char *& to)
{
    put(root, to);
    while (!m_open.empty())
    {
        ChildCursor & container = m_open.back();
        to = m_writer.makeRoom(to);
        if (container.atEnd())
        {
            *to++ = container.isArray() ? ']' : '}';
            m_open.pop_back();
            m_isFirst = false;
            continue;
        }
        if (!container.isArray())
            to = putKey(to, container.key());
        const Item * const item = container.item();
        if (!isPrintable(item))
            return false;
        if (container.isArray() && !m_isFirst)
            *to++ = ',';
        container.next();
        m_isFirst = false;
        put(*item, to);
    }
    return true;
}

/// Writes a node, or the opening bracket of one that holds others.
void TreePrinter::put(const Item & item, char *& to)
{
    to = m_writer.makeRoom(to);
    switch (TreeAccess::type(item))
    {
    case TypeObject:
    case TypeArray:
        *to++ = TreeAccess::type(item) == TypeArray ? '[' : '{';
        m_isFirst = true;
        m_open.emplace_back(item);
        break;
    case TypeString:
        to = m_writer.putString(to, static_cast<const ValueString &>(item).view());
        break;
    case TypeInt:
        // Kept: the low 32 bits only.
        to = JSONWriter::putNumber(to, static_cast<const ValueInt &>(item).getInt());
        break;
    case TypeBool:
        to = JSONWriter::putShort(to, static_cast<const ValueBool &>(item).getValue() ? "true" : "false");
        break;
    default:
        to = JSONWriter::putShort(to, "null");
        break;
    }
}

} // namespace qvjson
