/// @internal
/// @file
/// The nodes that documents make.
#pragma once

#include "VontalBase/xml/Node.h"

namespace qvplatform
{
class DirectXml;
class ElementVisitor;
struct FoundElement;
} // namespace qvplatform

namespace qvxml
{

class ComText;
class ComVariant;
class XMLDocPtr;

/// A node over an element of the XML service.
class XMLNodeImpl final : public Node
{
public:
    /// A node of @p owner, which outlives it, with a reference of its own on @p domElement.
    /// @param directWay the short way to the element, or null.
    XMLNodeImpl(XMLDocPtr * owner, IXMLDOMElement * domElement, const qvplatform::DirectXml * directWay);
    ~XMLNodeImpl() override;

    /// The short way to the element, or null.
    const qvplatform::DirectXml * directXml() const noexcept
    {
        return direct;
    }

    /// Shows the element and those within it. False where there is no short way.
    bool walk(qvplatform::ElementVisitor & visitor) const;

    Node * createChild(const char * name) override;
    Node * createChild(const Vontal::u8string & name) override;
    Node * createChild(const char * name, const wchar_t * text) override;
    Node * createChild(const char * name, const Vontal::u8string & text) override;
    Node * createChild(const char * name, const char * text) override;
    IXMLDOMElement * getElement() override;
    Vontal::u8string getNodeName() override;
    bool isNodeName(const char * name) override;
    bool getText(Vontal::astring & text) override;
    bool getText(Vontal::u8string & text) override;
    void getProperties(std::map<Vontal::u8string, Vontal::u8string> & properties) override;
    bool setProperty(const char * name, unsigned int value) override;
    bool setProperty(const char * name, int value) override;
    bool setProperty(const char * name, bool value) override;
    bool setProperty(const char * name, const wchar_t * value) override;
    bool setProperty(const char * name, const char * value) override;
    bool setProperty(const char * name, const Vontal::pstring & value) override;
    bool setProperty(const char * name, const Vontal::astring & value) override;
    bool setProperty(const char * name, const Vontal::u8string & value) override;
    bool getProperty(const char * name, bool & value) override;
    bool getProperty(const char * name, double & value) override;
    bool getProperty(const char * name, unsigned int & value) override;
    bool getProperty(const char * name, int & value) override;
    bool getProperty(const char * name, Vontal::pstring & value) override;
    bool getProperty(const char * name, Vontal::astring & value) override;
    bool getProperty(const char * name, Vontal::u8string & value) override;
    bool getProperty(const char * name, const Vontal::u8string & space, const Vontal::u8string & ignored,
        Vontal::u8string & value) override;
    Node * getFirstChild(const char * name) override;
    Node * getFirstChild() override;
    Node * getNextSibling(const char * name) override;
    Node * getNextSibling() override;

private:
    bool setText(const char * name, const ComText & value);
    bool readText(ComText & text);
    bool readAttribute(const char * name, ComVariant & value);

    Node * takeNode(const qvplatform::FoundElement & found);

    XMLDocPtr * doc;
    IXMLDOMElement * element;
    const qvplatform::DirectXml * direct;
};

} // namespace qvxml
