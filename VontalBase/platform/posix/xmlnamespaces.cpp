#include "VontalBase/platform/posix/xmlnamespaces.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/xmlscopes.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <algorithm>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace qvplatform
{

namespace
{

constexpr std::string_view stylesheetUri = "http://www.w3.org/1999/XSL/Transform";

/// For what gives null where memory is short.
template <class Pointer>
Pointer needed(Pointer pointer)
{
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}

bool isWritable(std::string_view text) noexcept
{
    while (!text.empty())
    {
        const Character character = characterAt(text);
        if (!isXmlCharacter(character.codePoint))
            return false;
        text.remove_prefix(character.length);
    }
    return true;
}

int lengthOf(std::string_view text)
{
    if (text.size() > std::numeric_limits<int>::max() / 2)
        throw std::bad_alloc();
    return static_cast<int>(text.size());
}

class Exporter
{
public:
    Exporter(xmlDoc * document, ExportFacts & facts) noexcept
        : m_document(document), m_parent(reinterpret_cast<xmlNode *>(document)), m_facts(facts)
    {
    }

    /// A node with all below it.
    bool copy(const xmlNode * top)
    {
        for (const xmlNode * node = top;;)
        {
            if (!copyOne(node))
                return false;
            if (node->type == XML_ELEMENT_NODE && node->children != nullptr)
            {
                node = node->children;
                continue;
            }
            if (node->type == XML_ELEMENT_NODE)
                leave();
            while (node != top && node->next == nullptr)
            {
                node = node->parent;
                leave();
            }
            if (node == top)
                return true;
            node = node->next;
        }
    }

    /// Declares what stands above an element that is copied alone.
    void declareAbove(const xmlNode * element)
    {
        // The nearest comes first, and its declarations hold.
        for (const xmlNode * node = element->parent; node != nullptr; node = node->parent)
            m_above.push_back(node);
    }

private:
    bool copyOne(const xmlNode * node)
    {
        ++m_facts.nodes;
        const std::string_view content =
            node->type == XML_ELEMENT_NODE ? std::string_view() : contentOf(node);
        if (!isWritable(content))
            return false;
        switch (node->type)
        {
        case XML_ELEMENT_NODE:
            return copyElement(node);
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
            copyText(content);
            return true;
        case XML_COMMENT_NODE:
            append(needed(xmlNewDocComment(m_document, xmlText(std::string(content).c_str()))));
            return true;
        case XML_PI_NODE:
            append(needed(xmlNewDocPI(m_document, node->name, xmlText(std::string(content).c_str()))));
            return true;
        default:
            return true;
        }
    }

    void append(xmlNode * node) noexcept
    {
        node->parent = m_parent;
        node->prev = m_parent->last;
        (m_parent->last != nullptr ? m_parent->last->next : m_parent->children) = node;
        m_parent->last = node;
    }

    void copyText(std::string_view text)
    {
        if (text.empty())
            return;
        xmlNode * const last = m_parent->last;
        if (last == nullptr || last->type != XML_TEXT_NODE)
            append(needed(xmlNewDocTextLen(m_document, xmlText(text.data()), lengthOf(text))));
        else if (xmlTextConcat(last, xmlText(text.data()), lengthOf(text)) != 0)
            throw std::bad_alloc();
    }

    void declare(const xmlNode * node, xmlNode * copy)
    {
        for (const xmlAttr * own = node->properties; own != nullptr; own = own->next)
        {
            const std::optional<std::string_view> declared = declaredPrefix(viewOf(own->name));
            if (!declared || *declared == "xml")
                continue;
            const std::string prefix(*declared);
            const std::string uri(
                own->children != nullptr ? viewOf(own->children->content) : std::string_view());
            xmlNs * const meaning =
                xmlNewNs(copy, xmlText(uri.c_str()), prefix.empty() ? nullptr : xmlText(prefix.c_str()));
            // Null also where an element that is copied alone has the prefix from above, too.
            if (meaning != nullptr)
                m_scopes.declare(internIn(node, prefix), meaning, m_depth);
        }
    }

    /// @param meaning null for no namespace at all.
    /// @return false for a prefix that is not declared.
    bool find(const xmlNode * node, std::string_view prefix, xmlNode * copy, xmlNs *& meaning)
    {
        meaning = prefix == "xml" ? xmlSearchNs(m_document, copy, xmlText("xml"))
                                  : m_scopes.find(internIn(node, prefix));
        // A declaration of an empty URI takes the one above it back.
        if (meaning != nullptr && viewOf(meaning->href).empty())
            meaning = nullptr;
        return meaning != nullptr || prefix.empty();
    }

    bool copyElement(const xmlNode * node)
    {
        const std::string_view name = viewOf(node->name);
        const std::string base(baseOf(name));
        xmlNode * const copy = needed(xmlNewDocNode(m_document, nullptr, xmlText(base.c_str()), nullptr));
        append(copy);
        m_parent = copy;
        m_facts.depth = std::max(m_facts.depth, ++m_depth);
        declare(node, copy);
        for (const xmlNode * above : m_above)
        {
            if (above->type == XML_ELEMENT_NODE)
                declareMissing(above, copy);
        }
        m_above.clear();
        if (!find(node, prefixOf(name), copy, copy->ns))
            return false;
        const bool isInstruction = copy->ns != nullptr && viewOf(copy->ns->href) == stylesheetUri;
        m_facts.includesOthers =
            m_facts.includesOthers || (isInstruction && (base == "import" || base == "include"));
        return copyAttributes(node, copy);
    }

    void declareMissing(const xmlNode * above, xmlNode * copy)
    {
        for (const xmlAttr * own = above->properties; own != nullptr; own = own->next)
        {
            const std::optional<std::string_view> prefix = declaredPrefix(viewOf(own->name));
            if (prefix && m_scopes.find(internIn(above, *prefix)) == nullptr)
                declare(above, copy);
        }
    }

    bool copyAttributes(const xmlNode * node, xmlNode * copy)
    {
        xmlAttr * last = nullptr;
        for (const xmlAttr * own = node->properties; own != nullptr; own = own->next)
        {
            const std::string_view name = viewOf(own->name);
            const std::string_view value = own->children != nullptr ? viewOf(own->children->content) : "";
            if (declaredPrefix(name))
                continue;
            xmlNs * meaning = nullptr;
            if (!isWritable(value) ||
                (name.find(':') != std::string_view::npos && !find(node, prefixOf(name), copy, meaning)))
                return false;
            // Made without its element, which would be searched for its last attribute.
            xmlAttr * const made =
                needed(xmlNewDocProp(m_document, xmlText(std::string(baseOf(name)).c_str()), nullptr));
            linkBehind(copy, last, made);
            last = made;
            made->ns = meaning;
            made->children = needed(xmlNewDocTextLen(m_document, xmlText(value.data()), lengthOf(value)));
            made->children->parent = reinterpret_cast<xmlNode *>(made);
            made->last = made->children;
        }
        return true;
    }

    void leave() noexcept
    {
        m_scopes.leave(m_depth);
        --m_depth;
        m_parent = m_parent->parent;
    }

    xmlDoc * m_document;
    xmlNode * m_parent;
    ExportFacts & m_facts;
    int m_depth = 0;
    std::vector<const xmlNode *> m_above;
    PrefixScopes<xmlNs *> m_scopes;
};

class Importer
{
public:
    explicit Importer(Tree & tree) noexcept : m_tree(tree), m_parent(tree.top())
    {
    }

    bool copy(const xmlDoc * document)
    {
        const xmlNode * node = document->children;
        while (node != nullptr)
        {
            if (!copyOne(node))
                return false;
            if (node->type == XML_ELEMENT_NODE && node->children != nullptr)
            {
                node = node->children;
                continue;
            }
            if (node->type == XML_ELEMENT_NODE)
                leave();
            while (node->next == nullptr && node->parent != nullptr && node->parent->type == XML_ELEMENT_NODE)
            {
                node = node->parent;
                leave();
            }
            node = node->next;
        }
        return m_tree.documentElement() != nullptr;
    }

private:
    bool copyOne(const xmlNode * node)
    {
        const bool isAtTop = m_parent == m_tree.top();
        switch (node->type)
        {
        case XML_ELEMENT_NODE:
            if (isAtTop && m_tree.documentElement() != nullptr)
                return false;
            copyElement(node);
            return true;
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
            if (isAtTop)
                return isBlankText(viewOf(node->content));
            append(m_tree.makeText(node->type, viewOf(node->content)));
            return true;
        case XML_COMMENT_NODE:
            append(m_tree.makeText(XML_COMMENT_NODE, viewOf(node->content)));
            return true;
        case XML_PI_NODE:
            append(m_tree.makeInstruction(needed(m_tree.intern(viewOf(node->name))), viewOf(node->content)));
            return true;
        default:
            return true;
        }
    }

    void append(xmlNode * node)
    {
        link(m_parent, needed(node), nullptr);
    }

    const xmlChar * nameOf(const xmlNs * meaning, const xmlChar * base)
    {
        std::string name;
        if (meaning != nullptr && meaning->prefix != nullptr)
            name = std::string(viewOf(meaning->prefix)) + ':';
        name += viewOf(base);
        return needed(m_tree.intern(name));
    }

    void addAttribute(const xmlChar * name, std::string_view value, xmlAttr *& last)
    {
        xmlAttr * const made = needed(m_tree.makeAttribute(name));
        linkBehind(m_parent, last, made);
        last = made;
        if (!value.empty() && !setContent(asNode(made), value))
            throw std::bad_alloc();
    }

    void copyElement(const xmlNode * node)
    {
        xmlNode * const made = needed(m_tree.makeElement(nameOf(node->ns, node->name)));
        link(m_parent, made, nullptr);
        m_parent = made;
        xmlAttr * last = nullptr;
        for (const xmlNs * own = node->nsDef; own != nullptr; own = own->next)
        {
            const std::string name =
                own->prefix != nullptr ? "xmlns:" + std::string(viewOf(own->prefix)) : std::string("xmlns");
            addAttribute(needed(m_tree.intern(name)), viewOf(own->href), last);
        }
        for (const xmlAttr * own = node->properties; own != nullptr; own = own->next)
        {
            std::string value;
            for (const xmlNode * part = own->children; part != nullptr; part = part->next)
                value += viewOf(part->content);
            addAttribute(nameOf(own->ns, own->name), value, last);
        }
    }

    void leave() noexcept
    {
        m_parent = m_parent->parent;
    }

    Tree & m_tree;
    xmlNode * m_parent;
};

} // namespace

HRESULT exportDocument(const xmlNode * top, XmlDocument & document, ExportFacts & facts)
{
    if (gateFails("xml export"))
        return E_OUTOFMEMORY;
    document.reset(needed(xmlNewDoc(xmlText("1.0"))));
    Exporter exporter(document.get(), facts);
    if (top->type == XML_ELEMENT_NODE)
    {
        exporter.declareAbove(top);
        return exporter.copy(top) ? S_OK : E_FAIL;
    }
    if (top->type != XML_DOCUMENT_NODE)
        return E_FAIL;
    for (const xmlNode * node = top->children; node != nullptr; node = node->next)
    {
        if (!isDeclaration(node) && !exporter.copy(node))
            return E_FAIL;
    }
    return S_OK;
}

HRESULT importDocument(const xmlDoc * document, Tree & tree)
{
    return Importer(tree).copy(document) ? S_OK : E_FAIL;
}

} // namespace qvplatform
