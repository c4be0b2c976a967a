/// @internal
/// @file
/// What stands where there are no texts.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/utils/MultiLanguageBundle.h"
#include "VontalBase/utils/ResourceBundle.h"

namespace qvutils
{

/// Has no texts.
class EmptyResourceBundle : public ResourceBundle
{
public:
    const Vontal::u8string & getString(const Vontal::u8string & key) override
    {
        return key;
    }
};

/// Has no languages.
class EmptyMultiLanguageBundle : public MultiLanguageBundle
{
public:
    void setLanguage(const Vontal::u8string &) override
    {
    }
    bool getBundle(qvbase::Reference<ResourceBundle> &) override
    {
        return false;
    }
    const Vontal::u8string & getString(const Vontal::u8string & key) override
    {
        return key;
    }
    const Vontal::u8string & getString(const Vontal::u8string & key, const Vontal::u8string &) override
    {
        return key;
    }
};

/// The one bundle without texts. It outlives the static objects of the library.
extern const qvbase::Reference<ResourceBundle> & emptyResourceBundle;

/// What stands where a text cannot be told. It outlives the static objects of the library.
extern const Vontal::u8string & emptyText;

/// The one bundle without languages. It outlives the static objects of the library.
extern const qvbase::Reference<MultiLanguageBundle> & emptyMultiLanguageBundle;

} // namespace qvutils
