// Writing and reading zip archives, beside the bare calls of zlib over the same bytes and beside other
// programs: bsdtar and Python's zipfile, with the same level of compression. And many small items, listed and
// found.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>
#include <zlib.h>

namespace
{

namespace fs = std::filesystem;

std::string firstLineOf(const char * command)
{
    std::string line;
    if (std::FILE * const pipe = popen(command, "r"))
    {
        for (int c = std::fgetc(pipe); c != EOF && c != '\n'; c = std::fgetc(pipe))
            line += static_cast<char>(c);
        pclose(pipe);
    }
    return line;
}

[[maybe_unused]] const bool isDescribed = bench::describe("Zip archives",
    "Archives written and read, with large and with many small files; items listed and found.",
    {{"zlib", std::string("zlib ") + zlibVersion() + ", its bare calls, without an archive"},
        {"bsdtar", firstLineOf("bsdtar --version")},
        {"python", "zipfile of " + firstLineOf("python3 --version")}});

constexpr std::uint64_t mixedBytes = 500'000'000;
constexpr int level = 8;

struct SourceFile
{
    fs::path path;
    std::string name;
    std::uint64_t size;
};

using Sources = std::vector<SourceFile>;

/// A folder of the benchmark, which lives to the end of the program.
class Work
{
public:
    Work() : m_path(fs::temp_directory_path() / "vontalbase-zip-bench")
    {
        fs::remove_all(m_path);
        fs::create_directories(m_path);
    }
    Work(const Work &) = delete;
    Work & operator=(const Work &) = delete;
    ~Work()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    [[nodiscard]] fs::path operator/(const std::string & name) const
    {
        return m_path / name;
    }

private:
    fs::path m_path;
};

const Work & work()
{
    static const Work made;
    return made;
}

void require(bool isTrue, const char * what)
{
    if (!isTrue)
        throw std::runtime_error(what);
}

void run(const std::string & command)
{
    require(std::system((command + " >/dev/null 2>&1").c_str()) == 0, command.c_str());
}

Sources filesBelow(const fs::path & root)
{
    Sources sources;
    for (const auto & entry : fs::recursive_directory_iterator(root))
    {
        if (entry.is_regular_file())
            sources.push_back(
                {entry.path(), entry.path().lexically_relative(root).string(), entry.file_size()});
    }
    std::sort(sources.begin(), sources.end(),
        [](const SourceFile & a, const SourceFile & b) { return a.name < b.name; });
    return sources;
}

bool isPlain(const fs::path & path)
{
    const std::string text = path.string();
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// Copies of what stands on the machine: programs, libraries, headers, texts, pictures.
fs::path mixedFiles()
{
    const fs::path root = work() / "mixed";
    if (fs::exists(root))
        return root;
    std::uint64_t bytes = 0;
    for (const char * const folder : {"/usr/include", "/usr/share/doc", "/usr/share/perl", "/usr/share/mime",
             "/usr/bin", "/usr/lib/gcc", "/usr/lib/x86_64-linux-gnu"})
    {
        std::error_code ignored;
        for (const auto & entry : fs::recursive_directory_iterator(folder, ignored))
        {
            if (bytes >= mixedBytes || entry.is_symlink() || !entry.is_regular_file() ||
                !isPlain(entry.path()))
                continue;
            const fs::path target = root / entry.path().relative_path();
            fs::create_directories(target.parent_path());
            fs::copy_file(entry.path(), target);
            bytes += entry.file_size();
        }
    }
    return root;
}

fs::path smallFiles(int count)
{
    const fs::path root = work() / ("small" + std::to_string(count));
    if (fs::exists(root))
        return root;
    for (int i = 0; i < count; ++i)
    {
        const fs::path folder = root / ("d" + std::to_string(i / 256));
        fs::create_directories(folder);
        std::ofstream file(folder / ("file" + std::to_string(i) + ".txt"));
        for (int line = 0; line < i % 20 + 1; ++line)
            file << "line " << line << " of file " << i << "\n";
    }
    return root;
}

std::vector<unsigned char> bytesOf(const fs::path & path)
{
    std::vector<unsigned char> bytes(fs::file_size(path));
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

// ---------------------------------------------------------------------------------------------------
// Writing

void writeOurs(const Sources & sources, const fs::path & archive)
{
    qvzip::ZipWriterPtr writer;
    require(writer.createZipFile(archive.string()), "create");
    for (const SourceFile & source : sources)
        require(writer.addItemFromFile(source.name, source.path.string()), source.name.c_str());
}

/// No archive: the bytes are read and deflated, and what comes is thrown away.
void writeZlib(const Sources & sources)
{
    z_stream stream{};
    require(
        deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) == Z_OK, "deflateInit2");
    std::array<unsigned char, 65536> out;
    for (const SourceFile & source : sources)
    {
        std::vector<unsigned char> bytes = bytesOf(source.path);
        deflateReset(&stream);
        stream.next_in = bytes.data();
        stream.avail_in = static_cast<uInt>(bytes.size());
        int result = Z_OK;
        while (result == Z_OK)
        {
            stream.next_out = out.data();
            stream.avail_out = static_cast<uInt>(out.size());
            result = deflate(&stream, Z_FINISH);
            benchmark::DoNotOptimize(out.data());
        }
        require(result == Z_STREAM_END, "deflate");
    }
    deflateEnd(&stream);
}

void writeBsdtar(const fs::path & root, const fs::path & archive)
{
    run("bsdtar --format zip --options zip:compression-level=" + std::to_string(level) + " -cf " +
        archive.string() + " -C " + root.string() + " .");
}

void writePython(const fs::path & root, const fs::path & archive)
{
    const char * const script = R"(
import os, sys, zipfile
root, archive, level = sys.argv[1], sys.argv[2], int(sys.argv[3])
with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=level) as z:
    for folder, folders, names in os.walk(root):
        for name in names:
            path = os.path.join(folder, name)
            z.write(path, os.path.relpath(path, root))
)";
    std::ofstream(work() / "write.py") << script;
    run("python3 " + (work() / "write.py").string() + " " + root.string() + " " + archive.string() + " " +
        std::to_string(level));
}

