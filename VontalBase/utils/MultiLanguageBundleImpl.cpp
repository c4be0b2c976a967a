#include "VontalBase/utils/MultiLanguageBundleImpl.h"

#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/utils/ResourceBundleImpl.h"
#include "VontalBase/utils/bundlefiles.h"
#include "VontalBase/utils/emptybundles.h"

#include <string>

namespace qvutils
{

using qvbase::Reference;
using Vontal::u8string;

namespace
{

/// The language in front of a country; a name that has none in front of its first separator is its own.
u8string baseOf(const u8string & language)
{
    const std::string base(familyOf(language));
    return base.empty() ? language : u8string(base);
}

bool tryFile(const u8string & path, Reference<ResourceBundle> & out)
{
    const Reference<ResourceBundleImpl> made(new qvbase::ReferencedImplMT<ResourceBundleImpl>());
    if (!made->load(path))
        return false;
    out = made;
    return true;
}

} // namespace

MultiLanguageBundleImpl::MultiLanguageBundleImpl(const u8string & bundleName, const u8string & rootDirectory)
    : name(bundleName), directory(rootDirectory)
{
}

void MultiLanguageBundleImpl::setLanguage(const u8string & wanted)
{
    const Reference<ResourceBundle> & texts = ensure(wanted);
    language = wanted;
    current = texts;
}

bool MultiLanguageBundleImpl::getBundle(Reference<ResourceBundle> & out)
{
    if (current == nullptr)
        return false;
    out = current;
    return true;
}

const u8string & MultiLanguageBundleImpl::getString(const u8string & key)
{
    return current == nullptr ? key : current->getString(key);
}

const u8string & MultiLanguageBundleImpl::getString(const u8string & key, const u8string & wanted)
{
    return ensure(wanted)->getString(key);
}

const Reference<ResourceBundle> & MultiLanguageBundleImpl::ensure(const u8string & wanted)
{
    const auto known = languages.find(wanted);
    if (known != languages.end())
        return known->second;
    return languages.emplace(wanted, findTexts(wanted)).first->second;
}

Reference<ResourceBundle> MultiLanguageBundleImpl::findTexts(const u8string & wanted) const
{
    const u8string base = baseOf(wanted);
    Reference<ResourceBundle> texts;
    // Kept: a language that is one of the last ones is tried twice.
    const bool isFound = (wanted != base && tryLanguage(wanted, texts)) || tryLanguage(base, texts) ||
                         tryLanguage("en_US", texts) || tryLanguage("en", texts) || tryLanguage("", texts);
    // Stored like any other, so that the files are not sought again.
    return isFound ? texts : emptyResourceBundle;
}

bool MultiLanguageBundleImpl::tryLanguage(const u8string & tried, Reference<ResourceBundle> & out) const
{
    const std::string fileName = name + bundleExtension;
    if (tried.empty())
        return tryFile(inDirectory(directory, fileName), out);
    return tryFile(inDirectory(inDirectory(directory, tried), fileName), out) ||
           tryFile(inDirectory(directory, name + '.' + tried + bundleExtension), out);
}

} // namespace qvutils
