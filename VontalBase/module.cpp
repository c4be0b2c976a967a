// Every static object of the library, in the order in which they must be made. They are destroyed in the
// opposite order. Loading starts no thread and opens no file.

#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/core/ReferenceCounter.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/core/dateformat.h"
#include "VontalBase/core/debugregistry.h"
#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/platform/threads.h"
#include "VontalBase/platform/unloading.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/mlregistry.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/ResourceManagerImpl.h"
#include "VontalBase/utils/emptybundles.h"

// Before all of them, since they may write to the standard streams.
#include <atomic>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <string>

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

/// Does something in its place among the destructors if the library is being unloaded, so that what immortal
/// objects hold is not lost.
template <class Action>
class AtUnloading
{
public:
    explicit AtUnloading(Action action) : m_action(action)
    {
    }
    AtUnloading(const AtUnloading &) = delete;
    AtUnloading & operator=(const AtUnloading &) = delete;
    ~AtUnloading()
    {
        if (qvplatform::isBeingUnloaded())
            m_action();
    }

private:
    Action m_action;
};

/// At the end of a process, lets the threads that still run go on with what other libraries give them.
class UsableToTheEnd
{
public:
    UsableToTheEnd() = default;
    UsableToTheEnd(const UsableToTheEnd &) = delete;
    UsableToTheEnd & operator=(const UsableToTheEnd &) = delete;
    ~UsableToTheEnd()
    {
        if (!qvplatform::isBeingUnloaded())
            qvplatform::keepUsableForThreads();
    }
};

} // namespace

static UsableToTheEnd usableToTheEnd;

namespace qvbase
{

static Immortal<std::map<IUnknown *, std::string>> debugRegistryObject;
std::map<IUnknown *, std::string> & debugRegistry = debugRegistryObject.object;
static AtUnloading debugRegistryEnd([] { debugRegistry.clear(); });

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

static AtUnloading mlLanguageEnd([] { std::string("C").swap(mlDefaultLanguage); });

} // namespace Vontal

static Vontal::Conversions conversions;

namespace qvbase
{

static Immortal<std::wstring> dateFormatObject;
std::wstring & dateFormat = dateFormatObject.object;
static AtUnloading dateFormatEnd([] { std::wstring().swap(dateFormat); });

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
static AtUnloading resourceManagerEnd([] { std::destroy_at(&resourceManagerObject.object); });

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
