#include "VontalBase/text/AStringBuilder.h"

#include "VontalBase/text/Decimal.h"
#include "VontalBase/text/u8string.h"

namespace Vontal
{

namespace
{

template <class Int>
void appendDecimal(std::wstring & out, Int value)
{
    const Decimal decimal(value);
    out.append(decimal.text().begin(), decimal.text().end());
}

} // namespace

AStringBuilder & AStringBuilder::append(const std::wstring & text)
{
    return append(text.c_str());
}

AStringBuilder & AStringBuilder::append(const wchar_t * text)
{
    m_text.append(text);
    return *this;
}

AStringBuilder & AStringBuilder::append(const u8string & text)
{
    m_text.append(text.toAstring());
    return *this;
}

AStringBuilder & AStringBuilder::append(int value)
{
    appendDecimal(m_text, value);
    return *this;
}

AStringBuilder & AStringBuilder::append(unsigned int value)
{
    appendDecimal(m_text, value);
    return *this;
}

AStringBuilder & AStringBuilder::appendEndl()
{
    m_text.push_back(L'\n');
    return *this;
}

} // namespace Vontal
