#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/places.h"
#include "VontalBase/utils/MultiLanguageBundleImpl.h"
#include "VontalBase/utils/ResourceBundleImpl.h"
#include "VontalBase/utils/ResourceManagerImpl.h"
#include "VontalBase/utils/emptybundles.h"
#include "VontalBase/utils/languages.h"

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"
#include "support/VirtualSlot.h"
#include "utils/bundlesupport.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <list>
#include <string>
#include <thread>
#include <type_traits>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvutils::EmptyMultiLanguageBundle;
using qvutils::EmptyResourceBundle;
using qvutils::MultiLanguageBundle;
using qvutils::MultiLanguageBundleImpl;
using qvutils::ResourceBundle;
using qvutils::ResourceBundleImpl;
using qvutils::ResourceManager;
using qvutils::ResourceManagerImpl;
using testsupport::slotsOfDestructor;
using testsupport::virtualSlots;
using Vontal::u8string;

/// While the object lives, one passage through a gate fails.
class FailingGate
{
public:
    explicit FailingGate(const char * service, std::uint64_t passage = 1, std::uint64_t repeats = 1)
    {
        qvplatform::armGates({service, passage, repeats});
    }
    FailingGate(const FailingGate &) = delete;
    FailingGate & operator=(const FailingGate &) = delete;
    ~FailingGate()
    {
        qvplatform::disarmGates();
    }
};

TEST(EmptyBundles, ReturnTheKeyAndHaveNoLanguage)
{
    EmptyMultiLanguageBundle & languages =
        static_cast<EmptyMultiLanguageBundle &>(*qvutils::emptyMultiLanguageBundle);
    const u8string key("a key");
    EXPECT_EQ(&qvutils::emptyResourceBundle->getString(key), &key);
    EXPECT_EQ(&languages.getString(key), &key);
    EXPECT_EQ(&languages.getString(key, "de"), &key);
    languages.setLanguage("de");
    const Reference<ResourceBundle> before = qvutils::emptyResourceBundle;
    Reference<ResourceBundle> out = before;
    EXPECT_FALSE(languages.getBundle(out));
    EXPECT_EQ(out, before);
}

TEST(EmptyBundles, HoldNoData)
{
    static_assert(sizeof(EmptyResourceBundle) == sizeof(void *));
    static_assert(sizeof(EmptyMultiLanguageBundle) == sizeof(void *));
    static_assert(!std::has_virtual_destructor_v<EmptyResourceBundle>);
    static_assert(!std::has_virtual_destructor_v<EmptyMultiLanguageBundle>);
    EXPECT_EQ(virtualSlots<EmptyResourceBundle>(), 3U) << "and add no operation";
    EXPECT_EQ(virtualSlots<EmptyMultiLanguageBundle>(), 6U);
}

TEST(BundleImplementations, AddAVirtualDestructor)
{
    static_assert(std::has_virtual_destructor_v<ResourceBundleImpl>);
    static_assert(std::has_virtual_destructor_v<MultiLanguageBundleImpl>);
    static_assert(std::has_virtual_destructor_v<ResourceManagerImpl>);
    EXPECT_EQ(virtualSlots<ResourceBundleImpl>(), 3U + slotsOfDestructor);
    EXPECT_EQ(virtualSlots<MultiLanguageBundleImpl>(), 6U + slotsOfDestructor);
    EXPECT_EQ(virtualSlots<ResourceManagerImpl>(), 14U + slotsOfDestructor);
}

TEST(MultiLanguageBundleImpl, HasNoCurrentLanguageAtFirst)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "k=german\n");
    const Reference<MultiLanguageBundle> bundle(
        new ReferencedImplMT<MultiLanguageBundleImpl>("menu", files.root()));
    Reference<ResourceBundle> out;
    EXPECT_FALSE(bundle->getBundle(out));
    EXPECT_EQ(out, nullptr);
    const u8string key("k");
    EXPECT_EQ(&bundle->getString(key), &key);
    EXPECT_EQ(bundle->getString(key, "de"), "german");
    EXPECT_FALSE(bundle->getBundle(out)) << "a lookup in a language makes it no current one";
    bundle->setLanguage("de");
    EXPECT_TRUE(bundle->getBundle(out));
    EXPECT_EQ(bundle->getString(key), "german");
    EXPECT_EQ(&out->getString(key), &bundle->getString(key, "de"));
}

TEST(MultiLanguageBundleImpl, SeeksALanguageOnceAlsoWhereItFindsNothing)
{
    const BundleFiles files;
    const Reference<MultiLanguageBundle> bundle(
        new ReferencedImplMT<MultiLanguageBundleImpl>("menu", files.root()));
    const FailingGate counting("begin search", 1, 0);
    EXPECT_EQ(bundle->getString("k", "de_AT"), "k");
    // Two forms of de_AT, de, en_US and en, and one without a language.
    EXPECT_EQ(qvplatform::gatePassages(), 9U);
    EXPECT_EQ(bundle->getString("k", "de_AT"), "k");
    bundle->setLanguage("de_AT");
    EXPECT_EQ(qvplatform::gatePassages(), 9U);
    Reference<ResourceBundle> out;
    EXPECT_TRUE(bundle->getBundle(out));
    EXPECT_EQ(out, qvutils::emptyResourceBundle);
}

