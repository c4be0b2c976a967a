/// @internal
/// @file
/// The tree behind a document: libxml2's nodes, and who keeps which of them alive.
///
/// Names are whole names with their prefixes, and `xmlns` attributes are attributes as all others: that is
/// what the interfaces show. libxml2's own notion of namespaces comes in for stylesheets alone. All names lie
/// in the dictionary of the tree.
///
/// Every node object belongs to a fragment: the document, or a node that is not inserted anywhere with all
/// below it. The document lives as long as the tree, another fragment as long as it has objects, the tree as
/// long as it has objects or a document object.
///
/// A fragment that is inserted becomes a part of another one. That takes the same time however large it is:
/// its objects go on pointing to it, and learn of the other one when they are used next. Taking a node out
/// into a fragment of its own takes a walk through all that is below it.
#pragma once

#include "VontalBase/platform/com.h"

#include <cstddef>
#include <cstdint>
#include <libxml/tree.h>
#include <string_view>

namespace qvplatform
{

class DocumentObject;
class Tree;

/// Nodes that live together.
struct Fragment
{
    Tree * tree = nullptr;
    /// The node at the top; null for the document.
    xmlNode * root = nullptr;
    /// How many of the nodes have an object.
    std::size_t objects = 0;
    /// The fragment that it is a part of now; null for one that stands for itself. One that is a part ends
    /// when nothing points to it any more.
    Fragment * into = nullptr;
    /// How many objects, and fragments that are a part of this one, point here.
    std::size_t pointers = 0;
};

/// A node, and where it lives.
struct NodePlace
{
    xmlNode * node = nullptr;
    Fragment * fragment = nullptr;
};

/// What all node objects hold.
struct NodeData : NodePlace
{
    std::uint32_t references = 1;
};

/// Makes the object of a node point to the fragment that stands for itself.
void followInto(NodeData & data) noexcept;

/// Where a node lives at present.
inline NodePlace & placeNow(NodeData & data) noexcept
{
    if (data.fragment->into != nullptr)
        followInto(data);
    return data;
}

class Tree
{
public:
    /// An empty tree with one reference.
    /// @return null where memory is short.
    static Tree * make() noexcept;
    Tree(const Tree &) = delete;
    Tree & operator=(const Tree &) = delete;

    /// The tree of a node.
    static Tree & of(const xmlNode * node) noexcept
    {
        return *static_cast<Tree *>(node->doc->_private);
    }

    void addReference() noexcept
    {
        ++m_references;
    }
    void release() noexcept
    {
        if (--m_references == 0)
            delete this;
    }

    [[nodiscard]] xmlDoc * document() const noexcept
    {
        return m_document;
    }
    [[nodiscard]] xmlNode * top() const noexcept
    {
        return reinterpret_cast<xmlNode *>(m_document);
    }
    [[nodiscard]] Fragment & attached() noexcept
    {
        return m_attached;
    }
    [[nodiscard]] xmlNode * documentElement() const noexcept;

    /// A name in the tree's dictionary; null where memory is short.
    const xmlChar * intern(std::string_view name) noexcept;
    /// Nodes that are not inserted anywhere; null where memory is short. Names are interned ones.
    xmlNode * makeElement(const xmlChar * name) noexcept;
    xmlAttr * makeAttribute(const xmlChar * name) noexcept;
    /// @param type of a text, CDATA section or comment.
    xmlNode * makeText(xmlElementType type, std::string_view text) noexcept;
    xmlNode * makeInstruction(const xmlChar * target, std::string_view data) noexcept;

    /// Room for a node object, and its return.
    void * allocateObject() noexcept;
    void freeObject(void * object) noexcept;
    static constexpr std::size_t objectSize = 48;

    /// The object of the document; not owned. Null where there is none at present.
    DocumentObject * documentObject = nullptr;
    /// Grows with each insertion and removal.
    std::uint64_t changes = 0;

private:
    struct Slot
    {
        Slot * next;
    };
    struct Chunk
    {
        Chunk * next;
        std::size_t size;
    };

    Tree() noexcept = default;
    ~Tree();
    bool growPool() noexcept;

    static constexpr std::size_t mostAtOnce = std::size_t{1024} * 1024;

    xmlDoc * m_document = nullptr;
    std::size_t m_references = 1;
    Fragment m_attached;
    Slot * m_freeSlots = nullptr;
    Chunk * m_chunks = nullptr;
    // Where the next object of the newest chunk begins, and where the chunk ends.
    char * m_fresh = nullptr;
    char * m_freshEnd = nullptr;
    // In bytes.
    std::size_t m_nextChunk = 1024;
};

// What follows links and unlinks without any check. Attributes are nodes here: use `asNode`.

inline xmlNode * asNode(xmlAttr * attribute) noexcept
{
    return reinterpret_cast<xmlNode *>(attribute);
}

inline xmlAttr * asAttribute(xmlNode * node) noexcept
{
    return reinterpret_cast<xmlAttr *>(node);
}

/// Whether children of a node are told.
inline bool hasBelow(const xmlNode * node) noexcept
{
    return node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE;
}

/// Whether a node is the declaration of its document.
bool isDeclaration(const xmlNode * node) noexcept;

/// Puts a node in front of a child, or behind all where that is null. Texts do not melt together.
void link(xmlNode * parent, xmlNode * node, xmlNode * before) noexcept;
/// Takes a node or an attribute out of its parent.
void unlink(xmlNode * node) noexcept;
/// Puts a new attribute behind the element's last one, which is null where there is none. Counts no change.
inline void linkBehind(xmlNode * element, xmlAttr * last, xmlAttr * attribute) noexcept
{
    attribute->parent = element;
    attribute->prev = last;
    attribute->next = nullptr;
    (last != nullptr ? last->next : element->properties) = attribute;
}
/// Puts an attribute behind all others.
void linkAttribute(xmlNode * element, xmlAttr * attribute) noexcept;
/// The attribute of a name; null without one.
xmlAttr * findAttribute(const xmlNode * element, std::string_view name) noexcept;
/// The value of an attribute, or the text of a node that has one of its own.
std::string_view contentOf(const xmlNode * node) noexcept;
/// Sets that. False, with nothing changed, where memory is short.
bool setContent(xmlNode * node, std::string_view text) noexcept;
/// Frees a node that is not inserted anywhere, with all below it. No object may be left.
void freeNode(xmlNode * node) noexcept;
/// The next node of a walk through `top`, with all below it, that goes down first. Null at the end.
xmlNode * nextInWalk(xmlNode * node, const xmlNode * top) noexcept;

/// The URI that a prefix stands for at a node, or at an attribute's element; null where it is not declared.
/// The empty prefix without a declaration gives an empty text.
const xmlChar * findNamespace(const xmlNode * node, std::string_view prefix) noexcept;

/// Copies a node, with all below it if `isDeep`, into a tree. The copy is not inserted anywhere.
xmlNode * copyNode(const xmlNode * top, Tree & tree, bool isDeep) noexcept;

/// Takes a node out into a fragment of its own, whose objects are then counted there; frees it where neither
/// it nor what is below it has an object.
/// @return false, with nothing changed, where memory is short.
bool detach(xmlNode * node) noexcept;
/// Makes a fragment, the root of which has just been inserted there, a part of another one. Both are ones
/// that stand for themselves. The first may have ended afterwards.
void mergeFragment(Fragment * fragment, Fragment & into) noexcept;
/// An object is gone: frees its fragment, which is one that stands for itself, if it was the last one there,
/// and its share of the tree.
void leaveFragment(Fragment * fragment) noexcept;

} // namespace qvplatform
