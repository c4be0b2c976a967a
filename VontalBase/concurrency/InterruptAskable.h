/// @file
/// Asking whether to stop.
#pragma once

namespace qvbase
{

/// What long work asks again and again whether it should come to an end, without knowing who is behind it.
class InterruptAskable
{
public:
    /// Whether the work should come to an end. Cheap enough to be asked in a loop, by any thread; it cannot
    /// fail.
    virtual bool isInterrupted() = 0;

protected:
    ~InterruptAskable() = default;
};

} // namespace qvbase
