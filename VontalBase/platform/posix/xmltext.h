/// @internal
/// @file
/// Texts of the XML service: between its strings of UTF-16 units and libxml2's of bytes.
///
/// The bytes are UTF-8, in which a unit that is half of no pair stands as a code point of its own, so that
/// every text comes back as it was set. Zeros cannot be held.
#pragma once

#include "VontalBase/platform/com.h"

#include <cstddef>
#include <libxml/xmlstring.h>
#include <optional>
#include <string>
#include <string_view>

namespace qvplatform
{

/// The bytes of a text.
inline std::string_view viewOf(const xmlChar * text) noexcept
{
    return text != nullptr ? std::string_view(reinterpret_cast<const char *>(text)) : std::string_view();
}

inline const xmlChar * xmlText(const char * text) noexcept
{
    return reinterpret_cast<const xmlChar *>(text);
}

/// How many UTF-16 units a text has.
std::size_t countUnits(std::string_view text) noexcept;

/// Gives the string of a text.
/// @return E_INVALIDARG for a null place, E_OUTOFMEMORY.
HRESULT giveString(std::string_view text, BSTR * string) noexcept;

/// The bytes of a string, within the object where they are few.
class Bytes
{
public:
    explicit Bytes(BSTR string) noexcept;
    Bytes(const Bytes &) = delete;
    Bytes & operator=(const Bytes &) = delete;
    ~Bytes();

    /// S_OK, or why there are none: E_OUTOFMEMORY, or E_INVALIDARG where the string holds a zero.
    [[nodiscard]] HRESULT result() const noexcept
    {
        return m_result;
    }
    [[nodiscard]] std::string_view view() const noexcept
    {
        return {m_bytes, m_length};
    }
    [[nodiscard]] const char * data() const noexcept
    {
        return m_bytes;
    }

private:
    char m_inside[256];
    char * m_bytes = m_inside;
    std::size_t m_length = 0;
    HRESULT m_result = S_OK;
};

/// A character as it is read from bytes.
struct Character
{
    char32_t codePoint;
    unsigned int length;
};

/// The character at the start of a text that is not empty. Bytes that are none count as U+FFFE, of length 1.
Character characterAt(std::string_view text) noexcept;

/// Whether XML can hold a character at all.
bool isXmlCharacter(char32_t codePoint) noexcept;

/// Whether a text is a name with at most one colon, which stands within.
bool isQualifiedName(std::string_view name) noexcept;

/// Whether a text is a name without a colon.
bool isPlainName(std::string_view name) noexcept;

/// What is in front of the colon of a name; empty without one.
inline std::string_view prefixOf(std::string_view name) noexcept
{
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

/// What is behind the colon of a name, all of it without one.
inline std::string_view baseOf(std::string_view name) noexcept
{
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// The prefix that an attribute of this name declares, which is empty for `xmlns`; none where it declares
/// nothing.
inline std::optional<std::string_view> declaredPrefix(std::string_view name) noexcept
{
    constexpr std::string_view start = "xmlns:";
    if (name.starts_with(start))
        return name.substr(start.size());
    return name == "xmlns" ? std::optional(std::string_view()) : std::nullopt;
}

inline bool isXmlBlank(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Whether a text is white space alone.
bool isBlankText(std::string_view text) noexcept;

/// Whether a prefix may be declared to stand for a URI.
bool isAllowedDeclaration(std::string_view prefix, std::string_view uri) noexcept;

/// What the declaration of a document says.
struct Declaration
{
    std::string version;
    /// Empty without one.
    std::string encoding;
    /// "yes", "no", or empty.
    std::string standalone;
};

/// Reads the inside of a declaration, such as ` version='1.0'`.
/// @return false for what is none.
bool readDeclaration(std::string_view text, Declaration & declaration);

/// The inside of a declaration, without a blank in front.
std::string textOf(const Declaration & declaration);

} // namespace qvplatform
