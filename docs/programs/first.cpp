// Adds up the prices in a JSON document.

#include "VontalBase/VontalBase.h"

#include <cstdint>
#include <iostream>

namespace
{

bool addPrices(const Vontal::u8string & text, std::int64_t & sum, VontalException & failure)
{
    qvbase::Reference<qvjson::Item> root;
    if (!qvjson::jsonParse(text, root, failure))
    {
        failure.add(__FILE__, __LINE__, "The order cannot be read");
        return false;
    }
    const qvjson::Array * const prices = *root;
    std::int64_t price = 0;
    for (unsigned int i = 0; prices != nullptr && i < prices->getLength(); ++i)
    {
        if (!prices->getInt64(i, price))
        {
            failure.add(__FILE__, __LINE__, Vontal::U8StringBuilder().append("No price at place ").append(i));
            return false;
        }
        sum += price;
    }
    return true;
}

void show(const Vontal::u8string & text)
{
    std::int64_t sum = 0;
    VontalException failure;
    if (addPrices(text, sum, failure))
        std::cout << "sum: " << sum << '\n';
    else
        std::cout << failure.format() << '\n';
}

} // namespace

int main()
{
    show("[1200, 350, 99]");
    show("[1200, \"free\"]");
    show("[1200, 3.5]");
    return 0;
}
