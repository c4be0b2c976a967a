#include "VontalBase/core/ReferenceCounter.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"
#include "support/VirtualSlot.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::NamedReferenceCounter;
using qvbase::ReferenceCounter;
using qvbase::ReferencedObject;
using qvbase::SafeReferenceCounter;
using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;

static_assert(std::is_base_of_v<ReferencedObject, ReferenceCounter>);
static_assert(std::is_base_of_v<ReferenceCounter, SafeReferenceCounter>);
static_assert(std::is_base_of_v<SafeReferenceCounter, NamedReferenceCounter>);
static_assert(std::has_virtual_destructor_v<ReferenceCounter>);
static_assert(std::is_same_v<decltype(std::declval<ReferenceCounter &>().getRefCounter()), unsigned int>);
static_assert(std::is_constructible_v<NamedReferenceCounter, const std::string &>);
static_assert(!std::is_default_constructible_v<NamedReferenceCounter>);

TEST(ReferenceCounter, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(virtualSlot(&ReferenceCounter::addRef), 0U);
    EXPECT_EQ(virtualSlot(&ReferenceCounter::release), 1U);
    EXPECT_EQ(virtualSlot(&ReferenceCounter::getRefCounter), 2U + slotsOfDestructor)
        << "behind the destructor";
}

/// What is written to the standard error stream while an object is destroyed.
template <class Counter>
std::string saidAtTheEnd(std::unique_ptr<Counter> counter)
{
    testing::internal::CaptureStderr();
    counter.reset();
    return testing::internal::GetCapturedStderr();
}

/// The line about an address, as the standard stream prints a pointer.
std::string lineAbout(const void * address, const std::string & counter)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "Invalid reference count for class: " << address << ", counter=" << counter << "\n";
    return text.str();
}

/// Without the carriage returns that a text stream of the system may add.
std::string plain(std::string text)
{
    std::erase(text, '\r');
    return text;
}

/// The three classes, each made as it is made.
template <class Counter>
std::unique_ptr<Counter> makeCounter()
{
    if constexpr (std::is_same_v<Counter, NamedReferenceCounter>)
        return std::make_unique<Counter>("Name");
    else
        return std::make_unique<Counter>();
}

template <class Counter>
class Counters : public testing::Test
{
};

using AllCounters = testing::Types<ReferenceCounter, SafeReferenceCounter, NamedReferenceCounter>;
TYPED_TEST_SUITE(Counters, AllCounters);

TYPED_TEST(Counters, CountFromZeroUpAndDownAndDeleteNothing)
{
    const auto counter = makeCounter<TypeParam>();
    EXPECT_EQ(counter->getRefCounter(), 0U);
    counter->addRef();
    counter->addRef();
    EXPECT_EQ(counter->getRefCounter(), 2U);
    counter->release();
    counter->release();
    EXPECT_EQ(counter->getRefCounter(), 0U) << "still there at 0";
}

TYPED_TEST(Counters, SayNothingWhenTheyEndAtZero)
{
    EXPECT_EQ(saidAtTheEnd(makeCounter<TypeParam>()), "");
    auto used = makeCounter<TypeParam>();
    used->addRef();
    used->release();
    EXPECT_EQ(saidAtTheEnd(std::move(used)), "");
}

TYPED_TEST(Counters, WrapToTheLargestValueBelowZero)
{
    const auto counter = makeCounter<TypeParam>();
    counter->release();
    EXPECT_EQ(counter->getRefCounter(), 4294967295U);
    counter->addRef();
    EXPECT_EQ(counter->getRefCounter(), 0U);
}

TYPED_TEST(Counters, TakeOverTheCountWhenTheyAreCopied)
{
    testing::internal::CaptureStderr();
    {
        const auto counter = makeCounter<TypeParam>();
        counter->addRef();
        counter->addRef();
        TypeParam copy(*counter);
        EXPECT_EQ(copy.getRefCounter(), 2U);
        copy.addRef();
        EXPECT_EQ(copy.getRefCounter(), 3U);
        EXPECT_EQ(counter->getRefCounter(), 2U) << "a copy counts for itself";
        const auto assigned = makeCounter<TypeParam>();
        *assigned = copy;
        EXPECT_EQ(assigned->getRefCounter(), 3U);
        EXPECT_EQ(copy.getRefCounter(), 3U);
    }
    testing::internal::GetCapturedStderr();
}

