/// @file
/// What the targets that read XML have in common.
#pragma once

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/WideErrors.h"

#include <map>
#include <string>
#include <vector>

namespace fuzzing
{

/// Whether the XML service gives one object for an element each time. One that does not (Wine's) also saves
/// some documents so that they cannot be loaded again.
inline bool keepsItsWord(qvxml::XMLDocPtr & document)
{
    qvbase::ReferenceMSCom<IXMLDOMElement> first;
    qvbase::ReferenceMSCom<IXMLDOMElement> second;
    document.get()->get_documentElement(first.receive());
    document.get()->get_documentElement(second.receive());
    return first.get() == second.get();
}

/// All that can be read of an element without those below it.
inline std::string contentOf(qvxml::Node & node)
{
    std::string content = node.getNodeName() + "(";
    std::map<Vontal::u8string, Vontal::u8string> properties;
    node.getProperties(properties);
    for (const auto & [name, value] : properties)
        content += name + "=" + value + ";";
    Vontal::u8string text;
    if (node.getText(text))
        content += ")" + text;
    return content;
}

/// All that can be read of a document, in its order.
inline std::string contentOf(qvxml::XMLDocPtr & document)
{
    std::string content;
    std::vector<qvxml::Node *> open = {document.getRootElement()};
    while (!open.empty())
    {
        qvxml::Node * const node = open.back();
        open.pop_back();
        if (node == nullptr)
        {
            content += "<";
            continue;
        }
        content += contentOf(*node);
        if (node != document.getRootElement())
            open.push_back(node->getNextSibling());
        open.push_back(node->getFirstChild());
    }
    return content;
}

} // namespace fuzzing
