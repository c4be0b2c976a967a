// The whole road of a failure: from the item that has no name through the settings and the application to the
// lines of the log.

#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/systemlog.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/utils/Config.h"

#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/TempDirectory.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using testsupport::TempDirectory;
using Vontal::u8string;

constexpr char sourcePath[] = "C:\\Mirsa\\Vontal\\vontal.git\\app\\main.cpp";
constexpr int isRead = 3;
constexpr int isRefused = 4;

/// Reads settings as applications do: what went wrong is written to the log with all that is known of it.
VONTALBASE_TEST_CHILD(startsWithSettings, arguments)
{
    if (!qvutils::initSystemLog(u8string(arguments.at(0)), "app", 1024))
        return 10;
    VontalException error;
    if (qvutils::Config().loadXML("s", u8string(arguments.at(1)), error))
        return error.first == nullptr ? isRead : 11;
    error.add(sourcePath, 7, "No settings");
    qvutils::getSystemLogFormater()->writeMessage(10, error.format(), sourcePath, 8);
    return isRefused;
}

class Road : public testing::Test
{
protected:
    Road() = default;
    Road(const Road &) = delete;
    Road & operator=(const Road &) = delete;
    ~Road() override
    {
        directory.clear();
    }

    testsupport::ChildResult start(const std::string & settings)
    {
        directory.write("settings.xml", settings);
        return testsupport::runChild(
            "startsWithSettings", {placeOf(directory), directory.text("settings.xml")});
    }

    /// The lines of the log between the two that open it and the two that close it.
    std::vector<std::string> logged()
    {
        for (const std::string & name : namesIn(directory))
        {
            if (name.rfind("app", 0) != 0)
                continue;
            const std::vector<std::string> lines = linesOf(directory, name);
            if (lines.size() < 4)
                return lines;
            return {lines.begin() + 2, lines.end() - 2};
        }
        return {};
    }

    TempDirectory directory;
};

TEST_F(Road, OfAnItemWithoutANameLeadsThroughThreeEntriesToTheLog)
{
    const testsupport::ChildResult child = start("<Config><Item/></Config>");
    EXPECT_EQ(child.exitCode, isRefused) << child.standardError;
    const std::vector<std::string> lines = logged();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(
        hasForm(lines[0], "??:??:?? #*:thrId=*:app\\main.cpp:8: qvutils:454: <Item> with empty name."))
        << lines[0];
    EXPECT_EQ(lines[1], "qvutils:434: Filed to read configuration");
    EXPECT_EQ(lines[2], "app\\main.cpp:7: No settings");
    EXPECT_EQ(child.standardError, "");
}

TEST_F(Road, OfAFileThatIsNoXmlLeadsToTheErrorStreamAsWell)
{
    const testsupport::ChildResult child = start("<Config>");
    EXPECT_EQ(child.exitCode, isRefused) << child.standardError;
    const std::vector<std::string> lines = logged();
    ASSERT_EQ(lines.size(), 2U);
    const std::size_t reason = lines[0].find("qvutils:0: Cannot read file: ");
    ASSERT_NE(reason, std::string::npos) << lines[0];
    EXPECT_TRUE(hasForm(lines[0].substr(0, reason), "??:??:?? #*:thrId=*:app\\main.cpp:8: ")) << lines[0];
    EXPECT_EQ(lines[0].substr(reason), "qvutils:0: Cannot read file: " + directory.text("settings.xml"));
    EXPECT_EQ(lines[1], "app\\main.cpp:7: No settings");
    EXPECT_EQ(child.standardError.rfind("Failed to parse XML: (", 0), 0U) << child.standardError;
}

TEST_F(Road, OfGoodSettingsLeavesNoTrace)
{
    const testsupport::ChildResult child = start("<Config><Item name='a' value='1'/></Config>");
    EXPECT_EQ(child.exitCode, isRead) << child.standardError;
    EXPECT_TRUE(logged().empty());
    EXPECT_EQ(child.standardError, "");
}

} // namespace
