/// @internal
/// @file
/// Printing whole trees.
#pragma once

#include "VontalBase/json/containers.h"

#include <string_view>
#include <vector>

namespace qvjson
{

class JSONWriter;

/// Prints one tree. Depth costs no stack.
class TreePrinter
{
public:
    explicit TreePrinter(JSONWriter & writer) noexcept : m_writer(writer)
    {
    }

    /// Whether there is a node, and one of a known type.
    static bool isPrintable(const Item * item) noexcept;

    /// Writes a printable node and all below it from `to` on, where there is room. Sets `to` behind what it
    /// wrote.
    /// @return false where it stops, at a child that is not printable.
    bool print(const Item & root, char *& to);

    /// Whether it stopped behind an opening bracket.
    bool stoppedAtStart() const noexcept
    {
        return !m_open.empty() && m_open.back().isArray() && m_isFirst;
    }
    /// Whether it stopped behind a key.
    bool stoppedAfterKey() const noexcept
    {
        return !m_open.empty() && !m_open.back().isArray();
    }

private:
    void put(const Item & item, char *& to);
    char * putKey(char * to, std::string_view key);

    JSONWriter & m_writer;
    /// The containers now open, the innermost last.
    std::vector<ChildCursor> m_open;
    /// Whether the next child is the first of its container.
    bool m_isFirst = false;
};

} // namespace qvjson
