/// @file
/// What an application supplies so that bound objects can hold others.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/json/JSONSerializable.h"

namespace qvjson
{

/// Makes the objects of a field. The field holds a reference to it.
class JSONSerializableFactory : public qvbase::ReferencedObject
{
public:
    /// Makes an object.
    /// @param out receives it.
    /// @return whether there is one; false fails the parse.
    virtual bool createObject(qvbase::Reference<JSONSerializable> & out) = 0;

protected:
    ~JSONSerializableFactory() = default;
};

/// Keeps the objects of a list, in a form of the application's own. The field shares its ownership. None of
/// the objects that it hands out as plain pointers is counted by the library, so it keeps them until the
/// parse ends.
class JSONSerializableArrayProviderInterface
{
public:
    /// An element begins in a text.
    /// @param field the field that the list is bound to.
    /// @return what takes the element's content, ready for it (see `JSONSerializable::jsonBeginParse`), or
    ///     null to refuse.
    virtual JSONParserAcceptor * parserBeginObject(JSONSerializable::JSONField * field) = 0;
    /// Empties the list.
    virtual void clear() = 0;
    /// Appends a new element. @return the element, which stays the provider's, or null to refuse.
    virtual JSONSerializable * createElement() = 0;
    /// Tells an element.
    /// @param index from 0.
    /// @param out receives the element.
    /// @return whether there is one; false ends the printing.
    virtual bool getElement(unsigned int index, qvbase::Reference<JSONSerializable> & out) = 0;
    /// Takes the last element away, after it could not be filled.
    virtual void removeLastElement() = 0;
    /// The number of elements.
    virtual unsigned int getSize() = 0;

protected:
    ~JSONSerializableArrayProviderInterface() = default;
};

/// Keeps one object, in a form of the application's own. The field shares its ownership. None of the objects
/// that it hands out is counted by the library, so it keeps them until the parse or the printing ends.
class JSONRefObjInterface
{
public:
    /// The object begins in a text.
    /// @param field the field that the object is bound to.
    /// @return what takes its content, ready for it (see `JSONSerializable::jsonBeginParse`), or null to
    ///     refuse.
    virtual JSONParserAcceptor * parserBeginObject(JSONSerializable::JSONField * field) = 0;
    /// The object to fill from a tree, which stays this object's, or null to refuse.
    virtual JSONSerializable * createObject() = 0;
    /// The object to print, or null.
    virtual JSONSerializable * get() = 0;

protected:
    ~JSONRefObjInterface() = default;
};

} // namespace qvjson
