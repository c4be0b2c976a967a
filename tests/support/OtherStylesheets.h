/// @file
/// Another user of stylesheets in the same process, with a handler of their own for the messages.
#pragma once

#include <string>

namespace testsupport
{

/// Has its handler set as long as it lives. The handler may be called from any thread; objects are made and
/// ended one within the other.
class OtherStylesheets
{
public:
    /// Whether the system is one where such a user shares anything with the library.
    static bool isPossible();

    OtherStylesheets();
    OtherStylesheets(const OtherStylesheets &) = delete;
    OtherStylesheets & operator=(const OtherStylesheets &) = delete;
    ~OtherStylesheets();

    /// Whether the process has another handler than this one at present.
    [[nodiscard]] bool isReplaced() const;

    /// Compiles a stylesheet with a fault.
    /// @return whether the handler was told of it.
    [[nodiscard]] bool hearsOfFault();

    /// All that the handler was told.
    [[nodiscard]] std::string messages() const;

private:
    using Handler = void (*)(void *, const char *, ...);

    Handler m_previous = nullptr;
};

} // namespace testsupport
