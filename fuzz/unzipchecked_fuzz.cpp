/// Any bytes as an archive from a stranger: whatever comes of unpacking it, nothing is written outside of the
/// target, nothing there is a link, and the limits hold.

#include "VontalBase/text/VontalException.h"
#include "VontalBase/zip/unzip.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
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

    /// Makes the target, with a link out of it and a second name of a file outside.
    void prepare() const
    {
        fs::create_directory(target());
        // Not every system has them.
        std::error_code ignored;
        fs::create_directory_symlink(above(), target() / "link", ignored);
        fs::create_hard_link(m_root / "kept", target() / "a", ignored);
    }

    /// Looks at everything, and empties the target.
    void check() const
    {
        std::uint64_t bytes = 0;
        std::size_t others = 0;
        const std::string inside = (target() / "").string();
        for (const auto & entry : fs::recursive_directory_iterator(m_root))
        {
            if (!entry.path().string().starts_with(inside))
                ++others;
            else if (entry.is_symlink())
                require(entry.path() == target() / "link", "A link was made.");
            else if (entry.is_regular_file())
                bytes += entry.file_size();
        }
        // 1, 1/2, out, kept, a.zip
        require(others == 5, "Something was written outside of the target.");
        require(contentOf(m_root / "kept") == "kept", "A file outside of the target was changed.");
        const fs::path old = target() / "a";
        require(!fs::is_regular_file(old) || fs::hard_link_count(old) == 1 || contentOf(old) == "kept",
            "A file was written in its place.");
        require(bytes <= byteLimit + 4, "More was written than is allowed.");
        fs::remove_all(target());
    }

private:
    static std::string contentOf(const fs::path & path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    fs::path m_root;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    static const Place place;
    std::ofstream(place.archive(), std::ios::binary)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    place.prepare();
    VontalException error;
    qvzip::UnzipOptions options;
    options.maxTotalBytes = byteLimit;
    const bool isDone =
        qvzip::unzipChecked(place.archive().string(), place.target().string(), error, options);
    require(isDone == error.format().empty(), "A failure has an entry, success has none.");
    place.check();
    return 0;
}
