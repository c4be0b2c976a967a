#include "VontalBase/core/DebugAutomation.h"

#include "VontalBase/core/debugregistry.h"
#include "VontalBase/text/Decimal.h"

#include <map>

namespace qvbase
{

DebugAutomation::DebugAutomation(const char * name, IUnknown * object) : m_object(object)
{
    addReference(name, object);
    if (debugCallback != nullptr)
        debugCallback();
}

DebugAutomation::~DebugAutomation()
{
    releaseReference(m_object);
    if (debugCallback != nullptr)
        debugCallback();
}

void DebugAutomation::addReference(const char * name, IUnknown * object)
{
    debugRegistry.insert_or_assign(object, std::string(name));
}

void DebugAutomation::releaseReference(IUnknown * object)
{
    debugRegistry.erase(object);
}

std::string DebugAutomation::report()
{
    std::map<std::string, unsigned int> counts;
    for (const auto & [object, name] : debugRegistry)
        ++counts[name];
    if (counts.empty())
        return "DebugAutomation - OK";
    std::string text = "DebugAutomation - References : \n";
    for (const auto & [name, count] : counts)
        text.append("Class [").append(name).append("] = ").append(Vontal::Decimal(count).text()).append("\n");
    return text;
}

void DebugAutomation::setCallback(void (*callback)())
{
    debugCallback = callback;
}

} // namespace qvbase
