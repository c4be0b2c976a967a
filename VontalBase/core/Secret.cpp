#include "VontalBase/core/Secret.h"

#include "VontalBase/core/wipe.h"
#include "VontalBase/platform/protect.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace qvbase
{

namespace
{

using qvplatform::protectedBlock;

/// Runs a conversion in place. An empty string needs none, and one that is no whole number of blocks has
/// none.
bool convertInPlace(std::string & bytes, bool (*convert)(void *, std::size_t) noexcept) noexcept
{
    if (bytes.empty())
        return true;
    return bytes.size() % protectedBlock == 0 && convert(bytes.data(), bytes.size());
}

/// Overwrites what copies have left in wide registers, and what the loader, which resolves some functions at
/// their first call, has saved of those on the stack meanwhile.
void forgetCopies() noexcept
{
    constexpr std::size_t depth = 16384;
    static void * (*const volatile copy)(void *, const void *, std::size_t) = std::memcpy;
    std::array<unsigned char, depth> stack;
    wipeBuffer(stack.data(), stack.size());
    // Each size class of copies has registers of its own.
    for (std::size_t size = 16; size <= depth / 2; size *= 2)
        copy(stack.data() + depth / 2, stack.data(), size);
}

/// Forgets them when it goes out of scope.
class CopyGuard
{
public:
    CopyGuard() = default;
    CopyGuard(const CopyGuard &) = delete;
    CopyGuard & operator=(const CopyGuard &) = delete;
    ~CopyGuard()
    {
        forgetCopies();
    }
};

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
    const CopyGuard copies;
    const std::size_t padding = protectedBlock - value.size() % protectedBlock;
    // All at once: a string that grows leaves its old bytes behind, in clear.
    m_protected.reserve(value.size() + padding);
    m_protected.append(value).append(padding, static_cast<char>(padding));
    if (convertInPlace(m_protected, qvplatform::protectMemory))
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
    const CopyGuard copies;
    std::string bytes = secret.getProtectedData();
    const WipeGuard guard(bytes);
    if (!convertInPlace(bytes, qvplatform::unprotectMemory))
        return;
    // Kept: the padding is as long as its last byte says; the others are not looked at.
    const std::size_t padding = static_cast<unsigned char>(bytes.back());
    if (padding >= 1 && padding <= protectedBlock && padding <= bytes.size())
        m_text.assign(bytes, 0, bytes.size() - padding);
}

Secret::Clear::~Clear()
{
    wipeString(m_text);
    forgetCopies();
}

Secret::WipeGuard::~WipeGuard()
{
    wipeString(m_target);
}

} // namespace qvbase
