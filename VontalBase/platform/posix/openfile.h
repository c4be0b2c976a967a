/// @internal
/// @file
/// Opening files and what comes before their first byte.
#pragma once

#include "VontalBase/platform/openmode.h"
#include "VontalBase/platform/posix/kernelpath.h"

#include <sys/stat.h>

namespace qvplatform
{

/// Those who may write to a file; one without any of them is read-only.
constexpr mode_t writeBits = S_IWUSR | S_IWGRP | S_IWOTH;

/// The mode of a file that is made for everybody, before the process's mask.
constexpr mode_t usualFileMode = 0666;

/// `open` behind a gate, until no signal interrupts it; never for child processes.
/// @return the descriptor, which the caller closes; -1 where the system refuses.
int openFile(const char * service, const KernelPath & path, int flags, mode_t mode = 0);

/// The flags of the kernel for a mode. Emptying is left to `settle`.
int flagsOf(const OpenMode & mode) noexcept;

/// Makes an open file ready: it is no directory, the lock that goes with the mode is taken, and then it is
/// emptied where the mode says so. A file system that has no locks refuses nobody.
/// @return false where that cannot be. The descriptor stays the caller's; a file that an exclusive mode made
///     for nothing is removed.
bool settle(int descriptor, const KernelPath & path, const OpenMode & mode);

} // namespace qvplatform
