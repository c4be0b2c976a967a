/// @file
/// JSON's objects.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/SharedSlot.h"
#include "VontalBase/text/u8string.h"

#include <map>
#include <memory>
#include <string_view>

namespace qvjson
{

struct ItemBlock;

/// The node of an object: items by key, in the byte order of the keys. An item may be a null pointer. It is
/// made as `qvbase::ReferencedImpl<Object>`.
///
/// Every getter that is given a key returns false, and leaves its argument untouched, if the key is absent.
///
/// Kept: copies share their items. An assignment abandons what the target held, without freeing it.
class VONTALBASE_API Object : public Item
{
public:
    /// Shares the items of @p other, and takes a copy of its pending key.
    Object(const Object & other);
    /// Shares the items of @p other, and takes a copy of its pending key. What this object held is not
    /// freed.
    Object & operator=(const Object & other);

    /// Whether the keys are equal and the values too; a null pointer equals a null pointer. Pending keys
    /// are not compared.
    bool equals(Item const * other) const override;
    virtual ~Object();

    /// Puts @p item under @p key, in place of what stood there, and counts it. @p item may be null.
    /// `std::bad_alloc` leaves the object as it was.
    ///
    /// Kept: the former item is let go first, with no test for the same one. An item that this entry alone
    /// holds, given again, is destroyed.
    void add(Vontal::u8string const & key, Item * item);
    /// Sets the key for the next `add(Item *)`.
    /// @return false, with nothing changed, if a key that is not empty is pending already.
    bool addKey(Vontal::u8string const & key);
    /// Puts @p item under the pending key, and clears that.
    ///
    /// Kept: an empty key cannot be used in this way: `addKey("")` is true, and the `add` behind it false.
    /// @return false, with nothing changed, if the pending key is empty.
    bool add(Item * item);

    /// Puts the item under @p key in @p item, whose old object is let go.
    /// @return whether the key is there, be its item null or not.
    bool getItem(Vontal::u8string const & key, qvbase::Reference<Item> & item) const;
    /// Does what `getItem` does.
    ///
    /// Kept: the type of the item is not tested: ask `getType` of what came.
    bool getArray(Vontal::u8string const & key, qvbase::Reference<Array> & array) const;
    /// Does what `getItem` does.
    ///
    /// Kept: the type of the item is not tested: ask `getType` of what came.
    bool getObject(Vontal::u8string const & key, qvbase::Reference<Object> & object) const;

    /// The low 32 bits of the integer under @p key. @return false, with @p value untouched, if it is none.
    bool getValue(Vontal::u8string const & key, int & value) const;
    /// The low 32 bits of the integer under @p key. @return false, with @p value untouched, if it is none.
    bool getValue(Vontal::u8string const & key, long & value) const
    {
        int low = 0;
        if (!getValue(key, low))
            return false;
        value = low;
        return true;
    }
    /// The string under @p key. @return false, with @p value untouched, if it is none.
    bool getValue(Vontal::u8string const & key, Vontal::u8string & value) const;
    /// The bool under @p key. @return false, with @p value untouched, if it is none.
    bool getValue(Vontal::u8string const & key, bool & value) const;

    /// Replaces @p items by all items and their keys. The items are shared, not copied.
    void getItems(std::map<Vontal::u8string, qvbase::Reference<Item>> & items) const;

protected:
    /// An empty object.
    Object() noexcept;

private:
    friend struct TreeAccess;

    void put(std::string_view key, Item * item);
    template <class Target>
    bool getChild(std::string_view key, qvbase::Reference<Target> & target) const;
    /// The item under `key`, or null if there is none or it is null.
    const Item * child(std::string_view key) const noexcept;

    /// Null where no key is pending.
    std::unique_ptr<Vontal::u8string> m_pendingKey;
    SharedSlot<ItemBlock> m_items;
};

} // namespace qvjson
