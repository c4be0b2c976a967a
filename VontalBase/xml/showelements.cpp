#include "VontalBase/xml/showelements.h"

#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/XMLNodeImpl.h"

#include <map>
#include <vector>

namespace qvxml
{

namespace
{

void begin(Node & element, qvplatform::ElementVisitor & visitor)
{
    visitor.begin(element.getNodeName());
    std::map<Vontal::u8string, Vontal::u8string> properties;
    element.getProperties(properties);
    for (const auto & [name, value] : properties)
        visitor.attribute(name, value);
}

/// The long way, through the nodes.
void showNodes(Node & element, qvplatform::ElementVisitor & visitor)
{
    begin(element, visitor);
    // The next child of each open element.
    std::vector<Node *> next = {element.getFirstChild()};
    while (!next.empty())
    {
        Node * const child = next.back();
        if (child == nullptr)
        {
            visitor.end();
            next.pop_back();
            continue;
        }
        next.back() = child->getNextSibling();
        begin(*child, visitor);
        next.push_back(child->getFirstChild());
    }
}

} // namespace

void showElements(Node & element, qvplatform::ElementVisitor & visitor)
{
    const XMLNodeImpl * const made = dynamic_cast<const XMLNodeImpl *>(&element);
    if (made == nullptr || !made->walk(visitor))
        showNodes(element, visitor);
}

} // namespace qvxml
