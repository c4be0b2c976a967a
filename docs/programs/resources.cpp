// Greets in the languages of an application's texts.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <list>

namespace
{

using Vontal::u8string;

// What an installation puts beside the program.
bool installTexts()
{
    return qvdisk::createDirectories(u8string("locale\\de")) &&
           qvdisk::createDirectories(u8string("locale\\en")) &&
           qvdisk::writeTextFile(
               "locale\\de\\main.properties", "greeting=Guten Morgen\nbye=Auf Wiedersehen\n") &&
           qvdisk::writeTextFile("locale\\en\\main.properties", "greeting=Good morning\n");
}

} // namespace

int main()
{
    if (!installTexts())
        return 1;
    qvutils::ResourceManager & texts = *qvutils::getResourceManager();
    texts.setRootDirectory("locale");
    texts.setDefaultBundle("main");

    std::list<u8string> languages;
    if (!qvutils::listAvailableLanguages("locale", "main", languages))
        return 1;
    languages.sort();
    for (const u8string & language : languages)
    {
        texts.setLanguage(language);
        const u8string bye = "bye";
        std::cout << language << ": " << texts.getString("greeting") << ", " << texts.getString(bye) << '\n';
    }
    // de_AT has no file of its own, and French has none at all: English stands in for it.
    for (const char * const language : {"de_AT", "fr"})
    {
        texts.setLanguage(language);
        std::cout << language << ": " << texts.getString("greeting") << '\n';
    }
    // To begin with, a program would take the language of its user:
    texts.setLanguage(qvutils::detectSystemLanguage(languages));
    return 0;
}
