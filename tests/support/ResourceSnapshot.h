/// @file
/// What the process holds of the system: descriptors (handles on Windows) and threads.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace testsupport
{

/// Taken twice and compared, it shows what was lost between.
struct ResourceSnapshot
{
    /// Open file descriptors; on Windows all handles of the process.
    std::size_t descriptors = 0;
    std::size_t threads = 0;

    /// The present state. Allocates nothing through operator new.
    static ResourceSnapshot take();

    friend bool operator==(const ResourceSnapshot &, const ResourceSnapshot &) = default;
};

/// The first of the numbers alone. Allocates nothing through operator new.
std::size_t countDescriptors();

/// How a failed comparison shows it.
std::string describe(const ResourceSnapshot & snapshot);

/// For GoogleTest's messages.
void PrintTo(const ResourceSnapshot & snapshot, std::ostream * stream);

} // namespace testsupport
