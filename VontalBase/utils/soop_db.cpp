#include "VontalBase/utils/soop_db.h"

#include "VontalBase/utils/TreeWalk.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include <utility>

namespace qv_soop
{

soop_db::soop_db() = default;

// Kept: both databases have the same nodes afterwards.
soop_db::soop_db(const soop_db & other) = default;

// Kept: the nodes that this database had are not destroyed.
soop_db & soop_db::operator=(const soop_db & other) = default;

soop_db::~soop_db() = default;

bool soop_db::init(const Vontal::u8string & fileName)
{
    qvxml::XMLDocPtr document;
    if (!document.loadFile(fileName))
        return false;
    qvxml::Node * const element = document.getRootElement();
    return element != nullptr && root.load(*element);
}

bool soop_db::addList(const std::string & tag)
{
    if (lists.find(tag) != lists.end())
        return false;
    Nodes found;
    TreeWalk walk(root);
    while (const soop_node * const node = walk.current())
    {
        if (node->name != tag)
        {
            walk.enter();
            continue;
        }
        found.push_back(
            const_cast<soop_node *>(node)); // NOLINT(cppcoreguidelines-pro-type-const-cast): it is ours.
        // Kept: what is below a node of the list is not looked at.
        walk.skip();
    }
    if (found.empty())
        return false;
    lists.emplace(tag, std::move(found));
    return true;
}

const std::list<soop_node *> & soop_db::getList(const std::string & tag)
{
    const auto found = lists.find(tag);
    return found != lists.end() ? found->second : emptyList;
}

const soop_node * soop_db::getNode(
    const std::string & tag, const std::string & attr, const std::string & value) const
{
    return root.getNode(tag, attr, value);
}

const soop_node * soop_db::getNode(const std::string & tag, const std::string & attr, int value) const
{
    return getNode(tag, attr, std::to_string(value));
}

const soop_node * soop_db::getRootNode() const noexcept
{
    return &root;
}

} // namespace qv_soop
