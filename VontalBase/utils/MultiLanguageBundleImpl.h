/// @internal
/// @file
/// A bundle with the languages that were asked for.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/MultiLanguageBundle.h"
#include "VontalBase/utils/ResourceBundle.h"

#include <map>

namespace qvutils
{

/// Made through `ReferencedImplMT` and guarded by its manager. Where `std::bad_alloc` leaves an operation,
/// nothing has changed.
class MultiLanguageBundleImpl : public MultiLanguageBundle
{
public:
    /// Has no current language yet.
    MultiLanguageBundleImpl(const Vontal::u8string & bundleName, const Vontal::u8string & rootDirectory);
    MultiLanguageBundleImpl(const MultiLanguageBundleImpl &) = delete;
    MultiLanguageBundleImpl & operator=(const MultiLanguageBundleImpl &) = delete;

    void setLanguage(const Vontal::u8string & wanted) override;
    bool getBundle(qvbase::Reference<ResourceBundle> & out) override;
    const Vontal::u8string & getString(const Vontal::u8string & key) override;
    const Vontal::u8string & getString(
        const Vontal::u8string & key, const Vontal::u8string & wanted) override;

    virtual ~MultiLanguageBundleImpl() = default;

private:
    /// The texts of a language. Files are read only if it has not been asked for before.
    const qvbase::Reference<ResourceBundle> & ensure(const Vontal::u8string & wanted);
    qvbase::Reference<ResourceBundle> findTexts(const Vontal::u8string & wanted) const;
    bool tryLanguage(const Vontal::u8string & tried, qvbase::Reference<ResourceBundle> & out) const;

    std::map<Vontal::u8string, qvbase::Reference<ResourceBundle>> languages;
    qvbase::Reference<ResourceBundle> current;
    /// Kept: part of the form of the object. Nothing reads it.
    Vontal::u8string language;
    Vontal::u8string name;
    Vontal::u8string directory;
};

} // namespace qvutils
