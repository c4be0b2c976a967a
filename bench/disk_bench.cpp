// Files and directories, beside the standard library, plain system calls and ICU. Files lie in the cache of
// the system, so that what is measured is what the programs do.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/uvernum.h>

namespace
{

namespace fs = std::filesystem;

[[maybe_unused]] const bool isDescribed = bench::describe("Files and directories",
    "Copying, reading, converting and summing files; listing and walking directories.",
    {{"loop", "fread and fwrite, 64 KiB at a time"}, {"std", "std::filesystem of " + bench::standardLibrary},
        {"fread", "one fread of the whole file"}, {"icu", "ICU " U_ICU_VERSION},
        {"digest", "the digest of as many bytes in memory, no file read"}});

constexpr std::size_t mebibyte = std::size_t{1} << 20;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// A directory for the whole run.
class Place
{
public:
    Place() : m_path(fs::temp_directory_path() / "vontalbase-disk-bench")
    {
        fs::remove_all(m_path);
        fs::create_directory(m_path);
    }
    Place(const Place &) = delete;
    Place & operator=(const Place &) = delete;
    ~Place()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    [[nodiscard]] std::string path(const std::string & name) const
    {
        return (m_path / name).string();
    }

private:
    fs::path m_path;
};

const Place & place()
{
    static const Place instance;
    return instance;
}

/// A file of so many bytes and one more, written once.
const std::string & fileOf(std::size_t size)
{
    static std::map<std::size_t, std::string> made;
    std::string & path = made[size];
    if (!path.empty())
        return path;
    path = place().path("file" + std::to_string(size));
    std::ofstream file(path, std::ios::binary);
    std::string block(mebibyte, '\0');
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<char>(i * 31 + i / 977);
    for (std::size_t written = 0; written < size; written += block.size())
        file.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), size - written)));
    file.put('x');
    return path;
}

// Copying

void copyOurs(benchmark::State & state, std::size_t size)
{
    const Vontal::u8string source = fileOf(size);
    const Vontal::u8string target = place().path("copy");
    for (auto step : state)
        require(qvdisk::copy(source, target));
}

void copyLoop(benchmark::State & state, std::size_t size)
{
    const std::string & source = fileOf(size);
    const std::string target = place().path("copy");
    std::array<char, 65536> block;
    for (auto step : state)
    {
        std::FILE * const from = std::fopen(source.c_str(), "rb");
        std::FILE * const to = std::fopen(target.c_str(), "wb");
        std::setvbuf(from, nullptr, _IONBF, 0);
        std::setvbuf(to, nullptr, _IONBF, 0);
        while (const std::size_t count = std::fread(block.data(), 1, block.size(), from))
            require(std::fwrite(block.data(), 1, count, to) == count);
        std::fclose(from);
        require(std::fclose(to) == 0);
    }
}

void copyStandard(benchmark::State & state, std::size_t size)
{
    const std::string & source = fileOf(size);
    const std::string target = place().path("copy");
    for (auto step : state)
        fs::copy_file(source, target, fs::copy_options::overwrite_existing);
}

// Reading

void readOurs(benchmark::State & state, std::size_t size)
{
    const Vontal::u8string path = fileOf(size);
    for (auto step : state)
    {
        std::string bytes;
        require(qvdisk::readRawFile(path, bytes) && bytes.size() == size + 1);
        benchmark::DoNotOptimize(bytes.data());
    }
}

std::string readAtOnce(const std::string & path, std::size_t size)
{
    std::string bytes(size, '\0');
    std::FILE * const file = std::fopen(path.c_str(), "rb");
    require(std::fread(bytes.data(), 1, bytes.size(), file) == size);
    std::fclose(file);
    return bytes;
}

void readFread(benchmark::State & state, std::size_t size)
{
    const std::string & path = fileOf(size);
    for (auto step : state)
    {
        const std::string bytes = readAtOnce(path, size + 1);
        benchmark::DoNotOptimize(bytes.data());
    }
}

// Text

