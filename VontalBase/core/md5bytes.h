/// @internal
/// @file
/// What a digest takes of a text.
#pragma once

#include <cstdint>
#include <string_view>

namespace qvbase
{

/// The bytes of a text that a digest takes.
///
/// Kept: the length counts modulo 2 to the 32nd.
constexpr std::string_view bytesToDigest(std::string_view text) noexcept
{
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

} // namespace qvbase
