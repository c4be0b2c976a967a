/// Any text as a forgiving number: the value and the count are those of a second statement of the rules,
/// which takes the text apart first and reckons then.

#include "VontalBase/utils/convert2double.h"

#include "require.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

struct Expected
{
    double value;
    std::size_t count;
};

Expected reckon(const std::string & text)
{
    const std::size_t end = std::min(text.find_first_not_of("0123456789-,."), text.size());
    const std::string number = text.substr(0, end);
    const std::size_t point = std::min(number.find_first_of(",."), number.size());
    double value = 0.0;
    for (const char c : number.substr(0, point))
    {
        if (c != '-')
            value = 10.0 * value + (c - '0');
    }
    double weight = 1.0;
    for (const char c : number.substr(point))
    {
        if (c < '0' || c > '9')
            continue;
        weight = weight / 10.0;
        value = value + weight * (c - '0');
    }
    const bool isNegative = std::count(number.begin(), number.end(), '-') % 2 == 1;
    return {isNegative ? -value : value, std::min(end + 1, text.size())};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string bytes(data, data + size);
    const std::string text = bytes.substr(0, bytes.find('\0'));
    const Expected expected = reckon(text);
    double value = 77.0;
    const unsigned int count = qvutils::convert2double(text.c_str(), value);
    fuzzing::require(count == expected.count, "what was looked at is counted");
    fuzzing::require(std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(expected.value),
        "to the last bit");
    return 0;
}
