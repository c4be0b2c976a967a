/// Any bytes as an archive from a stranger: whatever comes of unpacking it, nothing is written outside of the
/// target, nothing there is a link, and the limits hold.

#include "VontalBase/text/VontalException.h"
#include "VontalBase/zip/unzip.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace
{

namespace fs = std::filesystem;

using fuzzing::require;

constexpr std::uint64_t byteLimit = 1 << 20;

/// A folder with the target a few levels down, so that there is something to be found above it.
class Place
{
public:
    Place()
        : m_root(fs::temp_directory_path() / ("vontalbase-unzip-" + std::to_string(std::random_device{}())))
    {
        fs::create_directories(above());
        std::ofstream(m_root / "kept") << "kept";
    }
    Place(const Place &) = delete;
    Place & operator=(const Place &) = delete;
    ~Place()
    {
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }

    [[nodiscard]] fs::path above() const
    {
        return m_root / "1" / "2";
    }

    [[nodiscard]] fs::path target() const
    {
        return above() / "out";
    }

    [[nodiscard]] fs::path archive() const
    {
        return m_root / "a.zip";
    }

    /// Looks at everything, and empties the target.
    void check() const
    {
        std::uint64_t bytes = 0;
        std::size_t others = 0;
        const std::string inside = target().string();
        for (const auto & entry : fs::recursive_directory_iterator(m_root))
        {
            require(!entry.is_symlink(), "A link was made.");
            if (!entry.path().string().starts_with(inside))
                ++others;
            else if (entry.is_regular_file())
                bytes += entry.file_size();
        }
        require(others == 4, "Something was written outside of the target."); // 1, 1/2, kept, a.zip
        require(fs::file_size(m_root / "kept") == 4, "A file outside of the target was changed.");
        require(bytes <= byteLimit, "More was written than is allowed.");
        fs::remove_all(target());
    }

private:
    fs::path m_root;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    static const Place place;
    std::ofstream(place.archive(), std::ios::binary)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    VontalException error;
    qvzip::UnzipOptions options;
    options.maxTotalBytes = byteLimit;
    const bool isDone =
        qvzip::unzipChecked(place.archive().string(), place.target().string(), error, options);
    require(isDone == error.format().empty(), "A failure has an entry, success has none.");
    place.check();
    return 0;
}
