#include "VontalBase/platform/posix/xmltree.h"

#include "VontalBase/platform/blocks.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/xmlguard.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <libxml/dict.h>
#include <libxml/parserInternals.h>
#include <limits>
#include <memory>
#include <new>

namespace qvplatform
{

namespace
{

/// A copy of a text for libxml2 to free; null where memory is short.
xmlChar * copyText(std::string_view text) noexcept
{
    if (gateFails("xml text") || text.size() > std::numeric_limits<int>::max() / 2)
        return nullptr;
    // What is copied of null is null.
    if (text.empty())
        return xmlStrndup(xmlText(""), 0);
    return xmlStrndup(xmlText(text.data()), static_cast<int>(text.size()));
}

/// Whether a text lies within its node.
bool isInside(const xmlNode * node, const xmlChar * text) noexcept
{
    return static_cast<const void *>(text) == static_cast<const void *>(&node->properties);
}

template <class Node>
Node * allocateNode(xmlElementType type, xmlDoc * document) noexcept
{
    if (gateFails("xml node"))
        return nullptr;
    Node * const node = static_cast<Node *>(xmlMalloc(sizeof(Node)));
    if (node == nullptr)
        return nullptr;
    std::memset(node, 0, sizeof(Node));
    node->type = type;
    node->doc = document;
    return node;
}

/// The object of a node, if it has one.
NodeData * dataOf(const xmlNode * node) noexcept
{
    return static_cast<NodeData *>(node->_private);
}

/// Does something with the object of each node of a subtree, attributes included.
/// @param function says whether to go on.
template <class Function>
void forEachObject(xmlNode * top, Function function) noexcept
{
    for (xmlNode * node = top; node != nullptr; node = nextInWalk(node, top))
    {
        NodeData * const own = dataOf(node);
        if (own != nullptr && !function(*own))
            return;
        if (node->type != XML_ELEMENT_NODE)
            continue;
        for (xmlAttr * attribute = node->properties; attribute != nullptr; attribute = attribute->next)
        {
            NodeData * const data = dataOf(asNode(attribute));
            if (data != nullptr && !function(*data))
                return;
        }
    }
}

bool hasObjects(xmlNode * top) noexcept
{
    bool has = false;
    forEachObject(top,
        [&has](NodeData &)
        {
            has = true;
            return false;
        });
    return has;
}

/// Ends a fragment other than the document in which no node has an object any more.
void endIfUnused(Fragment * fragment) noexcept
{
    if (fragment->objects != 0 || fragment->root == nullptr)
        return;
    freeNode(fragment->root);
    delete fragment;
}

} // namespace

Tree * Tree::make() noexcept
{
    startXmlLibrary();
    if (gateFails("xml tree"))
        return nullptr;
    Tree * const tree = new (std::nothrow) Tree;
    if (tree == nullptr)
        return nullptr;
    tree->m_attached.tree = tree;
    // Lists tell by the count whether what they remember still holds, even where their document has got
    // another tree.
    static std::atomic<std::uint64_t> trees{0};
    tree->changes = trees.fetch_add(1, std::memory_order_relaxed) << 40;
    tree->m_document = xmlNewDoc(nullptr);
    if (tree->m_document != nullptr)
        tree->m_document->dict = xmlDictCreate();
    if (tree->m_document == nullptr || tree->m_document->dict == nullptr)
    {
        delete tree;
        return nullptr;
    }
    tree->m_document->_private = tree;
    return tree;
}

Tree::~Tree()
{
    if (m_document != nullptr)
        xmlFreeDoc(m_document);
    while (m_chunks != nullptr)
    {
        Chunk * const next = m_chunks->next;
        if (m_chunks->size < leastBlock)
            ::operator delete(m_chunks);
        else
            giveBlock(m_chunks, m_chunks->size);
        m_chunks = next;
    }
}

xmlNode * Tree::documentElement() const noexcept
{
    xmlNode * node = m_document->children;
    while (node != nullptr && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

const xmlChar * Tree::intern(std::string_view name) noexcept
{
    if (gateFails("xml name") || name.size() > std::numeric_limits<int>::max() / 2)
        return nullptr;
    const char * const bytes = name.empty() ? "" : name.data();
    return xmlDictLookup(m_document->dict, xmlText(bytes), static_cast<int>(name.size()));
}

xmlNode * Tree::makeElement(const xmlChar * name) noexcept
{
    xmlNode * const node = allocateNode<xmlNode>(XML_ELEMENT_NODE, m_document);
    if (node != nullptr)
        node->name = name;
    return node;
}

xmlAttr * Tree::makeAttribute(const xmlChar * name) noexcept
{
    xmlAttr * const attribute = allocateNode<xmlAttr>(XML_ATTRIBUTE_NODE, m_document);
    if (attribute != nullptr)
        attribute->name = name;
    return attribute;
}

xmlNode * Tree::makeText(xmlElementType type, std::string_view text) noexcept
{
    xmlNode * const node = allocateNode<xmlNode>(type, m_document);
    if (node == nullptr)
        return nullptr;
    if (type == XML_TEXT_NODE)
        node->name = xmlStringText;
    else if (type == XML_COMMENT_NODE)
        node->name = xmlStringComment;
    if (!setContent(node, text))
    {
        freeNode(node);
        return nullptr;
    }
    return node;
}

xmlNode * Tree::makeInstruction(const xmlChar * target, std::string_view data) noexcept
{
    xmlNode * const node = makeText(XML_PI_NODE, data);
    if (node != nullptr)
        node->name = target;
    return node;
}

bool Tree::growPool() noexcept
{
    if (gateFails("xml objects"))
        return false;
    static_assert(
        sizeof(Chunk) % alignof(std::max_align_t) == 0 && objectSize % alignof(std::max_align_t) == 0);
    void * const memory =
        m_nextChunk < leastBlock ? ::operator new(m_nextChunk, std::nothrow) : takeBlock(m_nextChunk);
    if (memory == nullptr)
        return false;
    m_chunks = new (memory) Chunk{m_chunks, m_nextChunk};
    m_fresh = static_cast<char *>(memory) + sizeof(Chunk);
    m_freshEnd = static_cast<char *>(memory) + m_nextChunk;
    m_nextChunk = std::min(m_nextChunk * 2, mostAtOnce);
    return true;
}

void * Tree::allocateObject() noexcept
{
    if (m_freeSlots != nullptr)
    {
        Slot * const slot = m_freeSlots;
        m_freeSlots = slot->next;
        return slot;
    }
    if (static_cast<std::size_t>(m_freshEnd - m_fresh) < objectSize && !growPool())
        return nullptr;
    void * const fresh = m_fresh;
    m_fresh += objectSize;
    return fresh;
}

void Tree::freeObject(void * object) noexcept
{
    m_freeSlots = new (object) Slot{m_freeSlots};
}

bool isDeclaration(const xmlNode * node) noexcept
{
    return node->type == XML_PI_NODE && viewOf(node->name) == "xml";
}

void link(xmlNode * parent, xmlNode * node, xmlNode * before) noexcept
{
    ++Tree::of(node).changes;
    node->parent = parent;
    node->next = before;
    node->prev = before != nullptr ? before->prev : parent->last;
    if (node->prev != nullptr)
        node->prev->next = node;
    else
        parent->children = node;
    if (before != nullptr)
        before->prev = node;
    else
        parent->last = node;
}

void unlink(xmlNode * node) noexcept
{
    ++Tree::of(node).changes;
    xmlNode * const parent = node->parent;
    const bool isAttribute = node->type == XML_ATTRIBUTE_NODE;
    if (parent != nullptr)
    {
        if (isAttribute && parent->properties == asAttribute(node))
            parent->properties = asAttribute(node->next);
        if (!isAttribute && parent->children == node)
            parent->children = node->next;
        if (!isAttribute && parent->last == node)
            parent->last = node->prev;
    }
    if (node->prev != nullptr)
        node->prev->next = node->next;
    if (node->next != nullptr)
        node->next->prev = node->prev;
    node->parent = nullptr;
    node->next = nullptr;
    node->prev = nullptr;
}

void linkAttribute(xmlNode * element, xmlAttr * attribute) noexcept
{
    ++Tree::of(element).changes;
    xmlAttr * last = element->properties;
    while (last != nullptr && last->next != nullptr)
        last = last->next;
    linkBehind(element, last, attribute);
}

xmlAttr * findAttribute(const xmlNode * element, std::string_view name) noexcept
{
    for (xmlAttr * attribute = element->properties; attribute != nullptr; attribute = attribute->next)
    {
        const char * const own = reinterpret_cast<const char *>(attribute->name);
        const bool isPrefix = name.empty() || std::strncmp(own, name.data(), name.size()) == 0;
        if (isPrefix && own[name.size()] == 0)
            return attribute;
    }
    return nullptr;
}

std::string_view contentOf(const xmlNode * node) noexcept
{
    if (node->type == XML_ATTRIBUTE_NODE)
        return node->children != nullptr ? viewOf(node->children->content) : std::string_view();
    return viewOf(node->content);
}

bool setContent(xmlNode * node, std::string_view text) noexcept
{
    if (node->type == XML_ATTRIBUTE_NODE)
    {
        if (node->children != nullptr)
            return setContent(node->children, text);
        xmlNode * const child = Tree::of(node).makeText(XML_TEXT_NODE, text);
        if (child == nullptr)
            return false;
        link(node, child, nullptr);
        return true;
    }
    // Short texts lie within their node, where libxml2 looks for them as well.
    constexpr std::size_t room = 2 * sizeof(void *);
    static_assert(offsetof(xmlNode, nsDef) == offsetof(xmlNode, properties) + sizeof(void *));
    xmlChar * const old = node->content;
    if (node->type == XML_TEXT_NODE && text.size() < room)
    {
        char * const inside = reinterpret_cast<char *>(&node->properties);
        if (!text.empty())
            std::memmove(inside, text.data(), text.size());
        inside[text.size()] = 0;
        node->content = reinterpret_cast<xmlChar *>(inside);
    }
    else
    {
        xmlChar * const copy = copyText(text);
        if (copy == nullptr)
            return false;
        node->content = copy;
    }
    if (old != nullptr && !isInside(node, old))
        xmlFree(old);
    if (!isInside(node, node->content))
    {
        node->properties = nullptr;
        node->nsDef = nullptr;
    }
    return true;
}

void freeNode(xmlNode * node) noexcept
{
    if (node->type == XML_ATTRIBUTE_NODE)
        xmlFreeProp(asAttribute(node));
    else
        xmlFreeNode(node);
}

xmlNode * nextInWalk(xmlNode * node, const xmlNode * top) noexcept
{
    if (hasBelow(node) && node->children != nullptr)
        return node->children;
    while (node != top && node->next == nullptr)
        node = node->parent;
    return node == top ? nullptr : node->next;
}

const xmlChar * findNamespace(const xmlNode * node, std::string_view prefix) noexcept
{
    if (prefix == "xml")
        return xmlText("http://www.w3.org/XML/1998/namespace");
    if (prefix == "xmlns")
        return xmlText("http://www.w3.org/2000/xmlns/");
    for (; node != nullptr; node = node->parent)
    {
        if (node->type != XML_ELEMENT_NODE)
            continue;
        for (const xmlAttr * attribute = node->properties; attribute != nullptr; attribute = attribute->next)
        {
            const std::string_view name = viewOf(attribute->name);
            if (!name.starts_with("xmlns"))
                continue;
            const bool isDeclared =
                prefix.empty() ? name.size() == 5
                               : name.size() == prefix.size() + 6 && name.ends_with(prefix) && name[5] == ':';
            if (isDeclared)
                return attribute->children != nullptr ? attribute->children->content : xmlText("");
        }
    }
    return prefix.empty() ? xmlText("") : nullptr;
}

namespace
{

/// A copy of the node alone.
xmlNode * copyOne(const xmlNode * node, Tree & tree) noexcept
{
    const bool isSame = node->doc == tree.document();
    const bool hasName =
        node->type == XML_ELEMENT_NODE || node->type == XML_ATTRIBUTE_NODE || node->type == XML_PI_NODE;
    const xmlChar * const name = hasName && !isSame ? tree.intern(viewOf(node->name)) : node->name;
    if (hasName && name == nullptr)
        return nullptr;
    switch (node->type)
    {
    case XML_ELEMENT_NODE:
        return tree.makeElement(name);
    case XML_PI_NODE:
        return tree.makeInstruction(name, contentOf(node));
    case XML_ATTRIBUTE_NODE:
    {
        xmlNode * const copy = asNode(tree.makeAttribute(name));
        if (copy != nullptr && node->children != nullptr && !setContent(copy, contentOf(node)))
        {
            freeNode(copy);
            return nullptr;
        }
        return copy;
    }
    default:
        return tree.makeText(node->type, contentOf(node));
    }
}

bool copyAttributes(const xmlNode * node, xmlNode * copy, Tree & tree) noexcept
{
    xmlAttr * last = nullptr;
    for (xmlAttr * attribute = node->properties; attribute != nullptr; attribute = attribute->next)
    {
        xmlAttr * const copied = asAttribute(copyOne(asNode(attribute), tree));
        if (copied == nullptr)
            return false;
        linkBehind(copy, last, copied);
        last = copied;
    }
    return true;
}

} // namespace

xmlNode * copyNode(const xmlNode * top, Tree & tree, bool isDeep) noexcept
{
    xmlNode * first = nullptr;
    xmlNode * parent = nullptr;
    const xmlNode * node = top;
    for (;;)
    {
        xmlNode * const copy = copyOne(node, tree);
        if (copy == nullptr)
            break;
        if (first == nullptr)
            first = copy;
        else
            link(parent, copy, nullptr);
        if (node->type == XML_ELEMENT_NODE && !copyAttributes(node, copy, tree))
            break;
        if (!isDeep || node->type == XML_ATTRIBUTE_NODE)
            return first;
        if (node->type == XML_ELEMENT_NODE && node->children != nullptr)
        {
            parent = copy;
            node = node->children;
            continue;
        }
        while (node != top && node->next == nullptr)
        {
            node = node->parent;
            parent = parent->parent;
        }
        if (node == top)
            return first;
        node = node->next;
    }
    if (first != nullptr)
        freeNode(first);
    return nullptr;
}

bool detach(xmlNode * node) noexcept
{
    if (!hasObjects(node))
    {
        unlink(node);
        freeNode(node);
        return true;
    }
    if (gateFails("xml fragment"))
        return false;
    std::unique_ptr<Fragment> fragment(new (std::nothrow) Fragment);
    if (!fragment)
        return false;
    fragment->tree = &Tree::of(node);
    fragment->root = node;
    Fragment * old = nullptr;
    forEachObject(node,
        [&fragment, &old](NodeData & data)
        {
            old = placeNow(data).fragment;
            --old->objects;
            --old->pointers;
            data.fragment = fragment.get();
            ++fragment->objects;
            ++fragment->pointers;
            return true;
        });
    static_cast<void>(fragment.release());
    // It ends with its objects. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
    unlink(node);
    // Where nothing else of it is referenced, it has lived for what has just been taken out.
    if (old != nullptr)
        endIfUnused(old);
    return true;
}

void followInto(NodeData & data) noexcept
{
    Fragment * const passed = data.fragment;
    Fragment * top = passed;
    while (top->into != nullptr)
        top = top->into;
    data.fragment = top;
    ++top->pointers;
    --passed->pointers;
    // Whatever was passed on the way points to the end of it now, or ends where nothing points to it.
    for (Fragment * fragment = passed; fragment != top;)
    {
        Fragment * const next = fragment->into;
        --next->pointers;
        fragment->into = top;
        ++top->pointers;
        if (fragment->pointers == 0)
        {
            --top->pointers;
            delete fragment;
        }
        fragment = next;
    }
}

void mergeFragment(Fragment * fragment, Fragment & into) noexcept
{
    into.objects += fragment->objects;
    ++into.pointers;
    NodeData * const own = dataOf(fragment->root);
    // Most often a new node comes in, of which nothing but itself has an object.
    if (fragment->objects == 1 && own != nullptr)
    {
        followInto(*own);
        own->fragment = &into;
        delete fragment;
    }
    else
    {
        fragment->root = nullptr;
        fragment->into = &into;
    }
}

void leaveFragment(Fragment * fragment) noexcept
{
    Tree & tree = *fragment->tree;
    --fragment->pointers;
    --fragment->objects;
    endIfUnused(fragment);
    tree.release();
}

} // namespace qvplatform
