// Every static object of the library, in the order in which they must be made. They are destroyed in the
// opposite order. Loading starts no thread and opens no file.

#include "VontalBase/concurrency/threadregistry.h"
#include "VontalBase/core/ReferenceCounter.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/core/dateformat.h"
#include "VontalBase/core/debugregistry.h"
#include "VontalBase/text/conversions.h"

// Before all of them, since they may write to the standard streams.
#include <iostream>

namespace
{

/// An object that is made with the others but never destroyed, because threads may still use it while the
/// process ends.
template <class T>
union Immortal
{
    Immortal() : object()
    {
    }
    Immortal(const Immortal &) = delete;
    Immortal & operator=(const Immortal &) = delete;
    ~Immortal()
    {
    }

    T object;
};

} // namespace

namespace qvbase
{

std::map<IUnknown *, std::string> debugRegistry;
void (*debugCallback)() = nullptr;

static Immortal<ThreadMutex> referencedObjectMutex;
ThreadMutex & g_referencedObjectMutex = referencedObjectMutex.object;

} // namespace qvbase

static Vontal::Conversions conversions;

namespace qvbase
{

std::wstring dateFormat;

/// Kept: a counter that nothing uses.
static NamedReferenceCounter fileCounter("FileCounter");

static Immortal<ThreadRegistry> registry;
ThreadRegistry & threadRegistry = registry.object;

} // namespace qvbase
