// The road of an application from its start to its end: a log, a language, texts, layers of settings,
// read-only data, settings that are saved, and a failure that tells its whole story.
//
//     typical_application [--language LANGUAGE] [--config FILE] [--log-dir DIRECTORY]
//
// Without --language the best of the languages that its texts have is taken, as the system's settings say.
// --config names a file of settings that is laid over the usual ones. --log-dir is where the log and the
// saved settings go, the working directory if it is not given; it must be there. The files that it reads
// stand in a folder beside the program. Exit codes: 0; 1 if settings or data cannot be read or saved; 2 for
// wrong arguments.

#include "VontalBase/VontalBase.h"

#include "console/console.h"

#include <iostream>
#include <list>
#include <vector>

namespace
{

using Vontal::u8string;

constexpr unsigned int errorLevel = 10;
constexpr unsigned int noticeLevel = 100;
constexpr int failed = 1;
constexpr int wrongUse = 2;

struct Options
{
    u8string language;
    u8string config;
    u8string logDirectory = ".";
};

//! [options]
/// Reads pairs of an option and its value. False for anything else.
bool readOptions(const qvparse::CommandLineParser & arguments, Options & options)
{
    u8string name;
    u8string value;
    for (unsigned int i = 1; arguments.get_argv(i, name); i += 2)
    {
        if (!arguments.get_argv(i + 1, value))
            return false;
        if (name == "--language")
            options.language = value;
        else if (name == "--config")
            options.config = value;
        else if (name == "--log-dir")
            options.logDirectory = value;
        else
            return false;
    }
    return true;
}
//! [options]

/// The line that the arguments come from, each in quotes.
u8string lineOf(const std::vector<u8string> & arguments)
{
    Vontal::U8StringBuilder line;
    for (const u8string & argument : arguments)
        line.append("\"").append(argument).append("\" ");
    return line;
}

/// The folder of this application's files, with its final separator.
u8string filesDirectory()
{
    u8string directory;
    qvdisk::getModuleDir(directory);
    qvdisk::addLastSlash(directory);
    return directory + "typical_application_files/";
}

/// The text of a key. By value, since a key without a text comes back itself.
u8string translated(const char * key)
{
    return qvutils::getResourceManager()->getString(key);
}

void log(unsigned int level, const u8string & text, int line)
{
    qvutils::getSystemLogFormater()->writeMessage(level, text, __FILE__, static_cast<unsigned int>(line));
}

//! [language]
/// Chooses the language of all texts.
void chooseLanguage(u8string language)
{
    const u8string directory = filesDirectory() + "locale";
    std::list<u8string> available;
    qvutils::listAvailableLanguages(directory, "typical_application", available);
    if (language.empty())
        language = qvutils::detectSystemLanguage(available);

    qvutils::ResourceManager & texts = *qvutils::getResourceManager();
    texts.setRootDirectory(directory);
    texts.setLanguage(language);
    texts.setDefaultBundle("typical_application");
    Vontal::ml_u8string_set_default_language(language);
}
//! [language]

//! [listener]
/// Lets the log follow its setting.
class LogLevel : public qvutils::Config::ItemChangeListener
{
public:
    virtual ~LogLevel() = default;

    void itemChanged(const qvutils::Config::Item * item) override
    {
        qvutils::setSystemLogLevel(static_cast<int>(item->getEffectiveValue().toUInt()));
        log(noticeLevel, "log.level is " + item->getEffectiveValue() + " now", __LINE__);
    }
};
//! [listener]

//! [load]
/// Lays a file of settings over those that are there. A failure is told from its first cause on.
bool loadSettings(qvutils::Config & config, const u8string & source, const u8string & file)
{
    VontalException error;
    if (config.loadXML(source, file, error))
        return true;
    error.add(__FILE__, __LINE__, "The settings of the " + source + " are not complete");
    log(errorLevel, error.format(), __LINE__);
    std::cout << translated("failed") << '\n' << error.format() << '\n';
    return false;
}
//! [load]

bool loadAllSettings(qvutils::Config & config, const Options & options)
{
    const u8string directory = filesDirectory();
    return loadSettings(config, "defaults", directory + "defaults.xml") &&
           loadSettings(config, "site", directory + "site.xml") &&
           loadSettings(config, "user", directory + "user.xml") &&
           (options.config.empty() || loadSettings(config, "command line", options.config));
}

void showSettings(qvutils::Config & config)
{
    std::cout << '\n' << translated("settings") << ":\n";
    std::list<const qvutils::Config::Item *> items;
    config.getItems(items);
    for (const qvutils::Config::Item * const item : items)
        std::cout << "  " << item->getName() << " = " << item->getEffectiveValue() << "  ("
                  << item->getSource() << ")\n";
}

//! [list]
/// Shows the products of which there are few.
bool showStock(const qvutils::Config & config)
{
    u8string file;
    int minimum = 0;
    config.getItemString("stock.file", file);
    config.getItemInt("stock.minimum", minimum);
    qv_soop::soop_db stock;
    if (!stock.init(filesDirectory() + file))
        return false;
    stock.addList("product");
    std::cout << '\n' << translated("stock") << " (< " << minimum << "):\n";
    for (const qv_soop::soop_node * const product : stock.getList("product"))
    {
        const char * const count = product->getAttr("count");
        if (count != nullptr && u8string(count).toUInt() < static_cast<unsigned int>(minimum))
            std::cout << "  " << product->getAttr("name") << ": " << count << ' ' << translated("pieces")
                      << ", " << product->getParent()->getAttr("place") << '\n';
    }
    return true;
}
//! [list]

//! [save]
/// Saves what the user has chosen, which has the local status 1.
bool saveSettings(const qvutils::Config & config, const u8string & file)
{
    VontalException error;
    qvxml::XMLDocPtr document;
    if (!config.saveSettings(document, 1) || !document.saveFile(file, true, error))
    {
        log(errorLevel, error.format(), __LINE__);
        return false;
    }
    std::cout << '\n' << translated("saved") << ' ' << file << '\n';
    return true;
}
//! [save]

bool run(const Options & options, const u8string & logDirectory)
{
    qvutils::Config config;
    LogLevel logLevel;
    config.addItem("log.level", "application");
    config.registerListener("log.level", &logLevel);
    const bool isComplete = loadAllSettings(config, options);

    u8string greeting;
    config.getItemString("greeting", greeting);
    std::cout << translated("title") << ": " << greeting << "!  (" << translated("language") << ": "
              << qvutils::getResourceManager()->getLanguage() << ")\n";
    showSettings(config);
    const bool isShown = showStock(config);
    config.setItemInt("window.width", 1440);
    return saveSettings(config, logDirectory + "typical_settings.xml") && isComplete && isShown;
}

} // namespace

int main(int argc, char ** argv)
{
    const qvparse::CommandLineParser arguments(lineOf(console::arguments(argc, argv)));
    Options options;
    if (!readOptions(arguments, options))
    {
        std::cerr
            << "usage: typical_application [--language LANGUAGE] [--config FILE] [--log-dir DIRECTORY]\n";
        return wrongUse;
    }
    u8string logDirectory = options.logDirectory;
    qvdisk::addLastSlash(logDirectory);
    qvutils::initSystemLog(logDirectory, "typical_application", static_cast<int>(noticeLevel));
    chooseLanguage(options.language);
    return run(options, logDirectory) ? 0 : failed;
}
