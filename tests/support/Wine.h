/// @file
/// Asking whether the system is one that only behaves like Windows.
#pragma once

namespace testsupport
{

/// Whether the program runs under Wine.
bool isWine();

/// How often a child may have to be started until it is there. On a busy machine Wine refuses one of some
/// hundreds for no reason of ours.
int startingTries();

} // namespace testsupport
