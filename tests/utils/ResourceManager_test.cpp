#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/places.h"
#include "VontalBase/utils/ResourceManager.h"

#include "support/ChildProcess.h"
#include "utils/bundlesupport.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using namespace std::string_literals;
using qvbase::Reference;
using qvutils::createResourceManager;
using qvutils::getResourceManager;
using qvutils::ResourceBundle;
using qvutils::ResourceManager;
using Vontal::u8string;

/// Where a manager seeks its files at first.
u8string firstRoot()
{
    u8string directory;
    EXPECT_TRUE(qvdisk::getModuleDir(directory));
    if (directory.empty() || directory.back() != '\\')
        directory += "\\";
    return directory + "locale";
}

/// Tells of its own end.
class Witness : public ResourceBundle
{
public:
    explicit Witness(bool & isGone) : m_isGone(isGone)
    {
    }
    Witness(const Witness &) = delete;
    Witness & operator=(const Witness &) = delete;
    virtual ~Witness()
    {
        m_isGone = true;
    }
    const u8string & getString(const u8string & key) override
    {
        return key;
    }

private:
    bool & m_isGone;
};

Reference<ResourceBundle> bundleOf(ResourceManager * manager, const u8string & name)
{
    Reference<ResourceBundle> bundle;
    EXPECT_TRUE(manager->getBundle(name, bundle));
    EXPECT_NE(bundle, nullptr);
    return bundle;
}

bool isAsAfterAReset(ResourceManager * manager)
{
    const u8string key("a key");
    const u8string language("de");
    Reference<ResourceBundle> bundle;
    return manager->getLanguage() == "en_US" && manager->getRootDirectory() == firstRoot() &&
           &manager->getString(key) == &key && &manager->getStringInLanguage(key, language) == &key &&
           !manager->getDefaultBundle(bundle) && bundle == nullptr;
}

TEST(ResourceManager, ReturnsEveryKeyItselfInTheDefaultState)
{
    Reference<ResourceManager> manager;
    ASSERT_TRUE(createResourceManager("nowhere", manager));
    const u8string key("a key");
    const u8string bundle("a bundle");
    const u8string language("de_AT");
    EXPECT_EQ(&manager->getString(key), &key);
    EXPECT_EQ(&manager->getString(bundle, key), &key);
    EXPECT_EQ(&manager->getStringInLanguage(key, language), &key);
    EXPECT_EQ(&manager->getString(bundle, key, language), &key);
}

TEST(ResourceManager, IsMadeOverADirectory)
{
    Reference<ResourceManager> manager;
    ASSERT_TRUE(createResourceManager("some/where", manager));
    EXPECT_EQ(manager->getRootDirectory(), "some/where");
    EXPECT_EQ(manager->getLanguage(), "en_US");
    const Reference<ResourceManager> first = manager;
    ASSERT_TRUE(createResourceManager("", manager));
    EXPECT_NE(manager, first) << "each call makes another one";
    EXPECT_EQ(manager->getRootDirectory(), "");
    EXPECT_EQ(first->getRootDirectory(), "some/where");
}

TEST(ResourceManager, HasNoDefaultBundleAndLeavesTheReferenceAlone)
{
    bool isGone = false;
    {
        Reference<ResourceManager> manager;
        ASSERT_TRUE(createResourceManager("nowhere", manager));
        const Reference<ResourceBundle> held(new qvbase::ReferencedImplMT<Witness>(isGone));
        Reference<ResourceBundle> out = held;
        EXPECT_FALSE(manager->getDefaultBundle(out));
        EXPECT_EQ(out, held);
        EXPECT_FALSE(isGone);
    }
    EXPECT_TRUE(isGone);
}

TEST(ResourceManager, LetsTheOldObjectOfTheCallersReferenceGo)
{
    Reference<ResourceManager> manager;
    ASSERT_TRUE(createResourceManager("nowhere", manager));
    bool isGone = false;
    Reference<ResourceBundle> out(new qvbase::ReferencedImplMT<Witness>(isGone));
    EXPECT_TRUE(manager->getBundle("menu", out));
    EXPECT_TRUE(isGone);
    out = nullptr;
    EXPECT_TRUE(manager->getBundle("menu", out)) << "the manager holds it still";
}

