/// @file
/// What a test lets go to the standard wide error stream.
#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace testsupport
{

/// Catches what is written to the standard wide error stream.
class WideErrors
{
public:
    WideErrors() : m_former(std::wcerr.rdbuf(m_caught.rdbuf()))
    {
    }
    WideErrors(const WideErrors &) = delete;
    WideErrors & operator=(const WideErrors &) = delete;
    ~WideErrors()
    {
        std::wcerr.rdbuf(m_former);
    }

    [[nodiscard]] std::wstring text() const
    {
        return m_caught.str();
    }

private:
    std::wostringstream m_caught;
    std::wstreambuf * m_former;
};

} // namespace testsupport
