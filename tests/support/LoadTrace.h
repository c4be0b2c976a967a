/// @file
/// What a process asks of the system while it loads a library.
#pragma once

#include <string>
#include <vector>

namespace testsupport
{

/// What was seen while a library was loaded.
struct LoadTrace
{
    /// False where this system has no way to look at the calls of a process, or allows none.
    bool wasTraced = false;
    /// Whether the library could be loaded.
    bool wasLoaded = false;
    /// The paths of all files that were opened, in their order, those of libraries among them.
    std::vector<std::string> opened;
    /// How many threads or processes were started.
    int started = 0;
};

/// Loads a library in a process of its own, all of whose calls of the system are looked at.
///
/// @param library its path. To be called while the process has one thread.
LoadTrace traceLoading(const std::string & library);

} // namespace testsupport
