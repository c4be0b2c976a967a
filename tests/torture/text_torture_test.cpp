#include "VontalBase/text/AStringBuilder.h"
#include "VontalBase/text/U8StringBuilder.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/Torture.h"
#include "text/wide.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace
{

using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;
using Vontal::u8string;

/// Long enough for several pieces of any converter, with every kind of character in it.
const std::string & longUtf8()
{
    static const std::string text = []
    {
        std::string made;
        for (int i = 0; i < 3000; ++i)
            made += "abc \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xFF ";
        return made;
    }();
    return text;
}

const std::wstring & longWide()
{
    static const std::wstring text = []
    {
        std::wstring made;
        Vontal::c_u8u16(made, longUtf8());
        return made;
    }();
    return text;
}

const std::string & longAnsi()
{
    static const std::string text(50'000, '\x80');
    return text;
}

/// Runs an operation under every fault. It either gives what it gives without one or throws, and then it may
/// be called again with the same arguments.
void tortureOperation(const char * label, const std::function<bool()> & isRight)
{
    SCOPED_TRACE(label);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            try
            {
                EXPECT_TRUE(isRight());
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                EXPECT_TRUE(isRight()) << "the second time, with memory enough";
                throw;
            }
        });
    EXPECT_GT(report.faultyRuns, 0U);
}

TEST(TextTorture, ConversionsGiveTheirResultOrThrow)
{
    std::wstring wideResult;
    std::string narrowResult;
    Vontal::c_acpu16(wideResult, longAnsi());
    const std::wstring ansiAsWide = wideResult;
    Vontal::c_acpu8(narrowResult, longAnsi());
    const std::string ansiAsUtf8 = narrowResult;
    Vontal::c_u16u8(narrowResult, longWide());
    const std::string wideAsUtf8 = narrowResult;
    Vontal::c_u16acp(narrowResult, longWide());
    const std::string wideAsAnsi = narrowResult;

    const struct
    {
        const char * label;
        std::function<bool()> isRight;
    } operations[] = {
        {"c_u8u16",
            [&]
            {
                std::wstring result = L"before";
                return Vontal::c_u8u16(result, longUtf8()) && result == longWide();
            }},
        {"c_u16u8",
            [&]
            {
                std::string result = "before";
                return Vontal::c_u16u8(result, longWide()) && result == wideAsUtf8;
            }},
        {"c_acpu8",
            [&]
            {
                std::string result = "before";
                return Vontal::c_acpu8(result, longAnsi()) && result == ansiAsUtf8;
            }},
        {"c_u8acp",
            [&]
            {
                std::string result = "before";
                return Vontal::c_u8acp(result, longUtf8()) && result == wideAsAnsi;
            }},
        {"c_acpu16",
            [&]
            {
                std::wstring result = L"before";
                return Vontal::c_acpu16(result, longAnsi()) && result == ansiAsWide;
            }},
        {"c_u16acp",
            [&]
            {
                std::string result = "before";
                return Vontal::c_u16acp(result, longWide()) && result == wideAsAnsi;
            }},
        {"toAstring",
            [&]
            {
                return u8string(longUtf8()).toAstring() == longWide();
            }},
        {"pstring",
            [&]
            {
                return Vontal::pstring(u8string(longUtf8())) == longWide();
            }},
        {"u8string",
            [&]
            {
                return u8string(longWide().c_str()) == wideAsUtf8;
            }},
    };
    for (const auto & operation : operations)
        tortureOperation(operation.label, operation.isRight);
}

TEST(TextTorture, BuildersKeepTheirTextWhenAnAppendThrows)
{
    const std::string piece(100, 'p');
    const u8string utf8Piece = piece;
    const std::wstring widePiece = widened(piece);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            Vontal::U8StringBuilder builder;
            Vontal::AStringBuilder wideBuilder;
            std::uint64_t expected = 0;
            std::uint64_t wideExpected = 0;
            try
            {
                builder.append(utf8Piece);
                expected += 100;
                builder.append(piece.c_str());
                expected += 100;
                builder.append(widePiece);
                expected += 100;
                builder.append(widePiece.c_str()).append("");
                expected += 100;
                builder.appendInAcp(piece);
                expected += 100;
                wideBuilder.append(widePiece);
                wideExpected += 100;
                wideBuilder.append(utf8Piece);
                wideExpected += 100;
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                EXPECT_EQ(builder.getSize(), expected);
                EXPECT_EQ(wideBuilder.getSize(), wideExpected);
                throw;
            }
            EXPECT_EQ(builder.getSize(), 500U);
            EXPECT_EQ(wideBuilder.getSize(), 200U);
        });
    EXPECT_GT(report.faultyRuns, 5U);
}

