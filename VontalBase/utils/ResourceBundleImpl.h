/// @internal
/// @file
/// The texts of one bundle file as the manager hands them out.
#pragma once

#include "VontalBase/utils/ResourceBundle.h"
#include "VontalBase/utils/SortedTexts.h"

namespace qvutils
{

/// Made through `ReferencedImplMT`. It never changes after loading.
class ResourceBundleImpl : public ResourceBundle
{
public:
    ResourceBundleImpl() = default;
    ResourceBundleImpl(const ResourceBundleImpl &) = delete;
    ResourceBundleImpl & operator=(const ResourceBundleImpl &) = delete;

    const Vontal::u8string & getString(const Vontal::u8string & key) override;

    virtual ~ResourceBundleImpl() = default;

    /// Reads a file. Called once. `std::bad_alloc` may leave it.
    /// @return false where the file is missing, is no regular file, cannot be opened, or has a fault.
    bool load(const Vontal::u8string & path);

private:
    SortedTexts texts;
};

} // namespace qvutils
