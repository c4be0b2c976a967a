/// @internal
/// @file
/// Text on its way into the encoding of a document.
#pragma once

#include <string>
#include <string_view>

namespace qvplatform
{

/// Appends UTF-8 text to bytes in another encoding, or in UTF-8.
class XmlEncoder
{
public:
    explicit XmlEncoder(std::string & out) noexcept : m_out(out)
    {
    }
    XmlEncoder(const XmlEncoder &) = delete;
    XmlEncoder & operator=(const XmlEncoder &) = delete;
    ~XmlEncoder();

    /// To be called at most once, and first: takes the encoding of a name. UTF-8 is the one without it.
    /// @return false where there is none of the name that a document can be in.
    bool open(const std::string & name);

    /// Appends text of which nothing may be replaced.
    /// @return false where a character is not in the encoding.
    bool appendMarkup(std::string_view text);
    /// Appends text in which a character that is not in the encoding is replaced by a reference.
    bool appendContent(std::string_view text);
    /// To be called at the end.
    bool finish();

private:
    bool convert(std::string_view text, bool mayRefer);

    std::string & m_out;
    /// What iconv has given; null for UTF-8.
    void * m_converter = nullptr;
};

} // namespace qvplatform
