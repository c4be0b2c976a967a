/// @file
/// A list of listeners.
#pragma once

#include <algorithm>
#include <vector>

namespace qvbase
{

/// Holds pointers to listeners in the order of their registration. The listeners stay others', and must live
/// as long as they are registered, and then until a notification that is under way has ended. A container
/// belongs to one thread at a time.
///
/// @tparam L the type of the listeners.
template <class L>
class ListenerContainer
{
public:
    /// A container without listeners.
    ListenerContainer() = default;
    /// Copies the list.
    ListenerContainer(const ListenerContainer &) = default;
    /// Copies the list.
    ListenerContainer & operator=(const ListenerContainer &) = default;
    /// Leaves the listeners alone.
    virtual ~ListenerContainer() = default;

    /// Puts a listener behind the others. One that is there already is there twice from then on.
    /// @param listener not null.
    void registerListener(L * listener)
    {
        m_listeners.push_back(listener);
    }

    /// Removes the first entry of a listener; nothing happens where there is none.
    void unregisterListener(L * listener)
    {
        const auto found = std::find(m_listeners.begin(), m_listeners.end(), listener);
        if (found != m_listeners.end())
            m_listeners.erase(found);
    }

protected:
    /// The listeners in the order of their registration.
    const std::vector<L *> & getListeners() const noexcept
    {
        return m_listeners;
    }

private:
    std::vector<L *> m_listeners;
};

} // namespace qvbase
