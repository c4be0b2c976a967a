#include "VontalBase/json/JSONTokens.h"

#include "VontalBase/text/numberscan.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/text/utfcharacters.h"

namespace qvjson
{

namespace
{

/// The value of a hexadecimal digit, or 16 for anything else.
constexpr unsigned int hexValue(unsigned char byte) noexcept
{
    if (Vontal::isDecimalDigit(byte))
        return byte - static_cast<unsigned int>('0');
    const unsigned int letter = byte | 0x20U;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : 16;
}

} // namespace

/// From the point on.
JSONTokens::Place JSONTokens::fraction(Place p)
{
    ++p;
    if (p == m_end)
        return endWithin();
    if (!Vontal::isDecimalDigit(*p))
        return refuse();
    p = skipDigits(p);
    if (p != m_end && (*p | 0x20) == 'e')
        return exponent(p);
    m_pending = Pending::Real;
    return p;
}

/// From the letter on.
JSONTokens::Place JSONTokens::exponent(Place p)
{
    ++p;
    if (p != m_end && (*p == '+' || *p == '-'))
        ++p;
    if (p == m_end)
        return endWithin();
    if (!Vontal::isDecimalDigit(*p))
        return refuse();
    p = skipDigits(p);
    // Directly behind an exponent a comment is any odd byte: the number is not delivered before.
    if (p != m_end && (*p == '/' || *p == '#'))
        return refuse();
    m_pending = Pending::Real;
    return p;
}

JSONTokens::Place JSONTokens::longString(Place p)
{
    p = ordinaryBytes(p);
    while (p != nullptr && *p != '"')
    {
        p = *p == '\\' ? escape(p + 1) : refuse();
        if (p != nullptr)
            p = ordinaryBytes(p);
    }
    return p == nullptr ? p : p + 1;
}

/// Copies bytes up to a quote, a backslash or a control character, which is there, and checks the form of
/// UTF-8.
JSONTokens::Place JSONTokens::ordinaryBytes(Place p)
{
    unsigned int due = 0;
    while (true)
    {
        const StringBlock block(p, left(p));
        block.store(m_text.end());
        const unsigned int count = block.ordinaryBytes();
        const bool isEnd = count == left(p);
        // The byte behind the ordinary ones breaks the form of a character that it cuts; the end does not.
        if (!block.hasForm(isEnd ? count : count + 1, due))
            return refuse();
        m_text.advance(count);
        p += count;
        if (!m_text.restoreSlack())
            return refuse();
        if (isEnd)
            return endWithin();
        if (count != StringBlock::size)
            return p;
    }
}

/// From behind the backslash on.
JSONTokens::Place JSONTokens::escape(Place p)
{
    if (p == m_end)
        return endWithin();
    switch (*p)
    {
    case '"':
    case '\\':
    case '/':
        m_text.push(*p);
        break;
    case 'b':
        m_text.push('\b');
        break;
    case 'f':
        m_text.push('\f');
        break;
    case 'n':
        m_text.push('\n');
        break;
    case 'r':
        m_text.push('\r');
        break;
    case 't':
        m_text.push('\t');
        break;
    case 'u':
        return unicodeEscape(p + 1);
    default:
        return refuse();
    }
    return goOn(p + 1, m_text.restoreSlack());
}

/// Reads four hexadecimal digits.
JSONTokens::Place JSONTokens::hexUnit(Place p, unsigned int & unit)
{
    unit = 0;
    for (int i = 0; i < 4; ++i, ++p)
    {
        if (p == m_end)
            return endWithin();
        const unsigned int digit = hexValue(*p);
        if (digit > 15)
            return refuse();
        unit = unit << 4 | digit;
    }
    return p;
}

/// Reads what stands behind `\u`: one unit, or the two units of a surrogate pair.
JSONTokens::Place JSONTokens::unicodeEscape(Place p)
{
    unsigned int unit = 0;
    p = hexUnit(p, unit);
    if (p == nullptr)
        return p;
    if (Vontal::isLowSurrogate(unit))
        return refuse();
    if (Vontal::isHighSurrogate(unit))
    {
        for (const unsigned char expected : {'\\', 'u'})
        {
            if (p == m_end)
                return endWithin();
            if (*p++ != expected)
                return refuse();
        }
        unsigned int low = 0;
        p = hexUnit(p, low);
        if (p == nullptr)
            return p;
        if (!Vontal::isLowSurrogate(low))
            return refuse();
        unit = 0x10000 + ((unit & 0x3FFU) << 10) + (low & 0x3FFU);
    }
    m_text.advance(Vontal::encodeUtf8(unit, m_text.end()));
    return goOn(p, m_text.restoreSlack());
}

} // namespace qvjson
