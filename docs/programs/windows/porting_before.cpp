// Keeps a small cache of texts on the disk. Windows only.

#include "VontalBase/VontalBase.h"

#include <windows.h>
#include <iostream>
#include <objbase.h>
#include <string>

namespace
{

bool writeEntry(const std::wstring & directory, const wchar_t * name, const std::string & text)
{
    const std::wstring path = directory + L"\\" + name;
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    DWORD written = 0;
    const bool isWritten =
        WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
    return CloseHandle(file) != 0 && isWritten;
}

unsigned long totalSize(const std::wstring & directory)
{
    unsigned long total = 0;
    WIN32_FIND_DATAW data = {};
    const HANDLE search = FindFirstFileW((directory + L"\\*.txt").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE)
        return 0;
    do
        total += data.nFileSizeLow;
    while (FindNextFileW(search, &data) != 0);
    FindClose(search);
    return total;
}

DWORD WINAPI countEntries(void * argument)
{
    unsigned long & count = *static_cast<unsigned long *>(argument);
    CoInitialize(nullptr);
    qvxml::XMLDocPtr document;
    Vontal::u8string text;
    bool isNumber = false;
    if (document.loadFile(std::wstring(L"cache\\index.xml")) &&
        document.getRootElement()->getProperty("count", text))
        count = text.toULong(isNumber);
    CoUninitialize();
    return 0;
}

} // namespace

int main()
{
    CreateDirectoryW(L"cache", nullptr);
    if (!writeEntry(L"cache", L"a.txt", "first") || !writeEntry(L"cache", L"b.txt", "second") ||
        !writeEntry(L"cache", L"index.xml", "<index count='2'/>"))
        return 1;
    unsigned long count = 0;
    const HANDLE thread = CreateThread(nullptr, 0, countEntries, &count, 0, nullptr);
    if (thread == nullptr)
        return 1;
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    std::cout << count << " entries, " << totalSize(L"cache") << " bytes\n";
    return 0;
}
