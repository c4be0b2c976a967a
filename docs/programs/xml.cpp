// Reads a list of books, raises their prices, adds one and prints the new document.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <string>

namespace
{

using Vontal::u8string;

const char * const books = "<books>"
                           "<book price='12'><title>The garden</title></book>"
                           "<book price='free'><title>The house</title></book>"
                           "</books>";

bool raisePrices(qvxml::Node & list)
{
    for (qvxml::Node * book = list.getFirstChild("book"); book != nullptr;
         book = book->getNextSibling("book"))
    {
        u8string price;
        bool isNumber = false;
        // As a number, a text that is none would be 0, and nobody would be told.
        if (!book->getProperty("price", price))
            return false;
        const int number = Vontal::string2Int(price, isNumber);
        if (isNumber && !book->setProperty("price", number + 1))
            return false;
        u8string title;
        qvxml::Node * const titleNode = book->getFirstChild("title");
        if (titleNode == nullptr || !titleNode->getText(title))
            return false;
        std::cout << title << (isNumber ? " costs more\n" : " has no price\n");
    }
    return true;
}

} // namespace

int main()
{
    qvxml::XMLDocPtr document;
    if (!document.loadBuffer(books) || !raisePrices(*document.getRootElement()))
        return 1;

    // A failed load tells why on the standard error stream, and leaves the document as it was.
    if (!document.loadBuffer("<books><book></books>"))
        std::cout << "not well-formed\n";

    qvxml::Node * const added = document.getRootElement()->createChild("book");
    if (added == nullptr || !added->setProperty("price", 20) ||
        added->createChild("title", u8string("Wind & rain")) == nullptr)
        return 1;
    std::string text;
    if (!document.saveBuffer(text, false))
        return 1;
    std::cout << text;
    return 0;
}
