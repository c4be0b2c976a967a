/// @internal
/// @file
/// The short way to the elements of an XML service that is the library's own.
///
/// COM hands over every name and value as a copy in UTF-16, and every text between two elements as an object.
/// Where the service is ours, this reads its tree instead, with the same results. Where it is the system's
/// there is no such way, and everything goes through COM.
#pragma once

#include "VontalBase/platform/com.h"

#include <string_view>

namespace qvplatform
{

/// What somebody has noted at the object of an element, for as long as that lives. Null for nobody.
struct ElementNote
{
    const void * owner = nullptr;
    void * value = nullptr;
};

/// What a search for an element comes to. Both are null where there is none, or where memory was short.
struct FoundElement
{
    /// What the owner who asked has noted at the element. Then no object is given.
    void * noted = nullptr;
    /// The element, with a reference that is the caller's.
    IXMLDOMElement * element = nullptr;
};

/// Is shown elements in the order of the document.
class ElementVisitor
{
public:
    /// An element begins; its attributes follow, then those within it.
    virtual void begin(std::string_view name) = 0;
    /// An attribute of the element that has begun last.
    virtual void attribute(std::string_view name, std::string_view value) = 0;
    /// The innermost open element ends.
    virtual void end() = 0;

protected:
    ~ElementVisitor() = default;
};

/// Reads elements of the service that has given it. Text is UTF-8 and valid until the element is changed.
/// Like the service it serves one thread at a time in one document.
class DirectXml
{
public:
    /// Looks for the first element within another.
    virtual FoundElement firstElement(IXMLDOMElement & parent, const void * owner) const noexcept = 0;
    /// Looks for the next element behind another with the same parent.
    virtual FoundElement nextElement(IXMLDOMElement & element, const void * owner) const noexcept = 0;
    /// The name with its prefix.
    virtual std::string_view name(IXMLDOMElement & element) const noexcept = 0;
    /// The value of an attribute, whose name is taken byte by byte. Half a pair of UTF-16 comes as the three
    /// bytes that it would have alone. False, with `value` as it was, where there is none.
    virtual bool attribute(
        IXMLDOMElement & element, std::string_view name, std::string_view & value) const noexcept = 0;
    /// The first child as text, empty where there is no child. False, with `text` as it was, where it is no
    /// text.
    virtual bool text(IXMLDOMElement & element, std::string_view & text) const noexcept = 0;
    /// Shows an element and those within it. What the visitor throws leaves this call.
    virtual void walk(IXMLDOMElement & element, ElementVisitor & visitor) const = 0;
    /// The note at an element.
    virtual ElementNote & note(IXMLDOMElement & element) const noexcept = 0;

protected:
    ~DirectXml() = default;
};

/// Asks an element for this, by `QueryInterface`. What it gives is not counted.
inline constexpr GUID directXmlId = {
    0x6f2d1c80, 0x94b7, 0x4b1e, {0x8a, 0x35, 0x17, 0xd0, 0x5e, 0x6b, 0x42, 0xa9}};

/// Asks an object for itself, by `QueryInterface`. What it gives is not counted. An application's object that
/// hands questions on to an element of ours is told apart by this.
inline constexpr GUID directSelfId = {
    0x6f2d1c81, 0x94b7, 0x4b1e, {0x8a, 0x35, 0x17, 0xd0, 0x5e, 0x6b, 0x42, 0xa9}};

/// The short way to an element; null where there is none.
inline const DirectXml * directXmlOf(IXMLDOMElement & element) noexcept
{
    void * self = nullptr;
    if (FAILED(element.QueryInterface(directSelfId, &self)) || self != &element)
        return nullptr;
    void * found = nullptr;
    return SUCCEEDED(element.QueryInterface(directXmlId, &found)) ? static_cast<const DirectXml *>(found)
                                                                  : nullptr;
}

} // namespace qvplatform
