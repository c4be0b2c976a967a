#include "VontalBase/platform/posix/xmlformatting.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/xmlparsing.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <algorithm>

namespace qvplatform
{

namespace
{

/// Whether white space in an element has no meaning but to look well.
bool canBeIndented(const xmlNode * element) noexcept
{
    const xmlAttr * const space = findAttribute(element, "xml:space");
    if (space != nullptr && contentOf(reinterpret_cast<const xmlNode *>(space)) == "preserve")
        return false;
    bool hasOther = false;
    for (const xmlNode * child = element->children; child != nullptr; child = child->next)
    {
        if (child->type == XML_CDATA_SECTION_NODE)
            return false;
        if (child->type == XML_TEXT_NODE && !isBlankText(contentOf(child)))
            return false;
        hasOther = hasOther || child->type != XML_TEXT_NODE;
    }
    return hasOther;
}

/// The white space in front of a child that is that many levels deep.
std::string lineStart(int level)
{
    std::string text(1, '\n');
    text.append(static_cast<std::size_t>(std::clamp(level, 0, greatestIndentation)), '\t');
    return text;
}

/// Makes what is between two children a single text. `next` is the later child, or null at the end.
/// @param first the first text between them, if there is one.
bool setGap(xmlNode * parent, xmlNode * first, xmlNode * next, const std::string & text) noexcept
{
    if (first == next)
    {
        xmlNode * const made = Tree::of(parent).makeText(XML_TEXT_NODE, text);
        if (made == nullptr)
            return false;
        link(parent, made, next);
        return true;
    }
    while (first->next != next)
    {
        if (!detach(first->next))
            return false;
    }
    return contentOf(first) == text || setContent(first, text);
}

bool indentChildren(xmlNode * parent, int level)
{
    const std::string between = lineStart(level);
    for (xmlNode * child = parent->children;;)
    {
        xmlNode * const first = child;
        while (child != nullptr && child->type == XML_TEXT_NODE)
            child = child->next;
        if (!setGap(parent, first, child, child != nullptr ? between : lineStart(level - 1)))
            return false;
        if (child == nullptr)
            return true;
        child = child->next;
    }
}

bool indentBelow(xmlNode * root)
{
    int level = 1;
    for (xmlNode * node = root;;)
    {
        if (node->type == XML_ELEMENT_NODE && canBeIndented(node))
        {
            if (!indentChildren(node, level))
                return false;
            node = node->children;
            ++level;
            continue;
        }
        while (node != root && node->next == nullptr)
        {
            node = node->parent;
            --level;
        }
        if (node == root)
            return true;
        node = node->next;
    }
}

bool setDeclaration(Tree & tree, const XmlFormat & format)
{
    xmlNode * const first = tree.document()->children;
    const bool hasOne = first != nullptr && isDeclaration(first);
    if (format.omitsDeclaration)
        return !hasOne || detach(first);
    const std::string text = textOf({"1.0", format.encoding, format.isStandalone ? "yes" : "no"});
    if (hasOne)
        return contentOf(first) == text || setContent(first, text);
    const xmlChar * const target = tree.intern("xml");
    xmlNode * const made = target != nullptr ? tree.makeInstruction(target, text) : nullptr;
    if (made == nullptr)
        return false;
    link(tree.top(), made, first);
    return true;
}

} // namespace

HRESULT formatTree(Tree & tree, const XmlFormat & format)
{
    xmlNode * const root = tree.documentElement();
    if (root == nullptr)
        return notWellFormed;
    if (gateFails("xml formatting"))
        return E_OUTOFMEMORY;
    if (format.indents && !indentBelow(root))
        return E_OUTOFMEMORY;
    return setDeclaration(tree, format) ? S_OK : E_OUTOFMEMORY;
}

} // namespace qvplatform
