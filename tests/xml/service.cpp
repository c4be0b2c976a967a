#include "xml/service.h"

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/u8string.h"

#include <gtest/gtest.h>

namespace xmltest
{

bool isWhole()
{
    qvxml::XMLDocPtr document;
    EXPECT_TRUE(document.loadBuffer("<a/>"));
    qvbase::ReferenceMSCom<IXMLDOMElement> first;
    qvbase::ReferenceMSCom<IXMLDOMElement> second;
    document.get()->get_documentElement(first.receive());
    document.get()->get_documentElement(second.receive());
    return first.get() == second.get();
}

std::string saved(qvxml::XMLDocPtr & document, bool format)
{
    std::string text;
    EXPECT_TRUE(document.saveBuffer(text, format));
    std::string plain;
    for (const char byte : text)
    {
        if (byte != '\r')
            plain += byte;
    }
    return plain;
}

std::string withoutDeclaration(const std::string & text)
{
    const std::size_t end = text.find("?>");
    if (text.rfind("<?xml", 0) != 0 || end == std::string::npos)
        return text;
    const std::size_t start = text.find_first_not_of('\n', end + 2);
    return start == std::string::npos ? std::string() : text.substr(start);
}

} // namespace xmltest