TEST(MultiLanguageBundleImpl, KeptSeeksAmericanEnglishTwice)
{
    const BundleFiles files;
    const Reference<MultiLanguageBundle> bundle(
        new ReferencedImplMT<MultiLanguageBundleImpl>("menu", files.root()));
    const FailingGate counting("begin search", 1, 0);
    bundle->setLanguage("en_US");
    // en_US, en, en_US again, en again, none.
    EXPECT_EQ(qvplatform::gatePassages(), 9U);
    bundle->setLanguage("");
    // None, en_US, en, none again.
    EXPECT_EQ(qvplatform::gatePassages(), 9U + 6U);
}

TEST(MultiLanguageBundleImpl, PassesOverAFileThatCannotBeOpened)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "k=german\n");
    files.lay("menu.properties", "k=none\n");
    const Reference<MultiLanguageBundle> bundle(
        new ReferencedImplMT<MultiLanguageBundleImpl>("menu", files.root()));
    {
        const FailingGate gate("open file");
        EXPECT_EQ(bundle->getString("k", "de"), "none");
    }
    EXPECT_EQ(bundle->getString("k", "de"), "none") << "and it stays so";
    EXPECT_EQ(bundle->getString("k", "de_AT"), "german");
}

TEST(MultiLanguageBundleImpl, KeptTakesAFileThatTheSystemCannotReadForAnEmptyOne)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "k=german\n");
    files.lay("menu.properties", "k=none\n");
    const Reference<MultiLanguageBundle> bundle(
        new ReferencedImplMT<MultiLanguageBundleImpl>("menu", files.root()));
    const FailingGate gate("read stream");
    EXPECT_EQ(bundle->getString("k", "de"), "k");
    EXPECT_STREQ(qvplatform::faultedGate(), "read stream");
}

constexpr int good = 3;
constexpr int notFound = 10;
constexpr int notFoundAgain = 11;

VONTALBASE_TEST_CHILD(looksBesideItself, arguments)
{
    ResourceManager * const manager = qvutils::getResourceManager();
    if (manager->getString("menu", "k") != "text")
        return notFound;
    manager->setRootDirectory(arguments.at(0));
    manager->reset();
    return manager->getString("menu", "k") == "text" ? good : notFoundAgain;
}

TEST(ResourceManagerImpl, SeeksTheFilesOfTheProcessBesideItsProgram)
{
    const BundleFiles files;
    files.lay("locale/menu.properties", "k=text\n");
    const std::string program = std::string(files.root()) + "/program.exe";
    std::filesystem::copy_file(qvplatform::programPath(), program);
    const testsupport::ChildResult child =
        testsupport::runChildFrom(program, "looksBesideItself", {"elsewhere"});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
}

TEST(ResourceManagerImpl, TakesItsBundlesToALanguageInTheOrderOfTheirNames)
{
    const BundleFiles files;
    const Reference<ResourceManager> manager = files.makeManager();
    for (const char * const name : {"b", "c", "a", "B"})
    {
        EXPECT_EQ(manager->getString(name, "k"), "k");
        files.lay(std::string("de/") + name + ".properties", "k=german\n");
    }
    const char * const inOrder[] = {"B", "a", "b", "c"};
    for (std::uint64_t refused = 1; refused <= 4; ++refused)
    {
        const Reference<ResourceManager> another = files.makeManager();
        another->setLanguage("xx");
        for (const char * const name : inOrder)
            EXPECT_EQ(another->getString(name, "k"), "k");
        {
            const FailingGate gate("open file", refused);
            another->setLanguage("de");
        }
        for (std::uint64_t i = 1; i <= 4; ++i)
            EXPECT_EQ(another->getString(inOrder[i - 1], "k"), i == refused ? "k" : "german") << refused << i;
    }
}

TEST(ResourceManagerImpl, KeptSeeksBelowTheRootWhereTheProgramsDirectoryIsNotTold)
{
    const Reference<ResourceManager> manager(new ReferencedImplMT<ResourceManagerImpl>());
    EXPECT_NE(manager->getRootDirectory(), "\\locale");
    {
        const FailingGate gate("program path");
        manager->reset();
    }
    EXPECT_EQ(manager->getRootDirectory(), "\\locale");
    manager->reset();
    EXPECT_NE(manager->getRootDirectory(), "\\locale");
}

class OpenManager : public ResourceManagerImpl
{
public:
    using ResourceManagerImpl::mutex;
};

