#include "VontalBase/core/abort.h"
#include "VontalBase/text/VontalException.h"

#include "support/ChildProcess.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{

using testsupport::ChildResult;

VONTALBASE_TEST_CHILD(abortsWithAText, arguments)
{
    errno = ENOENT;
    qvbase::abort(arguments.at(0));
}

VONTALBASE_TEST_CHILD(abortsWithARecord, arguments)
{
    VontalException failure("first", 12, "the cause");
    failure.add("second", 34, "what it led to");
    errno = ENOENT;
    qvbase::abort(failure);
}

VONTALBASE_TEST_CHILD(abortsWithAnEmptyRecord, arguments)
{
    const VontalException failure;
    errno = ENOENT;
    qvbase::abort(failure);
}

VONTALBASE_TEST_CHILD(abortsWithAZeroByte, arguments)
{
    const Vontal::u8string text("seen\0unseen", 11);
    errno = ENOENT;
    qvbase::abort(text);
}

VONTALBASE_TEST_CHILD(abortsWithForeignLetters, arguments)
{
    qvbase::abort("Stra\xC3\x9F"
                  "e \xE6\x9D\xB1");
}

/// Without what the runtime itself says about the abortion.
std::string firstLine(const ChildResult & result)
{
    const std::string & text = result.standardError;
    return text.substr(0, text.find_first_of("\r\n"));
}

std::string withPlainLineEnds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

std::string meaningOf(int error)
{
    return std::strerror(error);
}

TEST(Abort, WritesTheTextAndWhatTheErrorNumberMeans)
{
    const ChildResult result = testsupport::runChild("abortsWithAText", {"nothing works"});
    EXPECT_EQ(firstLine(result), "nothing works: " + meaningOf(ENOENT));
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
    EXPECT_FALSE(result.timedOut);
}

TEST(Abort, WritesTheMeaningAloneForAnEmptyText)
{
    const ChildResult result = testsupport::runChild("abortsWithAText", {""});
    EXPECT_EQ(firstLine(result), meaningOf(ENOENT));
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

TEST(Abort, WritesARecordFromTheFirstCauseOn)
{
    const ChildResult result = testsupport::runChild("abortsWithARecord");
    const std::string expected =
        "first:12: the cause\nsecond:34: what it led to: " + meaningOf(ENOENT) + "\n";
    EXPECT_EQ(withPlainLineEnds(result.standardError).substr(0, expected.size()), expected);
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

TEST(Abort, WritesTheMeaningAloneForAnEmptyRecord)
{
    const ChildResult result = testsupport::runChild("abortsWithAnEmptyRecord");
    EXPECT_EQ(firstLine(result), meaningOf(ENOENT));
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

TEST(Abort, WritesATextUpToItsFirstZeroByte)
{
    const ChildResult result = testsupport::runChild("abortsWithAZeroByte");
    EXPECT_EQ(firstLine(result), "seen: " + meaningOf(ENOENT));
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

TEST(Abort, BringsEveryTextToTheErrorStream)
{
    const ChildResult result = testsupport::runChild("abortsWithForeignLetters");
    EXPECT_EQ(firstLine(result).substr(0, 4), "Stra");
    EXPECT_NE(result.standardError.find("e \xE6\x9D\xB1: "), std::string::npos) << result.standardError;
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

} // namespace
