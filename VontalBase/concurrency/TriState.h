/// @file
/// A yes, a no, or neither.
#pragma once

namespace qvbase
{

/// The result of a command.
enum TriState : int
{
    /// There is no result yet.
    TriStateUnknown = 0,
    /// The command reached its goal. Only commands themselves say so.
    TriStateYes = 1,
    /// It did not; what `cancel` makes of a command without a result.
    TriStateNo = 2
};

} // namespace qvbase
