#include "VontalBase/json/JSONPrinterImpl.h"

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/TreePrinter.h"

namespace qvjson
{

JSONPrinterImpl::~JSONPrinterImpl() = default;

/// Begins the text of a call with what stands before every token but a closing bracket.
char * JSONPrinterImpl::separate()
{
    char * to = m_writer.begin();
    if (!m_atStart && !m_afterKey)
        *to++ = ',';
    m_atStart = false;
    m_afterKey = false;
    return to;
}

bool JSONPrinterImpl::handOver(const char * to)
{
    m_writer.handOver(to);
    return true;
}

/// For a call that fails already, and whose failure is not to be replaced by another one.
void JSONPrinterImpl::handOverQuietly(const char * to) noexcept
{
    try
    {
        m_writer.handOver(to);
    }
    catch (...)
    {
        // The stream has had its say: it keeps its state, and what it refused is lost.
    }
}

bool JSONPrinterImpl::open(char bracket)
{
    char * to = separate();
    *to++ = bracket;
    m_atStart = true;
    return handOver(to);
}

bool JSONPrinterImpl::close(char bracket)
{
    char * to = m_writer.begin();
    *to++ = bracket;
    m_atStart = false;
    m_afterKey = false;
    return handOver(to);
}

bool JSONPrinterImpl::word(std::string_view text)
{
    return handOver(JSONWriter::putShort(separate(), text));
}

bool JSONPrinterImpl::printObjectBegin()
{
    return open('{');
}

bool JSONPrinterImpl::printObjectEnd()
{
    return close('}');
}

bool JSONPrinterImpl::printKey(Vontal::u8string const & key)
{
    char * to = m_writer.putString(separate(), key);
    *to++ = ':';
    m_afterKey = true;
    return handOver(to);
}

bool JSONPrinterImpl::printString(Vontal::u8string const & text)
{
    return handOver(m_writer.putString(separate(), text));
}

bool JSONPrinterImpl::printNumber(Vontal::u8string const & digits)
{
    return handOver(m_writer.putText(separate(), digits));
}

bool JSONPrinterImpl::printInt(int value)
{
    return handOver(JSONWriter::putNumber(separate(), value));
}

bool JSONPrinterImpl::printNull()
{
    return word("null");
}

bool JSONPrinterImpl::printBool(bool value)
{
    return word(value ? "true" : "false");
}

bool JSONPrinterImpl::printArrayBegin()
{
    return open('[');
}

bool JSONPrinterImpl::printArrayEnd()
{
    return close(']');
}

bool JSONPrinterImpl::printItem(Item * item)
{
    if (!TreePrinter::isPrintable(item))
        return false;
    TreePrinter tree(m_writer);
    char * to = separate();
    bool isWhole = false;
    try
    {
        isWhole = tree.print(*item, to);
    }
    catch (...)
    {
        m_atStart = tree.stoppedWithoutComma();
        handOverQuietly(to);
        throw;
    }
    m_atStart = !isWhole && tree.stoppedWithoutComma();
    handOver(to);
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
