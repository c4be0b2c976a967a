#include "VontalBase/json/JSONPrinterImpl.h"

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueString.h"
#include "VontalBase/json/containers.h"

#include <vector>

namespace qvjson
{

JSONPrinterImpl::~JSONPrinterImpl() = default;

/// What stands before every token but a closing bracket. Makes room for a short token.
inline void JSONPrinterImpl::separate()
{
    m_writer.makeRoom();
    if (!m_atStart && !m_afterKey)
        m_writer.put(',');
    m_atStart = false;
    m_afterKey = false;
}

inline void JSONPrinterImpl::open(char bracket)
{
    separate();
    m_writer.put(bracket);
    m_atStart = true;
}

inline void JSONPrinterImpl::close(char bracket)
{
    m_writer.makeRoom();
    m_writer.put(bracket);
    m_atStart = false;
    m_afterKey = false;
}

inline void JSONPrinterImpl::key(std::string_view text)
{
    string(text);
    m_writer.put(':');
    m_afterKey = true;
}

inline void JSONPrinterImpl::string(std::string_view text)
{
    separate();
    m_writer.put('"');
    m_writer.putEscaped(text);
    m_writer.put('"');
}

inline void JSONPrinterImpl::number(int value)
{
    separate();
    m_writer.putNumber(value);
}

inline void JSONPrinterImpl::word(std::string_view text)
{
    separate();
    m_writer.putShort(text);
}

/// Gives the composed text to the stream.
bool JSONPrinterImpl::handOver()
{
    m_writer.handOver();
    return true;
}

bool JSONPrinterImpl::printObjectBegin()
{
    open('{');
    return handOver();
}

bool JSONPrinterImpl::printObjectEnd()
{
    close('}');
    return handOver();
}

bool JSONPrinterImpl::printKey(Vontal::u8string const & text)
{
    key(text);
    return handOver();
}

bool JSONPrinterImpl::printString(Vontal::u8string const & text)
{
    string(text);
    return handOver();
}

bool JSONPrinterImpl::printNumber(Vontal::u8string const & digits)
{
    separate();
    m_writer.putText(digits);
    return handOver();
}

bool JSONPrinterImpl::printInt(int value)
{
    number(value);
    return handOver();
}

bool JSONPrinterImpl::printNull()
{
    word("null");
    return handOver();
}

bool JSONPrinterImpl::printBool(bool value)
{
    word(value ? "true" : "false");
    return handOver();
}

bool JSONPrinterImpl::printArrayBegin()
{
    open('[');
    return handOver();
}

bool JSONPrinterImpl::printArrayEnd()
{
    close(']');
    return handOver();
}

/// Composes a node that holds no others. Returns false for one of no known type.
inline bool JSONPrinterImpl::leaf(const Item & item)
{
    switch (TreeAccess::type(item))
    {
    case TypeNull:
        word("null");
        return true;
    case TypeString:
        string(static_cast<const ValueString &>(item).view());
        return true;
    case TypeInt:
        // Kept: the low 32 bits only.
        number(static_cast<const ValueInt &>(item).getInt());
        return true;
    case TypeBool:
        word(static_cast<const ValueBool &>(item).getValue() ? "true" : "false");
        return true;
    default:
        return false;
    }
}

/// Composes a tree, piece by piece.
class JSONPrinterImpl::TreeWalk
{
public:
    explicit TreeWalk(JSONPrinterImpl & printer) noexcept : m_printer(printer)
    {
    }

    bool print(const Item * root)
    {
        if (!begin(root))
            return false;
        while (!m_open.empty())
        {
            ChildCursor & container = m_open.back();
            if (container.atEnd())
            {
                m_printer.close(container.isArray() ? ']' : '}');
                m_open.pop_back();
                continue;
            }
            if (!container.isArray())
                m_printer.key(container.key());
            const Item * const item = container.item();
            container.next();
            if (!begin(item))
                return false;
        }
        return true;
    }

private:
    bool begin(const Item * item)
    {
        if (item == nullptr)
            return false;
        switch (TreeAccess::type(*item))
        {
        case TypeArray:
            m_printer.open('[');
            m_open.emplace_back(*item);
            return true;
        case TypeObject:
            m_printer.open('{');
            m_open.emplace_back(*item);
            return true;
        default:
            return m_printer.leaf(*item);
        }
    }

    JSONPrinterImpl & m_printer;
    std::vector<ChildCursor> m_open;
};

bool JSONPrinterImpl::printItem(Item * item)
{
    const bool isWhole = TreeWalk(*this).print(item);
    handOver();
    return isWhole;
}

bool jsonPrinterFactory(std::basic_ostream<char> * stream, qvbase::Reference<JSONPrinter> & out)
{
    if (stream == nullptr)
        return false;
    out = new qvbase::ReferencedImpl<JSONPrinterImpl>(*stream);
    return true;
}

} // namespace qvjson