// ---------------------------------------------------------------------------------------------------
// Reading

/// An archive that we have written, once.
fs::path archiveOf(const fs::path & root)
{
    const fs::path archive = work() / (root.filename().string() + ".zip");
    if (!fs::exists(archive))
        writeOurs(filesBelow(root), archive);
    return archive;
}

void readOurs(const fs::path & archive, const fs::path & target)
{
    VontalException error;
    require(qvzip::unzip(archive.string(), target.string(), error), error.format().c_str());
}

void readOursChecked(const fs::path & archive, const fs::path & target)
{
    VontalException error;
    require(qvzip::unzipChecked(archive.string(), target.string(), error), error.format().c_str());
}

/// An item as zlib alone needs it.
struct PackedItem
{
    std::string name;
    std::vector<unsigned char> data;
};

/// The files of a tree, deflated.
std::vector<PackedItem> packedItems(const fs::path & root)
{
    std::vector<PackedItem> items;
    for (const SourceFile & source : filesBelow(root))
    {
        std::vector<unsigned char> bytes = bytesOf(source.path);
        std::vector<unsigned char> packed(compressBound(static_cast<uLong>(bytes.size())) + 64);
        z_stream stream{};
        require(deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) == Z_OK,
            "deflateInit2");
        stream.next_in = bytes.data();
        stream.avail_in = static_cast<uInt>(bytes.size());
        stream.next_out = packed.data();
        stream.avail_out = static_cast<uInt>(packed.size());
        require(deflate(&stream, Z_FINISH) == Z_STREAM_END, "deflate");
        packed.resize(stream.total_out);
        deflateEnd(&stream);
        items.push_back({source.name, std::move(packed)});
    }
    return items;
}

const std::vector<PackedItem> & mixedItems()
{
    static const std::vector<PackedItem> items = packedItems(mixedFiles());
    return items;
}

/// Inflates from memory, sums, and writes files; their folders are made on the way.
void readZlib(const std::vector<PackedItem> & items, const fs::path & target)
{
    z_stream stream{};
    require(inflateInit2(&stream, -MAX_WBITS) == Z_OK, "inflateInit2");
    std::array<unsigned char, 65536> out;
    fs::path folder;
    for (const PackedItem & item : items)
    {
        const fs::path path = target / item.name;
        if (path.parent_path() != folder)
            fs::create_directories(folder = path.parent_path());
        std::FILE * const file = std::fopen(path.c_str(), "wb");
        require(file != nullptr, "fopen");
        std::setvbuf(file, nullptr, _IONBF, 0);
        inflateReset(&stream);
        stream.next_in = const_cast<unsigned char *>(item.data.data());
        stream.avail_in = static_cast<uInt>(item.data.size());
        uLong crc = 0;
        int result = Z_OK;
        while (result == Z_OK)
        {
            stream.next_out = out.data();
            stream.avail_out = static_cast<uInt>(out.size());
            result = inflate(&stream, Z_SYNC_FLUSH);
            const std::size_t count = out.size() - stream.avail_out;
            crc = crc32(crc, out.data(), static_cast<uInt>(count));
            std::fwrite(out.data(), 1, count, file);
        }
        benchmark::DoNotOptimize(crc);
        require(result == Z_STREAM_END, "inflate");
        std::fclose(file);
    }
    inflateEnd(&stream);
}

void readBsdtar(const fs::path & archive, const fs::path & target)
{
    run("bsdtar -xf " + archive.string() + " -C " + target.string());
}

