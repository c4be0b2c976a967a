// The MD5 digest, beside that of libcrypto.

#include "VontalBase/core/Md5Sum.h"

#include "about.h"

#include <benchmark/benchmark.h>
#include <map>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

[[maybe_unused]] const bool isDescribed = bench::describe("Digests", "The MD5 digest of bytes in memory.",
    {{"libcrypto", std::string("OpenSSL ") + OpenSSL_version(OPENSSL_VERSION_STRING)}});

const std::vector<unsigned char> & bytesOf(std::size_t size)
{
    static std::map<std::size_t, std::vector<unsigned char>> kept;
    std::vector<unsigned char> & bytes = kept[size];
    if (bytes.empty())
    {
        std::mt19937_64 random(20240229);
        while (bytes.size() < size)
            bytes.push_back(static_cast<unsigned char>(random()));
    }
    return bytes;
}

void digestOurs(benchmark::State & state, std::size_t size)
{
    std::vector<unsigned char> bytes = bytesOf(size);
    std::string out;
    for (auto step : state)
    {
        qvbase::Md5Sum sum;
        sum.add(bytes.data(), static_cast<unsigned int>(bytes.size()));
        out.clear();
        sum.finish(out);
        benchmark::DoNotOptimize(out.data());
    }
}

void digestLibcrypto(benchmark::State & state, std::size_t size)
{
    const std::vector<unsigned char> & bytes = bytesOf(size);
    unsigned char digest[EVP_MAX_MD_SIZE];
    for (auto step : state)
    {
        unsigned int length = 0;
        if (EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_md5(), nullptr) != 1)
            state.SkipWithError("libcrypto refuses MD5");
        benchmark::DoNotOptimize(digest);
    }
}

using Workload = void (*)(benchmark::State &, std::size_t);

void add(const std::string & name, std::size_t size, Workload run)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State & state) { run(state, size); })
        ->MinTime(0.2);
}

const bool isRegistered = []
{
    for (const auto & [label, size] :
        {std::pair{"1KiB", std::size_t{1} << 10}, {"64MiB", std::size_t{1} << 26}})
    {
        add(std::string("md5/") + label + "/ours", size, digestOurs);
        add(std::string("md5/") + label + "/libcrypto", size, digestLibcrypto);
    }
    for (const auto & [label, power] :
        {std::pair{"1KiB", 10}, {"32KiB", 15}, {"1MiB", 20}, {"32MiB", 25}, {"256MiB", 28}})
        add(std::string("md5/growth:") + label + "/ours", std::size_t{1} << power, digestOurs);
    return true;
}();

} // namespace
