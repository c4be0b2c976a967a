/// @file
/// A shared library that is loaded for a while.
#pragma once

#include <string>

namespace testsupport
{

/// Loads a library and unloads it in the end, unless the system keeps it.
class LoadedLibrary
{
public:
    /// @param path in UTF-8, in the form that the system itself uses.
    explicit LoadedLibrary(const std::string & path);
    LoadedLibrary(const LoadedLibrary &) = delete;
    LoadedLibrary & operator=(const LoadedLibrary &) = delete;
    ~LoadedLibrary();

    [[nodiscard]] bool isLoaded() const noexcept
    {
        return m_handle != nullptr;
    }

    /// A function that the library exports under a plain name; null if there is none.
    template <class Function>
    [[nodiscard]] Function * function(const char * name) const noexcept
    {
        return reinterpret_cast<Function *>(address(name));
    }

private:
    [[nodiscard]] void * address(const char * name) const noexcept;

    void * m_handle;
};

/// Loads those libraries of the system itself that hold something from then on, and leaves them there.
void loadSystemLibraries();

/// Whether a library of this file name is in the process.
bool isInProcess(const std::string & fileName);

} // namespace testsupport