TEST(TextTorture, BuildersKeepTheirTextWhenANumberOrALineEndFindsNoPlace)
{
    struct Operation
    {
        const char * label;
        std::function<void(Vontal::U8StringBuilder &)> append;
        std::uint64_t size;
    };
    const unsigned char bytes[20] = {};
    const Operation operations[] = {
        {"int", [](Vontal::U8StringBuilder & builder) { builder.append(-2147483647); }, 11},
        {"unsigned int", [](Vontal::U8StringBuilder & builder) { builder.append(4294967295U); }, 10},
        {"unsigned long", [](Vontal::U8StringBuilder & builder) { builder.append(4294967295UL); }, 10},
        {"64 bits",
            [](Vontal::U8StringBuilder & builder) { builder.append(std::int64_t{-9223372036854775807}); },
            20},
        {"line end", [](Vontal::U8StringBuilder & builder) { builder.appendEndl(); }, 1},
        {"hexadecimal", [](Vontal::U8StringBuilder & builder) { builder.appendInHex(1L); }, 8},
        {"address", [](Vontal::U8StringBuilder & builder) { builder.appendInHex(nullptr); }, 16},
        {"bytes", [&bytes](Vontal::U8StringBuilder & builder) { builder.appendInHex(bytes, 20); }, 40},
        {"bytes from the last",
            [&bytes](Vontal::U8StringBuilder & builder) { builder.appendInHexLE(bytes, 20); }, 40},
    };
    for (const Operation & operation : operations)
    {
        SCOPED_TRACE(operation.label);
        const TortureReport report = torture(
            [&operation](const Fault & fault)
            {
                Vontal::U8StringBuilder builder;
                std::uint64_t expected = 0;
                try
                {
                    for (int i = 0; i < 100; ++i)
                    {
                        operation.append(builder);
                        expected += operation.size;
                    }
                }
                catch (const std::bad_alloc &)
                {
                    EXPECT_TRUE(fault.isAllocation());
                    EXPECT_EQ(builder.getSize(), expected);
                    throw;
                }
                EXPECT_EQ(builder.getSize(), 100 * operation.size);
            });
        EXPECT_GT(report.faultyRuns, 0U);
    }
}

TEST(TextTorture, WideBuildersKeepTheirTextWhenANumberOrALineEndFindsNoPlace)
{
    const TortureReport report = torture(
        [](const Fault & fault)
        {
            Vontal::AStringBuilder builder;
            std::uint64_t expected = 0;
            try
            {
                for (int i = 0; i < 30; ++i)
                {
                    builder.append(-2147483647);
                    expected += 11;
                    builder.append(4294967295U);
                    expected += 10;
                    builder.appendEndl();
                    expected += 1;
                }
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                EXPECT_EQ(builder.getSize(), expected);
                throw;
            }
            EXPECT_EQ(builder.getSize(), 30U * 22U);
        });
    EXPECT_GT(report.faultyRuns, 0U);
}

const u8string longName = "a source file with a name that is too long for the place inside a string";
const u8string longMessage = "a message that is too long for the place inside a string";

TEST(TextTorture, AFailureRecordKeepsItsEntriesWhenAnAdditionThrows)
{
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            VontalException record;
            int added = 0;
            try
            {
                for (; added < 3; ++added)
                    record.add(longName, added, longMessage);
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            int held = 0;
            for (const VontalExceptionDescription * entry = record.first; entry != nullptr;
                 entry = entry->next)
                ++held;
            EXPECT_EQ(held, added);
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(TextTorture, AFailureRecordIsCopiedWholeOrNotAtAll)
{
    VontalException source;
    for (int i = 0; i < 3; ++i)
        source.add(longName, i, longMessage);
    const u8string sourceText = source.format();
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            try
            {
                const VontalException copy(source);
                EXPECT_EQ(copy.compare(source), 0);
                VontalException assigned(longName, 9, longMessage);
                assigned = source;
                EXPECT_EQ(assigned.compare(source), 0);
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
            }
            const UnseenAllocations unseen;
            EXPECT_EQ(source.format(), sourceText);
        });
    EXPECT_GT(report.faultyRuns, 10U);
}

TEST(TextTorture, AFailureRecordIsEmptyWhenItsAssignmentThrows)
{
    VontalException source;
    source.add(longName, 1, longMessage);
    source.add(longName, 2, longMessage);
    const TortureReport report = torture(
        [&](const Fault &)
        {
            VontalException record;
            {
                const UnseenAllocations unseen;
                record.add(longName, 9, longMessage);
            }
            try
            {
                record = source;
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_EQ(record.first, nullptr) << "it is cleared before the copy is made";
            }
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(TextTorture, AFailureRecordIsAppendedWholeOrNotAtAll)
{
    VontalException source;
    source.add(longName, 1, longMessage);
    source.add(longName, 2, longMessage);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            VontalException record;
            {
                const UnseenAllocations unseen;
                record.add(longName, 9, longMessage);
            }
            const VontalExceptionDescription * const first = record.first;
            try
            {
                record.append(source);
                EXPECT_NE(record.first, first);
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                EXPECT_EQ(record.first, first);
                EXPECT_EQ(first->next, nullptr);
            }
        });
    EXPECT_GT(report.faultyRuns, 3U);
}

TEST(TextTorture, AFailureRecordIsFormattedOrThrowsAndStaysAsItIs)
{
    VontalException record;
    for (int i = 0; i < 20; ++i)
        record.add(longName, i, longMessage);
    const u8string expected = record.format();
    tortureOperation("format", [&] { return record.format() == expected; });
}

} // namespace
