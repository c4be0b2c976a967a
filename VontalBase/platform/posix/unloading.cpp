#include "VontalBase/platform/unloading.h"

#include "VontalBase/platform/posix/xmlguard.h"

#include <dlfcn.h>

namespace qvplatform
{

namespace
{

/// Something that the library exports and no other one does.
constexpr char exportedName[] = "_ZN7qvutils18getResourceManagerEv";

bool isBoundToProgram = true;
bool hasModuleEnded = false;

/// Whether the module lives as long as the program, which needs it from its start. One that was loaded for
/// everybody to use is taken for that too.
[[gnu::constructor]] void beginModule() noexcept
{
    void * const program = dlopen(nullptr, RTLD_LAZY);
    if (program == nullptr)
        return;
    isBoundToProgram = dlsym(program, exportedName) != nullptr;
    dlclose(program);
}

/// A module that was loaded later ends in one of two ways. When it is unloaded, this function is called first
/// and then the destructors of its static objects, by the last of the functions of this kind; a program that
/// ends calls the destructors first.
[[gnu::destructor]] void endModule() noexcept
{
    hasModuleEnded = true;
}

} // namespace

bool isBeingUnloaded() noexcept
{
    return hasModuleEnded && !isBoundToProgram;
}

void keepUsableForThreads() noexcept
{
    keepXmlLibrary();
}

} // namespace qvplatform
