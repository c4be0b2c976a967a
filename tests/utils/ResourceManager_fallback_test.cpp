// Which file the texts of a language come from, for each set of files that may be there.

#include "utils/bundlesupport.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using qvbase::Reference;
using qvutils::ResourceManager;
using Vontal::u8string;

struct Row
{
    const char * language;
    /// All files that are sought, in the order in which they are.
    std::vector<std::string> files;
};

const std::vector<Row> & rows()
{
    static const std::vector<Row> all = {
        {"de_AT", {"de_AT/menu.properties", "menu.de_AT.properties", "de/menu.properties",
                      "menu.de.properties", "en_US/menu.properties", "menu.en_US.properties",
                      "en/menu.properties", "menu.en.properties", "menu.properties"}},
        {"de-AT", {"de-AT/menu.properties", "menu.de-AT.properties", "de/menu.properties",
                      "menu.de.properties", "en_US/menu.properties", "menu.en_US.properties",
                      "en/menu.properties", "menu.en.properties", "menu.properties"}},
        {"de", {"de/menu.properties", "menu.de.properties", "en_US/menu.properties", "menu.en_US.properties",
                   "en/menu.properties", "menu.en.properties", "menu.properties"}},
        // Its base form comes before the American one.
        {"en_GB",
            {"en_GB/menu.properties", "menu.en_GB.properties", "en/menu.properties", "menu.en.properties",
                "en_US/menu.properties", "menu.en_US.properties", "menu.properties"}},
        {"en_US", {"en_US/menu.properties", "menu.en_US.properties", "en/menu.properties",
                      "menu.en.properties", "menu.properties"}},
        {"en", {"en/menu.properties", "menu.en.properties", "en_US/menu.properties", "menu.en_US.properties",
                   "menu.properties"}},
        {"", {"menu.properties", "en_US/menu.properties", "menu.en_US.properties", "en/menu.properties",
                 "menu.en.properties"}},
        // There is nothing in front of the separator, so that it is its own base form.
        {"_x", {"_x/menu.properties", "menu._x.properties", "en_US/menu.properties", "menu.en_US.properties",
                   "en/menu.properties", "menu.en.properties", "menu.properties"}},
        {"-", {"-/menu.properties", "menu.-.properties", "en_US/menu.properties", "menu.en_US.properties",
                  "en/menu.properties", "menu.en.properties", "menu.properties"}},
        // The first of the two separators counts.
        {"a-b_c", {"a-b_c/menu.properties", "menu.a-b_c.properties", "a/menu.properties", "menu.a.properties",
                      "en_US/menu.properties", "menu.en_US.properties", "en/menu.properties",
                      "menu.en.properties", "menu.properties"}},
        {"a_b-c", {"a_b-c/menu.properties", "menu.a_b-c.properties", "a/menu.properties", "menu.a.properties",
                      "en_US/menu.properties", "menu.en_US.properties", "en/menu.properties",
                      "menu.en.properties", "menu.properties"}},
    };
    return all;
}

/// What a lookup must give: the number of the first good file, or the key.
u8string expectedText(const Row & row, unsigned int present)
{
    for (std::size_t i = 0; i < row.files.size(); ++i)
    {
        if ((present >> i & 1U) != 0)
            return row.files[i];
    }
    return "who";
}

/// The sets of files, each of which differs from the one before it by one file.
unsigned int setOf(unsigned int number)
{
    return number ^ (number >> 1U);
}

enum class Otherwise
{
    Missing,
    Faulty
};

/// Puts a file into its good or its other state.
void place(const BundleFiles & files, const std::string & name, bool isGood, Otherwise otherwise)
{
    if (isGood)
        files.lay(name, "other=x\nwho=" + name + "\n");
    else if (otherwise == Otherwise::Faulty)
        files.lay(name, "other=x\nwho=faulty\nother=x\n");
    else
        files.remove(name);
}

void checkAllSets(const Row & row, Otherwise otherwise)
{
    SCOPED_TRACE(std::string("language '") + row.language + "'");
    const BundleFiles files;
    for (const std::string & name : row.files)
        files.lay(name, "");
    for (const std::string & name : row.files)
        place(files, name, false, otherwise);
    const unsigned int sets = 1U << row.files.size();
    unsigned int before = 0;
    for (unsigned int number = 0; number < sets; ++number)
    {
        const unsigned int present = setOf(number);
        for (std::size_t i = 0; i < row.files.size(); ++i)
        {
            if (((present ^ before) >> i & 1U) != 0)
                place(files, row.files[i], (present >> i & 1U) != 0, otherwise);
        }
        before = present;
        const Reference<ResourceManager> manager = files.makeManager();
        const u8string expected = expectedText(row, present);
        ASSERT_EQ(manager->getString("menu", "who", row.language), expected) << present;
        manager->setLanguage(row.language);
        ASSERT_EQ(manager->getString("menu", "who"), expected) << present;
    }
}

TEST(ResourceFallback, TakesTheFirstFileThatIsThereOfEverySet)
{
    for (const Row & row : rows())
        checkAllSets(row, Otherwise::Missing);
}

TEST(ResourceFallback, PassesOverFaultyFilesAsIfTheyWereMissing)
{
    checkAllSets(rows()[0], Otherwise::Faulty);
    checkAllSets(rows()[4], Otherwise::Faulty);
    checkAllSets(rows()[6], Otherwise::Faulty);
}

} // namespace
