#include "VontalBase/platform/posix/xmlencoder.h"

#include "VontalBase/platform/posix/xmltext.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <iconv.h>

namespace qvplatform
{

namespace
{

std::string upperCase(const std::string & name)
{
    std::string upper = name;
    for (char & c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return upper;
}

} // namespace

XmlEncoder::~XmlEncoder()
{
    if (m_converter != nullptr)
        iconv_close(m_converter);
}

bool XmlEncoder::open(const std::string & name)
{
    const std::string known = upperCase(name);
    if (known == "UTF-8" || known == "UTF8")
        return true;
    // Of the encodings of two bytes those are read again which begin with a mark.
    const bool isWide =
        known == "UTF-16" || known == "UTF-16LE" || known == "ISO-10646-UCS-2" || known == "UCS-2";
    const bool isWideBackwards = known == "UTF-16BE";
    const char * const used = isWide ? "UTF-16LE" : isWideBackwards ? "UTF-16BE" : name.c_str();
    iconv_t converter = iconv_open(used, "UTF-8");
    if (converter == reinterpret_cast<iconv_t>(-1))
        return false;
    m_converter = converter;
    if (isWide)
        m_out += "\xFF\xFE";
    else if (isWideBackwards)
        m_out += "\xFE\xFF";
    if (isWide || isWideBackwards)
        return true;
    // A reader finds the name of the encoding in what looks like ASCII.
    const std::size_t size = m_out.size();
    constexpr std::string_view opening = "<?xml version=\"1.0\" encoding=\"?>";
    const bool isLikeAscii = convert(opening, false) && std::string_view(m_out).substr(size) == opening;
    m_out.resize(size);
    return isLikeAscii;
}

bool XmlEncoder::convert(std::string_view text, bool mayRefer)
{
    char * from = const_cast<char *>(text.data()); // iconv does not write to it.
    std::size_t left = text.size();
    char buffer[4096];
    while (left != 0)
    {
        char * to = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t result = iconv(m_converter, &from, &left, &to, &room);
        const int error = errno;
        m_out.append(buffer, static_cast<std::size_t>(to - buffer));
        if (result != static_cast<std::size_t>(-1) || error == E2BIG)
            continue;
        if (error != EILSEQ || !mayRefer)
            return false;
        const Character character = characterAt({from, left});
        char reference[16] = "&#";
        char * const end = std::to_chars(
            reference + 2, reference + sizeof reference - 1, static_cast<std::uint32_t>(character.codePoint))
                               .ptr;
        *end = ';';
        if (!convert({reference, static_cast<std::size_t>(end + 1 - reference)}, false))
            return false;
        from += character.length;
        left -= character.length;
    }
    return true;
}

bool XmlEncoder::appendMarkup(std::string_view text)
{
    if (m_converter != nullptr)
        return convert(text, false);
    m_out += text;
    return true;
}

bool XmlEncoder::appendContent(std::string_view text)
{
    if (m_converter != nullptr)
        return convert(text, true);
    m_out += text;
    return true;
}

bool XmlEncoder::finish()
{
    if (m_converter == nullptr)
        return true;
    char buffer[64];
    char * to = buffer;
    std::size_t room = sizeof buffer;
    if (iconv(m_converter, nullptr, nullptr, &to, &room) == static_cast<std::size_t>(-1))
        return false;
    m_out.append(buffer, static_cast<std::size_t>(to - buffer));
    return true;
}

} // namespace qvplatform
