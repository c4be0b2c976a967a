#include "VontalBase/platform/posix/xmlwriting.h"

#include "VontalBase/platform/posix/xmlencoder.h"
#include "VontalBase/platform/posix/xmlparsing.h"
#include "VontalBase/platform/posix/xmlscopes.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qvplatform
{

namespace
{

/// Where a text stands, which decides what of it must be written as a reference.
enum class Context
{
    Element,
    Attribute,
    /// Nothing can be.
    Raw
};

/// What is written for a byte; null for the byte itself.
const char * replacementFor(char c, Context context) noexcept
{
    if (context == Context::Raw)
        return nullptr;
    const bool isAttribute = context == Context::Attribute;
    switch (c)
    {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r':
        return "&#13;";
    case '"':
        return isAttribute ? "&quot;" : nullptr;
    case '\t':
        return isAttribute ? "&#9;" : nullptr;
    case '\n':
        return isAttribute ? "&#10;" : nullptr;
    default:
        return nullptr;
    }
}

/// Writes nodes one after the other, without going down the stack with them.
class Writer
{
public:
    explicit Writer(XmlEncoder & out) noexcept : m_out(out)
    {
    }

    /// A node with all below it.
    HRESULT write(const xmlNode * top, bool checksPrefixes)
    {
        m_checksPrefixes = checksPrefixes;
        for (const xmlNode * node = top;;)
        {
            open(node);
            if (FAILED(m_result))
                return m_result;
            if (node->type == XML_ELEMENT_NODE && node->children != nullptr)
            {
                node = node->children;
                continue;
            }
            if (node->type == XML_ELEMENT_NODE)
                m_scopes.leave(m_depth--);
            while (node != top && node->next == nullptr)
            {
                node = node->parent;
                close(node);
            }
            if (node == top)
                return m_result;
            node = node->next;
        }
    }

    void markup(std::string_view text)
    {
        if (!m_out.appendMarkup(text))
            m_result = cannotBeWritten;
    }

    [[nodiscard]] HRESULT result() const noexcept
    {
        return m_result;
    }

private:
    void open(const xmlNode * node)
    {
        switch (node->type)
        {
        case XML_ELEMENT_NODE:
            openElement(node);
            break;
        case XML_TEXT_NODE:
            text(contentOf(node), Context::Element);
            break;
        case XML_CDATA_SECTION_NODE:
            enclosed("<![CDATA[", contentOf(node), "]]>");
            break;
        case XML_COMMENT_NODE:
            comment(contentOf(node));
            break;
        case XML_PI_NODE:
            instruction(node);
            break;
        case XML_ATTRIBUTE_NODE:
            attribute(reinterpret_cast<const xmlAttr *>(node));
            break;
        default:
            m_result = E_UNEXPECTED;
            break;
        }
    }

    void openElement(const xmlNode * node)
    {
        ++m_depth;
        if (m_checksPrefixes)
            checkPrefixes(node);
        markup("<");
        markup(viewOf(node->name));
        for (const xmlAttr * own = node->properties; own != nullptr; own = own->next)
        {
            markup(" ");
            attribute(own);
        }
        markup(node->children != nullptr ? ">" : "/>");
    }

    void close(const xmlNode * node)
    {
        m_scopes.leave(m_depth--);
        markup("</");
        markup(viewOf(node->name));
        markup(">");
    }

    void attribute(const xmlAttr * own)
    {
        markup(viewOf(own->name));
        markup("=\"");
        text(own->children != nullptr ? viewOf(own->children->content) : std::string_view(),
            Context::Attribute);
        markup("\"");
    }

    void comment(std::string_view content)
    {
        if (content.find("--") != std::string_view::npos || content.ends_with('-'))
            m_result = cannotBeWritten;
        enclosed("<!--", content, "-->");
    }

    void instruction(const xmlNode * node)
    {
        const std::string_view target = viewOf(node->name);
        const bool isReserved = target.size() == 3 && (target[0] | 0x20) == 'x' &&
                                (target[1] | 0x20) == 'm' && (target[2] | 0x20) == 'l';
        if (isReserved)
            m_result = cannotBeWritten;
        markup("<?");
        markup(target);
        const std::string_view content = contentOf(node);
        if (!content.empty())
            markup(" ");
        enclosed("", content, "?>");
    }

    /// What must not contain its own end, and holds no references.
    void enclosed(std::string_view start, std::string_view content, std::string_view end)
    {
        if (content.find(end) != std::string_view::npos)
            m_result = cannotBeWritten;
        markup(start);
        text(content, Context::Raw);
        markup(end);
    }

    void text(std::string_view content, Context context)
    {
        std::size_t done = 0;
        for (std::size_t i = 0; i < content.size();)
        {
            const Character character = characterAt(content.substr(i));
            if (!isXmlCharacter(character.codePoint))
                m_result = cannotBeWritten;
            const char * const replacement = replacementFor(content[i], context);
            if (replacement != nullptr)
            {
                run(content.substr(done, i - done), context);
                markup(replacement);
                done = i + character.length;
            }
            i += character.length;
        }
        run(content.substr(done), context);
    }

    void run(std::string_view content, Context context)
    {
        if (context == Context::Raw)
            markup(content);
        else if (!content.empty() && !m_out.appendContent(content))
            m_result = cannotBeWritten;
    }

    /// What a prefix means here, by its place in the dictionary; null where it is not declared.
    const xmlChar * meaningOf(const xmlNode * node, std::string_view prefix)
    {
        return m_scopes.find(internIn(node, prefix));
    }

    /// Whoever reads it will refuse a prefix that is not declared, and two attributes of one name.
    void checkPrefixes(const xmlNode * node)
    {
        bool hasPrefixes = false;
        for (const xmlAttr * own = node->properties; own != nullptr; own = own->next)
        {
            const std::string_view name = viewOf(own->name);
            hasPrefixes = hasPrefixes || name.find(':') != std::string_view::npos;
            if (!name.starts_with("xmlns:"))
                continue;
            const std::string_view uri = own->children != nullptr ? viewOf(own->children->content) : "";
            if (!isAllowedDeclaration(name.substr(6), uri))
                m_result = undeclaredPrefix;
            m_scopes.declare(internIn(node, name.substr(6)), internIn(node, uri), m_depth);
        }
        checkName(node, viewOf(node->name), false);
        if (hasPrefixes)
            checkAttributes(node);
    }

    void checkName(const xmlNode * node, std::string_view name, bool isAttribute)
    {
        const std::string_view prefix = prefixOf(name);
        if (prefix.empty() || prefix == "xml" || (isAttribute && prefix == "xmlns"))
            return;
        if (meaningOf(node, prefix) == nullptr)
            m_result = undeclaredPrefix;
    }

    void checkAttributes(const xmlNode * node)
    {
        std::vector<std::pair<const xmlChar *, std::string_view>> names;
        for (const xmlAttr * own = node->properties; own != nullptr; own = own->next)
        {
            const std::string_view name = viewOf(own->name);
            const std::string_view prefix = prefixOf(name);
            checkName(node, name, true);
            if (!prefix.empty() && prefix != "xmlns" && prefix != "xml")
                names.emplace_back(meaningOf(node, prefix), baseOf(name));
        }
        std::sort(names.begin(), names.end());
        if (std::adjacent_find(names.begin(), names.end()) != names.end())
            m_result = cannotBeWritten;
    }

    XmlEncoder & m_out;
    HRESULT m_result = S_OK;
    bool m_checksPrefixes = false;
    int m_depth = 0;
    PrefixScopes<const xmlChar *> m_scopes;
};

/// Writes all of a document behind what its declaration says.
HRESULT writeContent(const xmlDoc * document, Writer & writer)
{
    for (const xmlNode * node = document->children; node != nullptr; node = node->next)
    {
        if (node == document->children && isDeclaration(node))
            continue;
        const HRESULT result = writer.write(node, true);
        if (FAILED(result))
            return result;
        writer.markup("\n");
    }
    return writer.result();
}

HRESULT declarationOf(const xmlDoc * document, Declaration & declaration)
{
    const xmlNode * const first = document->children;
    if (first == nullptr || !isDeclaration(first))
        return S_FALSE;
    return readDeclaration(contentOf(first), declaration) ? S_OK : cannotBeWritten;
}

HRESULT writeAll(const xmlDoc * document, bool tellsEncoding, std::string & out)
{
    Declaration declaration;
    const HRESULT declared = declarationOf(document, declaration);
    if (FAILED(declared))
        return declared;
    XmlEncoder encoder(out);
    if (tellsEncoding && !declaration.encoding.empty() && !encoder.open(declaration.encoding))
        return cannotBeWritten;
    if (!tellsEncoding)
        declaration.encoding.clear();
    Writer writer(encoder);
    if (declared == S_OK)
        writer.markup("<?xml " + textOf(declaration) + "?>\n");
    const HRESULT result = writeContent(document, writer);
    if (FAILED(result))
        return result;
    return encoder.finish() ? S_OK : cannotBeWritten;
}

} // namespace

HRESULT writeNode(const xmlNode * node, std::string & out)
{
    if (node->type == XML_DOCUMENT_NODE)
        return writeAll(reinterpret_cast<const xmlDoc *>(node), false, out);
    XmlEncoder encoder(out);
    Writer writer(encoder);
    if (isDeclaration(node))
    {
        Declaration declaration;
        if (!readDeclaration(contentOf(node), declaration))
            return cannotBeWritten;
        declaration.encoding.clear();
        writer.markup("<?xml " + textOf(declaration) + "?>");
        return writer.result();
    }
    return writer.write(node, false);
}

HRESULT writeDocument(const Tree & tree, std::string & out)
{
    return writeAll(tree.document(), true, out);
}

} // namespace qvplatform
