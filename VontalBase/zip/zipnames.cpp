#include "VontalBase/zip/zipnames.h"

#include "VontalBase/text/asciicase.h"
#include "VontalBase/text/utf.h"

#include <algorithm>
#include <array>
#include <vector>

namespace zip
{

namespace
{

constexpr std::string_view separators = "/\\";

bool isLetter(char c) noexcept
{
    return Vontal::lowerAscii(c) >= 'a' && Vontal::lowerAscii(c) <= 'z';
}

/// Whether this is what may follow COM and LPT: a digit, or one of the three that are raised.
bool isDeviceNumber(std::string_view text) noexcept
{
    constexpr std::array<std::string_view, 3> superscripts = {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    const bool isDigit = text.size() == 1 && text[0] >= '0' && text[0] <= '9';
    return isDigit || std::find(superscripts.begin(), superscripts.end(), text) != superscripts.end();
}

/// A device keeps its name with any extension, with blanks in front of that, and in any case.
bool isDevice(std::string_view component) noexcept
{
    constexpr std::array<std::string_view, 6> devices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    std::string_view stem = component.substr(0, component.find_first_of(".:"));
    stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
    if (std::any_of(devices.begin(), devices.end(),
            [&](std::string_view device) { return Vontal::isSameButForCase(stem, device); }))
    {
        return true;
    }
    constexpr std::size_t portLength = 3;
    const std::string_view port = stem.substr(0, portLength);
    return (Vontal::isSameButForCase(port, "COM") || Vontal::isSameButForCase(port, "LPT")) &&
           isDeviceNumber(stem.substr(portLength));
}

/// The parts of a name between its separators.
std::vector<std::string_view> componentsOf(std::string_view name)
{
    std::vector<std::string_view> components;
    for (;;)
    {
        const std::size_t end = name.find_first_of(separators);
        components.push_back(name.substr(0, end));
        if (end == std::string_view::npos)
            return components;
        name.remove_prefix(end + 1);
    }
}

/// What is wrong with a component that is a name of its own.
NameFault faultOf(std::string_view component, bool colonsEndNames) noexcept
{
    if (component.ends_with('.') || component.ends_with(' '))
        return NameFault::Ending;
    if (isDevice(component))
        return NameFault::Device;
    return colonsEndNames && component.find(':') != std::string_view::npos ? NameFault::Drive
                                                                           : NameFault::None;
}

/// What is wrong with a name as a whole.
NameFault faultOf(std::string_view name) noexcept
{
    if (name.empty())
        return NameFault::Empty;
    if (name.find('\0') != std::string_view::npos)
        return NameFault::HoldsNul;
    if (separators.find(name.front()) != std::string_view::npos)
        return NameFault::Absolute;
    return name.size() > 1 && isLetter(name[0]) && name[1] == ':' ? NameFault::Drive : NameFault::None;
}

std::wstring joined(const std::vector<std::string_view> & components)
{
    std::string path;
    for (const std::string_view component : components)
    {
        if (!path.empty())
            path += '\\';
        path += component;
    }
    std::wstring wide;
    Vontal::wideFromUtf8(path, wide);
    return wide;
}

} // namespace

ScreenedName screenName(std::string_view name, bool colonsEndNames)
{
    ScreenedName result;
    result.fault = faultOf(name);
    result.endsInSeparator = !name.empty() && separators.find(name.back()) != std::string_view::npos;
    std::vector<std::string_view> way;
    for (const std::string_view component : componentsOf(name))
    {
        if (result.fault != NameFault::None)
            return result;
        if (component.empty() || component == ".")
            continue;
        if (component != "..")
        {
            result.fault = faultOf(component, colonsEndNames);
            way.push_back(component);
        }
        else if (way.empty())
            result.fault = NameFault::LeavesTarget;
        else
            way.pop_back();
    }
    if (result.fault == NameFault::None)
        result.path = joined(way);
    return result;
}

std::string_view textOf(NameFault fault) noexcept
{
    switch (fault)
    {
    case NameFault::None:
        break;
    case NameFault::Empty:
        return "is empty";
    case NameFault::HoldsNul:
        return "holds a zero byte";
    case NameFault::Absolute:
        return "is absolute";
    case NameFault::Drive:
        return "names a drive or a stream";
    case NameFault::LeavesTarget:
        return "leaves the target directory";
    case NameFault::Device:
        return "names a device";
    case NameFault::Ending:
        return "has a component that ends in a dot or a blank";
    }
    return {};
}

} // namespace zip
