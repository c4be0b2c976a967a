/// @file
/// JSON's true and false.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"

namespace qvjson
{

/// The node of a bool. It is made as `qvbase::ReferencedImpl<ValueBool>`.
class VONTALBASE_API ValueBool : public Item
{
public:
    /// True if @p other is an equal bool.
    bool equals(Item const * other) const override;

    /// The value.
    bool getValue() const noexcept
    {
        return m_value;
    }
    /// Sets the value.
    void set(bool value) noexcept
    {
        m_value = value;
    }

protected:
    /// A false.
    ValueBool() noexcept : Item(TypeBool)
    {
    }

private:
    bool m_value = false;
};

} // namespace qvjson
