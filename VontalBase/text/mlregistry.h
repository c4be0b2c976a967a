/// @internal
/// @file
/// What all multi-language strings share. The objects are made in module.cpp.
#pragma once

#include <string>

namespace qvbase
{
class ThreadMutex;
}

namespace Vontal
{

class ml_u8string;

/// Guards the chain of live objects and the default language.
extern qvbase::ThreadMutex & mlLock;
/// The newest live object, or null.
extern ml_u8string * newestMl;
/// The language that new objects prefer, as it was given.
extern std::string & mlDefaultLanguage;

} // namespace Vontal
