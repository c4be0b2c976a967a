/// @internal
/// @file
/// The walk through the nodes of a list database.
#pragma once

#include "VontalBase/utils/soop_node.h"

#include <vector>

namespace qv_soop
{

/// Goes through a node and those below it in the order of the file. The depth of the tree costs memory, but
/// no stack.
class TreeWalk
{
public:
    /// Stands at @p start.
    explicit TreeWalk(const soop_node & start) : m_current(&start)
    {
    }

    /// Where it stands; null at the end.
    const soop_node * current() const noexcept
    {
        return m_current;
    }

    /// Goes on with the children, if there are any.
    void enter()
    {
        m_levels.push_back({m_current->getSubnodes().begin(), m_current->getSubnodes().end()});
        takeNext();
    }

    /// Goes on behind the children.
    void skip()
    {
        takeNext();
    }

private:
    using Place = std::list<soop_node *>::const_iterator;

    struct Level
    {
        Place next;
        Place end;
    };

    void takeNext()
    {
        while (!m_levels.empty() && m_levels.back().next == m_levels.back().end)
            m_levels.pop_back();
        m_current = m_levels.empty() ? nullptr : *m_levels.back().next++;
    }

    const soop_node * m_current;
    std::vector<Level> m_levels;
};

} // namespace qv_soop
