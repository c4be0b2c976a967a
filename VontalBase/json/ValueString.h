/// @file
/// JSON's strings.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/json/CompactText.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/text/u8string.h"

#include <string_view>

namespace qvjson
{

/// The node of a string, whose bytes may hold zeros. It is made as `qvbase::ReferencedImpl<ValueString>`.
class VONTALBASE_API ValueString : public Item
{
public:
    /// Copies what the other one has.
    ValueString(const ValueString &) = default;
    /// Takes over what the other one has.
    ValueString(ValueString &&) = default;
    /// Copies what the other one has.
    ValueString & operator=(const ValueString &) = default;
    /// Takes over what the other one has.
    ValueString & operator=(ValueString &&) = default;

    /// True if @p other is a string of the same bytes.
    bool equals(Item const * other) const override;

    /// A copy of the text.
    Vontal::u8string getValue() const;
    /// The bytes in place, valid until the node changes or is gone.
    std::string_view view() const noexcept
    {
        return m_text.view();
    }
    /// Sets the text to @p length bytes, zeros among them. `std::bad_alloc` leaves it as it was.
    void set(char const * text, unsigned int length);

protected:
    /// An empty string.
    ValueString() noexcept : Item(TypeString)
    {
    }
    ~ValueString() = default;

private:
    friend struct TreeAccess;

    using Text = CompactText<20>;

    Text m_text;
};

} // namespace qvjson