/// A file of UTF-16 with words of several scripts.
const std::string & textOf(std::size_t size)
{
    static std::map<std::size_t, std::string> made;
    std::string & path = made[size];
    if (!path.empty())
        return path;
    const std::u16string words =
        u"The quick brown fox; Größe und Maß. Широкая электрификация 東京は日本の首都 ";
    std::string bytes = "\xFF\xFE";
    for (std::size_t i = 0; bytes.size() < size; i = (i + 1) % words.size())
    {
        bytes.push_back(static_cast<char>(words[i] & 0xFF));
        bytes.push_back(static_cast<char>(words[i] >> 8));
    }
    path = place().path("text" + std::to_string(size));
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

void textOurs(benchmark::State & state, std::size_t size)
{
    const Vontal::u8string path = textOf(size);
    for (auto step : state)
    {
        Vontal::u8string text;
        require(qvdisk::readUnicodeTextFile(path, text));
        benchmark::DoNotOptimize(text.data());
    }
}

void textIcu(benchmark::State & state, std::size_t size)
{
    const std::string & path = textOf(size);
    for (auto step : state)
    {
        const std::string bytes = readAtOnce(path, size);
        std::string text(size / 2 * 3, '\0');
        UErrorCode error = U_ZERO_ERROR;
        UConverter * const from = ucnv_open("UTF-16LE", &error);
        UConverter * const to = ucnv_open("UTF-8", &error);
        char * target = text.data();
        const char * source = bytes.data() + 2;
        ucnv_convertEx(to, from, &target, text.data() + text.size(), &source, bytes.data() + bytes.size(),
            nullptr, nullptr, nullptr, nullptr, true, true, &error);
        require(U_SUCCESS(error));
        text.resize(static_cast<std::size_t>(target - text.data()));
        ucnv_close(from);
        ucnv_close(to);
        benchmark::DoNotOptimize(text.data());
    }
}

// Digests

void digestOurs(benchmark::State & state, std::size_t size)
{
    const Vontal::u8string path = fileOf(size);
    for (auto step : state)
    {
        Vontal::u8string digest;
        require(qvdisk::countMD5sum(path, digest) && digest.size() == 32);
    }
}

void digestAlone(benchmark::State & state, std::size_t size)
{
    std::string block(65536, 'x');
    for (auto step : state)
    {
        qvbase::Md5Sum sum;
        for (std::size_t done = 0; done < size; done += block.size())
            sum.add(block);
        std::string digest;
        sum.finish(digest);
        benchmark::DoNotOptimize(digest.data());
    }
}

// Trees

constexpr int filesOfADirectory = 100;

/// A tree of so many files, a hundred to a directory, and ten directories to one above.
void makeTree(const std::string & root, int files)
{
    for (int directory = 0; directory * filesOfADirectory < files; ++directory)
    {
        const fs::path path =
            fs::path(root) / ("directory" + std::to_string(directory / 10)) / std::to_string(directory % 10);
        fs::create_directories(path);
        for (int file = 0; file < filesOfADirectory; ++file)
        {
            std::FILE * const stream =
                std::fopen((path / ("file" + std::to_string(file) + ".txt")).c_str(), "wb");
            std::fputs("some text", stream);
            std::fclose(stream);
        }
    }
}

/// Adds up the sizes of a tree.
class Total : public qvdisk::FileEnumerator
{
public:
    bool onEntry(qvdisk::File & entry) override
    {
        if (entry.isDirectory())
            return entry.getEntries(this);
        bytes += entry.getFileSize();
        return true;
    }

    std::int64_t bytes = 0;
};

void treeOurs(benchmark::State & state, int files)
{
    const std::string root = place().path("tree");
    for (auto step : state)
    {
        state.PauseTiming();
        makeTree(root, files);
        state.ResumeTiming();
        Total total;
        qvdisk::File tree{Vontal::u8string(root)};
        require(tree.getEntries(&total) && total.bytes == files * std::int64_t{9});
        require(tree.remove(true));
    }
}

void treeStandard(benchmark::State & state, int files)
{
    const std::string root = place().path("tree");
    for (auto step : state)
    {
        state.PauseTiming();
        makeTree(root, files);
        state.ResumeTiming();
        std::uintmax_t bytes = 0;
        for (const fs::directory_entry & entry : fs::recursive_directory_iterator(root))
        {
            if (!entry.is_directory())
                bytes += entry.file_size();
        }
        require(bytes == static_cast<std::uintmax_t>(files) * 9);
        fs::remove_all(root);
    }
}

// A directory of many names

class Count : public qvdisk::FileEnumerator
{
public:
    bool onEntry(qvdisk::File &) override
    {
        ++count;
        return true;
    }

    int count = 0;
};

/// The directory stays for all that list it.
const std::string & directoryOf(int names)
{
    static std::map<int, std::string> made;
    std::string & path = made[names];
    if (!path.empty())
        return path;
    path = place().path("names" + std::to_string(names));
    fs::create_directory(path);
    for (int i = 0; i < names; ++i)
        std::fclose(std::fopen((path + "/name" + std::to_string(i)).c_str(), "wb"));
    return path;
}

void listOurs(benchmark::State & state, int names)
{
    qvdisk::File directory{Vontal::u8string(directoryOf(names))};
    for (auto step : state)
    {
        Count count;
        require(directory.getEntries(&count) && count.count == names);
    }
}

void listStandard(benchmark::State & state, int names)
{
    const std::string & path = directoryOf(names);
    for (auto step : state)
    {
        int count = 0;
        for (const fs::directory_entry & entry : fs::directory_iterator(path))
            count += entry.path().empty() ? 0 : 1;
        require(count == names);
    }
}

template <class Size>
void add(const std::string & name, void (*run)(benchmark::State &, Size), Size size)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State & state) { run(state, size); })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

const bool isRegistered = []
{
    add("disk_copy/1GiB/ours", copyOurs, 1024 * mebibyte);
    add("disk_copy/1GiB/loop", copyLoop, 1024 * mebibyte);
    add("disk_copy/1GiB/std", copyStandard, 1024 * mebibyte);
    add("disk_read/256MiB/ours", readOurs, 256 * mebibyte);
    add("disk_read/256MiB/fread", readFread, 256 * mebibyte);
    add("disk_text/utf16_64MiB/ours", textOurs, 64 * mebibyte);
    add("disk_text/utf16_64MiB/icu", textIcu, 64 * mebibyte);
    for (const std::size_t size : {1, 4, 16})
    {
        add("disk_text/growth:" + std::to_string(size) + "MiB/ours", textOurs, size * mebibyte);
        add("disk_read/growth:" + std::to_string(size) + "MiB/ours", readOurs, size * mebibyte);
        add("disk_copy/growth:" + std::to_string(size) + "MiB/ours", copyOurs, size * mebibyte);
    }
    add("disk_md5/1GiB/ours", digestOurs, 1024 * mebibyte);
    add("disk_md5/1GiB/digest", digestAlone, 1024 * mebibyte);
    add("disk_tree/100k/ours", treeOurs, 100'000);
    add("disk_tree/100k/std", treeStandard, 100'000);
    add("disk_tree/growth:10k/ours", treeOurs, 10'000);
    add("disk_list/100k/ours", listOurs, 100'000);
    add("disk_list/100k/std", listStandard, 100'000);
    add("disk_list/growth:10k/ours", listOurs, 10'000);
    return true;
}();

} // namespace
