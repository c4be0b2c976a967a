#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/protect.h"

#include "support/ChildProcess.h"
#include "support/MemorySearch.h"
#include "support/TestBarrier.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvplatform::protectMemory;
using qvplatform::unprotectMemory;

/// Wine 8 says that it protects, and leaves the bytes as they are.
bool isProtecting()
{
    std::string bytes(16, 'x');
    return protectMemory(bytes.data(), bytes.size()) && bytes != std::string(16, 'x');
}

TEST(PlatformProtection, GivesTheBytesBack)
{
    for (const std::size_t size : {16U, 32U, 48U, 4096U, 100'000U * 16U})
    {
        std::string bytes(size, 'x');
        ASSERT_TRUE(protectMemory(bytes.data(), size));
        ASSERT_TRUE(unprotectMemory(bytes.data(), size));
        ASSERT_EQ(bytes, std::string(size, 'x'));
    }
}

TEST(PlatformProtection, LeavesTheBytesBehindAlone)
{
    std::string bytes(34, 'x');
    ASSERT_TRUE(protectMemory(bytes.data() + 1, 32));
    EXPECT_EQ(bytes.front(), 'x');
    EXPECT_EQ(bytes.back(), 'x');
}

TEST(PlatformProtection, ChangesEveryBlockToAnotherThing)
{
    if (!isProtecting())
        GTEST_SKIP() << "this system's protection of memory leaves the bytes as they are";
    std::string bytes(1600, 'x');
    ASSERT_TRUE(protectMemory(bytes.data(), bytes.size()));
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < bytes.size(); i += 16)
        blocks.push_back(bytes.substr(i, 16));
    std::sort(blocks.begin(), blocks.end());
    EXPECT_EQ(std::unique(blocks.begin(), blocks.end()), blocks.end()) << "also where the bytes are the same";
    EXPECT_EQ(bytes.find("xxxx"), std::string::npos);
}

TEST(PlatformProtection, RefusesWhatIsNoWholeNumberOfBlocks)
{
    std::string bytes(40, 'x');
    for (const std::size_t size : {1U, 15U, 17U, 31U})
    {
        EXPECT_FALSE(protectMemory(bytes.data(), size));
        EXPECT_FALSE(unprotectMemory(bytes.data(), size));
    }
    EXPECT_EQ(bytes, std::string(40, 'x'));
}

TEST(PlatformProtection, FailsWhereTheSystemRefuses)
{
    std::string bytes(16, 'x');
    qvplatform::armGates({"protect memory", 1, 1});
    EXPECT_FALSE(protectMemory(bytes.data(), 16));
    qvplatform::armGates({"unprotect memory", 1, 1});
    EXPECT_FALSE(unprotectMemory(bytes.data(), 16));
    qvplatform::disarmGates();
    EXPECT_EQ(bytes, std::string(16, 'x'));
}

std::string hexadecimal(const std::string & bytes)
{
    std::string text;
    for (const char c : bytes)
    {
        const unsigned char byte = static_cast<unsigned char>(c);
        text += "0123456789abcdef"[byte / 16];
        text += "0123456789abcdef"[byte % 16];
    }
    return text;
}

VONTALBASE_TEST_CHILD(printsWhatItProtects, arguments)
{
    std::string bytes(16, 'x');
    if (!protectMemory(bytes.data(), 16))
        return 3;
    std::fputs(hexadecimal(bytes).c_str(), stdout);
    return 0;
}

TEST(PlatformProtection, HasAnotherKeyInEachProcess)
{
    if (!isProtecting())
        GTEST_SKIP() << "this system's protection of memory leaves the bytes as they are";
    const std::string first = testsupport::runChild("printsWhatItProtects").standardOutput;
    const std::string second = testsupport::runChild("printsWhatItProtects").standardOutput;
    EXPECT_EQ(first.size(), 32U);
    EXPECT_NE(first, second);
}

VONTALBASE_TEST_CHILD(protectsInManyThreadsAtFirst, arguments)
{
    constexpr int count = 8;
    testsupport::TestBarrier start(count);
    std::vector<std::string> results(count);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                std::string bytes(16, 'x');
                start.arriveAndWait();
                if (protectMemory(bytes.data(), 16))
                    results[static_cast<std::size_t>(i)] = bytes;
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    for (const std::string & result : results)
    {
        if (result.size() != 16 || result != results.front())
            return 3;
    }
    return 0;
}

TEST(PlatformProtection, HasOneKeyForAllThreads)
{
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(testsupport::runChild("protectsInManyThreadsAtFirst").exitCode, 0);
}

/// In a child, since the key is made once in a process.
VONTALBASE_TEST_CHILD(makesItsKeyAtTheSecondTry, arguments)
{
    std::string bytes(16, 'x');
    qvplatform::GateFault fault;
    fault.service = arguments.at(0).c_str();
    qvplatform::armGates(fault);
    const bool first = protectMemory(bytes.data(), 16);
    qvplatform::disarmGates();
    if (qvplatform::gatePassages() == 0)
        return 4; // no such thing in this half
    if (first || bytes != std::string(16, 'x'))
        return 3;
    return protectMemory(bytes.data(), 16) && unprotectMemory(bytes.data(), 16) ? 0 : 5;
}

TEST(PlatformProtection, TriesAgainWhereTheKeyCouldNotBeMade)
{
    if (!testsupport::memoryCanBeSearched())
        GTEST_SKIP() << "the system makes the key here, or a sanitizer is at work";
    EXPECT_EQ(testsupport::runChild("makesItsKeyAtTheSecondTry", {"make protection key"}).exitCode, 0);
    EXPECT_EQ(testsupport::runChild("makesItsKeyAtTheSecondTry", {"random bytes"}).exitCode, 0);
}

/// Bytes of the key's mapping that are found elsewhere, while the process has protected and unprotected
/// things.
VONTALBASE_TEST_CHILD(looksForItsKey, arguments)
{
    const std::vector<std::uintptr_t> before = testsupport::mappingsOutOfCoreDumps();
    std::string bytes(1600, 'x');
    for (int i = 0; i < 10; ++i)
    {
        if (!protectMemory(bytes.data(), bytes.size()) || !unprotectMemory(bytes.data(), bytes.size()))
            return 3;
    }
    std::vector<std::uintptr_t> added;
    for (const std::uintptr_t address : testsupport::mappingsOutOfCoreDumps())
    {
        if (std::find(before.begin(), before.end(), address) == before.end())
            added.push_back(address);
    }
    if (added.size() != 1)
        return 4;
    // The key of 32 bytes stands first; each half of it must be in this place alone.
    const testsupport::HiddenBytes first(reinterpret_cast<const void *>(added.front()), 16);
    const testsupport::HiddenBytes second(reinterpret_cast<const void *>(added.front() + 16), 16);
    if (testsupport::piecesInMemory(first) != first.pieces())
        return 5;
    return testsupport::piecesInMemory(second) == second.pieces() ? 0 : 6;
}

TEST(PlatformProtection, KeepsItsKeyInOnePlaceThatCoreDumpsLeaveOut)
{
    if (!testsupport::memoryCanBeSearched())
        GTEST_SKIP() << "the system keeps the key here, or a sanitizer is at work";
    const testsupport::ChildResult result = testsupport::runChild("looksForItsKey");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
}

} // namespace
