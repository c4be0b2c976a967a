/// @file
/// One element of a list database.
#pragma once

#include "VontalBase/export.h"

#include <list>
#include <map>
#include <string>

namespace qvxml
{
class Node;
}

namespace qv_soop
{

class ElementReader;

/// An element of a `soop_db`: its tag, its attributes and its child elements. Text is UTF-8, and compared
/// byte by byte. A node that is only read may be shared by threads.
///
/// Nothing throws but by `std::bad_alloc`.
class VONTALBASE_API soop_node
{
    friend class ElementReader;
    friend class soop_db;

public:
    /// A node without a tag, a parent, attributes and children.
    soop_node();
    /// Copies the parent, the tag and the attributes, and the pointers to the children.
    ///
    /// Kept: the copy is shallow. Both nodes own the same children, so that only one of them may be
    /// destroyed, and @p other stays the parent of the children.
    soop_node(const soop_node & other);
    /// Copies as the copy constructor does. Kept: the children that this node had are not destroyed, and
    /// nobody owns them from then on.
    soop_node & operator=(const soop_node & other);
    /// Destroys the children.
    virtual ~soop_node();

    /// The tag.
    const std::string & getName() const noexcept;
    /// The parent, or null for the root.
    const soop_node * getParent() const noexcept;
    /// The text of an attribute, which lives as long as the node; null where there is no such attribute.
    const char * getAttr(const std::string & attr) const;
    /// All attributes.
    const std::map<std::string, std::string> & getAttributes() const noexcept;
    /// The child elements in the order of the file.
    const std::list<soop_node *> & getSubnodes() const noexcept;

    /// Finds a node among this one and those below it, in the order of the file.
    /// @param tag its tag.
    /// @param attr an attribute that it has.
    /// @param value the exact value of that.
    /// @return the first such node, or null.
    const soop_node * getNode(
        const std::string & tag, const std::string & attr, const std::string & value) const;

private:
    bool load(qvxml::Node & element);
    bool matches(const std::string & tag, const std::string & attr, const std::string & value) const;

    soop_node * parent = nullptr;
    std::string name;
    std::map<std::string, std::string> attrs;
    std::list<soop_node *> subnodes;
};

} // namespace qv_soop
