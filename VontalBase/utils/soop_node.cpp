#include "VontalBase/utils/soop_node.h"

#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/TreeWalk.h"
#include "VontalBase/xml/Node.h"

#include <memory>
#include <vector>

namespace qv_soop
{

soop_node::soop_node() = default;

// Kept: both nodes have the same children afterwards.
soop_node::soop_node(const soop_node & other) = default;

// Kept: the children that this node had are not destroyed.
soop_node & soop_node::operator=(const soop_node & other) = default;

soop_node::~soop_node()
{
    // The children of each are taken from it first, so that no depth needs stack.
    std::list<soop_node *> doomed;
    doomed.swap(subnodes);
    while (!doomed.empty())
    {
        soop_node * const node = doomed.front();
        doomed.pop_front();
        doomed.splice(doomed.begin(), node->subnodes);
        delete node;
    }
}

const std::string & soop_node::getName() const noexcept
{
    return name;
}

const soop_node * soop_node::getParent() const noexcept
{
    return parent;
}

const char * soop_node::getAttr(const std::string & attr) const
{
    const auto found = attrs.find(attr);
    return found != attrs.end() ? found->second.c_str() : nullptr;
}

const std::map<std::string, std::string> & soop_node::getAttributes() const noexcept
{
    return attrs;
}

const std::list<soop_node *> & soop_node::getSubnodes() const noexcept
{
    return subnodes;
}

bool soop_node::matches(const std::string & tag, const std::string & attr, const std::string & value) const
{
    if (name != tag)
        return false;
    const auto found = attrs.find(attr);
    return found != attrs.end() && found->second == value;
}

const soop_node * soop_node::getNode(
    const std::string & tag, const std::string & attr, const std::string & value) const
{
    TreeWalk walk(*this);
    while (walk.current() != nullptr && !walk.current()->matches(tag, attr, value))
        walk.enter();
    return walk.current();
}

void soop_node::setName(const char * text)
{
    name = text;
}

void soop_node::readElement(qvxml::Node & element)
{
    setName(element.getNodeName().c_str());
    std::map<Vontal::u8string, Vontal::u8string> properties;
    element.getProperties(properties);
    // Kept: an attribute that is there already keeps its value.
    for (const auto & [key, value] : properties)
        attrs.emplace(key, value);
}

bool soop_node::load(qvxml::Node & element)
{
    struct Level
    {
        soop_node * node;
        qvxml::Node * child;
    };
    readElement(element);
    std::vector<Level> levels = {{this, element.getFirstChild()}};
    while (!levels.empty())
    {
        Level & level = levels.back();
        qvxml::Node * const child = level.child;
        if (child == nullptr)
        {
            levels.pop_back();
            continue;
        }
        level.child = child->getNextSibling();
        auto made = std::make_unique<soop_node>();
        made->parent = level.node;
        made->readElement(*child);
        level.node->subnodes.push_back(made.get());
        levels.push_back({made.release(), child->getFirstChild()});
    }
    return true;
}

} // namespace qv_soop
