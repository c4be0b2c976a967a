/// Any bytes as options: what they give is stored in a form that gives the same again, and no key or value
/// has what the form cannot hold.

#include "VontalBase/parse/SemicolonSeparatedOptions.h"
#include "VontalBase/text/VontalException.h"

#include "require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

using fuzzing::require;

std::string storedFrom(const std::string & text)
{
    qvparse::SemicolonSeparatedOptions options;
    VontalException error;
    require(options.parse(text, error));
    std::string stored;
    options.store(stored);
    return stored;
}

/// Each option has a key, one equals sign, and a key without blanks.
void checkForm(const std::string & stored)
{
    for (std::size_t begin = 0; begin < stored.size();)
    {
        const std::size_t end = std::min(stored.find(';', begin), stored.size());
        const std::string option = stored.substr(begin, end - begin);
        const std::size_t equals = option.find('=');
        require(equals != std::string::npos && equals > 0);
        require(option.find('=', equals + 1) == std::string::npos);
        require(option.substr(0, equals).find(' ') == std::string::npos);
        begin = end + 1;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string text(data, data + size);
    const std::string stored = storedFrom(text);
    require(stored.find_first_of("\t\n\r") == std::string::npos);
    checkForm(stored);
    require(storedFrom(stored) == stored);
    // A further option behind it is found, unless a value is open for ever.
    const std::string longer = storedFrom(text + ";\x01"
                                                 "other=1");
    require(longer == stored || longer.find("\x01"
                                            "other") != std::string::npos);
    return 0;
}
