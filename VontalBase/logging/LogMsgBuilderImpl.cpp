#include "VontalBase/logging/LogMsgBuilderImpl.h"

#include "VontalBase/logging/lineparts.h"
#include "VontalBase/text/Decimal.h"
#include "VontalBase/text/sourcepaths.h"

#include <string_view>

namespace qvutils
{

namespace
{

/// More than all that a line has beside its two texts.
constexpr std::size_t roomForNumbers = 64;

std::string_view textOf(const char * text) noexcept
{
    return text == nullptr ? std::string_view() : std::string_view(text);
}

} // namespace

Vontal::u8string LogMsgBuilderImpl::build()
{
    const std::string_view source = textOf(qvbase::trimSourcePath(file));
    const std::string_view words = textOf(message);
    Vontal::u8string text;
    text.reserve(roomForNumbers + source.size() + words.size());
    appendLineHead(writeTimestamp, id, text);
    if (file != nullptr)
        text.append(":").append(source).append(":").append(Vontal::Decimal(line).text());
    if (message != nullptr)
        text.append(": ").append(words);
    if (message == nullptr || text.back() != '\n')
        text += '\n';
    return text;
}

} // namespace qvutils
