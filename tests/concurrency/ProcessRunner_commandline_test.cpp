// Command lines on their way to a child, which shows the arguments that came.

#include "VontalBase/concurrency/ProcessRunner.h"

#include "concurrency/monitors.h"
#include "support/NativeProcesses.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using qvbase::ProcessRunner;
using testsupport::ChildCommand;
using testsupport::childCommand;

std::string inBrackets(const std::vector<std::string> & words)
{
    std::string text;
    for (const std::string & word : words)
        text += '[' + word + ']';
    return text;
}

VONTALBASE_TEST_CHILD(showsItsArguments, arguments)
{
    std::fputs(inBrackets(arguments).c_str(), stdout);
    return 0;
}

VONTALBASE_TEST_CHILD(showsItsArgumentsInUtf8, arguments)
{
    std::fputs(inBrackets(testsupport::argumentsInUtf8()).c_str(), stdout);
    return 0;
}

/// Tells of its first argument how long it is and whether it is made of one letter.
VONTALBASE_TEST_CHILD(measuresItsArgument, arguments)
{
    const std::string & text = arguments.at(0);
    const bool isEven = std::count(text.begin(), text.end(), 'x') == static_cast<std::ptrdiff_t>(text.size());
    std::fputs((std::to_string(text.size()) + (isEven ? " even" : " uneven")).c_str(), stdout);
    return 0;
}

/// What a child says that is started so; "refused" where there is none.
std::string outputOf(const std::string & command, const std::string & arguments)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    if (!runner.run(command, arguments, monitor, nullptr))
        return "refused";
    EXPECT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().exitCode, 0U);
    EXPECT_EQ(monitor->heard().error, "");
    return monitor->heard().output;
}

TEST(ProcessRunnerCommandLine, IsTakenApartByTheRulesOfTheRuntime)
{
    const struct
    {
        const char * label;
        const char * arguments;
        const char * shown;
    } rows[] = {
        {"words", "a b", "[a][b]"},
        {"blanks and tabs", "  a \t b\t", "[a][b]"},
        {"a group", R"("a b" c)", "[a b][c]"},
        {"a group within a word", R"(a" "b c)", "[a b][c]"},
        {"an empty argument", R"("" a "")", "[][a][]"},
        {"backslashes in front of letters", R"(a\b\\c)", R"([a\b\\c])"},
        {"backslashes at the end", R"(a\\ b\)", R"([a\\][b\])"},
        {"one in front of a quote", R"(\"a b\")", R"(["a][b"])"},
        {"two in front of a quote", R"("a b\\" c)", R"([a b\][c])"},
        {"three in front of a quote", R"("a\\\"b c")", R"([a\"b c])"},
        {"four in front of a quote", R"("a b\\\\" c)", R"([a b\\][c])"},
        {"signs that shells know", R"($HOME %PATH% `a` 'b c' ; | > & ~ #)",
            "[$HOME][%PATH%][`a`]['b][c'][;][|][>][&][~][#]"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const ChildCommand command = childCommand("showsItsArguments");
        EXPECT_EQ(outputOf(command.program, command.arguments + ' ' + row.arguments), row.shown);
    }
}

TEST(ProcessRunnerCommandLine, IsTheCommandAloneWithoutArguments)
{
    const ChildCommand command = childCommand("showsItsArguments");
    // A blank behind the open group would belong to it.
    EXPECT_EQ(outputOf(command.program + ' ' + command.arguments + " \"open", ""), "[open]");
}

TEST(ProcessRunnerCommandLine, HasOneBlankBetweenTheCommandAndItsArguments)
{
    const ChildCommand command = childCommand("showsItsArguments");
    EXPECT_EQ(outputOf(command.program + ' ' + command.arguments + " \"open", "a\" b"), "[open a][b]");
    EXPECT_EQ(outputOf(command.program + ' ' + command.arguments + " \"open", " "), "[open  ]");
}

TEST(ProcessRunnerCommandLine, EndsAtAZeroByte)
{
    const ChildCommand command = childCommand("showsItsArguments", {"a"});
    const std::string zero(1, '\0');
    EXPECT_EQ(outputOf(command.program, command.arguments + zero + " b"), "[a]");
    EXPECT_EQ(outputOf(command.program + ' ' + command.arguments + zero, "b"), "[a]");
}

TEST(ProcessRunnerCommandLine, KeepsTextInAllLanguages)
{
    const std::string german = "Gr\xc3\xbc\xc3\x9f"
                               "e aus K\xc3\xb6ln";
    const std::string smile = "\xf0\x9f\x98\x80";
    const ChildCommand command = childCommand("showsItsArgumentsInUtf8", {german, smile, "\xe6\xbc\xa2"});
    EXPECT_EQ(outputOf(command.program, command.arguments), '[' + german + "][" + smile + "][\xe6\xbc\xa2]");
}

TEST(ProcessRunnerCommandLine, TakesBackslashesInThePathOfTheProgram)
{
    ChildCommand command = childCommand("showsItsArguments", {R"(a\b)"});
    std::replace(command.program.begin(), command.program.end(), '/', '\\');
    EXPECT_EQ(outputOf(command.program, command.arguments), R"([a\b])") << "and in the arguments leaves them";
}

TEST(ProcessRunnerCommandLine, TakesLongArgumentsAsFarAsTheSystemDoes)
{
    const ChildCommand command = childCommand("measuresItsArgument");
    EXPECT_EQ(outputOf(command.program, command.arguments + ' ' + std::string(10'000, 'x')), "10000 even");
    const std::string longText(100'000, 'x');
    const std::string expected = testsupport::hasShortCommandLines() ? "refused" : "100000 even";
    EXPECT_EQ(outputOf(command.program, command.arguments + ' ' + longText), expected);
    EXPECT_EQ(outputOf(command.program, command.arguments + ' ' + std::string(10'000'000, 'x')), "refused");
}

TEST(ProcessRunnerCommandLine, IsAsLongAsTheSystemTakes)
{
    if (!testsupport::hasShortCommandLines())
        GTEST_SKIP() << "this system has no such limit";
    const ChildCommand command = childCommand("measuresItsArgument");
    const std::size_t used = command.program.size() + 1 + command.arguments.size() + 1;
    const std::size_t left = 32766 - used;
    EXPECT_EQ(outputOf(command.program, command.arguments + ' ' + std::string(left, 'x')),
        std::to_string(left) + " even");
    EXPECT_EQ(outputOf(command.program, command.arguments + ' ' + std::string(left + 1, 'x')), "refused");
}

TEST(ProcessRunnerCommandLine, MayNameAProgramThatTheSystemFinds)
{
    const std::string name = testsupport::programOfTheSystem();
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(runner.run(name, "", monitor, nullptr)) << name;
    EXPECT_TRUE(monitor->waitForEnd());
}

} // namespace
