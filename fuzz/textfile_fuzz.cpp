/// Any bytes as a text file: it is read as its first bytes tell, and what was read is written and read back.

#include "VontalBase/disk/AutoDeleteFile.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/temporaryfiles.h"
#include "VontalBase/text/u8string.h"

#include "require.h"
#include "tests/text/utforacle.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

using fuzzing::require;

/// The file that every input goes through.
const Vontal::u8string & filePath()
{
    static qvdisk::AutoDeleteFile file;
    static const Vontal::u8string path = []
    {
        require(file.create(Vontal::pstring(L"fuzz"), Vontal::pstring(L"txt")));
        return Vontal::u8string(file.get().c_str());
    }();
    return path;
}

/// What reading the bytes must give.
std::string expectedText(const std::string & bytes)
{
    if (bytes.starts_with("\xFF\xFE"))
    {
        std::wstring units;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
        {
            const auto low = static_cast<unsigned char>(bytes[i]);
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            units.push_back(static_cast<wchar_t>(low | (high << 8)));
        }
        return utforacle::utf8FromWide(units.c_str());
    }
    return bytes.c_str() + (bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string bytes(data, data + size);
    require(qvdisk::writeTextFile(filePath(), bytes));
    std::string raw = "before";
    require(qvdisk::readRawFile(filePath(), raw) && raw == "before" + bytes);
    Vontal::u8string text = "before";
    require(qvdisk::readUnicodeTextFile(filePath(), text) && text == expectedText(bytes));
    return 0;
}
