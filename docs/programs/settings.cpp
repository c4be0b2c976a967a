// Lays the settings of a user over the defaults, hears of a change, and saves what the user has set.

#include "VontalBase/VontalBase.h"

#include <iostream>

namespace
{

using Vontal::u8string;

class WidthListener : public qvutils::Config::ItemChangeListener
{
public:
    void itemChanged(const qvutils::Config::Item * item) override
    {
        std::cout << item->getName() << " is " << item->getEffectiveValue() << " now\n";
    }
};

bool writeFiles()
{
    return qvdisk::writeTextFile("defaults.xml",
               "<Config><Item name='window.width' type='int' default='800'/>"
               "<Item name='greeting' default='Hello'/></Config>") &&
           qvdisk::writeTextFile(
               "user.xml", "<Config><Item name='window.width' value='1024' local='1'/></Config>");
}

bool load(qvutils::Config & config, VontalException & failure)
{
    return config.loadXML("defaults", "defaults.xml", failure) && config.loadXML("user", "user.xml", failure);
}

} // namespace

int main()
{
    qvutils::Config config;
    VontalException failure;
    if (!writeFiles() || !load(config, failure))
    {
        std::cerr << failure.format() << '\n';
        return 1;
    }
    int width = 0;
    u8string greeting;
    if (!config.getItemInt("window.width", width) || !config.getItemString("greeting", greeting))
        return 1;
    std::cout << greeting << ", the window is " << width << " wide\n";

    WidthListener listener;
    config.registerListener("window.width", &listener);
    if (!config.setItemInt("window.width", 1280))
        return 1;
    config.unregisterListener("window.width", &listener);
    if (!config.setItemInt("window.heigth", 600))
        std::cout << "there is no setting of that name\n";

    constexpr int onlyOfUser = 1;
    qvxml::XMLDocPtr document;
    if (!config.saveSettings(document, onlyOfUser) || !document.saveFile("user.xml", false, failure))
        return 1;
    qvutils::Config again;
    if (!load(again, failure) || !again.getItemInt("window.width", width))
        return 1;
    std::cout << "next time it is " << width << " wide\n";
    return 0;
}
