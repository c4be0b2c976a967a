/// @file
/// One element of an XML document.
#pragma once

#include "VontalBase/export.h"

#include <map>

struct IXMLDOMElement;

namespace Vontal
{
class astring;
class pstring;
class u8string;
} // namespace Vontal

namespace qvxml
{

/// The view of one element of an `XMLDocPtr`: its name, text, child elements, and its attributes as typed
/// properties.
///
/// Nodes are made and owned by their document. A pointer to one is borrowed, and lives until the document is
/// freed: see `XMLDocPtr`. A document and its nodes belong to one thread at a time.
///
/// Narrow text is UTF-8, wide text is UTF-16. Names are compared with case; the name of a prefixed element or
/// attribute includes its prefix. Text pointers end at a NUL; a null one is refused where that is said, and
/// outside the contract elsewhere. Nothing here throws but by what strings throw, and by `_com_error` with
/// `E_OUTOFMEMORY` where the XML service has no memory for a text.
class VONTALBASE_API Node
{
    friend class XMLDocPtr;

protected:
    /// A node without data.
    Node() noexcept = default;
    /// Called by the owning document alone.
    virtual ~Node();

public:
    /// Copies nothing.
    Node(const Node &) noexcept = default;
    /// Copies nothing.
    Node & operator=(const Node &) noexcept = default;

    /// Appends a child element.
    /// @return the new element, owned by the document; null if the name is null or none, or if the service
    ///     refused. What had been appended before a refusal stays.
    virtual Node * createChild(const char * name) = 0;
    /// The same with a name that is a string.
    virtual Node * createChild(const Vontal::u8string & name) = 0;
    /// Appends a child element and, unless @p text is null, a text within it.
    /// @return as above.
    virtual Node * createChild(const char * name, const wchar_t * text) = 0;
    /// The same with a UTF-8 text, which may be empty.
    virtual Node * createChild(const char * name, const Vontal::u8string & text) = 0;
    /// The same with a UTF-8 text, which may be null.
    virtual Node * createChild(const char * name, const char * text) = 0;

    /// The element in the XML service, with no new reference.
    virtual IXMLDOMElement * getElement() = 0;

    /// The element's name; empty if the service does not give it.
    virtual Vontal::u8string getNodeName() = 0;
    /// Whether the element has exactly this name; false for null.
    virtual bool isNodeName(const char * name) = 0;

    /// Reads the element's first child as text.
    ///
    /// Kept: only the first child counts. An element that begins with a child element, a comment or a CDATA
    /// section has no readable text, and text behind a child element is not joined on.
    /// @param text receives the text, empty for an element without children; stays as it is on failure.
    /// @return false if the first child is no text.
    virtual bool getText(Vontal::astring & text) = 0;
    /// The same as UTF-8.
    virtual bool getText(Vontal::u8string & text) = 0;

    /// Puts each attribute into @p properties. What is there stays, unless an attribute has its name. If the
    /// service refuses in between, the rest is missing.
    virtual void getProperties(std::map<Vontal::u8string, Vontal::u8string> & properties) = 0;

    /// Sets an attribute to the number in decimal.
    /// @return whether the service took it, for this and the other forms.
    virtual bool setProperty(const char * name, unsigned int value) = 0;
    /// Sets an attribute to the number in decimal.
    virtual bool setProperty(const char * name, int value) = 0;
    /// Sets an attribute to 1 or 0.
    virtual bool setProperty(const char * name, bool value) = 0;
    /// Sets an attribute.
    virtual bool setProperty(const char * name, const wchar_t * value) = 0;
    /// Sets an attribute.
    virtual bool setProperty(const char * name, const char * value) = 0;
    /// Sets an attribute, up to the first NUL of the value.
    virtual bool setProperty(const char * name, const Vontal::pstring & value) = 0;
    /// Sets an attribute, up to the first NUL of the value.
    virtual bool setProperty(const char * name, const Vontal::astring & value) = 0;
    /// Sets an attribute, up to the first NUL of the value.
    virtual bool setProperty(const char * name, const Vontal::u8string & value) = 0;

    /// Reads an attribute as a number and tells whether that is above 0.
    ///
    /// Kept: the text "true" reads as false.
    /// @param name the attribute, for this and the other forms; must not be null.
    /// @param value receives it; stays as it is where there is no such attribute.
    /// @return whether the attribute is there, for this and the other forms, even if its text is no number.
    virtual bool getProperty(const char * name, bool & value) = 0;
    /// Reads an attribute as a real number, as `convert2double` does.
    ///
    /// Kept: of a text that is no number @p value receives what the converter makes of it, and the result is
    /// true.
    virtual bool getProperty(const char * name, double & value) = 0;
    /// Reads an attribute as a number, as `string2UInt` does. Kept: the same.
    virtual bool getProperty(const char * name, unsigned int & value) = 0;
    /// Reads an attribute as a number, as `string2Int` does. Kept: the same.
    virtual bool getProperty(const char * name, int & value) = 0;
    /// Reads an attribute.
    virtual bool getProperty(const char * name, Vontal::pstring & value) = 0;
    /// Reads an attribute.
    virtual bool getProperty(const char * name, Vontal::astring & value) = 0;
    /// Reads an attribute.
    virtual bool getProperty(const char * name, Vontal::u8string & value) = 0;
    /// Reads an attribute, without regard to the two arguments in the middle.
    virtual bool getProperty(const char * name, const Vontal::u8string & space,
        const Vontal::u8string & ignored, Vontal::u8string & value) = 0;

    /// The first child element with a name, or null. Null also where the service refuses, for this and the
    /// other three.
    virtual Node * getFirstChild(const char * name) = 0;
    /// The first child element, or null. Text, comments and processing instructions are passed over.
    virtual Node * getFirstChild() = 0;
    /// The next element behind this one with a name and the same parent, or null.
    virtual Node * getNextSibling(const char * name) = 0;
    /// The next element behind this one with the same parent, or null.
    virtual Node * getNextSibling() = 0;
};

} // namespace qvxml
