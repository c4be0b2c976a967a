/// @internal
/// @file
/// Finding names quickly, whoever made them up.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zip
{

/// How letters compare.
enum class Case
{
    Exact,
    /// A to Z are as a to z; no other letter is as another one.
    AsciiIgnored
};

/// Sorted names with their numbers. It is no hash table, since an archive could be full of names that meet in
/// one place of that.
class NameIndex
{
public:
    explicit NameIndex(Case compared) noexcept : m_case(compared)
    {
    }

    /// Empties it, and makes room.
    void start(std::size_t count, std::size_t bytes);

    /// Takes up a name.
    void add(std::string_view name, std::size_t number);

    /// To be called behind the last name.
    void finish();

    /// The lowest number with a name.
    /// @return false where there is none.
    bool find(std::string_view name, std::size_t & number) const;

    /// Makes it one that was not finished.
    void forget() noexcept
    {
        m_count = 0;
    }

    /// How many names there were when it was finished, as `start` was told.
    [[nodiscard]] std::size_t count() const noexcept
    {
        return m_count;
    }

private:
    struct Key
    {
        std::size_t start;
        std::size_t length;
        std::size_t number;
    };

    [[nodiscard]] std::string_view text(const Key & key) const noexcept;
    void append(std::string & text, std::string_view name) const;

    Case m_case;
    std::size_t m_expected = 0;
    std::size_t m_count = 0;
    std::string m_text;
    std::vector<Key> m_keys;
};

} // namespace zip
