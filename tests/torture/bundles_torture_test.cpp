#include "VontalBase/core/Reference.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/ResourceManager.h"
#include "VontalBase/utils/languages.h"

#include "support/Torture.h"
#include "utils/bundlesupport.h"

#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <new>
#include <string>

namespace
{

using qvbase::Reference;
using qvutils::ResourceBundle;
using qvutils::ResourceManager;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using Vontal::u8string;

const u8string bundleName = "a bundle whose name has no place inside of a string";
const u8string key = "a.key.that.has.no.place.inside.of.a.string";
const u8string german = "a German text that has no place inside of a string";
const u8string usual = "a usual text that has no place inside of a string";
const u8string austrian = "de_AT_and_more_than_has_a_place_inside_of_a_string";
const u8string french = "fr_and_more_than_has_a_place_inside_of_a_string";

/// Does something that memory may end, and then does it again: nothing must have changed.
/// @param check looks at what the failure has left.
void insist(
    const Fault & fault, const std::function<void()> & action, const std::function<void()> & check = {})
{
    try
    {
        action();
    }
    catch (const std::bad_alloc &)
    {
        EXPECT_TRUE(fault.isAllocation());
        if (check)
            check();
        action();
    }
}

/// A fault of the system takes a file away, and the texts come from another one or are not there. Once an
/// allocation has failed and the call was made again, the texts are right.
bool isRight(const Fault & fault, const u8string & text, const u8string & expected)
{
    if (!fault.excuses() || fault.isAllocation())
        return text == expected;
    return text == german || text == usual || text == key;
}

/// German and usual texts, and faulty Austrian ones in front of them.
class BundleTorture : public testing::Test
{
protected:
    BundleTorture()
    {
        files.lay("de/" + bundleName + ".properties", "# German\n" + key + "=" + german + "\nother=\\n\n");
        files.lay(austrian + "/" + bundleName + ".properties", key + "=" + german + "\n" + key + "=again");
        files.lay(bundleName + ".properties", "z=1\n" + key + " =" + usual + "\n");
    }

    BundleFiles files;
    u8string root = files.root();
};

TEST_F(BundleTorture, AManagerFallsBackOrLosesNothing)
{
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            Reference<ResourceManager> manager;
            insist(
                fault, [&] { EXPECT_TRUE(qvutils::createResourceManager(root, manager)); },
                [&] { EXPECT_EQ(manager, nullptr); });
            const Reference<ResourceManager> first = manager;
            insist(
                fault, [&] { EXPECT_TRUE(qvutils::createResourceManager(root, manager)); },
                [&] { EXPECT_EQ(manager, first); });
            insist(fault, [&] { manager->setLanguage(austrian); });
            EXPECT_EQ(manager->getLanguage(), austrian);
            insist(fault, [&] { EXPECT_TRUE(isRight(fault, manager->getString(bundleName, key), german)); });
            insist(fault, [&] { manager->setDefaultBundle(bundleName); });
            insist(fault, [&] { EXPECT_TRUE(isRight(fault, manager->getString(key), german)); });
            insist(fault,
                [&]
                {
                    const u8string text = manager->getStringInLanguage(key, french);
                    EXPECT_TRUE(isRight(fault, text, usual)) << text;
                });
            insist(fault, [&] { manager->setLanguage(french); });
            Reference<ResourceBundle> bundle;
            insist(fault, [&] { EXPECT_TRUE(manager->getBundle(bundleName, bundle)); });
            EXPECT_TRUE(manager->getDefaultBundle(bundle));
            insist(
                fault, [&] { manager->reset(); },
                [&]
                {
                    EXPECT_EQ(manager->getLanguage(), french);
                    EXPECT_EQ(manager->getRootDirectory(), root);
                    EXPECT_EQ(manager->getString(key), usual);
                });
            EXPECT_EQ(manager->getLanguage(), "en_US");
            EXPECT_EQ(&manager->getString(key), &key);
            EXPECT_TRUE(isRight(fault, bundle->getString(key), usual)) << "what is held stays";
        });
    EXPECT_GT(report.gatePassages, 20U);
    EXPECT_GT(report.faultyRuns, 60U);
}

TEST_F(BundleTorture, SeveralBundlesGoToALanguageWhenThatIsSetAgain)
{
    const u8string other = "another bundle whose name has no place inside of a string";
    files.lay(other + ".properties", key + "=" + usual + "\n");
    files.lay("de/" + other + ".properties", key + "=" + german + "\n");
    const u8string swiss = "de_CH_and_more_than_has_a_place_inside_of_a_string";
    torture(
        [&](const Fault & fault)
        {
            Reference<ResourceManager> manager;
            insist(fault, [&] { EXPECT_TRUE(qvutils::createResourceManager(root, manager)); });
            for (const u8string * const name : {&bundleName, &other})
                insist(fault, [&] { EXPECT_TRUE(isRight(fault, manager->getString(*name, key), usual)); });
            insist(fault, [&] { manager->setLanguage(swiss); });
            for (const u8string * const name : {&bundleName, &other})
                insist(fault, [&] { EXPECT_TRUE(isRight(fault, manager->getString(*name, key), german)); });
        });
}

TEST_F(BundleTorture, LanguagesAreListedOrNot)
{
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            std::list<u8string> names;
            insist(fault,
                [&]
                {
                    const bool isListed = qvutils::listAvailableLanguages(root, bundleName, names);
                    EXPECT_TRUE(isListed || fault.excuses());
                    EXPECT_TRUE(isListed || names.empty());
                    const bool isWhole = names.size() == 2;
                    EXPECT_TRUE(isWhole || (fault.excuses() && !fault.isAllocation()));
                });
            u8string found;
            insist(fault, [&] { found = qvutils::detectSystemLanguage({"xx", "en_GB"}); });
            EXPECT_EQ(found, "en_GB");
        });
    EXPECT_GT(report.gatePassages, 5U);
    EXPECT_GT(report.faultyRuns, 15U);
}

} // namespace