TEST(ReferenceCounter, ReportsACountLeftOverByItsAddress)
{
    auto counter = std::make_unique<ReferenceCounter>();
    counter->addRef();
    counter->addRef();
    const std::string expected = lineAbout(counter.get(), "2");
    EXPECT_EQ(plain(saidAtTheEnd(std::move(counter))), expected);
}

TEST(ReferenceCounter, ReportsAWrappedCountAsItIs)
{
    auto counter = std::make_unique<ReferenceCounter>();
    counter->release();
    const std::string expected = lineAbout(counter.get(), "4294967295");
    EXPECT_EQ(plain(saidAtTheEnd(std::move(counter))), expected);
}

TEST(SafeReferenceCounter, ReportsACountLeftOverByItsAddress)
{
    auto counter = std::make_unique<SafeReferenceCounter>();
    counter->addRef();
    const std::string expected = lineAbout(counter.get(), "1");
    EXPECT_EQ(plain(saidAtTheEnd(std::move(counter))), expected);
}

TEST(NamedReferenceCounter, ReportsACountLeftOverTwiceByNameAndThenByAddress)
{
    auto counter = std::make_unique<NamedReferenceCounter>("My class");
    counter->addRef();
    counter->addRef();
    counter->addRef();
    const std::string expected =
        "Invalid reference count for class: My class, counter=3\n" + lineAbout(counter.get(), "3");
    EXPECT_EQ(plain(saidAtTheEnd(std::move(counter))), expected);
}

TEST(NamedReferenceCounter, TakesOverTheNameWhenItIsCopied)
{
    auto counter = std::make_unique<NamedReferenceCounter>("first");
    counter->addRef();
    auto copy = std::make_unique<NamedReferenceCounter>(*counter);
    auto assigned = std::make_unique<NamedReferenceCounter>("second");
    *assigned = *counter;
    for (auto * const one : {&counter, &copy, &assigned})
    {
        const std::string expected =
            "Invalid reference count for class: first, counter=1\n" + lineAbout(one->get(), "1");
        EXPECT_EQ(plain(saidAtTheEnd(std::move(*one))), expected);
    }
}

TEST(NamedReferenceCounter, ReportsALargeCountWithoutSeparators)
{
    auto counter = std::make_unique<NamedReferenceCounter>("n");
    counter->release();
    EXPECT_NE(saidAtTheEnd(std::move(counter)).find("class: n, counter=4294967295"), std::string::npos);
}

/// A stream buffer that keeps each write apart.
class Writes : public std::stringbuf
{
public:
    std::vector<std::string> writes;

protected:
    std::streamsize xsputn(const char * text, std::streamsize size) override
    {
        writes.emplace_back(text, static_cast<std::size_t>(size));
        return size;
    }
    int_type overflow(int_type c) override
    {
        writes.emplace_back(1, traits_type::to_char_type(c));
        return c;
    }
};

TEST(ReferenceCounter, WritesItsReportAsOneString)
{
    Writes buffer;
    std::streambuf * const before = std::cerr.rdbuf(&buffer);
    {
        ReferenceCounter counter;
        counter.addRef();
    }
    std::cerr.rdbuf(before);
    ASSERT_EQ(buffer.writes.size(), 1U);
    EXPECT_EQ(buffer.writes[0].substr(0, 35), "Invalid reference count for class: ");
    EXPECT_EQ(buffer.writes[0].back(), '\n');
}

TEST(NamedReferenceCounter, WritesItsTwoReportsAsOneStringEach)
{
    Writes buffer;
    std::streambuf * const before = std::cerr.rdbuf(&buffer);
    {
        NamedReferenceCounter counter("n");
        counter.addRef();
    }
    std::cerr.rdbuf(before);
    ASSERT_EQ(buffer.writes.size(), 2U);
    EXPECT_EQ(buffer.writes[0], "Invalid reference count for class: n, counter=1\n");
    EXPECT_EQ(buffer.writes[1].substr(0, 35), "Invalid reference count for class: ");
}

