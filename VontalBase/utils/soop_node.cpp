#include "VontalBase/utils/soop_node.h"

#include "VontalBase/utils/TreeWalk.h"
#include "VontalBase/xml/showelements.h"

#include <memory>
#include <string_view>

namespace qv_soop
{

/// Makes nodes of elements.
class ElementReader final : public qvplatform::ElementVisitor
{
public:
    /// The outermost element goes into @p root, the others into new nodes below it.
    explicit ElementReader(soop_node & root) : m_root(root)
    {
    }

    void begin(std::string_view name) override
    {
        m_current = m_current != nullptr ? append(*m_current) : &m_root;
        m_current->name = name;
    }
    void attribute(std::string_view name, std::string_view value) override
    {
        // Kept: an attribute that is there already keeps its value.
        auto & attributes = m_current->attrs;
        attributes.emplace_hint(attributes.end(), name, value);
    }
    void end() override
    {
        m_current = m_current != &m_root ? m_current->parent : nullptr;
    }

private:
    static soop_node * append(soop_node & parent)
    {
        auto made = std::make_unique<soop_node>();
        made->parent = &parent;
        parent.subnodes.push_back(made.get());
        return made.release();
    }

    soop_node & m_root;
    soop_node * m_current = nullptr;
};

soop_node::soop_node() = default;

// Kept: both nodes have the same children afterwards.
soop_node::soop_node(const soop_node & other) = default;

// Kept: the children that this node had are not destroyed.
soop_node & soop_node::operator=(const soop_node & other) = default;

soop_node::~soop_node()
{
    // The children of each are taken from it first, so that no depth needs stack.
    while (!subnodes.empty())
    {
        soop_node * const node = subnodes.front();
        subnodes.pop_front();
        subnodes.splice(subnodes.begin(), node->subnodes);
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

bool soop_node::load(qvxml::Node & element)
{
    ElementReader reader(*this);
    qvxml::showElements(element, reader);
    return true;
}

} // namespace qv_soop
