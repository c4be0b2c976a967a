/// @internal
/// @file
/// The texts of one bundle file.
#pragma once

#include "VontalBase/text/u8string.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qvutils
{

/// A sorted map that is made once and never changes, so that it lies together in memory. Keys are compared by
/// their bytes.
class SortedTexts
{
public:
    SortedTexts() = default;
    SortedTexts(const SortedTexts &) = delete;
    SortedTexts & operator=(const SortedTexts &) = delete;

    /// Takes the texts of a ".properties" file. Called once; `std::bad_alloc` may leave it.
    /// @return false, with nothing taken, where the file has a fault or a key twice.
    bool read(std::string_view file);

    /// @return null if there is none; otherwise it lives as long as the map.
    [[nodiscard]] const Vontal::u8string * find(std::string_view key) const noexcept;

    [[nodiscard]] std::size_t size() const noexcept
    {
        return m_texts.size();
    }

private:
    struct Text
    {
        /// Within the one block of all keys.
        std::string_view key;
        Vontal::u8string value;
    };

    std::string m_keys;
    std::vector<Text> m_texts;
};

} // namespace qvutils
