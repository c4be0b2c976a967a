#include "VontalBase/utils/ResourceManagerImpl.h"

#include "VontalBase/concurrency/LastingLock.h"
#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/disk/places.h"
#include "VontalBase/utils/MultiLanguageBundleImpl.h"
#include "VontalBase/utils/bundlefiles.h"
#include "VontalBase/utils/emptybundles.h"

#include <utility>

namespace qvutils
{

using qvbase::Reference;
using Vontal::u8string;

namespace
{

constexpr char firstLanguage[] = "en_US";

/// Kept: where the program's directory is not told, what is left is below the root.
u8string usualRootDirectory()
{
    u8string directory;
    static_cast<void>(qvdisk::getModuleDir(directory));
    return inDirectory(directory, "locale");
}

} // namespace

ResourceManagerImpl::ResourceManagerImpl()
    : defaultBundle(emptyMultiLanguageBundle), language(firstLanguage), rootDirectory(usualRootDirectory())
{
    qvbase::LockRanks::set(mutex, qvplatform::LockRank::ResourceManager);
}

void ResourceManagerImpl::setRootDirectory(const u8string & directory)
{
    const qvbase::LastingLock lock(mutex);
    if (lock.isHeld())
        rootDirectory = directory;
}

const u8string & ResourceManagerImpl::getRootDirectory()
{
    const qvbase::LastingLock lock(mutex);
    return lock.isHeld() ? rootDirectory : emptyText;
}

void ResourceManagerImpl::setDefaultBundle(const u8string & name)
{
    const qvbase::LastingLock lock(mutex);
    if (!lock.isHeld())
        return;
    const Reference<MultiLanguageBundle> & bundle = ensure(name);
    defaultBundleName = name;
    defaultBundle = bundle;
}

void ResourceManagerImpl::setLanguage(const u8string & wanted)
{
    const qvbase::LastingLock lock(mutex);
    if (!lock.isHeld())
        return;
    language = wanted;
    for (const auto & [name, bundle] : bundles)
        bundle->setLanguage(language);
}

const u8string & ResourceManagerImpl::getLanguage()
{
    // Kept: without the lock.
    return language;
}

const u8string & ResourceManagerImpl::getString(const u8string & key)
{
    const qvbase::LastingLock lock(mutex);
    return lock.isHeld() ? defaultBundle->getString(key) : key;
}

const u8string & ResourceManagerImpl::getString(const u8string & bundleName, const u8string & key)
{
    // Without a reference on the texts, each change of whose count is a lock of its own.
    const qvbase::LastingLock lock(mutex);
    return lock.isHeld() ? ensure(bundleName)->getString(key) : key;
}

const u8string & ResourceManagerImpl::getStringInLanguage(const u8string & key, const u8string & wanted)
{
    const qvbase::LastingLock lock(mutex);
    return lock.isHeld() ? defaultBundle->getString(key, wanted) : key;
}

const u8string & ResourceManagerImpl::getString(
    const u8string & bundleName, const u8string & key, const u8string & wanted)
{
    const qvbase::LastingLock lock(mutex);
    return lock.isHeld() ? ensure(bundleName)->getString(key, wanted) : key;
}

void ResourceManagerImpl::reset()
{
    u8string directory = usualRootDirectory();
    u8string first(firstLanguage);
    const qvbase::LastingLock lock(mutex);
    if (!lock.isHeld())
        return;
    // Kept: the name of the default bundle is not touched.
    defaultBundle = emptyMultiLanguageBundle;
    bundles.clear();
    language = std::move(first);
    rootDirectory = std::move(directory);
}

bool ResourceManagerImpl::getDefaultBundle(Reference<ResourceBundle> & out)
{
    // What the caller held may be of a class of his own, and is let go without the lock.
    Reference<ResourceBundle> texts;
    {
        const qvbase::LastingLock lock(mutex);
        if (!lock.isHeld() || !defaultBundle->getBundle(texts))
            return false;
    }
    out = std::move(texts);
    return true;
}

bool ResourceManagerImpl::getBundle(const u8string & bundleName, Reference<ResourceBundle> & out)
{
    Reference<ResourceBundle> texts;
    {
        const qvbase::LastingLock lock(mutex);
        if (!lock.isHeld() || !ensure(bundleName)->getBundle(texts))
            return false;
    }
    out = std::move(texts);
    return true;
}

const Reference<MultiLanguageBundle> & ResourceManagerImpl::ensure(const u8string & bundleName)
{
    const auto known = bundles.find(bundleName);
    if (known != bundles.end())
        return known->second;
    const Reference<MultiLanguageBundle> made(
        new qvbase::ReferencedImplMT<MultiLanguageBundleImpl>(bundleName, rootDirectory));
    made->setLanguage(language);
    return bundles.emplace(bundleName, made).first->second;
}

bool createResourceManager(const u8string & rootDirectory, Reference<ResourceManager> & out)
{
    const Reference<ResourceManager> made(new qvbase::ReferencedImplMT<ResourceManagerImpl>());
    made->setRootDirectory(rootDirectory);
    out = made;
    return true;
}

ResourceManager * getResourceManager()
{
    return processResourceManager;
}

} // namespace qvutils
