// Shows a menu in the language that the user has told the system to want, or in a given one. The manual's
// page on texts shows its pieces.
//
//     translated_menu DIRECTORY [LANGUAGE]

#include "VontalBase/VontalBase.h"

#include "console/console.h"

#include <iostream>
#include <list>
#include <vector>

namespace
{

//! [choose]
/// The user's language, of those that there is a menu in.
Vontal::u8string chooseLanguage(const Vontal::u8string & directory)
{
    std::list<Vontal::u8string> available;
    if (!qvutils::listAvailableLanguages(directory, "menu", available))
        std::cerr << "The directory cannot be listed.\n";
    return qvutils::detectSystemLanguage(available);
}
//! [choose]

//! [show]
void showMenu()
{
    qvutils::ResourceManager & texts = *qvutils::getResourceManager();
    for (const char * const key : {"file.open", "file.close", "help.about"})
        std::cout << key << ": " << texts.getString(Vontal::u8string(key)) << '\n';
}
//! [show]

//! [hold]
/// Looks up many texts at once: the manager is asked once, and whatever happens to its language meanwhile,
/// all of them come from one.
Vontal::u8string joinTexts(const std::vector<Vontal::u8string> & keys)
{
    Vontal::u8string joined;
    qvbase::Reference<qvutils::ResourceBundle> menu;
    if (!qvutils::getResourceManager()->getBundle("menu", menu))
        return joined;
    for (const Vontal::u8string & key : keys)
        joined += menu->getString(key) + " ";
    return joined;
}
//! [hold]

} // namespace

int main(int argc, char ** argv)
{
    const std::vector<Vontal::u8string> arguments = console::arguments(argc, argv);
    if (arguments.size() != 2 && arguments.size() != 3)
    {
        std::cerr << "usage: translated_menu DIRECTORY [LANGUAGE]\n";
        return 2;
    }
    const Vontal::u8string & directory = arguments[1];
    const Vontal::u8string language = arguments.size() == 3 ? arguments[2] : chooseLanguage(directory);
    //! [start]
    qvutils::ResourceManager & texts = *qvutils::getResourceManager();
    texts.setRootDirectory(directory);
    texts.setLanguage(language);
    texts.setDefaultBundle("menu");
    //! [start]
    showMenu();
    std::cout << joinTexts({"file.open", "file.close"}) << '\n';
    return 0;
}
