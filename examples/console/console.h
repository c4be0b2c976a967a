// What a program for a terminal asks of the system.
#pragma once

#include "VontalBase/VontalBase.h"

#include <vector>

namespace console
{

/// The arguments of `main`, the program's name in front, as UTF-8.
std::vector<Vontal::u8string> arguments(int argc, char ** argv);

/// Whether somebody looks at the standard error stream while it is written.
bool isErrorTerminal();

/// Notes the first interrupt, as Ctrl-C sends it, instead of ending the program. A second one ends it.
void noteInterrupts();

/// Whether there was an interrupt since.
bool wasInterrupted();

} // namespace console
