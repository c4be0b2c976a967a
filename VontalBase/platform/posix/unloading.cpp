#include "VontalBase/platform/unloading.h"

namespace platform
{

namespace
{

bool hasModuleEnded = false;

/// What the module does at its end stands in front of the destructors of its static objects when it is
/// unloaded, which are called from the last of these functions; a process that ends calls the destructors
/// first.
[[gnu::destructor]] void endModule() noexcept
{
    hasModuleEnded = true;
}

} // namespace

bool isBeingUnloaded() noexcept
{
    return hasModuleEnded;
}

} // namespace platform
