/// @file
/// JSON's arrays.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/SharedSlot.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>

namespace qvjson
{

struct ItemBlock;

/// The node of an array, whose elements may be null pointers. It is made as
/// `qvbase::ReferencedImpl<Array>`.
///
/// Every getter that is given an index returns false, and leaves its argument untouched, if the index is
/// not below the length.
///
/// Kept: copies share their elements. An assignment abandons what the target held, without freeing it.
class VONTALBASE_API Array : public Item
{
public:
    /// Shares the elements of @p other.
    Array(const Array & other) = default;
    /// Shares the elements of @p other. What this array held is not freed.
    Array & operator=(const Array & other) = default;

    /// Whether the lengths are equal and the elements pairwise too; a null pointer equals a null pointer.
    bool equals(Item const * other) const override;

    /// The number of elements.
    std::uint64_t getLength() const noexcept;

    /// Appends an element and counts it. @p item may be null, and may be an element already.
    /// `std::bad_alloc`, or `std::length_error` from 2147483647 elements on, leaves the array as it was.
    void add(Item * item);

    /// Puts the element at @p index in @p item, whose old object is let go.
    /// @return whether there is an element that is not null.
    bool getItem(unsigned int index, qvbase::Reference<Item> & item) const;
    /// Does what `getItem` does.
    ///
    /// Kept: the type of the element is not tested: ask `getType` of what came.
    bool getArray(unsigned int index, qvbase::Reference<Array> & array) const;
    /// Does what `getItem` does.
    ///
    /// Kept: the type of the element is not tested: ask `getType` of what came.
    bool getObject(unsigned int index, qvbase::Reference<Object> & object) const;

    /// The low 32 bits of the integer at @p index. @return false, with @p value untouched, if it is none.
    bool getInt(unsigned int index, int & value) const;
    /// The integer at @p index. @return false, with @p value untouched, if it is none.
    bool getInt64(unsigned int index, std::int64_t & value) const;
    /// The string at @p index. @return false, with @p value untouched, if it is none.
    bool getString(unsigned int index, Vontal::u8string & value) const;

protected:
    /// An empty array.
    Array() noexcept : Item(TypeArray)
    {
    }
    ~Array();

private:
    friend struct TreeAccess;

    /// The element at `index`, or null if there is none.
    Item * element(unsigned int index) const noexcept;

    SharedSlot<ItemBlock> m_items;
};

} // namespace qvjson
