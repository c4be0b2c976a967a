/// @file
/// Memory that is lost on purpose.
#pragma once

namespace testsupport
{

/// While the object lives, what the calling thread allocates is no leak to the leak check. For tests of
/// operations that are required to abandon something.
class IntendedLeak
{
public:
    IntendedLeak();
    IntendedLeak(const IntendedLeak &) = delete;
    IntendedLeak & operator=(const IntendedLeak &) = delete;
    ~IntendedLeak();
};

} // namespace testsupport
