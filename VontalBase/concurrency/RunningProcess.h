/// @file
/// A child process that was started.
#pragma once

#include "VontalBase/core/ReferencedObject.h"

namespace qvbase
{

/// The caller's handle on a child that a `ProcessRunner` started. It can be held and let go, from any thread,
/// and does nothing else: neither the child nor its watching ends with it. While somebody holds it, the six
/// ends of the pipes of the child stay open, also behind its end.
class RunningProcess : public ReferencedObject
{
protected:
    ~RunningProcess() = default;
};

} // namespace qvbase
