/// The main function of a fuzz target in an ordinary build: runs the target once on every file of the
/// folders named as arguments.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size);

namespace
{

std::vector<std::uint8_t> readFile(const std::filesystem::path & path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::filesystem::filesystem_error("cannot read", path, std::error_code());
    std::vector<std::uint8_t> bytes;
    for (std::istreambuf_iterator<char> at(file), end; at != end; ++at)
        bytes.push_back(static_cast<std::uint8_t>(*at));
    return bytes;
}

} // namespace

int main(int argc, char ** argv)
{
    int count = 0;
    try
    {
        for (int i = 1; i < argc; ++i)
        {
            for (const auto & entry : std::filesystem::directory_iterator(argv[i]))
            {
                // Named first, so that the output of a crash tells which one it was.
                std::printf("%s\n", entry.path().string().c_str());
                std::fflush(stdout);
                const std::vector<std::uint8_t> bytes = readFile(entry.path());
                LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
                ++count;
            }
        }
    }
    catch (const std::exception & error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    std::printf("%d seeds replayed\n", count);
    return count == 0 ? 1 : 0;
}