TEST(ResourceManagerImpl, ReturnsKeysWhereTheThreadThatHadItsLockIsGone)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    const Reference<OpenManager> manager(new ReferencedImplMT<OpenManager>());
    manager->setRootDirectory(files.root());
    manager->setDefaultBundle("menu");
    ASSERT_EQ(manager->getString("k"), "text");
    testsupport::TestSemaphore isHeld;
    testsupport::TestSemaphore leave;
    std::thread holder(
        [&]
        {
            manager->mutex.acquire();
            isHeld.release();
            leave.acquire();
            manager->mutex.release();
        });
    isHeld.acquire();
    {
        const FailingGate othersAreStopped("threads run on", 1, std::numeric_limits<std::uint64_t>::max());
        const u8string key("k");
        EXPECT_EQ(&manager->getString(key), &key);
        EXPECT_EQ(&manager->getString("menu", key), &key);
        EXPECT_EQ(&manager->getStringInLanguage(key, "de"), &key);
        EXPECT_EQ(&manager->getString("menu", key, "de"), &key);
        Reference<ResourceBundle> bundle;
        EXPECT_FALSE(manager->getBundle("menu", bundle));
        EXPECT_FALSE(manager->getDefaultBundle(bundle));
        manager->setLanguage("de");
        manager->setRootDirectory("elsewhere");
        manager->setDefaultBundle("other");
        manager->reset();
        EXPECT_EQ(manager->getRootDirectory(), "") << "what it was may be half changed";
        EXPECT_EQ(manager->getLanguage(), "en_US");
    }
    leave.release();
    holder.join();
    EXPECT_EQ(manager->getRootDirectory(), files.root());
    EXPECT_EQ(manager->getString("k"), "text") << "nothing has changed";
}

TEST(ResourceManagerImpl, KeptTellsItsLanguageWithoutWaitingForTheLock)
{
    const Reference<OpenManager> manager(new ReferencedImplMT<OpenManager>());
    testsupport::TestSemaphore isHeld;
    testsupport::TestSemaphore leave;
    std::thread holder(
        [&]
        {
            manager->mutex.acquire();
            isHeld.release();
            leave.acquire();
            manager->mutex.release();
        });
    isHeld.acquire();
    // It would wait for ever.
    EXPECT_EQ(manager->getLanguage(), "en_US");
    leave.release();
    holder.join();
}

TEST(ResourceManagerImpl, WaitsForTheLockInEverythingElse)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    const Reference<OpenManager> manager(new ReferencedImplMT<OpenManager>());
    manager->setRootDirectory(files.root());
    manager->setDefaultBundle("menu");
    const u8string key("k");
    const std::function<void()> operations[] = {
        [&] { manager->getString(key); },
        [&] { manager->getString("menu", key); },
        [&] { manager->getStringInLanguage(key, "de"); },
        [&] { manager->getString("menu", key, "de"); },
        [&]
        {
            Reference<ResourceBundle> bundle;
            manager->getBundle("menu", bundle);
        },
        [&]
        {
            Reference<ResourceBundle> bundle;
            manager->getDefaultBundle(bundle);
        },
        [&] { manager->getRootDirectory(); },
        [&] { manager->setLanguage("fr"); },
        [&] { manager->setDefaultBundle("help"); },
        [&] { manager->setRootDirectory("elsewhere"); },
        [&] { manager->reset(); },
    };
    for (std::size_t i = 0; i < std::size(operations); ++i)
    {
        SCOPED_TRACE(i);
        testsupport::TestSemaphore begun;
        testsupport::TestSemaphore ended;
        manager->mutex.acquire();
        std::thread caller(
            [&]
            {
                begun.release();
                operations[i]();
                ended.release();
            });
        begun.acquire();
        EXPECT_FALSE(ended.tryAcquireFor(testsupport::suspicion));
        manager->mutex.release();
        ended.acquire();
        caller.join();
    }
}

TEST(Languages, AreNotListedWhereTheListingBreaksOff)
{
    const BundleFiles files;
    files.lay("de/menu.properties", "");
    std::list<u8string> names = {"before"};
    const FailingGate gate("next entry");
    EXPECT_FALSE(qvutils::listAvailableLanguages(files.root(), "menu", names));
    EXPECT_TRUE(names.empty());
}

TEST(Languages, AreEnglishWhereTheSystemDoesNotTellThem)
{
    for (std::uint64_t passage = 1; passage <= 2; ++passage)
    {
        const FailingGate gate("preferred languages", passage, 2);
        const std::list<u8string> available = {"xx", "en_GB", "en"};
        EXPECT_EQ(qvutils::detectSystemLanguage(available), "en_GB");
        EXPECT_EQ(qvutils::detectSystemLanguage({"xx"}), "en");
        EXPECT_EQ(qvutils::detectSystemLanguage({}), "");
    }
}

} // namespace
