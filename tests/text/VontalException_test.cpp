#include "VontalBase/text/VontalException.h"

#include "support/SmallStackThread.h"
#include "support/VirtualSlot.h"

#include <exception>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;
using Vontal::u8string;

static_assert(!std::is_base_of_v<std::exception, VontalException>, "it is not thrown");
static_assert(std::has_virtual_destructor_v<VontalException>);
static_assert(std::has_virtual_destructor_v<VontalExceptionDescription>);
static_assert(sizeof(VontalException) == 2 * sizeof(void *), "the virtual table and the newest entry");
static_assert(std::is_same_v<decltype(VontalException::first), VontalExceptionDescription *>);
static_assert(std::is_same_v<decltype(VontalExceptionDescription::file), u8string>);
static_assert(std::is_same_v<decltype(VontalExceptionDescription::line), int> && sizeof(int) == 4);
static_assert(std::is_same_v<decltype(VontalExceptionDescription::text), u8string>);
static_assert(std::is_same_v<decltype(VontalExceptionDescription::next), VontalExceptionDescription *>);

TEST(VontalException, HasItsVirtualOperationsInTheirOrder)
{
    using Assignment = VontalException & (VontalException::*)(const VontalException &);
    EXPECT_EQ(virtualSlot(static_cast<Assignment>(&VontalException::operator=)), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&VontalException::clear), slotsOfDestructor + 1);
    EXPECT_EQ(virtualSlot(&VontalException::add), slotsOfDestructor + 2);
    EXPECT_EQ(virtualSlot(&VontalException::append), slotsOfDestructor + 3);
    EXPECT_EQ(virtualSlot(&VontalException::compare), slotsOfDestructor + 4);
    EXPECT_EQ(virtualSlot(&VontalException::format), slotsOfDestructor + 5);
}

TEST(VontalException, HasTheFieldsOfAnEntryInTheirOrder)
{
    const VontalExceptionDescription entry(nullptr, "f", 1, "t");
    EXPECT_LT(static_cast<const void *>(&entry.file), static_cast<const void *>(&entry.line));
    EXPECT_LT(static_cast<const void *>(&entry.line), static_cast<const void *>(&entry.text));
    EXPECT_LT(static_cast<const void *>(&entry.text), static_cast<const void *>(&entry.next));
}

/// A record with the entries `texts`, the oldest first.
VontalException recordOf(const std::vector<const char *> & texts)
{
    VontalException record;
    for (const char * const text : texts)
        record.add("f", 1, text);
    return record;
}

TEST(VontalException, IsEmptyByDefault)
{
    const VontalException record;
    EXPECT_EQ(record.first, nullptr);
    EXPECT_EQ(record.format(), "");
}

TEST(VontalException, HoldsTheEntryAddedLastFirst)
{
    VontalException record("a", 5, "x");
    ASSERT_NE(record.first, nullptr);
    EXPECT_EQ(record.first->next, nullptr);
    record.add("b", 7, "y");
    EXPECT_EQ(record.first->file, "b");
    EXPECT_EQ(record.first->line, 7);
    EXPECT_EQ(record.first->text, "y");
    ASSERT_NE(record.first->next, nullptr);
    EXPECT_EQ(record.first->next->file, "a");
    EXPECT_EQ(record.first->next->line, 5);
    EXPECT_EQ(record.first->next->text, "x");
    EXPECT_EQ(record.first->next->next, nullptr);
}

TEST(VontalException, FormatsTheOldestEntryFirstAndNoLineEndBehindTheLast)
{
    VontalException record("a", 5, "x");
    EXPECT_EQ(record.format(), "a:5: x");
    record.add("b", 7, "y");
    EXPECT_EQ(record.format(), "a:5: x\nb:7: y");
    record.add("c", 9, "z");
    EXPECT_EQ(record.format(), "a:5: x\nb:7: y\nc:9: z");
    EXPECT_EQ(record.first->next->render(), "a:5: x\nb:7: y") << "an entry and all older ones";
}