TEST(ResourceManager, KeptABundleWithoutAnyFileIsTheOneWithoutTexts)
{
    const BundleFiles files;
    const Reference<ResourceManager> manager = files.makeManager();
    const Reference<ResourceBundle> bundle = bundleOf(manager, "menu");
    const u8string key("a key");
    EXPECT_EQ(&bundle->getString(key), &key);
    EXPECT_EQ(bundleOf(manager, "other"), bundle) << "all of them share one";
    manager->setDefaultBundle("menu");
    Reference<ResourceBundle> found;
    EXPECT_TRUE(manager->getDefaultBundle(found));
    EXPECT_EQ(found, bundle);
    EXPECT_EQ(&manager->getString(key), &key);
    const Reference<ResourceManager> another = files.makeManager();
    EXPECT_EQ(bundleOf(another, "menu"), bundle);
}

TEST(ResourceManager, AnswersTheFourLookups)
{
    const BundleFiles files;
    files.lay("menu.properties", "open=Open\n");
    files.lay("menu.de.properties", "open=\xC3\x96"
                                    "ffnen\n");
    files.lay("menu.fr.properties", "open=Ouvrir\n");
    files.lay("help.properties", "open=How to open\n");
    files.lay("help.de.properties", "open=Wie man \xC3\xB6"
                                    "ffnet\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setLanguage("de");
    EXPECT_EQ(manager->getString("open"), "open") << "there is no default bundle";
    manager->setDefaultBundle("menu");
    EXPECT_EQ(manager->getString("open"), "\xC3\x96"
                                          "ffnen");
    EXPECT_EQ(manager->getString("help", "open"), "Wie man \xC3\xB6"
                                                  "ffnet");
    EXPECT_EQ(manager->getStringInLanguage("open", "fr"), "Ouvrir");
    EXPECT_EQ(manager->getString("help", "open", "it"), "How to open");
    EXPECT_EQ(manager->getString("open"), "\xC3\x96"
                                          "ffnen")
        << "the current language stays";
    EXPECT_EQ(manager->getString("help", "open"), "Wie man \xC3\xB6"
                                                  "ffnet");
    EXPECT_EQ(manager->getLanguage(), "de");
    for (const char * const missing : {"", "Open", "open ", "ope", "openn"})
    {
        const u8string key(missing);
        EXPECT_EQ(&manager->getString(key), &key) << missing;
        EXPECT_EQ(&manager->getString("help", key), &key) << missing;
        EXPECT_EQ(&manager->getStringInLanguage(key, "fr"), &key) << missing;
        EXPECT_EQ(&manager->getString("help", key, "it"), &key) << missing;
    }
}

TEST(ResourceManager, ReturnsTheTextThatTheBundleHolds)
{
    const BundleFiles files;
    files.lay("menu.properties", "open=Open\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setDefaultBundle("menu");
    const u8string * const text = &bundleOf(manager, "menu")->getString("open");
    EXPECT_EQ(&manager->getString("open"), text);
    EXPECT_EQ(&manager->getString("menu", "open"), text);
    EXPECT_EQ(&manager->getStringInLanguage("open", "en_US"), text);
    EXPECT_EQ(&manager->getString("menu", "open", "en_US"), text);
}

TEST(ResourceManager, GivesBundlesTheLanguageThatItHasWhenTheyAreMade)
{
    const BundleFiles files;
    files.lay("menu.en_US.properties", "k=american\n");
    files.lay("menu.de.properties", "k=german\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setLanguage("de");
    EXPECT_EQ(manager->getLanguage(), "de");
    EXPECT_EQ(manager->getString("menu", "k"), "german");
    const Reference<ResourceManager> other = files.makeManager();
    EXPECT_EQ(other->getString("menu", "k"), "american") << "en_US at first";
}

TEST(ResourceManager, TakesAllItsBundlesToALanguage)
{
    const BundleFiles files;
    for (const char * const name : {"a", "b", "c"})
    {
        files.lay(std::string(name) + ".properties", "k="s + name + " none\n");
        files.lay("de/" + std::string(name) + ".properties", "k="s + name + " german\n");
    }
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setDefaultBundle("b");
    EXPECT_EQ(manager->getString("c", "k"), "c none");
    EXPECT_EQ(manager->getString("a", "k"), "a none");
    EXPECT_EQ(manager->getString("k"), "b none");
    manager->setLanguage("de");
    EXPECT_EQ(manager->getString("c", "k"), "c german");
    EXPECT_EQ(manager->getString("a", "k"), "a german");
    EXPECT_EQ(manager->getString("k"), "b german");
    Reference<ResourceBundle> bundle;
    ASSERT_TRUE(manager->getDefaultBundle(bundle));
    EXPECT_EQ(bundle->getString("k"), "b german");
    manager->setLanguage("");
    EXPECT_EQ(manager->getLanguage(), "");
    EXPECT_EQ(manager->getString("k"), "b none");
}

TEST(ResourceManager, ReadsTheFilesOfABundleWhenItIsFirstUsed)
{
    const BundleFiles files;
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setLanguage("de");
    files.lay("menu.de.properties", "k=later\n");
    EXPECT_EQ(manager->getString("menu", "k"), "later");
}

TEST(ResourceManager, NeverReadsFilesAgainBeforeAReset)
{
    const BundleFiles files;
    files.lay("de/menu.properties", "k=old\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setLanguage("de_AT");
    manager->setDefaultBundle("menu");
    EXPECT_EQ(manager->getString("k"), "old");
    EXPECT_EQ(manager->getStringInLanguage("k", "fr"), "k") << "nothing was found, and that stays too";

    files.lay("de/menu.properties", "k=changed\n");
    files.lay("de_AT/menu.properties", "k=austrian\n");
    files.lay("menu.fr.properties", "k=french\n");
    manager->setLanguage("de_AT");
    EXPECT_EQ(manager->getString("k"), "old");
    manager->setLanguage("fr");
    EXPECT_EQ(manager->getString("k"), "k");
    manager->setDefaultBundle("menu");
    EXPECT_EQ(manager->getStringInLanguage("k", "de_AT"), "old");
    EXPECT_EQ(manager->getStringInLanguage("k", "de"), "changed") << "a language not asked for so far";

    manager->reset();
    manager->setRootDirectory(files.root());
    manager->setLanguage("de_AT");
    EXPECT_EQ(manager->getString("menu", "k"), "austrian");
    EXPECT_EQ(manager->getString("menu", "k", "fr"), "french");
}

TEST(ResourceManager, LoadsTheSameFileOnceForEachLanguage)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "k=german\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setLanguage("de_AT");
    const Reference<ResourceBundle> austrian = bundleOf(manager, "menu");
    manager->setLanguage("de_CH");
    const Reference<ResourceBundle> swiss = bundleOf(manager, "menu");
    EXPECT_NE(austrian, swiss);
    EXPECT_EQ(austrian->getString("k"), "german");
    EXPECT_EQ(swiss->getString("k"), "german");
    EXPECT_NE(&austrian->getString("k"), &swiss->getString("k"));
    manager->setLanguage("de_AT");
    EXPECT_EQ(bundleOf(manager, "menu"), austrian) << "and no more than once";
}

TEST(ResourceManager, StoresAnAustrianRequestUnderItsOwnName)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "k=german\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setDefaultBundle("menu");
    manager->setLanguage("de_AT");
    EXPECT_EQ(manager->getLanguage(), "de_AT");
    EXPECT_EQ(manager->getString("k"), "german");
    const u8string * const text = &manager->getString("k");
    EXPECT_EQ(&manager->getStringInLanguage("k", "de_AT"), text);
    EXPECT_NE(&manager->getStringInLanguage("k", "de"), text);
}

TEST(ResourceManager, LeavesUsedBundlesTheirDirectory)
{
    const BundleFiles files;
    files.lay("one/menu.properties", "k=first\n");
    files.lay("one/menu.de.properties", "k=first german\n");
    files.lay("two/menu.properties", "k=second\n");
    files.lay("two/menu.de.properties", "k=second german\n");
    files.lay("two/help.properties", "k=help\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setRootDirectory(files.root() + "\\one");
    EXPECT_EQ(manager->getString("menu", "k"), "first");
    manager->setRootDirectory(files.root() + "\\two");
    EXPECT_EQ(manager->getRootDirectory(), files.root() + "\\two");
    manager->setLanguage("de");
    EXPECT_EQ(manager->getString("menu", "k"), "first german");
    EXPECT_EQ(manager->getString("help", "k"), "help");
}

TEST(ResourceManager, TakesItsDirectoryWithOrWithoutASeparator)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=none\n");
    files.lay("de/menu.properties", "k=german\n");
    for (const char * const end : {"", "\\", "/"})
    {
        SCOPED_TRACE(end);
        const Reference<ResourceManager> manager = files.makeManager();
        manager->setRootDirectory(files.root() + end);
        EXPECT_EQ(manager->getRootDirectory(), files.root() + end) << "told as it was set";
        EXPECT_EQ(manager->getString("menu", "k"), "none");
        EXPECT_EQ(manager->getString("menu", "k", "de"), "german");
    }
}

TEST(ResourceManager, TakesNamesAsTheyAre)
{
    const struct
    {
        const char * label;
        const char * file;
        const char * bundle;
        const char * language;
        bool isFound;
    } rows[] = {
        {"no name", ".properties", "", "", true},
        {"no name, in a directory", "de/.properties", "", "de", true},
        {"no name, with a language", ".de.properties", "", "de", true},
        {"a dot", "a.b.properties", "a.b", "", true},
        {"a dot and a language", "a.b.de.properties", "a.b", "de", true},
        {"the name of one may be name and language of another", "a.de.properties", "a.de", "fr", true},
        {"a directory", "sub/menu.properties", "sub\\menu", "", true},
        {"another separator", "sub/menu.properties", "sub/menu", "", true},
        {"other letters", "\xC3\x84pfel/\xE6\xBC\xA2.properties", "\xE6\xBC\xA2", "\xC3\x84pfel", true},
        {"a blank", "my menu.properties", "my menu", "", true},
        {"a pattern is no name", "menu.properties", "me*", "", false},
        {"a pattern is no language", "menu.de.properties", "menu", "d*", false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const BundleFiles files;
        files.lay(row.file, "k=found\n");
        const Reference<ResourceManager> manager = files.makeManager();
        EXPECT_EQ(manager->getString(row.bundle, "k", row.language), row.isFound ? "found" : "k");
    }
}

TEST(ResourceManager, PassesOverADirectoryInThePlaceOfAFile)
{
    const BundleFiles files;
    files.makeDirectory("de/menu.properties");
    files.makeDirectory("menu.de.properties");
    files.lay("menu.properties", "k=none\n");
    const Reference<ResourceManager> manager = files.makeManager();
    EXPECT_EQ(manager->getString("menu", "k", "de"), "none");
}

TEST(ResourceManager, PassesOverAFileThatIsBeingWritten)
{
    const BundleFiles files;
    files.lay("menu.de.properties", "");
    files.lay("menu.properties", "k=none\n");
    const Reference<ResourceManager> manager = files.makeManager();
    qvdisk::File file(files.root() + "\\menu.de.properties");
    const std::unique_ptr<qvdisk::FileWriter> writer(file.openForWrite());
    ASSERT_NE(writer, nullptr);
    EXPECT_EQ(manager->getString("menu", "k", "de"), "none");
}

TEST(ResourceManager, TakesNoKeyFromAFileWithAFault)
{
    const BundleFiles files;
    files.lay("de/menu.properties", "k=german\nonly=german\nk=again\n");
    files.lay("menu.properties", "k=none\n");
    const Reference<ResourceManager> manager = files.makeManager();
    EXPECT_EQ(manager->getString("menu", "k", "de"), "none");
    EXPECT_EQ(manager->getString("menu", "only", "de"), "only");
}

TEST(ResourceManager, TakesAnEmptyFileForAGoodOne)
{
    // Marks alone are empty as well.
    for (const char * const content : {"", "\xEF\xBB\xBF", "\xFF\xFE"})
    {
        SCOPED_TRACE(content);
        const BundleFiles files;
        files.lay("de/menu.properties", content);
        files.lay("menu.properties", "k=none\n");
        const Reference<ResourceManager> manager = files.makeManager();
        EXPECT_EQ(manager->getString("menu", "k", "de"), "k");
        manager->setLanguage("de");
        const Reference<ResourceBundle> german = bundleOf(manager, "menu");
        manager->setLanguage("de_AT");
        EXPECT_NE(bundleOf(manager, "menu"), german) << "it is a file, and not the bundle without one";
    }
}

TEST(ResourceManager, ReadsTheEncodingsOfTextFiles)
{
    const struct
    {
        const char * label;
        std::string bytes;
        const char * key;
        const char * expected;
    } rows[] = {
        {"UTF-8", "k=\xC3\xA4\r\n", "k", "\xC3\xA4"},
        {"UTF-8 behind its mark", "\xEF\xBB\xBFk=\xC3\xA4\n", "k", "\xC3\xA4"},
        {"UTF-16 behind its mark", "\xFF\xFEk\0=\0\xE4\0\n\0l\0=\0"s, "k", "\xC3\xA4"},
        {"UTF-16 with a pair", "\xFF\xFEk\0=\0\x3D\xD8\0\xDE"s, "k", "\xF0\x9F\x98\x80"},
        {"the other UTF-16 is bytes like any others", "\xFE\xFFk=v\n", "\xFE\xFFk", "v"},
        {"a text ends at its first zero byte", "k=v\0w\nl=x"s, "k", "v"},
        {"behind it nothing is read", "k=v\n\0l=x\n"s, "l", "l"},
        {"nor is it taken for a fault", "k=v\n\0l\n"s, "k", "v"},
        {"bytes that are no UTF-8", "k=\xFF\xC3\n", "k", "\xFF\xC3"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const BundleFiles files;
        files.lay("menu.properties", row.bytes);
        EXPECT_EQ(files.makeManager()->getString("menu", row.key), row.expected);
    }
}

TEST(ResourceManager, ReadsTextsOfAnyLength)
{
    const BundleFiles files;
    const std::string text(5'000'000, 'x');
    files.lay("menu.properties", "before=1\nk=" + text + "\nbehind=2");
    const Reference<ResourceManager> manager = files.makeManager();
    EXPECT_EQ(manager->getString("menu", "k"), text);
    EXPECT_EQ(manager->getString("menu", "before"), "1");
    EXPECT_EQ(manager->getString("menu", "behind"), "2");
}

TEST(ResourceManager, GoesBackToItsFirstStateByAReset)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=none\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setLanguage("de");
    manager->setDefaultBundle("menu");
    EXPECT_EQ(manager->getString("k"), "none");
    manager->reset();
    EXPECT_TRUE(isAsAfterAReset(manager));
    manager->reset();
    EXPECT_TRUE(isAsAfterAReset(manager));
    EXPECT_EQ(manager->getString("menu", "k"), "k") << "sought elsewhere now";
    manager->reset();
    manager->setRootDirectory(files.root());
    manager->setDefaultBundle("menu");
    EXPECT_EQ(manager->getString("k"), "none");
}

TEST(ResourceManager, LeavesBundlesToThoseWhoHoldThem)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=none\n");
    files.lay("menu.de.properties", "k=german\n");
    Reference<ResourceManager> manager = files.makeManager();
    const Reference<ResourceBundle> bundle = bundleOf(manager, "menu");
    const u8string & text = bundle->getString("k");
    manager->setLanguage("de");
    EXPECT_EQ(manager->getString("menu", "k"), "german");
    EXPECT_EQ(bundle->getString("k"), "none") << "it stays what it is";
    EXPECT_EQ(&bundle->getString("k"), &text);
    manager->reset();
    EXPECT_EQ(&bundle->getString("k"), &text);
    manager = nullptr;
    EXPECT_EQ(text, "none");
    EXPECT_EQ(&bundle->getString("k"), &text);
}

TEST(ResourceManager, LeavesTextsWhereTheyAreWhenTheLanguageChanges)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=none\n");
    const Reference<ResourceManager> manager = files.makeManager();
    const u8string & text = manager->getString("menu", "k");
    for (const char * const language : {"de", "fr", "de_AT", "", "en_US"})
        manager->setLanguage(language);
    manager->setRootDirectory("elsewhere");
    EXPECT_EQ(text, "none");
    EXPECT_EQ(&manager->getString("menu", "k"), &text);
}

TEST(ResourceManager, MayBeGivenWhatItHasTold)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=l\nl=text\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setDefaultBundle("menu");
    manager->setRootDirectory(manager->getRootDirectory());
    EXPECT_EQ(manager->getRootDirectory(), files.root());
    manager->setLanguage(manager->getLanguage());
    EXPECT_EQ(manager->getLanguage(), "en_US");
    EXPECT_EQ(manager->getString(manager->getString("k")), "text");
    Reference<ResourceBundle> bundle = bundleOf(manager, "menu");
    const ResourceBundle * const before = bundle;
    EXPECT_TRUE(manager->getBundle("menu", bundle));
    EXPECT_EQ(bundle, before);
}

constexpr int good = 3;
constexpr int isAnother = 10;
constexpr int isNotNew = 11;
constexpr int isNotUsable = 12;

VONTALBASE_TEST_CHILD(usesTheManagerOfTheProcess, arguments)
{
    ResourceManager * const manager = getResourceManager();
    if (manager == nullptr || getResourceManager() != manager)
        return isAnother;
    if (!isAsAfterAReset(manager))
        return isNotNew;
    // It goes on, however often it is held and let go.
    for (int i = 0; i < 3; ++i)
        const Reference<ResourceManager> held(manager);
    manager->setRootDirectory(arguments.at(0));
    manager->setDefaultBundle("menu");
    return manager->getString("k") == "text" ? good : isNotUsable;
}

TEST(ResourceManager, OfTheProcessIsThereFromTheBeginning)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    const testsupport::ChildResult child =
        testsupport::runChild("usesTheManagerOfTheProcess", {files.root()});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    EXPECT_EQ(child.standardOutput, "");
    EXPECT_EQ(child.standardError, "");
}

} // namespace
