/// @file
/// A byte string for the many small texts of a tree.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace qvjson
{

/// An implementation detail of the nodes of a tree: owns bytes, and holds up to `Capacity - 1` of them within
/// itself. It can be moved by copying its bytes, provided the source is then forgotten, and has no alignment
/// to speak of, so that nodes pack.
///
/// Its last byte is the length of a text held within, or a mark: then the first eight bytes are the
/// address of the text, and the next seven its length.
template <std::size_t Capacity>
class CompactText
{
public:
    static constexpr std::size_t inlineCapacity = Capacity - 1;

    CompactText() noexcept = default;
    explicit CompactText(std::string_view text)
    {
        store(text);
    }
    CompactText(const CompactText & other) : CompactText(other.view())
    {
    }
    CompactText(CompactText && other) noexcept : m_bytes(std::exchange(other.m_bytes, {}))
    {
    }
    CompactText & operator=(const CompactText & other)
    {
        if (this != &other)
            *this = CompactText(other.view());
        return *this;
    }
    CompactText & operator=(CompactText && other) noexcept
    {
        std::swap(m_bytes, other.m_bytes);
        return *this;
    }
    ~CompactText()
    {
        if (isOutside())
            delete[] outsideText();
    }

    std::string_view view() const noexcept
    {
        if (isOutside())
            return {outsideText(), outsideSize()};
        return {reinterpret_cast<const char *>(m_bytes.data()), m_bytes.back()};
    }

    bool empty() const noexcept
    {
        return m_bytes.back() == 0;
    }

private:
    static constexpr unsigned char outsideMark = 0xFF;
    static_assert(Capacity >= 16 && Capacity < outsideMark);

    bool isOutside() const noexcept
    {
        return m_bytes.back() == outsideMark;
    }

    char * outsideText() const noexcept
    {
        char * text = nullptr;
        std::memcpy(&text, m_bytes.data(), sizeof(text));
        return text;
    }

    std::size_t outsideSize() const noexcept
    {
        std::uint64_t size = 0;
        std::memcpy(&size, m_bytes.data() + sizeof(char *), 7);
        return size;
    }

    void store(std::string_view text)
    {
        if (text.size() <= inlineCapacity)
        {
            std::memcpy(m_bytes.data(), text.data(), text.size());
            m_bytes.back() = static_cast<unsigned char>(text.size());
            return;
        }
        char * const outside = new char[text.size()];
        std::memcpy(outside, text.data(), text.size());
        const std::uint64_t size = text.size();
        std::memcpy(m_bytes.data(), &outside, sizeof(outside));
        std::memcpy(m_bytes.data() + sizeof(outside), &size, 7);
        m_bytes.back() = outsideMark;
    }

    std::array<unsigned char, Capacity> m_bytes = {};
};

} // namespace qvjson
