/// @file
/// The node of a JSON tree.
///
/// A tree has integers and no real numbers. Nodes are counted without a lock: a tree, and every node that
/// is reachable from it, belongs to one thread at a time; threads may share it as long as all of them only
/// read values, and neither take references nor copy containers. A tree may be of any depth: nothing here
/// recurses. `std::bad_alloc` may leave whatever copies, adds, compares or prints.
#pragma once

#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>

namespace qvjson
{

class Array;
class Object;
class ValueBool;
class ValueInt;
class ValueNull;
class ValueString;

/// The kinds of node. The numbers are fixed.
enum Type : std::uint32_t
{
    TypeNull = 0,     ///< `ValueNull`
    TypeObject = 1,   ///< `Object`
    TypeArray = 2,    ///< `Array`
    TypeString = 3,   ///< `ValueString`
    TypeInt = 4,      ///< `ValueInt`
    TypeReserved = 5, ///< borne by no class of the library
    TypeBool = 6      ///< `ValueBool`
};

/// A node. Concrete nodes are made as `qvbase::ReferencedImpl<Object>` and so on.
///
/// No operation converts: each getter returns false and leaves its argument untouched unless the node is of
/// exactly the matching type.
class VONTALBASE_API Item : public qvbase::ReferencedObject
{
public:
    /// The kind of this node.
    virtual Type getType() const;
    /// Whether the node is a string, an integer or a bool.
    ///
    /// Kept: null is no value.
    virtual bool isValue() const;
    /// Whether the two trees are equal. Arrays and objects within are compared by the library's own rules,
    /// without their `equals`, so that depth costs no stack. Objects are equal whatever the order in which
    /// their keys came.
    /// @param other the root of the other tree; null is equal to nothing.
    virtual bool equals(Item const * other) const = 0;

    /// The value of a `ValueBool`. @return false, with @p value untouched, for any other node.
    bool getBool(bool & value) const;
    /// The low 32 bits of a `ValueInt`. @return false, with @p value untouched, for any other node.
    bool getInt(int & value) const;
    /// The value of a `ValueInt`. @return false, with @p value untouched, for any other node.
    bool getInt64(std::int64_t & value) const;
    /// The bytes of a `ValueString`. @return false, with @p value untouched, for any other node.
    bool getString(Vontal::u8string & value) const;

    /// This node if it is an array, otherwise null. No count changes.
    operator Array *();
    /// This node if it is an object, otherwise null. No count changes.
    operator Object *();
    /// This node if it is a bool, otherwise null. No count changes.
    operator ValueBool *();
    /// This node if it is an integer, otherwise null. No count changes.
    operator ValueInt *();
    /// This node if it is JSON's null, otherwise null. No count changes.
    operator ValueNull *();
    /// This node if it is a string, otherwise null. No count changes.
    operator ValueString *();

protected:
    /// A node of some kind. All kinds beyond 0xFFFF count as that one.
    explicit Item(Type type) noexcept
        : m_type(static_cast<std::uint16_t>(type <= greatestType ? type : greatestType))
    {
    }
    /// Copies what the node is, and not where it lies.
    Item(const Item & other) noexcept : ReferencedObject(other), m_type(other.m_type)
    {
    }
    /// Copies what the other one has.
    Item & operator=(const Item & other) noexcept
    {
        m_type = other.m_type;
        return *this;
    }
    ~Item() = default;

private:
    friend struct TreeAccess;

    static constexpr std::uint32_t greatestType = 0xFFFF;

    /// A value of `Type`.
    std::uint16_t m_type;
    /// For a node that a parse made: where it lies in the memory of that parse, in units of eight bytes.
    std::uint16_t m_place = 0;
};

} // namespace qvjson
