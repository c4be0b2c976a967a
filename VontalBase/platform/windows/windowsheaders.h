/// @internal
/// @file
/// <windows.h> for the sources of this half, with the settings that keep it small. The public headers
/// filetime.h and com.h include it by themselves.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif

#include <windows.h>
