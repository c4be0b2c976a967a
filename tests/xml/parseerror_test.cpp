#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/ChildProcess.h"
#include "xml/service.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <gtest/gtest.h>
#include <iostream>
#include <string>

namespace
{

using qvxml::XMLDocPtr;

/// A document whose error names an element that is no ASCII.
bool loadBroken()
{
    XMLDocPtr document;
    return document.loadBuffer("<\xC4\x8D></x>");
}

std::string withoutReturns(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

VONTALBASE_TEST_CHILD(failsToParse, )
{
    std::fputs("before\n", stderr);
    const bool isLoaded = loadBroken();
    std::cerr << "behind\n";
    std::fputs("last\n", stderr);
    return isLoaded ? 1 : 0;
}

VONTALBASE_TEST_CHILD(failsToParseWithUnsyncedStreams, )
{
    std::ios::sync_with_stdio(false);
    const bool isLoaded = loadBroken();
    std::wcerr << L"behind" << std::endl;
    return isLoaded || !std::wcerr.good() ? 1 : 0;
}

VONTALBASE_TEST_CHILD(failsToParseOnAWideStream, )
{
    std::fputws(L"before\n", stderr);
    const bool isLoaded = loadBroken();
    std::fputws(L"behind\n", stderr);
    return isLoaded || !std::wcerr.good() ? 1 : 0;
}

TEST(ParseError, LeavesTheStandardErrorStreamToNarrowText)
{
    const testsupport::ChildResult result = testsupport::runChild("failsToParse");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const std::string text = withoutReturns(result.standardError);
    EXPECT_EQ(text.rfind("before\nFailed to parse XML: (", 0), 0U) << text;
    EXPECT_NE(text.find("\nbehind\nlast\n"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4) << text;
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    EXPECT_NE(text.find("\xC4\x8D"), std::string::npos) << text;
}

TEST(ParseError, IsToldWhereTheStreamsAreNotThoseOfTheCLibrary)
{
    const testsupport::ChildResult result = testsupport::runChild("failsToParseWithUnsyncedStreams");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const std::string text = withoutReturns(result.standardError);
    EXPECT_EQ(text.rfind("Failed to parse XML: (", 0), 0U) << text;
    EXPECT_NE(text.find("\nbehind\n"), std::string::npos) << text;
}

TEST(ParseError, IsToldOnAWideStream)
{
    const testsupport::ChildResult result = testsupport::runChild("failsToParseOnAWideStream");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const std::string text = withoutReturns(result.standardError);
    EXPECT_EQ(text.rfind("before\n", 0), 0U) << text;
    EXPECT_NE(text.find("Failed to parse XML: ("), std::string::npos) << text;
    EXPECT_NE(text.find("\nbehind\n"), std::string::npos) << text;
}

TEST(ParseError, BeginsWithThePositionInTheFile)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    std::string text = "<a>";
    for (int i = 0; i < 10; ++i)
        text += "<!-- 0123456789 -->\n";
    const xmltest::WideErrors errors;
    XMLDocPtr document;
    EXPECT_FALSE(document.loadBuffer(Vontal::u8string(text + "<b></c>")));
    const std::wstring told = errors.text();
    unsigned int filePosition = 0;
    unsigned int line = 0;
    unsigned int column = 0;
    ASSERT_EQ(std::swscanf(
                  errors.text().c_str(), L"Failed to parse XML: (%u:%u,%u)", &filePosition, &line, &column),
        3);
    EXPECT_GT(filePosition, 200U);
    EXPECT_EQ(line, 11U);
    EXPECT_LT(column, 20U);
    EXPECT_EQ(std::count(told.begin(), told.end(), L'\n'), 1);
}

} // namespace