/// A stream buffer that takes nothing.
class Refusing : public std::stringbuf
{
public:
    int attempts = 0;

protected:
    std::streamsize xsputn(const char *, std::streamsize) override
    {
        ++attempts;
        return 0;
    }
    int_type overflow(int_type) override
    {
        ++attempts;
        return traits_type::eof();
    }
};

TEST(ReferenceCounter, EndsWellWhereTheErrorStreamThrows)
{
    Refusing buffer;
    std::streambuf * const before = std::cerr.rdbuf(&buffer);
    std::cerr.exceptions(std::ios::badbit | std::ios::failbit);
    {
        ReferenceCounter counter;
        counter.addRef();
    }
    const int attemptsOfOne = buffer.attempts;
    {
        // The stream is bad by now.
        NamedReferenceCounter counter("n");
        counter.addRef();
    }
    std::cerr.exceptions(std::ios::goodbit);
    std::cerr.rdbuf(before);
    std::cerr.clear();
    EXPECT_GT(attemptsOfOne, 0);
}

VONTALBASE_TEST_CHILD(destroysACounterAtTwo, arguments)
{
    {
        ReferenceCounter counter;
        counter.addRef();
        counter.addRef();
    }
    std::puts("went on");
    return 4;
}

TEST(ReferenceCounter, LetsTheProcessGoOnAfterItsReport)
{
    const testsupport::ChildResult child = testsupport::runChild("destroysACounterAtTwo");
    EXPECT_EQ(child.exitCode, 4) << child.standardError;
    EXPECT_EQ(plain(child.standardOutput), "went on\n");
    EXPECT_NE(child.standardError.find("counter=2"), std::string::npos);
    EXPECT_EQ(plain(child.standardError).find('\n') + 1, plain(child.standardError).size()) << "one line";
}

VONTALBASE_TEST_CHILD(onlyLoadsTheLibrary, arguments)
{
    return ReferenceCounter().getRefCounter() == 0 ? 0 : 1;
}

TEST(NamedReferenceCounter, OfTheLibraryItselfSaysNothingWhenTheProcessEnds)
{
    const testsupport::ChildResult child = testsupport::runChild("onlyLoadsTheLibrary");
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.standardError, "");
    EXPECT_EQ(child.standardOutput, "");
}

/// Every count of 32 threads must be there in the end.
template <class Counter>
void countOnManyThreads(Counter & counter)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 32; ++i)
    {
        threads.emplace_back(
            [&counter]
            {
                for (int round = 0; round < 1000; ++round)
                {
                    counter.addRef();
                    counter.addRef();
                    static_cast<void>(counter.getRefCounter());
                    counter.release();
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(counter.getRefCounter(), 32'000U);
    for (int i = 0; i < 32'000; ++i)
        counter.release();
}

TEST(SafeReferenceCounter, DoesNotUseTheLockOfTheSharedObjects)
{
    SafeReferenceCounter counter;
    unsigned int seen = 0;
    testsupport::TestSemaphore done;
    qvbase::g_referencedObjectMutex.acquire();
    std::thread other(
        [&]
        {
            counter.addRef();
            counter.addRef();
            counter.release();
            seen = counter.getRefCounter();
            done.release();
        });
    EXPECT_TRUE(done.tryAcquireFor(testsupport::patience));
    qvbase::g_referencedObjectMutex.release();
    other.join();
    EXPECT_EQ(seen, 1U);
    counter.release();
}

TEST(SafeReferenceCounter, IsSharedByThirtyTwoThreads)
{
    SafeReferenceCounter counter;
    countOnManyThreads(counter);
}

TEST(SafeReferenceCounter, HasAWorkingLockOfItsOwnInACopy)
{
    SafeReferenceCounter counter;
    auto copy = std::make_unique<SafeReferenceCounter>(counter);
    countOnManyThreads(*copy);
    NamedReferenceCounter named("n");
    auto namedCopy = std::make_unique<NamedReferenceCounter>(named);
    copy.reset();
    countOnManyThreads(*namedCopy);
    counter.addRef();
    counter.release();
    namedCopy.reset();
    countOnManyThreads(named);
}

} // namespace
