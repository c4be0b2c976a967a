/// @internal
/// @file
/// The start-up step of the conversions.
#pragma once

namespace Vontal
{

/// Kept: the name of the code page is made and dropped, and the step never fails.
/// @return true.
bool initializeConversions();

/// Ends the process, with a word on the standard error stream, if the step did not succeed.
void requireConversions(bool isInitialized);

} // namespace Vontal
