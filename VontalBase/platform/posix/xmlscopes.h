/// @internal
/// @file
/// Which prefixes are declared on the way down to an element.
#pragma once

#include "VontalBase/platform/posix/xmltree.h"

#include <cstddef>
#include <libxml/xmlstring.h>
#include <new>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qvplatform
{

/// The place of a text in the dictionary of a node's tree: texts that are the same have the same.
inline const xmlChar * internIn(const xmlNode * node, std::string_view text)
{
    const xmlChar * const place = Tree::of(node).intern(text);
    if (place == nullptr)
        throw std::bad_alloc();
    return place;
}

/// Declarations by prefix. A prefix is known by its place in a dictionary. `Meaning` is a pointer.
template <class Meaning>
class PrefixScopes
{
public:
    /// Declares a prefix for an element, which is that many levels deep, and all below it.
    void declare(const xmlChar * prefix, Meaning meaning, int depth)
    {
        const auto place = m_current.try_emplace(prefix, none).first;
        m_declarations.push_back({prefix, meaning, depth, place->second});
        place->second = m_declarations.size() - 1;
    }

    /// An element that is that many levels deep has ended.
    void leave(int depth) noexcept
    {
        while (!m_declarations.empty() && m_declarations.back().depth >= depth)
        {
            m_current.find(m_declarations.back().prefix)->second = m_declarations.back().previous;
            m_declarations.pop_back();
        }
    }

    /// What a prefix means here; null where it is not declared.
    [[nodiscard]] Meaning find(const xmlChar * prefix) const noexcept
    {
        const auto place = m_current.find(prefix);
        if (place == m_current.end() || place->second == none)
            return nullptr;
        return m_declarations[place->second].meaning;
    }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    struct Declaration
    {
        const xmlChar * prefix;
        Meaning meaning;
        int depth;
        std::size_t previous;
    };

    std::vector<Declaration> m_declarations;
    std::unordered_map<const xmlChar *, std::size_t> m_current;
};

} // namespace qvplatform
