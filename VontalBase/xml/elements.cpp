#include "VontalBase/xml/elements.h"

#include "VontalBase/platform/comquery.h"
#include "VontalBase/xml/comtext.h"

namespace qvxml
{

ElementReference appendElement(IXMLDOMDocument & document, IXMLDOMNode & parent, const ComText & name)
{
    ElementReference created;
    NodeReference appended;
    if (FAILED(document.createElement(name.get(), created.receive())) || !created ||
        FAILED(parent.appendChild(created.get(), appended.receive())))
        return {};
    return qvplatform::queryFor<IXMLDOMElement>(appended.get());
}

} // namespace qvxml
