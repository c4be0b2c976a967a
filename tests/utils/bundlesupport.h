/// A directory of bundle files for the tests of resources.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/ResourceBundle.h"
#include "VontalBase/utils/ResourceManager.h"

#include "support/TempDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

class BundleFiles
{
public:
    BundleFiles() = default;
    BundleFiles(const BundleFiles &) = delete;
    BundleFiles & operator=(const BundleFiles &) = delete;
    ~BundleFiles()
    {
        m_directory.clear();
    }

    /// Makes a file, and the directories that it needs.
    /// @param name in UTF-8, with "/" between its parts.
    void lay(const std::string & name, const std::string & bytes) const
    {
        makeDirectory(name.substr(0, name.find('/') == std::string::npos ? 0 : name.rfind('/')));
        m_directory.write(name, bytes);
    }

    void makeDirectory(const std::string & name) const
    {
        const std::string path = m_directory.text(name);
        std::filesystem::create_directories(std::u8string(path.begin(), path.end()));
    }

    void remove(const std::string & name) const
    {
        m_directory.remove(name);
    }

    [[nodiscard]] Vontal::u8string root() const
    {
        return m_directory.text();
    }

    [[nodiscard]] qvbase::Reference<qvutils::ResourceManager> makeManager() const
    {
        qvbase::Reference<qvutils::ResourceManager> manager;
        EXPECT_TRUE(qvutils::createResourceManager(root(), manager));
        return manager;
    }

private:
    testsupport::TempDirectory m_directory;
};
