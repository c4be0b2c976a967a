#include "VontalBase/core/Secret.h"

#include "VontalBase/core/wipe.h"
#include "VontalBase/platform/protect.h"

#include <cstddef>

namespace qvbase
{

namespace
{

using platform::protectedBlock;

/// Runs a conversion in place. An empty string needs none, and one that is no whole number of blocks has
/// none.
bool convertInPlace(std::string & bytes, bool (*convert)(void *, std::size_t) noexcept) noexcept
{
    if (bytes.empty())
        return true;
    return bytes.size() % protectedBlock == 0 && convert(bytes.data(), bytes.size());
}

} // namespace

Secret & Secret::operator=(const Secret & other)
{
    if (this != &other)
    {
        clear();
        m_protected = other.m_protected;
    }
    return *this;
}

Secret::~Secret()
{
    clear();
}

bool Secret::set(const Vontal::u8string & value)
{
    clear();
    if (value.empty())
        return true;
    const std::size_t padding = protectedBlock - value.size() % protectedBlock;
    // All at once: a string that grows leaves its old bytes behind, in clear.
    m_protected.reserve(value.size() + padding);
    m_protected.append(value).append(padding, static_cast<char>(padding));
    if (convertInPlace(m_protected, platform::protectMemory))
        return true;
    clear();
    return false;
}

void Secret::clear() noexcept
{
    wipeString(m_protected);
}

Secret::Clear::Clear(const Secret & secret)
{
    if (secret.empty())
        return;
    std::string bytes = secret.getProtectedData();
    const WipeGuard guard(bytes);
    if (!convertInPlace(bytes, platform::unprotectMemory))
        return;
    // Kept: the padding is as long as its last byte says; the others are not looked at.
    const std::size_t padding = static_cast<unsigned char>(bytes.back());
    if (padding >= 1 && padding <= protectedBlock && padding <= bytes.size())
        m_text.assign(bytes, 0, bytes.size() - padding);
}

Secret::Clear::~Clear()
{
    wipeString(m_text);
}

Secret::WipeGuard::~WipeGuard()
{
    wipeString(m_target);
}

} // namespace qvbase
