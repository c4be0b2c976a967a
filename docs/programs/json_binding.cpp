// Binds the members of a class to JSON: reads them from text, changes them and writes them.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <vector>

namespace
{

class WindowSettings : public qvjson::JSONSerializable
{
public:
    bool isMaximized = false;
    int width = 800;
    std::vector<Vontal::u8string> recentFiles;

    void jsonFieldsDeclare() override
    {
        if (m_isDeclared)
            return;
        m_isDeclared = true;
        jsonFieldAdd("maximized", &isMaximized);
        jsonFieldAdd("width", &width);
        jsonFieldAdd("recentFiles", &recentFiles);
    }

protected:
    bool onParseEnd() override
    {
        return width > 0;
    }

private:
    bool m_isDeclared = false;
};

bool read(WindowSettings & settings, const Vontal::u8string & text)
{
    VontalException failure;
    if (settings.fromJson(text, failure))
        return true;
    std::cout << failure.format() << '\n';
    settings.jsonEndParse(); // Makes the object ready for another text.
    return false;
}

} // namespace

int main()
{
    const qvbase::Reference<WindowSettings> settings = new qvbase::ReferencedImpl<WindowSettings>;
    if (!read(*settings, R"({"width": 1024, "recentFiles": ["a.txt"]})"))
        return 1;
    settings->recentFiles.emplace_back("b \"new\".txt");
    Vontal::u8string text;
    if (!settings->toJson(text))
        return 1;
    std::cout << text << '\n';

    // A key that is not declared is refused, and what was set before it stays.
    if (!read(*settings, R"({"width": 640, "height": 480})"))
        std::cout << "width is " << settings->width << " now\n";
    return 0;
}
