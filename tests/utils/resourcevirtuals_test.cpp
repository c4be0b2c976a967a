// The order of the virtual operations of the resources.

#include "VontalBase/utils/MultiLanguageBundle.h"
#include "VontalBase/utils/ResourceBundle.h"
#include "VontalBase/utils/ResourceManager.h"

#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace
{

using qvutils::MultiLanguageBundle;
using qvutils::ResourceBundle;
using qvutils::ResourceManager;
using testsupport::virtualSlot;
using testsupport::virtualSlots;
using Vontal::u8string;

using OneText = const u8string &;

TEST(ResourceVirtuals, OfBundles)
{
    EXPECT_EQ(virtualSlot(&ResourceBundle::addRef), 0U);
    EXPECT_EQ(virtualSlot(&ResourceBundle::release), 1U);
    EXPECT_EQ(virtualSlot(&ResourceBundle::getString), 2U);
    EXPECT_EQ(virtualSlots<ResourceBundle>(), 3U);
}

TEST(ResourceVirtuals, OfBundlesAcrossLanguages)
{
    using Current = OneText (MultiLanguageBundle::*)(OneText);
    using Named = OneText (MultiLanguageBundle::*)(OneText, OneText);
    EXPECT_EQ(virtualSlot(&MultiLanguageBundle::addRef), 0U);
    EXPECT_EQ(virtualSlot(&MultiLanguageBundle::release), 1U);
    EXPECT_EQ(virtualSlot(&MultiLanguageBundle::setLanguage), 2U);
    EXPECT_EQ(virtualSlot(&MultiLanguageBundle::getBundle), 3U);
    EXPECT_EQ(virtualSlot(static_cast<Current>(&MultiLanguageBundle::getString)), 4U);
    EXPECT_EQ(virtualSlot(static_cast<Named>(&MultiLanguageBundle::getString)), 5U);
    EXPECT_EQ(virtualSlots<MultiLanguageBundle>(), 6U);
}

TEST(ResourceVirtuals, OfManagers)
{
    using ByKey = OneText (ResourceManager::*)(OneText);
    using ByBundle = OneText (ResourceManager::*)(OneText, OneText);
    using ByAll = OneText (ResourceManager::*)(OneText, OneText, OneText);
    EXPECT_EQ(virtualSlot(&ResourceManager::addRef), 0U);
    EXPECT_EQ(virtualSlot(&ResourceManager::release), 1U);
    EXPECT_EQ(virtualSlot(&ResourceManager::setRootDirectory), 2U);
    EXPECT_EQ(virtualSlot(&ResourceManager::getRootDirectory), 3U);
    EXPECT_EQ(virtualSlot(&ResourceManager::setDefaultBundle), 4U);
    EXPECT_EQ(virtualSlot(&ResourceManager::setLanguage), 5U);
    EXPECT_EQ(virtualSlot(&ResourceManager::getLanguage), 6U);
    EXPECT_EQ(virtualSlot(static_cast<ByKey>(&ResourceManager::getString)), 7U);
    EXPECT_EQ(virtualSlot(static_cast<ByBundle>(&ResourceManager::getString)), 8U);
    EXPECT_EQ(virtualSlot(&ResourceManager::getStringInLanguage), 9U);
    EXPECT_EQ(virtualSlot(static_cast<ByAll>(&ResourceManager::getString)), 10U);
    EXPECT_EQ(virtualSlot(&ResourceManager::reset), 11U);
    EXPECT_EQ(virtualSlot(&ResourceManager::getDefaultBundle), 12U);
    EXPECT_EQ(virtualSlot(&ResourceManager::getBundle), 13U);
    EXPECT_EQ(virtualSlots<ResourceManager>(), 14U);
}

TEST(ResourceVirtuals, AreAllThatTheInterfacesHave)
{
    static_assert(std::is_base_of_v<qvbase::ReferencedObject, ResourceBundle>);
    static_assert(std::is_base_of_v<qvbase::ReferencedObject, MultiLanguageBundle>);
    static_assert(std::is_base_of_v<qvbase::ReferencedObject, ResourceManager>);
    static_assert(sizeof(ResourceBundle) == sizeof(void *));
    static_assert(sizeof(MultiLanguageBundle) == sizeof(void *));
    static_assert(sizeof(ResourceManager) == sizeof(void *));
    static_assert(!std::has_virtual_destructor_v<ResourceManager>);
}

} // namespace
