#include "VontalBase/json/ValueString.h"

namespace qvjson
{

bool ValueString::equals(Item const * other) const
{
    if (other == nullptr || other->getType() != getType())
        return false;
    return static_cast<const ValueString *>(other)->view() == view();
}

Vontal::u8string ValueString::getValue() const
{
    return {view().data(), view().size()};
}

void ValueString::set(char const * text, unsigned int length)
{
    m_text = Text(std::string_view(text, length));
}

} // namespace qvjson
