// Threads that share a manager.

#include "support/Load.h"
#include "support/TestBarrier.h"
#include "utils/bundlesupport.h"

#include <atomic>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvbase::Reference;
using qvutils::ResourceBundle;
using qvutils::ResourceManager;
using Vontal::u8string;

constexpr int lookingThreads = 8;
const char * const languages[] = {"", "de", "de_AT", "en_US", "fr"};

/// What a thread sees that is not what one of the files says.
class Looker
{
public:
    Looker(ResourceManager * manager, int number) : m_manager(manager), m_number(number)
    {
    }

    void look(int times)
    {
        for (int i = 0; i < times; ++i)
        {
            const std::string own = "own" + std::to_string((i + m_number) % 20);
            check(m_manager->getString("k"), {"menu none", "menu german"});
            check(m_manager->getString("menu", "k"), {"menu none", "menu german"});
            check(m_manager->getString("help", "k"), {"help none", "help german"});
            check(m_manager->getStringInLanguage("k", "de_CH"), {"menu german"});
            check(m_manager->getString("help", "k", "it"), {"help none"});
            check(m_manager->getString(own, "k"), {"k"});
            Reference<ResourceBundle> bundle;
            if (m_manager->getBundle("help", bundle))
                check(bundle->getString("k"), {"help none", "help german"});
            if (m_manager->getDefaultBundle(bundle))
                check(bundle->getString("k"), {"menu none", "menu german"});
        }
    }

    std::set<std::string> surprises;

private:
    void check(const u8string & text, const std::set<std::string> & expected)
    {
        if (expected.count(text) == 0)
            surprises.insert(text);
    }

    ResourceManager * m_manager;
    int m_number;
};

TEST(ResourceManagerThreads, LookUpWhileAnotherOneChangesTheLanguage)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=menu none\n");
    files.lay("de/menu.properties", "k=menu german\n");
    files.lay("help.properties", "k=help none\n");
    files.lay("help.de.properties", "k=help german\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setDefaultBundle("menu");
    testsupport::TestBarrier start(lookingThreads + 1);
    std::atomic<int> running{lookingThreads};
    std::vector<Looker> lookers;
    for (int i = 0; i < lookingThreads; ++i)
        lookers.emplace_back(manager, i);
    std::vector<std::thread> threads;
    for (Looker & looker : lookers)
    {
        threads.emplace_back(
            [&]
            {
                start.arriveAndWait();
                looker.look(testsupport::repetitions(2000));
                --running;
            });
    }
    start.arriveAndWait();
    for (unsigned int i = 0; running.load() > 0; ++i)
    {
        manager->setLanguage(languages[i % 5]);
        manager->setRootDirectory(files.root());
        EXPECT_EQ(manager->getRootDirectory(), files.root());
    }
    for (std::thread & thread : threads)
        thread.join();
    for (const Looker & looker : lookers)
        EXPECT_EQ(looker.surprises, std::set<std::string>());
}

TEST(ResourceManagerThreads, AskTheBundlesThatTheyHoldWhileAnotherOneResets)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    const Reference<ResourceManager> manager = files.makeManager();
    testsupport::TestBarrier start(lookingThreads + 1);
    std::atomic<int> running{lookingThreads};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < lookingThreads; ++i)
    {
        threads.emplace_back(
            [&]
            {
                start.arriveAndWait();
                for (int k = testsupport::repetitions(2000); k > 0; --k)
                {
                    Reference<ResourceBundle> bundle;
                    const bool isThere = manager->getBundle("menu", bundle);
                    // Between a reset and the directory that follows it there are no files.
                    const u8string & text = isThere ? bundle->getString("k") : files.root();
                    wrong += text == "text" || text == "k" ? 0 : 1;
                }
                --running;
            });
    }
    start.arriveAndWait();
    while (running.load() > 0)
    {
        manager->reset();
        manager->setRootDirectory(files.root());
        manager->setDefaultBundle("menu");
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

} // namespace
