#include "VontalBase/platform/posix/xmltext.h"

#include "VontalBase/text/utf.h"

#include <cstdint>
#include <limits>
#include <new>

namespace qvplatform
{

namespace
{

constexpr char32_t noCharacter = 0xFFFE;

bool isTail(char c) noexcept
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

std::uint32_t unitAt(const OLECHAR * string, std::size_t index) noexcept
{
    return static_cast<char32_t>(string[index]);
}

void writeUnits(std::string_view text, wchar_t * to, std::size_t room) noexcept
{
    wchar_t * const end = to + room;
    while (!text.empty() && to != end)
    {
        if (static_cast<unsigned char>(text.front()) < 0x80)
        {
            *to++ = static_cast<wchar_t>(text.front());
            text.remove_prefix(1);
            continue;
        }
        const Character character = characterAt(text);
        text.remove_prefix(character.length);
        if (character.codePoint < 0x10000)
        {
            *to++ = static_cast<wchar_t>(character.codePoint);
            continue;
        }
        if (end - to < 2)
            break;
        *to++ = static_cast<wchar_t>(0xD800 + ((character.codePoint - 0x10000) >> 10));
        *to++ = static_cast<wchar_t>(0xDC00 + ((character.codePoint - 0x10000) & 0x3FF));
    }
    // Only for bytes that were no characters.
    while (to != end)
        *to++ = L'\xFFFD';
}

bool isHigh(std::uint32_t unit) noexcept
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(std::uint32_t unit) noexcept
{
    return unit >= 0xDC00 && unit < 0xE000;
}

/// Ranges of the characters that begin a name, ASCII aside.
constexpr struct
{
    char32_t first;
    char32_t last;
} nameStarts[] = {{0xC0, 0xD6}, {0xD8, 0xF6}, {0xF8, 0x2FF}, {0x370, 0x37D}, {0x37F, 0x1FFF},
    {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF},
    {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};

bool startsName(char32_t c) noexcept
{
    if (c < 0x80)
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    for (const auto & range : nameStarts)
    {
        if (c >= range.first && c <= range.last)
            return true;
    }
    return false;
}

bool continuesName(char32_t c) noexcept
{
    return startsName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == 0xB7 ||
           (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

void skipBlanks(std::string_view & text) noexcept
{
    while (!text.empty() && isXmlBlank(text.front()))
        text.remove_prefix(1);
}

/// Takes `name = "value"` off the start of a text. What is in front must have ended in a blank.
bool takeField(std::string_view & text, std::string_view name, std::string & value)
{
    std::string_view rest = text;
    skipBlanks(rest);
    if (!rest.starts_with(name) || rest.size() == text.size())
        return false;
    rest.remove_prefix(name.size());
    skipBlanks(rest);
    if (!rest.starts_with('='))
        return false;
    rest.remove_prefix(1);
    skipBlanks(rest);
    if (!rest.starts_with('"') && !rest.starts_with('\''))
        return false;
    const std::size_t end = rest.find(rest.front(), 1);
    if (end == std::string_view::npos)
        return false;
    value = rest.substr(1, end - 1);
    text = rest.substr(end + 1);
    return true;
}

bool isEncodingName(std::string_view name) noexcept
{
    for (const char c : name)
    {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool isOther = (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.' || c == ':';
        if (!isLetter && !isOther)
            return false;
    }
    return !name.empty();
}

} // namespace

std::size_t countUnits(std::string_view text) noexcept
{
    std::size_t units = 0;
    for (const char c : text)
    {
        // One for each character, and one more for those of four bytes.
        units += isTail(c) ? 0U : 1U;
        units += static_cast<unsigned char>(c) >= 0xF0 ? 1U : 0U;
    }
    return units;
}

HRESULT giveString(std::string_view text, BSTR * string) noexcept
{
    if (string == nullptr)
        return E_INVALIDARG;
    *string = nullptr;
    const std::size_t units = countUnits(text);
    if (units > std::numeric_limits<UINT>::max())
        return E_OUTOFMEMORY;
    OLECHAR * const made = SysAllocStringLen(nullptr, static_cast<UINT>(units));
    if (made == nullptr)
        return E_OUTOFMEMORY;
    writeUnits(text, made, units);
    *string = made;
    return S_OK;
}

Bytes::Bytes(BSTR string) noexcept
{
    const std::size_t length = SysStringLen(string);
    // A unit takes up to three bytes, and one above 16 bits up to four.
    if (length >= sizeof m_inside / 4)
    {
        m_bytes = new (std::nothrow) char[length * 4 + 1];
        if (m_bytes == nullptr)
        {
            m_bytes = m_inside;
            m_inside[0] = 0;
            m_result = E_OUTOFMEMORY;
            return;
        }
    }
    char * to = m_bytes;
    for (std::size_t i = 0; i < length; ++i)
    {
        std::uint32_t unit = unitAt(string, i);
        if (unit == 0)
            m_result = E_INVALIDARG;
        if (isHigh(unit) && i + 1 < length && isLow(unitAt(string, i + 1)))
        {
            const std::uint32_t low = unitAt(string, i + 1);
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
            ++i;
        }
        to += Vontal::encodeUtf8(unit > 0x10FFFF ? 0xFFFD : unit, to);
    }
    *to = 0;
    m_length = static_cast<std::size_t>(to - m_bytes);
}

Bytes::~Bytes()
{
    if (m_bytes != m_inside)
        delete[] m_bytes;
}

Character characterAt(std::string_view text) noexcept
{
    const unsigned char first = static_cast<unsigned char>(text.front());
    if (first < 0x80)
        return {first, 1};
    unsigned int length = 0;
    char32_t codePoint = 0;
    if (first >= 0xC2 && first < 0xE0)
    {
        length = 2;
        codePoint = first & 0x1FU;
    }
    else if (first >= 0xE0 && first < 0xF0)
    {
        length = 3;
        codePoint = first & 0x0FU;
    }
    else if (first >= 0xF0 && first < 0xF5)
    {
        length = 4;
        codePoint = first & 0x07U;
    }
    if (length == 0 || text.size() < length)
        return {noCharacter, 1};
    for (unsigned int i = 1; i < length; ++i)
    {
        if (!isTail(text[i]))
            return {noCharacter, 1};
        codePoint = (codePoint << 6) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    return {codePoint, length};
}

bool isXmlCharacter(char32_t codePoint) noexcept
{
    if (codePoint < 0x20)
        return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    return codePoint < 0xD800 || (codePoint >= 0xE000 && codePoint <= 0xFFFD) ||
           (codePoint >= 0x10000 && codePoint <= 0x10FFFF);
}

bool isPlainName(std::string_view name) noexcept
{
    if (name.empty() || !startsName(characterAt(name).codePoint))
        return false;
    while (!name.empty())
    {
        const Character character = characterAt(name);
        if (!continuesName(character.codePoint))
            return false;
        name.remove_prefix(character.length);
    }
    return true;
}

bool isQualifiedName(std::string_view name) noexcept
{
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos)
        return isPlainName(name);
    return isPlainName(name.substr(0, colon)) && isPlainName(name.substr(colon + 1));
}

bool isBlankText(std::string_view text) noexcept
{
    for (const char c : text)
    {
        if (!isXmlBlank(c))
            return false;
    }
    return true;
}

bool isAllowedDeclaration(std::string_view prefix, std::string_view uri) noexcept
{
    const bool isXml = prefix == "xml";
    const bool isXmlUri = uri == "http://www.w3.org/XML/1998/namespace";
    return !uri.empty() && prefix != "xmlns" && isXml == isXmlUri && isPlainName(prefix);
}

bool readDeclaration(std::string_view text, Declaration & declaration)
{
    Declaration found;
    // So that the first field has a blank in front, too.
    const std::string whole = ' ' + std::string(text);
    std::string_view rest = whole;
    if (!takeField(rest, "version", found.version) || !found.version.starts_with("1.") ||
        found.version.size() < 3 || found.version.find_first_not_of("0123456789", 2) != std::string::npos)
        return false;
    if (takeField(rest, "encoding", found.encoding) && !isEncodingName(found.encoding))
        return false;
    if (takeField(rest, "standalone", found.standalone) && found.standalone != "yes" &&
        found.standalone != "no")
        return false;
    if (!isBlankText(rest))
        return false;
    declaration = found;
    return true;
}

std::string textOf(const Declaration & declaration)
{
    std::string text = "version=\"" + declaration.version + '"';
    if (!declaration.encoding.empty())
        text += " encoding=\"" + declaration.encoding + '"';
    if (!declaration.standalone.empty())
        text += " standalone=\"" + declaration.standalone + '"';
    return text;
}

} // namespace qvplatform
