/// @file
/// The translated texts of an application.
///
/// A bundle is a named set of texts. Each of its languages is one ".properties" file of UTF-8 text, or of
/// UTF-16 with the low byte first behind the mark FF FE, with a line for each text:
///
///     # a comment
///     greeting=Guten Tag
///     two.lines=first\nsecond
///
/// A key ends at a blank, a tab or the first "=" behind its first character; blanks and tabs in front of a
/// key, and between it and the "=", do not count. The value is all of the rest of the line, blanks included,
/// in which `\\`, `\n`, `\r` and `\t` stand for a backslash, a line feed, a carriage return and a tab. Any
/// fault, such as another escape, a key without "=" or one that is there twice, makes the file worth nothing
/// at all: it is taken for missing, and so is what is no regular file. A text ends at its first zero.
///
/// Kept: a file of which the system cannot read the rest ends there, and nobody is told.
///
/// Where the files are sought for a bundle "menu" in a language "de_AT", in this order until one is good:
///
///     de_AT\menu.properties, menu.de_AT.properties       the language itself
///     de\menu.properties,    menu.de.properties          what stands in front of its first "_" or "-"
///     en_US\menu.properties, menu.en_US.properties
///     en\menu.properties,    menu.en.properties
///     menu.properties                                    no language
///
/// If there is none, there are no texts. What was found stays, whatever happens to the files, until the
/// manager is reset. Each language that was asked for has texts of its own, also where two languages came to
/// the same file.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/ResourceBundle.h"

namespace qvutils
{

/// Owns bundles, has a current language and a default bundle, and answers lookups of texts. A bundle is read
/// when it is first used.
///
/// A lookup never fails: a key without a text is its own text. Any thread may call any operation but
/// `getLanguage`. A text that a lookup found lives until `reset`, or until the manager dies, and where
/// another thread may call that, the caller holds a `ResourceBundle` and asks it instead. A lookup that found
/// none returns its own argument, which the caller keeps alive for as long as the result is used.
///
/// No failure is reported. Where `std::bad_alloc` leaves a lookup, no text has changed and the same call may
/// be made again; files that it came to may have been read. A system may stop the threads of a process before
/// its libraries end; if one of them was within an operation, all that a manager does from then on is to
/// return keys, an empty text for its directory, and false. That does not hold where it was stopped while it
/// changed a count of references, which may wait for ever, nor for `getLanguage`, which must not be called
/// then.
class ResourceManager : public qvbase::ReferencedObject
{
protected:
    ResourceManager() = default;
    /// Copies what the other one has.
    ResourceManager(const ResourceManager &) = default;
    /// Takes over what the other one has.
    ResourceManager(ResourceManager &&) noexcept = default;
    /// Copies what the other one has.
    ResourceManager & operator=(const ResourceManager &) = default;
    /// Takes over what the other one has.
    ResourceManager & operator=(ResourceManager &&) noexcept = default;
    ~ResourceManager() = default;

public:
    /// Sets where the files of bundles are sought that have not been used yet. Bundles that have been used
    /// keep their directory.
    /// @param directory with or without a `\` at its end.
    virtual void setRootDirectory(const Vontal::u8string & directory) = 0;
    /// Tells the directory as it was set.
    /// @return a text that changes under the caller with the next `setRootDirectory` or `reset`: other
    ///     threads must call neither while it is read.
    virtual const Vontal::u8string & getRootDirectory() = 0;
    /// Makes a bundle the one that lookups without a name of a bundle go to.
    /// @param name of the bundle, which is read if it has not been used yet. There need be no files.
    virtual void setDefaultBundle(const Vontal::u8string & name) = 0;
    /// Sets the language of all bundles, those to come among them. All that have been used read their texts
    /// in it now, in the order of their names. Where `std::bad_alloc` leaves it, some of them may have gone
    /// to the new language and others not; a further call takes all of them to one.
    /// @param language a name such as "de_AT".
    virtual void setLanguage(const Vontal::u8string & language) = 0;
    /// Tells the language as it was set, "en_US" at first.
    ///
    /// Kept: it does not wait for other threads, so that it costs nothing; where one of them may call
    /// `setLanguage` or `reset` meanwhile, it must not be called.
    ///
    /// @return a text that changes under the caller with the next `setLanguage` or `reset`.
    virtual const Vontal::u8string & getLanguage() = 0;
    /// Looks up a text in the default bundle and the current language.
    /// @param key is compared byte for byte.
    /// @return the text, or @p key itself if there is none, or no default bundle was set.
    virtual const Vontal::u8string & getString(const Vontal::u8string & key) = 0;
    /// Looks up a text in a bundle and the current language.
    /// @param bundleName the bundle.
    /// @param key is compared byte for byte.
    /// @return the text, or @p key itself if there is none.
    virtual const Vontal::u8string & getString(
        const Vontal::u8string & bundleName, const Vontal::u8string & key) = 0;
    /// Looks up a text in the default bundle and any language. The current language stays.
    /// @param key is compared byte for byte.
    /// @param language a name such as "de_AT".
    /// @return the text, or @p key itself if there is none, or no default bundle was set.
    virtual const Vontal::u8string & getStringInLanguage(
        const Vontal::u8string & key, const Vontal::u8string & language) = 0;
    /// Looks up a text in a bundle and any language. The current language stays.
    /// @param bundleName the bundle.
    /// @param key is compared byte for byte.
    /// @param language a name such as "de_AT".
    /// @return the text, or @p key itself if there is none.
    virtual const Vontal::u8string & getString(const Vontal::u8string & bundleName,
        const Vontal::u8string & key, const Vontal::u8string & language) = 0;
    /// Lets all bundles go, so that files are read anew, sets the language to "en_US", forgets the default
    /// bundle, and sets the directory to "locale" beside the running program. Bundles that somebody holds
    /// live on. Where `std::bad_alloc` leaves it, nothing has changed.
    ///
    /// Kept: where the system does not tell the program's directory, the directory is `\locale`.
    virtual void reset() = 0;
    /// Tells the texts of the default bundle in the current language.
    /// @param out receives them; left alone where the result is false.
    /// @return false if no default bundle was set; true for one without any file, which has no texts.
    virtual bool getDefaultBundle(qvbase::Reference<ResourceBundle> & out) = 0;
    /// Tells the texts of a bundle in the current language.
    ///
    /// Kept: a bundle without any file is one without texts, so that the result is true.
    ///
    /// @param bundleName the bundle.
    /// @param out receives the texts; left alone where the result is false.
    /// @return whether the bundle could be made.
    virtual bool getBundle(const Vontal::u8string & bundleName, qvbase::Reference<ResourceBundle> & out) = 0;
};

/// Makes a manager of the caller's own.
/// @param rootDirectory where its files are sought.
/// @param out receives it; what it held is let go. Where `std::bad_alloc` leaves the call, it is left alone.
/// @return true. Any thread may call this with a reference of its own.
VONTALBASE_API bool createResourceManager(
    const Vontal::u8string & rootDirectory, qvbase::Reference<ResourceManager> & out);

/// The manager of the process, which is there from the loading of the library on, and to the very end of the
/// process. Its files are sought in "locale" beside the running program until it is told otherwise. Any
/// thread may call this.
/// @return never null; not counted for the caller.
VONTALBASE_API ResourceManager * getResourceManager();

} // namespace qvutils
