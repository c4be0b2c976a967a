// Every static object of the library, in the order in which they must be made. They are destroyed in the
// opposite order. Loading starts no thread and opens no file.

#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/concurrency/threadregistry.h"
#include "VontalBase/core/ReferenceCounter.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/core/dateformat.h"
#include "VontalBase/core/debugregistry.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/platform/threads.h"
#include "VontalBase/platform/unloading.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/mlregistry.h"
#include "VontalBase/utils/ResourceManagerImpl.h"
#include "VontalBase/utils/emptybundles.h"

// Before all of them, since they may write to the standard streams.
#include <iostream>
#include <memory>

namespace
{

/// An object that is made with the others but never destroyed, because threads may still use it while the
/// process ends.
template <class T>
union Immortal
{
    template <class... Arguments>
    explicit Immortal(Arguments... arguments) : object(arguments...)
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

static Immortal<RankedMutex> referencedObjectMutex(qvplatform::LockRank::Last);
ThreadMutex & g_referencedObjectMutex = referencedObjectMutex.object.mutex;

} // namespace qvbase

namespace Vontal
{

static Immortal<qvbase::RankedMutex> mlLockObject(qvplatform::LockRank::Languages);
qvbase::ThreadMutex & mlLock = mlLockObject.object.mutex;

ml_u8string * newestMl = nullptr;

static Immortal<std::string> mlDefaultLanguageObject("C");
std::string & mlDefaultLanguage = mlDefaultLanguageObject.object;

/// Gives back what a long name of a language has taken.
static struct MlLanguageEnd
{
    ~MlLanguageEnd()
    {
        if (qvplatform::isBeingUnloaded())
            std::string("C").swap(mlDefaultLanguage);
    }
} mlLanguageEnd;

} // namespace Vontal

static Vontal::Conversions conversions;

namespace qvbase
{

std::wstring dateFormat;

/// Kept: a counter that nothing uses.
static NamedReferenceCounter fileCounter("FileCounter");

static Immortal<ThreadRegistry> registry;
ThreadRegistry & threadRegistry = registry.object;

} // namespace qvbase

namespace qvutils
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;

static Immortal<ReferencedImplMT<EmptyResourceBundle>> emptyResourceBundleObject;
static Immortal<Reference<ResourceBundle>> emptyResourceBundleHeld(&emptyResourceBundleObject.object);
const Reference<ResourceBundle> & emptyResourceBundle = emptyResourceBundleHeld.object;

static Immortal<Vontal::u8string> emptyTextObject;
const Vontal::u8string & emptyText = emptyTextObject.object;

static Immortal<ReferencedImplMT<EmptyMultiLanguageBundle>> emptyMultiLanguageBundleObject;
static Immortal<Reference<MultiLanguageBundle>> emptyMultiLanguageBundleHeld(
    &emptyMultiLanguageBundleObject.object);
const Reference<MultiLanguageBundle> & emptyMultiLanguageBundle = emptyMultiLanguageBundleHeld.object;

static Immortal<ReferencedImplMT<ResourceManagerImpl>> resourceManagerObject;
static Immortal<Reference<ResourceManager>> resourceManagerHeld(&resourceManagerObject.object);
const Reference<ResourceManager> & processResourceManager = resourceManagerHeld.object;

namespace
{

/// Destroys the manager where nobody can use it any more and its bundles would be lost.
struct ResourceManagerEnd
{
    ResourceManagerEnd() = default;
    ResourceManagerEnd(const ResourceManagerEnd &) = delete;
    ResourceManagerEnd & operator=(const ResourceManagerEnd &) = delete;
    ~ResourceManagerEnd()
    {
        if (qvplatform::isBeingUnloaded())
            std::destroy_at(&resourceManagerObject.object);
    }
};

} // namespace

static ResourceManagerEnd resourceManagerEnd;

/// The level of the last line.
constexpr unsigned int closingLevel = 1024;

static Immortal<DailyLogger> systemLoggerObject;
DailyLogger & systemLogger = systemLoggerObject.object;

static Immortal<LogFormater> systemLogFormaterObject(&systemLoggerObject.object, closingLevel, true);
LogFormater & systemLogFormater = systemLogFormaterObject.object;

bool systemLogHasEnded = false;

std::atomic<std::uint32_t> systemLogProcess{qvplatform::currentProcessId()};

/// Destroyed in the place of the two.
static SystemLogSwitch systemLogSwitch;

} // namespace qvutils
