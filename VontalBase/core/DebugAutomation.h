/// @file
/// A tally of live COM objects by class, for reports of leaks.
#pragma once

#include "VontalBase/export.h"

#include <string>

struct IUnknown;

namespace qvbase
{

/// Registers a COM object as long as it lives itself. The object is a key only: nothing is called on it
/// and its count does not change.
///
/// The registry and the callback have no lock; callers serialise their use of them.
class VONTALBASE_API DebugAutomation
{
public:
    /// Registers @p object under the class @p name, and then calls the callback if there is one.
    /// @param name the class, which is copied; not null.
    /// @param object the key; may be null.
    DebugAutomation(const char * name, IUnknown * object);
    /// Copies the key and registers nothing: the first of the copies to go removes the entry.
    DebugAutomation(const DebugAutomation &) = default;
    /// Copies the key and registers nothing.
    DebugAutomation & operator=(const DebugAutomation &) = default;
    /// Removes the object from the registry, and then calls the callback if there is one.
    virtual ~DebugAutomation();

    /// Registers @p object under the class @p name, in place of any earlier name. The callback is not called.
    static void addReference(const char * name, IUnknown * object);
    /// Removes @p object from the registry. Nothing happens if it is not there. The callback is not called.
    static void releaseReference(IUnknown * object);
    /// The registered objects counted by class, in byte order of the names: "DebugAutomation - References : "
    /// and then a line "Class [name] = count" for each class, or "DebugAutomation - OK", without a line end,
    /// when nothing is registered.
    static std::string report();
    /// Sets what is called after each change that an instance makes, on the thread of the instance; null for
    /// nothing. It is called by destructors as well, so it must not throw.
    static void setCallback(void (*callback)());

private:
    IUnknown * m_object;
};

} // namespace qvbase
