#include <VontalBase/VontalBase.h>
#include <iostream>

// Reads a number out of JSON, and fails as it should where there is none.
int main()
{
    qvbase::Reference<qvjson::Item> root;
    VontalException exception;
    if (!qvjson::jsonParse("{\"answer\": 42}", root, exception))
    {
        std::cerr << exception.format() << '\n';
        return 1;
    }
    if (qvjson::jsonParse("{\"answer\": x}", root, exception) || exception.format().empty())
    {
        std::cerr << "what is no JSON was read\n";
        return 1;
    }
    std::cout << "VontalBase is at work\n";
    return 0;
}
