/// @file
/// A byte string for the many small texts of a tree.
#pragma once

#include <algorithm>
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
/// address of the text, and the next seven its length. A text that it only borrows is never freed; copies
/// and moves own what they get.
template <std::size_t Capacity>
class CompactText
{
public:
    /// The longest text that needs no memory of its own.
    static constexpr std::size_t inlineCapacity = Capacity - 1;

    CompactText() noexcept = default;
    /// Copies a text.
    explicit CompactText(std::string_view text)
    {
        store(text);
    }
    /// Copies what the other one has.
    CompactText(const CompactText & other) : CompactText(other.view())
    {
    }
    /// Takes the text over; a borrowed one is copied.
    // NOLINTNEXTLINE(performance-noexcept-move-constructor): a borrowed text is copied, and that may fail.
    CompactText(CompactText && other)
    {
        if (other.m_bytes.back() == borrowedMark)
            store(other.view());
        else
            std::swap(m_bytes, other.m_bytes);
    }
    /// Copies what the other one has.
    CompactText & operator=(CompactText other)
    {
        std::swap(m_bytes, other.m_bytes);
        return *this;
    }
    ~CompactText()
    {
        if (m_bytes.back() == ownedMark)
            delete[] outsideText();
    }

    /// Takes the place of a text within; `text` must outlive it.
    void borrow(std::string_view text) noexcept
    {
        *this = CompactText();
        point(text.data(), text.size(), borrowedMark);
    }

    /// The text, valid until this object changes.
    std::string_view view() const noexcept
    {
        if (isOutside())
            return {outsideText(), outsideSize()};
        return {reinterpret_cast<const char *>(m_bytes.data()), m_bytes.back()};
    }

    /// Whether there is no text.
    bool empty() const noexcept
    {
        return m_bytes.back() == 0;
    }

    /// Whether the other one has the same bytes. Texts within are compared with what stands behind them,
    /// which is zero.
    bool isSame(const CompactText & other) const noexcept
    {
        if (!isOutside())
            return m_bytes == other.m_bytes;
        return other.isOutside() && view() == other.view();
    }

    /// The first eight bytes as a number whose order is that of the texts, as far as it goes.
    std::uint64_t prefix() const noexcept
    {
        const unsigned char * const bytes =
            isOutside() ? reinterpret_cast<const unsigned char *>(outsideText()) : m_bytes.data();
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < sizeof(number); ++i)
            number = number << 8 | bytes[i];
        return number;
    }

private:
    static constexpr unsigned char ownedMark = 0xFF;
    static constexpr unsigned char borrowedMark = 0xFE;
    static_assert(Capacity >= 16 && Capacity < borrowedMark);

    bool isOutside() const noexcept
    {
        return m_bytes.back() >= borrowedMark;
    }

    void point(const char * text, std::uint64_t size, unsigned char mark) noexcept
    {
        std::memcpy(m_bytes.data(), &text, sizeof(text));
        std::memcpy(m_bytes.data() + sizeof(text), &size, 7);
        m_bytes.back() = mark;
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
            // The bytes of an empty text may be nowhere.
            std::copy(text.begin(), text.end(), m_bytes.begin());
            m_bytes.back() = static_cast<unsigned char>(text.size());
            return;
        }
        char * const outside = new char[text.size()];
        std::memcpy(outside, text.data(), text.size());
        point(outside, text.size(), ownedMark);
    }

    std::array<unsigned char, Capacity> m_bytes = {};
};

} // namespace qvjson