void readPython(const fs::path & archive, const fs::path & target)
{
    run("python3 -m zipfile -e " + archive.string() + " " + target.string());
}

// ---------------------------------------------------------------------------------------------------
// Many items

int countItems(qvzip::ZipPtr & archive)
{
    ZIPENTRY entry{};
    require(GetZipItemA(archive, -1, &entry) == 0, "count");
    return entry.index;
}

void list(const fs::path & path)
{
    qvzip::ZipPtr archive;
    require(archive.openZipFile(path.string()), "open");
    const int count = countItems(archive);
    ZIPENTRY entry{};
    for (int i = 0; i < count; ++i)
        require(GetZipItemA(archive, i, &entry) == 0, "item");
}

void findAll(const fs::path & path, const std::vector<std::wstring> & names)
{
    qvzip::ZipPtr archive;
    require(archive.openZipFile(path.string()), "open");
    int index = -1;
    for (const std::wstring & name : names)
        require(FindZipItemA(archive, name.c_str(), true, &index, nullptr) == 0, "find");
}

// ---------------------------------------------------------------------------------------------------

/// Measures an action for each iteration; what stands around it is not measured.
void measure(
    benchmark::State & state, const std::function<void()> & before, const std::function<void()> & action)
{
    for (auto step : state)
    {
        before();
        const auto start = std::chrono::steady_clock::now();
        action();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}

void add(const std::string & name, std::function<void(benchmark::State &)> body)
{
    benchmark::RegisterBenchmark(name.c_str(), std::move(body))->UseManualTime()->Iterations(1);
}

void nothing()
{
}

void registerWriting(const std::string & name, fs::path (*files)())
{
    const auto out = []
    {
        return work() / "out.zip";
    };
    add(name + "/ours",
        [=](benchmark::State & state)
        {
            const Sources sources = filesBelow(files());
            measure(state, nothing, [&] { writeOurs(sources, out()); });
        });
    add(name + "/zlib",
        [=](benchmark::State & state)
        {
            const Sources sources = filesBelow(files());
            measure(state, nothing, [&] { writeZlib(sources); });
        });
    add(name + "/bsdtar",
        [=](benchmark::State & state) { measure(state, nothing, [&] { writeBsdtar(files(), out()); }); });
    add(name + "/python",
        [=](benchmark::State & state) { measure(state, nothing, [&] { writePython(files(), out()); }); });
}

using Reading = void (*)(const fs::path &, const fs::path &);

void addReading(const std::string & name, fs::path (*files)(), Reading reading)
{
    add(name,
        [=](benchmark::State & state)
        {
            const fs::path archive = archiveOf(files());
            mixedItems(); // what zlib reads is not made while time is measured
            const fs::path target = work() / "out";
            const auto empty = [&]
            {
                fs::remove_all(target);
                fs::create_directories(target);
            };
            measure(state, empty, [&] { reading(archive, target); });
            fs::remove_all(target);
        });
}

void registerReading(const std::string & name, fs::path (*files)(), Reading ours)
{
    addReading(name + "/ours", files, ours);
    addReading(name + "/bsdtar", files, readBsdtar);
    addReading(name + "/python", files, readPython);
}

fs::path manySmallFiles()
{
    return smallFiles(65'000);
}

void readMixedZlib(const fs::path &, const fs::path & target)
{
    readZlib(mixedItems(), target);
}

void registerGrowth(int count)
{
    const std::string size = "growth:" + std::to_string(count);
    add("zip_list/" + size + "/ours",
        [=](benchmark::State & state)
        {
            const fs::path archive = archiveOf(smallFiles(count));
            measure(state, nothing, [&] { list(archive); });
        });
    add("zip_find/" + size + "/ours",
        [=](benchmark::State & state)
        {
            const fs::path root = smallFiles(count);
            const fs::path archive = archiveOf(root);
            std::vector<std::wstring> names;
            for (const SourceFile & source : filesBelow(root))
                names.emplace_back(source.name.begin(), source.name.end());
            std::reverse(names.begin(), names.end());
            measure(state, nothing, [&] { findAll(archive, names); });
        });
}

const bool isRegistered = []
{
    registerWriting("zip_write/mixed_500MB", mixedFiles);
    registerReading("zip_read/mixed_500MB", mixedFiles, readOurs);
    addReading("zip_read/mixed_500MB/zlib", mixedFiles, readMixedZlib);
    registerReading("zip_read_checked/mixed_500MB", mixedFiles, readOursChecked);
    registerWriting("zip_write/small_65k", manySmallFiles);
    registerReading("zip_read/small_65k", manySmallFiles, readOurs);
    registerReading("zip_read_checked/small_65k", manySmallFiles, readOursChecked);
    for (const int count : {1'000, 8'000, 64'000})
        registerGrowth(count);
    return true;
}();

} // namespace
