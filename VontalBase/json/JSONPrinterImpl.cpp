#include "VontalBase/json/JSONPrinterImpl.h"

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueString.h"
#include "VontalBase/json/containers.h"
#include "VontalBase/json/escape.h"
#include "VontalBase/text/decimal.h"

#include <ostream>
#include <vector>

namespace qvjson
{

namespace
{

/// A tree goes to its stream in pieces of about this many bytes.
constexpr std::size_t pieceSize = 32768;

/// A container that is being printed.
class OpenContainer
{
public:
    explicit OpenContainer(const Array & array) noexcept : m_isArray(true), m_cursor(nullptr)
    {
        const ItemBlock * const block = TreeAccess::block(array);
        if (block != nullptr)
        {
            m_element = block->elements<Item *>();
            m_end = m_element + block->size;
        }
    }
    explicit OpenContainer(const Object & object) noexcept
        : m_isArray(false), m_cursor(TreeAccess::block(object))
    {
    }

    bool isArray() const noexcept
    {
        return m_isArray;
    }
    bool atEnd() const noexcept
    {
        return m_isArray ? m_element == m_end : m_cursor.atEnd();
    }
    std::string_view key() const noexcept
    {
        return m_cursor.key();
    }
    const Item * item() const noexcept
    {
        return m_isArray ? *m_element : m_cursor.item();
    }
    void next() noexcept
    {
        if (m_isArray)
            ++m_element;
        else
            m_cursor.next();
    }

private:
    bool m_isArray;
    Item * const * m_element = nullptr;
    Item * const * m_end = nullptr;
    ObjectCursor m_cursor;
};

} // namespace

JSONPrinterImpl::~JSONPrinterImpl() = default;

/// What stands before every token but a closing bracket.
inline void JSONPrinterImpl::separate()
{
    if (!m_atStart && !m_afterKey)
        m_text.push_back(',');
    m_atStart = false;
    m_afterKey = false;
}

inline void JSONPrinterImpl::open(char bracket)
{
    separate();
    m_text.push_back(bracket);
    m_atStart = true;
}

inline void JSONPrinterImpl::close(char bracket)
{
    m_atStart = false;
    m_afterKey = false;
    m_text.push_back(bracket);
}

inline void JSONPrinterImpl::key(std::string_view text)
{
    string(text);
    m_text.push_back(':');
    m_afterKey = true;
}

inline void JSONPrinterImpl::string(std::string_view text)
{
    separate();
    m_text.push_back('"');
    appendEscaped(text, m_text);
    m_text.push_back('"');
}

inline void JSONPrinterImpl::number(int value)
{
    plain(Vontal::Decimal(value).text());
}

inline void JSONPrinterImpl::plain(std::string_view text)
{
    separate();
    m_text.append(text);
}

/// Gives the composed text to the stream.
bool JSONPrinterImpl::handOver()
{
    m_stream.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
    m_text.clear();
    // Kept: the state of the stream is not asked.
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
    plain(digits);
    return handOver();
}

bool JSONPrinterImpl::printInt(int value)
{
    number(value);
    return handOver();
}

bool JSONPrinterImpl::printNull()
{
    plain("null");
    return handOver();
}

bool JSONPrinterImpl::printBool(bool value)
{
    plain(value ? "true" : "false");
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
    switch (item.getType())
    {
    case TypeNull:
        plain("null");
        return true;
    case TypeString:
        string(static_cast<const ValueString &>(item).view());
        return true;
    case TypeInt:
        // Kept: the low 32 bits only.
        number(static_cast<const ValueInt &>(item).getInt());
        return true;
    case TypeBool:
        plain(static_cast<const ValueBool &>(item).getValue() ? "true" : "false");
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
            OpenContainer & container = m_open.back();
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
            if (m_printer.m_text.size() >= pieceSize)
                m_printer.handOver();
        }
        return true;
    }

private:
    bool begin(const Item * item)
    {
        if (item == nullptr)
            return false;
        switch (item->getType())
        {
        case TypeArray:
            m_printer.open('[');
            m_open.emplace_back(static_cast<const Array &>(*item));
            return true;
        case TypeObject:
            m_printer.open('{');
            m_open.emplace_back(static_cast<const Object &>(*item));
            return true;
        default:
            return m_printer.leaf(*item);
        }
    }

    JSONPrinterImpl & m_printer;
    std::vector<OpenContainer> m_open;
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
