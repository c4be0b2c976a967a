/// @file
/// JSON's null.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"

namespace qvjson
{

/// The node of a null. It is made as `qvbase::ReferencedImpl<ValueNull>`.
class VONTALBASE_API ValueNull : public Item
{
public:
    /// True if @p other is a null as well.
    bool equals(Item const * other) const override;

protected:
    ValueNull() noexcept : Item(TypeNull)
    {
    }
};

} // namespace qvjson
