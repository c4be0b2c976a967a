/// @file
/// What is told of the entries of a directory.
#pragma once

#include "VontalBase/export.h"

namespace qvdisk
{

class File;

/// Receives the entries of a directory from `File::getEntries`, one call for each.
class VONTALBASE_API FileEnumerator
{
public:
    FileEnumerator() = default;
    /// Copies what the other one has.
    FileEnumerator(const FileEnumerator &) = default;
    /// Copies what the other one has.
    FileEnumerator & operator=(const FileEnumerator &) = default;

    /// Takes one entry.
    /// @param entry the entry with its path; it exists only during the call.
    /// @return true to go on, false to stop.
    virtual bool onEntry(File & entry) = 0;

protected:
    /// Nobody deletes one by this class.
    ~FileEnumerator() = default;
};

} // namespace qvdisk
