/// @file
/// The list database.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/utils/soop_node.h"

#include <list>
#include <map>
#include <string>

namespace Vontal
{
class u8string;
}

namespace qv_soop
{

/// A read-only tree of the elements of an XML file: tags, attributes and structure, but no text.
///
/// A database belongs to one thread at a time while it is filled by `init` and `addList`; afterwards any
/// number of threads may read it, `getList` included, which changes nothing. Pointers that it gives live as
/// long as the database.
///
/// Nothing throws for bad input, but by `std::bad_alloc`; what the XML service throws (see
/// `qvxml::XMLDocPtr`) may leave `init` as well.
class VONTALBASE_API soop_db
{
public:
    /// An empty database. Its root has no name.
    soop_db();
    /// Copies the root and the lists, with their pointers.
    ///
    /// Kept: the copy is shallow. Both databases own the same nodes below their roots, so that only one of
    /// them may be destroyed, and the root of @p other stays the parent of the nodes below the root of the
    /// copy.
    soop_db(const soop_db & other);
    /// Copies as the copy constructor does, in place of the lists that were there. Kept: the nodes that this
    /// database had are not destroyed, and nobody owns them from then on.
    soop_db & operator=(const soop_db & other);
    /// Destroys all nodes.
    virtual ~soop_db();

    /// Loads a file.
    ///
    /// Kept: nothing is cleared before. The root of a second file gives the tree its tag, adds attributes
    /// that are new, and its children go behind those that are there. Lists do not see them.
    /// @param fileName its path, in UTF-8.
    /// @return false, with the database as it was, if the file cannot be read or is no well-formed document.
    ///     Why goes to the standard wide error stream alone. After an exception the database may have a part
    ///     of the file; it can be used and destroyed all the same.
    bool init(const Vontal::u8string & fileName);

    /// Makes the list of the nodes with a tag, in the order of the file. A node below one that is in the list
    /// is not looked at.
    /// @param tag the tag, which may be that of the root.
    /// @return false, and the lists are as they were, if there is no such node or the list is there already.
    bool addList(const std::string & tag);
    /// The list of a tag, or an empty one where `addList` has made none.
    const std::list<soop_node *> & getList(const std::string & tag);

    /// Finds a node among the root and those below it: see `soop_node::getNode`.
    /// @param tag its tag.
    /// @param attr an attribute that it has.
    /// @param value the exact value of that.
    /// @return the first such node, or null.
    const soop_node * getNode(
        const std::string & tag, const std::string & attr, const std::string & value) const;
    /// Finds a node by the decimal text of a number. An attribute `007` is not found as 7.
    /// @param tag its tag.
    /// @param attr an attribute that it has.
    /// @param value what the value of that is the decimal text of.
    /// @return the first such node, or null.
    const soop_node * getNode(const std::string & tag, const std::string & attr, int value) const;
    /// The root, which is there also in an empty database.
    const soop_node * getRootNode() const noexcept;

private:
    using Nodes = std::list<soop_node *>;

    soop_node root;
    Nodes emptyList;
    std::map<std::string, Nodes> lists;
};

} // namespace qv_soop
