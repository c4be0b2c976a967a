/// @file
/// The texts of a bundle in one language.
#pragma once

#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/text/u8string.h"

namespace qvutils
{

/// Texts by their keys. The library reads them from a ".properties" file, see `ResourceManager`.
///
/// A bundle of the library never changes, so that any number of threads may look up texts in one that they
/// hold, whatever language the manager goes to meanwhile, and also when it has been reset.
class ResourceBundle : public qvbase::ReferencedObject
{
protected:
    ResourceBundle() = default;
    /// Copies what the other one has.
    ResourceBundle(const ResourceBundle &) = default;
    /// Takes over what the other one has.
    ResourceBundle(ResourceBundle &&) noexcept = default;
    /// Copies what the other one has.
    ResourceBundle & operator=(const ResourceBundle &) = default;
    /// Takes over what the other one has.
    ResourceBundle & operator=(ResourceBundle &&) noexcept = default;
    ~ResourceBundle() = default;

public:
    /// Looks up a text.
    /// @param key is compared byte for byte.
    /// @return the text, which lives as long as the bundle, or @p key itself if there is none, which the
    ///     caller keeps alive: a lookup never fails. Nothing is copied.
    virtual const Vontal::u8string & getString(const Vontal::u8string & key) = 0;
};

} // namespace qvutils
