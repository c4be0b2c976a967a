/// @file
/// Texts in several languages.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <map>
#include <memory>
#include <string>

namespace qvxml
{
class Node;
}

namespace Vontal
{

/// A text that exists in several languages: a default value and translations, of which it gives the one for
/// its preferred language.
///
/// Names of languages are told apart in upper case, and as a whole: `EN-GB` does not find `EN`. Upper case is
/// what the runtime's `toupper` makes of each byte in the C locale of the moment, in which ASCII letters
/// alone have one unless the program has chosen a locale of 8-bit text. The language "C" is the name for none
/// in particular.
///
/// All live objects are known to the process, so that `ml_u8string_set_default_language` can switch them all.
/// Making objects is safe in any thread, and so is destroying them, also while another thread switches the
/// language; no thread may make or use one meanwhile. An object otherwise belongs to one thread at a time.
///
/// Nothing here throws but by `std::bad_alloc`; `read` also by what the XML service throws (see
/// `qvxml::XMLDocPtr`).
class VONTALBASE_API ml_u8string
{
public:
    /// An empty default value and no translations. The preferred language is the default language.
    ml_u8string();
    /// A default value and no translations. The preferred language is the default language.
    ml_u8string(const u8string & defaultValue);
    /// Copies the preferred language, the default value and all translations.
    ml_u8string(const ml_u8string & other);
    /// Destroys the text.
    virtual ~ml_u8string();

    /// Copies the preferred language, the default value and each translation.
    ///
    /// Kept: translations into languages that @p other lacks survive.
    ml_u8string & operator=(const ml_u8string & other);

    /// Sets a translation; one that is there is replaced.
    /// @return true.
    bool add(const std::string & language, const u8string & text);

    /// The translation into the preferred language; the default value where there is none. Valid until that
    /// text is replaced or the object dies.
    const u8string & get() const;
    /// The default value. Valid as long as the object.
    const u8string & getDefaultValue() const noexcept;
    /// The preferred language in upper case.
    const std::string & getPrefLanguage() const noexcept;
    /// Chooses the preferred language of this object, until the next switch of all.
    void setPrefLanguage(const std::string & language);

    /// Reads the default value and translations from child elements. A child without the attribute "xml:lang"
    /// gives the default value if that is still empty, and counts otherwise without being used; a child with
    /// it gives a translation.
    ///
    /// Kept: the language "C" is recognised in upper case only, so "c" gives a translation into "C".
    /// @param parent the parent of the children; may be null.
    /// @param tagName the name of the children.
    /// @return whether a child of that name has readable text. What was read before stays.
    bool read(qvxml::Node * parent, u8string & tagName);

private:
    // NOLINTNEXTLINE(readability-identifier-naming)
    friend VONTALBASE_API void ml_u8string_set_default_language(const std::string & language);

    void registerMlU8Manager();
    void unregisterMlU8Manager();

    std::string m_preferredLanguage;
    u8string m_defaultValue;
    std::unique_ptr<std::map<std::string, u8string>> m_translations;
    // Neighbours among the live objects.
    ml_u8string * m_previous = nullptr;
    ml_u8string * m_next = nullptr;
};

/// Makes @p language the preferred language of every live `ml_u8string`, whatever that had chosen, and of
/// those made later. If memory is short, `std::bad_alloc` is thrown and some are switched and some are not.
///
/// Kept: the language itself is stored as it is given, and put into upper case by each object.
// NOLINTNEXTLINE(readability-identifier-naming)
VONTALBASE_API void ml_u8string_set_default_language(const std::string & language);

} // namespace Vontal
