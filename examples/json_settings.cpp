// Binds a class of settings to JSON: restores it from text, changes it and prints it.
//
//     json_settings [FILE]
//
// Without FILE it restores the settings that stand below. Exit codes: 0; 1 for settings that are refused,
// with the reason on the standard error stream; 2 for a file that cannot be read.

#include "VontalBase/VontalBase.h"

#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace
{

/// One server that the application knows.
class Server : public qvjson::JSONSerializable
{
public:
    Vontal::u8string host;
    int port = 0;

    void jsonFieldsDeclare() override
    {
        if (m_isDeclared)
            return;
        m_isDeclared = true;
        jsonFieldAdd("host", &host);
        jsonFieldAdd("port", &port);
    }

private:
    bool m_isDeclared = false;
};

class ServerFactory : public qvjson::JSONSerializableFactory
{
public:
    bool createObject(qvbase::Reference<qvjson::JSONSerializable> & out) override
    {
        out = new qvbase::ReferencedImpl<Server>;
        return true;
    }
};

//! [class]
/// The settings of an application: eleven members of as many kinds.
class Settings : public qvjson::JSONSerializable
{
public:
    bool isMaximized = false;
    int fontSize = 10;
    Vontal::ulong32 color = 0;
    std::int64_t lastStart = 0;
    Vontal::u8string language;
    std::set<Vontal::u8string> plugins;
    std::vector<Vontal::u8string> recentFiles;
    std::vector<int> columnWidths;
    qvbase::Reference<qvjson::Object> layout;
    qvbase::Reference<qvjson::JSONSerializable> proxy;
    std::vector<qvbase::Reference<qvjson::JSONSerializable>> servers;

    void jsonFieldsDeclare() override
    {
        if (m_isDeclared)
            return;
        m_isDeclared = true;
        const qvbase::Reference<ServerFactory> factory = new qvbase::ReferencedImpl<ServerFactory>;
        jsonFieldAdd("maximized", &isMaximized);
        jsonFieldAdd("fontSize", &fontSize);
        jsonFieldAdd("color", &color);
        jsonFieldAdd("lastStart", &lastStart);
        jsonFieldAdd("language", &language);
        jsonFieldAdd("plugins", &plugins);
        jsonFieldAdd("recentFiles", &recentFiles);
        jsonFieldAdd("columnWidths", &columnWidths);
        jsonFieldAdd("layout", &layout);
        jsonFieldAdd("proxy", &proxy, factory);
        jsonFieldAdd("servers", &servers, factory);
    }

protected:
    /// The last word on what was read.
    bool onParseEnd() override
    {
        return fontSize > 0;
    }

private:
    bool m_isDeclared = false;
};
//! [class]

constexpr const char * builtInSettings = R"({
    "maximized": true,
    "fontSize": 12,
    "color": 4294901760,
    "lastStart": 1709217296000,
    "language": "čeština",
    "plugins": ["spelling", "export", "spelling"],
    "recentFiles": ["report.txt", "notes \"new\".txt"],
    "columnWidths": [120, 80, 200],
    "layout": {"left": {"width": 300}, "tabs": ["files", "search"]},
    "proxy": null,
    "servers": [{"host": "one.example", "port": 443}, {"host": "two.example", "port": 8443}]
})";

void change(Settings & settings)
{
    settings.fontSize += 2;
    settings.plugins.insert("autosave");
    settings.recentFiles.insert(settings.recentFiles.begin(), "today.txt");
    const qvbase::Reference<Server> proxy = new qvbase::ReferencedImpl<Server>;
    proxy->host = "proxy.example";
    proxy->port = 3128;
    settings.proxy = proxy;
}

//! [use]
int run(const Vontal::u8string & text)
{
    const qvbase::Reference<Settings> settings = new qvbase::ReferencedImpl<Settings>;
    VontalException exception;
    if (!settings->fromJson(text, exception))
    {
        std::cerr << exception.format() << '\n';
        return 1;
    }
    change(*settings);
    Vontal::u8string changed;
    if (!settings->toJson(changed))
        return 1;
    std::cout << changed << '\n';
    return 0;
}
//! [use]

} // namespace

int main(int argc, char ** argv)
{
    if (argc < 2)
        return run(builtInSettings);
    std::ifstream file(argv[1], std::ios::binary);
    if (!file)
    {
        std::cerr << "json_settings: cannot read " << argv[1] << '\n';
        return 2;
    }
    return run(std::string(std::istreambuf_iterator<char>(file), {}));
}