TEST(VontalException, FormatsAnEntryByWhatItHas)
{
    struct Row
    {
        const char * label;
        const char * file;
        int line;
        const char * text;
        const char * formatted;
    };
    const Row rows[] = {
        {"file and line", "f", 12, "text", "f:12: text"},
        {"line 0 is a line", "f", 0, "text", "f:0: text"},
        {"file alone: no blank behind the colon", "f", -1, "text", "f:text"},
        {"line alone", "", 12, "text", "12: text"},
        {"line 0 alone", "", 0, "text", "0: text"},
        {"neither", "", -1, "text", "text"},
        {"the greatest line, with no separators", "f", 2147483647, "text", "f:2147483647: text"},
        {"the least line is none", "f", -2147483647 - 1, "text", "f:text"},
        {"no text", "f", 12, "", "f:12: "},
        {"nothing at all", "", -1, "", ""},
        {"a line feed in the text stays", "f", 1, "a\nb", "f:1: a\nb"},
        {"bytes that are no UTF-8 stay", "f\xFF", 1, "\xC3(", "f\xFF:1: \xC3("},
        {"blanks in the file", "a b", 1, "t", "a b:1: t"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(VontalException(row.file, row.line, row.text).format(), row.formatted);
    }
}

TEST(VontalException, FormatsALineFeedBetweenEmptyEntries)
{
    VontalException record;
    record.add("", -1, "");
    record.add("", -1, "");
    record.add("", -1, "");
    EXPECT_EQ(record.format(), "\n\n");
}

TEST(VontalException, KeepsZeroBytesOfTheTextAndCutsTheFileThere)
{
    const VontalException record(u8string("f\0g", 3), 1, u8string("a\0b", 3));
    EXPECT_EQ(record.format(), std::string("f:1: a\0b", 8));
}

TEST(VontalException, TrimsTheBuildRootFromTheFile)
{
    VontalException record("C:\\Mirsa\\Vontal\\vontal.git\\json\\qvjson.cpp", 10, "x");
    record.add("C:\\MIRSA\\vontal.RELEASE64\\src\\a", 20, "y");
    record.add("D:\\elsewhere\\b.cpp", 30, "z");
    EXPECT_EQ(record.format(), "json\\qvjson.cpp:10: x\nsrc\\a:20: y\nD:\\elsewhere\\b.cpp:30: z");
    EXPECT_EQ(record.first->next->file, "src\\a");
    const VontalExceptionDescription entry(nullptr, "c:/mirsa/vontal/vontal.git/a", 1, "x");
    EXPECT_EQ(entry.file, "a");
}

TEST(VontalException, SendsACopiedEntryThroughItsConstructorAgain)
{
    const u8string root = "C:/Mirsa/Vontal/vontal.git/";
    const VontalException record(root + root + "a.cpp", 1, "x");
    EXPECT_EQ(record.first->file, root + "a.cpp") << "one build root is cut at a time";
    EXPECT_EQ(VontalException(record).first->file, "a.cpp");
}

TEST(VontalException, ClearsToEmptyAndMayBeUsedAgain)
{
    VontalException record;
    record.clear();
    EXPECT_EQ(record.first, nullptr);
    record.add("f", 1, "old");
    record.add("f", 2, "older is above");
    record.clear();
    EXPECT_EQ(record.first, nullptr);
    EXPECT_EQ(record.format(), "");
    record.add("f", 3, "new");
    EXPECT_EQ(record.format(), "f:3: new");
}

TEST(VontalException, KeepsOldEntriesUntilItIsCleared)
{
    VontalException record;
    record.add("f", 1, "first use");
    record.add("f", 2, "second use");
    EXPECT_EQ(record.format(), "f:1: first use\nf:2: second use");
}

TEST(VontalException, CopiesDeeply)
{
    VontalException record = recordOf({"1", "2", "3"});
    const VontalException copy(record);
    EXPECT_NE(copy.first, record.first);
    EXPECT_NE(copy.first->next, record.first->next);
    EXPECT_EQ(copy.compare(record), 0);
    record.first->text = "changed";
    record.add("f", 1, "4");
    EXPECT_EQ(copy.format(), "f:1: 1\nf:1: 2\nf:1: 3");
    record.clear();
    EXPECT_EQ(copy.format(), "f:1: 1\nf:1: 2\nf:1: 3");

    const VontalException empty;
    EXPECT_EQ(VontalException(empty).first, nullptr);
}

TEST(VontalException, AssignsADeepCopyInPlaceOfItsOwnChain)
{
    VontalException record = recordOf({"old"});
    VontalException source = recordOf({"1", "2"});
    EXPECT_EQ(&(record = source), &record);
    EXPECT_EQ(record.format(), "f:1: 1\nf:1: 2");
    EXPECT_NE(record.first, source.first);
    EXPECT_EQ(source.format(), "f:1: 1\nf:1: 2");
    record = VontalException();
    EXPECT_EQ(record.first, nullptr);
}

TEST(VontalException, IsEmptiedByAssignmentToItself)
{
    VontalException record = recordOf({"1", "2"});
    const VontalException & same = record;
    record = same;
    EXPECT_EQ(record.first, nullptr);
    EXPECT_EQ(record.format(), "");
    record = same;
    EXPECT_EQ(record.format(), "");
}

TEST(VontalException, AppendsACopyAsTheNewerEntries)
{
    VontalException x = recordOf({"x1", "x2"});
    const VontalException y = recordOf({"y1", "y2"});
    x.append(y);
    EXPECT_EQ(x.format(), "f:1: x1\nf:1: x2\nf:1: y1\nf:1: y2");
    EXPECT_EQ(x.first->text, "y2");
    EXPECT_EQ(y.format(), "f:1: y1\nf:1: y2");
    x.clear();
    EXPECT_EQ(y.format(), "f:1: y1\nf:1: y2") << "it was a copy";
}

TEST(VontalException, LinksItsOwnEntriesBehindNewOnesAndCopiesThemNot)
{
    VontalException record = recordOf({"1", "2"});
    VontalExceptionDescription * const newest = record.first;
    VontalExceptionDescription * const oldest = newest->next;
    record.add("f", 1, "3");
    EXPECT_EQ(record.first->next, newest);
    EXPECT_EQ(newest->next, oldest);

    record.append(recordOf({"4", "5"}));
    EXPECT_EQ(record.first->text, "5");
    EXPECT_EQ(record.first->next->text, "4");
    EXPECT_EQ(record.first->next->next->text, "3");
    EXPECT_EQ(record.first->next->next->next, newest);
    EXPECT_EQ(newest->next, oldest);
    EXPECT_EQ(oldest->next, nullptr);

    VontalExceptionDescription * const beforeDoubling = record.first;
    record.append(record);
    const VontalExceptionDescription * entry = record.first;
    for (int i = 0; i < 5; ++i)
        entry = entry->next;
    EXPECT_EQ(entry, beforeDoubling) << "also behind a copy of itself";
}

TEST(VontalException, AppendsNothingOfAnEmptyRecord)
{
    VontalException record = recordOf({"1"});
    const VontalExceptionDescription * const first = record.first;
    record.append(VontalException());
    EXPECT_EQ(record.first, first);
    EXPECT_EQ(record.format(), "f:1: 1");

    VontalException empty;
    empty.append(VontalException());
    EXPECT_EQ(empty.first, nullptr);
    empty.append(record);
    EXPECT_EQ(empty.format(), "f:1: 1");
}

TEST(VontalException, IsDoubledByAppendingItself)
{
    VontalException record = recordOf({"1", "2"});
    record.append(record);
    EXPECT_EQ(record.format(), "f:1: 1\nf:1: 2\nf:1: 1\nf:1: 2");
    VontalException empty;
    empty.append(empty);
    EXPECT_EQ(empty.first, nullptr);
}

TEST(VontalException, ComparesForEqualityAlone)
{
    struct Row
    {
        const char * label;
        VontalException left;
        VontalException right;
        int result;
    };
    const Row rows[] = {
        {"two empty ones", VontalException(), VontalException(), 0},
        {"one empty", VontalException(), recordOf({"1"}), -1},
        {"equal", recordOf({"1", "2"}), recordOf({"1", "2"}), 0},
        {"another order", recordOf({"1", "2"}), recordOf({"2", "1"}), -1},
        {"one more, newer", recordOf({"1", "2"}), recordOf({"1", "2", "3"}), -1},
        {"one more, older", recordOf({"2", "3"}), recordOf({"1", "2", "3"}), -1},
        {"another file", VontalException("f", 1, "t"), VontalException("g", 1, "t"), -1},
        {"the file in another case", VontalException("f", 1, "t"), VontalException("F", 1, "t"), -1},
        {"a file that begins the other", VontalException("f", 1, "t"), VontalException("ff", 1, "t"), -1},
        {"another line", VontalException("f", 1, "t"), VontalException("f", 2, "t"), -1},
        {"two lines that both are none", VontalException("f", -1, "t"), VontalException("f", -2, "t"), -1},
        {"another text", VontalException("f", 1, "t"), VontalException("f", 1, "u"), -1},
        {"a longer text", VontalException("f", 1, "t"), VontalException("f", 1, "tt"), -1},
        {"texts that differ behind a zero byte", VontalException("f", 1, u8string("t\0a", 3)),
            VontalException("f", 1, u8string("t\0b", 3)), -1},
        {"the same format in other pieces", VontalException("", 1, "t"), VontalException("", -1, "1: t"), -1},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(row.left.compare(row.right), row.result);
        EXPECT_EQ(row.right.compare(row.left), row.result) << "it is no ordering";
        EXPECT_EQ(row.left.compare(row.left), 0);
    }
}

TEST(VontalException, ComparesEntriesFromTheNewest)
{
    const VontalException record = recordOf({"1", "2"});
    const VontalException other = recordOf({"1", "2"});
    EXPECT_EQ(record.first->equals(other.first), 0);
    EXPECT_EQ(record.first->equals(other.first->next), -1);
    EXPECT_EQ(record.first->next->equals(other.first->next), 0);
    EXPECT_EQ(record.first->next->equals(other.first), -1);
    EXPECT_EQ(record.first->equals(nullptr), -1);
    EXPECT_EQ(record.first->equals(record.first), 0);
}

TEST(VontalExceptionDescription, ClonesItselfAndAllOlderEntries)
{
    auto * const older = new VontalExceptionDescription(nullptr, "a", 1, "x");
    const VontalExceptionDescription newer(older, "b", -1, "y");
    EXPECT_EQ(newer.next, older);
    const std::unique_ptr<VontalExceptionDescription> copy(newer.clone());
    EXPECT_NE(copy.get(), &newer);
    ASSERT_NE(copy->next, nullptr);
    EXPECT_NE(copy->next, older);
    EXPECT_EQ(copy->render(), "a:1: x\nb:y");
    EXPECT_EQ(copy->equals(&newer), 0);
}

/// An application's entry, which tells when it goes.
class Watched : public VontalExceptionDescription
{
public:
    Watched(VontalExceptionDescription * older, const char * name, std::string & log)
        : VontalExceptionDescription(older, "", -1, name), m_log(log)
    {
    }
    Watched(const Watched &) = delete;
    Watched & operator=(const Watched &) = delete;
    ~Watched() override
    {
        m_log += text;
    }

private:
    std::string & m_log;
};

TEST(VontalExceptionDescription, KeepsZeroBytesOfTheTextInEveryCopy)
{
    const u8string older("a\0b", 3);
    const u8string newer("\0c\0", 3);
    VontalException record("f", 1, older);
    record.add("g", 2, newer);
    const std::string expected("f:1: a\0b\ng:2: \0c\0", 17);

    const std::unique_ptr<VontalExceptionDescription> clone(record.first->clone());
    EXPECT_EQ(clone->text, newer);
    EXPECT_EQ(clone->next->text, older);
    EXPECT_EQ(clone->render(), expected);
    EXPECT_EQ(VontalException(record).format(), expected);
    VontalException assigned;
    assigned = record;
    EXPECT_EQ(assigned.format(), expected);
    VontalException appended;
    appended.append(record);
    EXPECT_EQ(appended.format(), expected);
}

/// An entry whose operations have the names of those of its base and other results, which would not compile
/// if they were virtual there.
class Shadowing : public VontalExceptionDescription
{
public:
    using VontalExceptionDescription::VontalExceptionDescription;
    static int render()
    {
        return 1;
    }
    static int clone()
    {
        return 2;
    }
    static bool equals(const VontalExceptionDescription *)
    {
        return true;
    }
};

TEST(VontalExceptionDescription, HasNoVirtualOperationButItsDestructor)
{
    Shadowing entry(nullptr, "f", 1, "t");
    const VontalExceptionDescription & base = entry;
    EXPECT_EQ(base.render(), "f:1: t");
    const std::unique_ptr<VontalExceptionDescription> copy(base.clone());
    EXPECT_EQ(copy->render(), "f:1: t");
    EXPECT_EQ(base.equals(nullptr), -1);
}

TEST(VontalExceptionDescription, DestroysEveryOlderEntryOnce)
{
    std::string log;
    {
        VontalException record;
        record.first = new Watched(new Watched(new Watched(nullptr, "1", log), "2", log), "3", log);
    }
    EXPECT_EQ(log.size(), 3U);
    for (const char * const name : {"1", "2", "3"})
        EXPECT_NE(log.find(name), std::string::npos);
    log.clear();
    VontalException record;
    record.first = new Watched(new Watched(nullptr, "1", log), "2", log);
    record.clear();
    EXPECT_EQ(log.size(), 2U);
}

/// An application's record, which notes what is called through the virtual table.
class Noting : public VontalException
{
public:
    using VontalException::operator=;
    void clear() override
    {
        log += "clear ";
        VontalException::clear();
    }
    void add(const u8string & file, int line, const u8string & text) override
    {
        log += "add ";
        VontalException::add(file, line, "[" + text + "]");
    }
    std::string log;
};

/// What the raising code is: it sees a record and no class.
bool fail(VontalException & record)
{
    record.add("f", 1, "failed");
    return false;
}

TEST(VontalException, LetsAnApplicationOverrideAddAndClear)
{
    Noting record;
    EXPECT_FALSE(fail(record));
    EXPECT_EQ(record.format(), "f:1: [failed]");
    const VontalException source("f", 2, "other");
    VontalException & plain = record;
    plain = source;
    EXPECT_EQ(record.log, "add clear ") << "assignment clears through the virtual table, and adds nothing";
    EXPECT_EQ(record.format(), "f:2: other");
}

TEST(VontalException, AppendsWithoutAskingAnOverrideOfAdd)
{
    Noting record;
    VontalException & plain = record;
    plain.append(recordOf({"1"}));
    plain.append(recordOf({"2", "3"}));
    EXPECT_EQ(record.log, "");
    EXPECT_EQ(record.format(), "f:1: 1\nf:1: 2\nf:1: 3");
}

constexpr int entriesOfALongChain = 1'000'000;

TEST(VontalException, HoldsAMillionEntriesOnASmallStack)
{
    testsupport::runOnSmallStack(
        []
        {
            VontalException record;
            for (int i = 0; i < entriesOfALongChain; ++i)
                record.add("", i % 10, "t");
            const u8string text = record.format();
            EXPECT_EQ(text.size(), entriesOfALongChain * 5U - 1U) << "each is 'n: t' and a line feed";
            EXPECT_EQ(text.substr(0, 9), "0: t\n1: t");
            EXPECT_EQ(text.substr(text.size() - 4), "9: t");

            VontalException copy(record);
            EXPECT_EQ(copy.compare(record), 0);
            copy.first->text = "u";
            EXPECT_EQ(copy.compare(record), -1);
            record.append(record);
            EXPECT_EQ(record.compare(copy), -1);
            copy.clear();
            copy = record;
            EXPECT_EQ(copy.compare(record), 0);
            record.clear();
            EXPECT_EQ(record.first, nullptr);
        });
}

} // namespace
