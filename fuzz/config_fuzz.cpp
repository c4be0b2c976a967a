/// Any bytes as a file of settings: what is loaded can be saved, and reads the same when it is loaded again.

#include "VontalBase/text/VontalException.h"
#include "VontalBase/utils/Config.h"

#include "require.h"
#include "xmlinput.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <string>

namespace
{

using fuzzing::require;
using Values = std::map<std::string, std::string>;

Values valuesOf(qvutils::Config & config)
{
    Values values;
    std::list<const qvutils::Config::Item *> items;
    config.getItems(items);
    for (const qvutils::Config::Item * const item : items)
        values[item->getName()] = item->getEffectiveValue();
    require(values.size() == items.size());
    return values;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const testsupport::WideErrors quiet;
    qvxml::XMLDocPtr document;
    if (!document.loadBuffer(reinterpret_cast<const char *>(data), size))
        return 0;
    qvutils::Config config;
    VontalException error;
    const bool loaded = config.loadXML("input", *document.getRootElement(), error);
    require(loaded == (error.first == nullptr));

    qvxml::XMLDocPtr saved;
    require(config.saveSettings(saved, -1));
    qvutils::Config again;
    VontalException none;
    require(again.loadXML("again", *saved.getRootElement(), none));
    require(valuesOf(again) == valuesOf(config), "Settings read otherwise after they were saved.");
    return 0;
}
