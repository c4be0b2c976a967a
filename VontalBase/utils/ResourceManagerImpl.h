/// @internal
/// @file
/// The bundles of an application and their lock.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/MultiLanguageBundle.h"
#include "VontalBase/utils/ResourceManager.h"

#include <map>

namespace qvutils
{

/// Made through `ReferencedImplMT`.
class ResourceManagerImpl : public ResourceManager
{
public:
    /// As `reset` leaves it.
    ResourceManagerImpl();
    ResourceManagerImpl(const ResourceManagerImpl &) = delete;
    ResourceManagerImpl & operator=(const ResourceManagerImpl &) = delete;

    void setRootDirectory(const Vontal::u8string & directory) override;
    const Vontal::u8string & getRootDirectory() override;
    void setDefaultBundle(const Vontal::u8string & name) override;
    void setLanguage(const Vontal::u8string & wanted) override;
    const Vontal::u8string & getLanguage() override;
    const Vontal::u8string & getString(const Vontal::u8string & key) override;
    const Vontal::u8string & getString(
        const Vontal::u8string & bundleName, const Vontal::u8string & key) override;
    const Vontal::u8string & getStringInLanguage(
        const Vontal::u8string & key, const Vontal::u8string & wanted) override;
    const Vontal::u8string & getString(const Vontal::u8string & bundleName, const Vontal::u8string & key,
        const Vontal::u8string & wanted) override;
    void reset() override;
    bool getDefaultBundle(qvbase::Reference<ResourceBundle> & out) override;
    bool getBundle(const Vontal::u8string & bundleName, qvbase::Reference<ResourceBundle> & out) override;

    virtual ~ResourceManagerImpl() = default;

protected:
    /// Guards all of the rest.
    qvbase::ThreadMutex mutex;

private:
    /// Never null. The caller holds the lock.
    const qvbase::Reference<MultiLanguageBundle> & ensure(const Vontal::u8string & bundleName);

    std::map<Vontal::u8string, qvbase::Reference<MultiLanguageBundle>> bundles;
    /// Never null: where there is none it is the empty one.
    qvbase::Reference<MultiLanguageBundle> defaultBundle;
    Vontal::u8string language;
    /// Kept: part of the form of the object. Nothing reads it.
    Vontal::u8string defaultBundleName;
    Vontal::u8string rootDirectory;
};

/// The manager of the process. It outlives the static objects of the library, since threads may still look up
/// texts while those are destroyed.
extern const qvbase::Reference<ResourceManager> & processResourceManager;

} // namespace qvutils
