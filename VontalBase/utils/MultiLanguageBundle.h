/// @file
/// A bundle across its languages.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/text/u8string.h"

namespace qvutils
{

class ResourceBundle;

/// The languages of one bundle, one of which is the current one. Its owner, a `ResourceManager`, guards it:
/// it has no lock of its own. A text that a lookup found lives as long as the bundle; one that found none
/// returns its own argument, which the caller keeps alive. `std::bad_alloc` may leave whatever reads a file.
class MultiLanguageBundle : public qvbase::ReferencedObject
{
protected:
    MultiLanguageBundle() = default;
    /// Copies what the other one has.
    MultiLanguageBundle(const MultiLanguageBundle &) = default;
    /// Takes over what the other one has.
    MultiLanguageBundle(MultiLanguageBundle &&) noexcept = default;
    /// Copies what the other one has.
    MultiLanguageBundle & operator=(const MultiLanguageBundle &) = default;
    /// Takes over what the other one has.
    MultiLanguageBundle & operator=(MultiLanguageBundle &&) noexcept = default;
    ~MultiLanguageBundle() = default;

public:
    /// Makes a language the current one, and reads its texts if it is asked for the first time.
    /// @param language a name such as "de_AT".
    virtual void setLanguage(const Vontal::u8string & language) = 0;
    /// Tells the texts of the current language.
    /// @param out receives them; left alone where the result is false.
    /// @return whether there is a current language.
    virtual bool getBundle(qvbase::Reference<ResourceBundle> & out) = 0;
    /// Looks up a text in the current language.
    /// @param key is compared byte for byte.
    /// @return the text, or @p key itself if there is none.
    virtual const Vontal::u8string & getString(const Vontal::u8string & key) = 0;
    /// Looks up a text in any language, which is read if it is asked for the first time. The current language
    /// stays.
    /// @param key is compared byte for byte.
    /// @param language a name such as "de_AT".
    /// @return the text, or @p key itself if there is none.
    virtual const Vontal::u8string & getString(
        const Vontal::u8string & key, const Vontal::u8string & language) = 0;
};

} // namespace qvutils
