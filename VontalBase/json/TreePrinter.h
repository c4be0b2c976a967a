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

    /// Whether what comes where it stopped takes no comma, as behind an opening bracket or a key.
    bool stoppedWithoutComma() const noexcept
    {
        return m_isFirst || (!m_open.empty() && !m_open.back().isArray());
    }

private:
    void put(const Item & item, char *& to);
    char * putKey(char * to, std::string_view key);

    JSONWriter & m_writer;
    /// The containers now open, the innermost last.
    std::vector<ChildCursor> m_open;
    /// Whether the next child is the first of its container. Set with the bracket, since there may be no
    /// memory for the container then.
    bool m_isFirst = false;
};

} // namespace qvjson
