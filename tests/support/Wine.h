/// @file
/// Asking whether the system is one that only behaves like Windows.
#pragma once

namespace testsupport
{

/// Whether the program runs under Wine.
bool isWine();

} // namespace testsupport
