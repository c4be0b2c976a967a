// Reads a document into a tree, looks into it, adds to it and prints it.

#include "VontalBase/VontalBase.h"

#include <iostream>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImpl;

bool readPeople(const Vontal::u8string & text, Reference<qvjson::Array> & people, VontalException & failure)
{
    Reference<qvjson::Item> root;
    if (!qvjson::jsonParse(text, root, failure))
        return false;
    const qvjson::Object * const object = *root; // Null where the root is an array.
    Reference<qvjson::Item> item;
    if (object == nullptr || !object->getItem("people", item) || item->getType() != qvjson::TypeArray)
    {
        failure.add(__FILE__, __LINE__, "There is no list of people");
        return false;
    }
    people = static_cast<qvjson::Array *>(*item);
    return true;
}

void greet(qvjson::Object & person)
{
    const char greeting[] = "Good morning";
    const Reference<qvjson::ValueString> text = new ReferencedImpl<qvjson::ValueString>;
    text->set(greeting, sizeof(greeting) - 1);
    person.add("greeting", text);
}

} // namespace

int main()
{
    VontalException failure;
    Reference<qvjson::Array> people;
    if (!readPeople(R"({"people": [{"name": "Anna", "born": 1983}, "Bruno"]})", people, failure))
    {
        std::cerr << failure.format() << '\n';
        return 1;
    }
    for (unsigned int i = 0; i < people->getLength(); ++i)
    {
        Reference<qvjson::Item> person;
        if (people->getItem(i, person) && person->getType() == qvjson::TypeObject)
            greet(*static_cast<qvjson::Object *>(*person));
        else
            std::cout << "the person at place " << i << " is no object\n";
    }
    Reference<qvjson::JSONPrinter> printer;
    if (!qvjson::jsonPrinterFactory(&std::cout, printer) || !printer->printItem(people))
        return 1;
    std::cout << '\n';
    return 0;
}
