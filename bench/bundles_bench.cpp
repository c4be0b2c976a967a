// Loading bundle files, beside reading them line by line into a standard map; and looking up texts, beside a
// standard map behind a lock.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

namespace fs = std::filesystem;

[[maybe_unused]] const bool isDescribed =
    bench::describe("Translated texts", "Loading files of texts and looking texts up by their keys.",
        {{"getline_map", "std::getline into a std::map of " + bench::standardLibrary},
            {"locked_map", "std::map behind a std::recursive_mutex, of " + bench::standardLibrary}});

using Map = std::map<std::string, std::string>;

enum class Order
{
    Sorted,
    Mixed
};

std::string keyOf(std::size_t number)
{
    const std::string digits = std::to_string(number);
    return "application.window." + std::string(7 - digits.size(), '0') + digits;
}

/// A directory with a bundle of so many texts, kept to the end of the program.
class Files
{
public:
    Files() : m_path(fs::temp_directory_path() / "vontalbase-bundles-bench")
    {
        fs::remove_all(m_path);
        fs::create_directories(m_path);
    }
    Files(const Files &) = delete;
    Files & operator=(const Files &) = delete;
    ~Files()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    /// @return the name of the bundle.
    std::string make(std::size_t texts, Order order)
    {
        std::string name = (order == Order::Sorted ? "sorted" : "mixed") + std::to_string(texts);
        if (fs::exists(m_path / (name + ".properties")))
            return name;
        std::vector<std::size_t> numbers;
        for (std::size_t i = 0; i < texts; ++i)
            numbers.push_back(i);
        if (order == Order::Mixed)
            std::shuffle(numbers.begin(), numbers.end(), std::mt19937(20240229));
        std::ofstream file(m_path / (name + ".properties"), std::ios::binary);
        for (const std::size_t number : numbers)
            file << keyOf(number) << "=The text that stands in the window " << number << '\n';
        return name;
    }

    [[nodiscard]] std::string root() const
    {
        return m_path.string();
    }

    [[nodiscard]] std::string path(const std::string & name) const
    {
        return (m_path / (name + ".properties")).string();
    }

private:
    fs::path m_path;
};

Files & files()
{
    static Files made;
    return made;
}

qvbase::Reference<qvutils::ResourceManager> loadOurs(const std::string & name)
{
    qvbase::Reference<qvutils::ResourceManager> manager;
    qvutils::createResourceManager(files().root(), manager);
    // There is no file for any other language, so that the first one that is found is this one.
    manager->setLanguage("");
    manager->setDefaultBundle(name);
    return manager;
}

Map loadPeer(const std::string & name)
{
    Map texts;
    std::ifstream file(files().path(name));
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t equals = line.find('=');
        texts.emplace(line.substr(0, equals), line.substr(equals + 1));
    }
    return texts;
}

void ours(benchmark::State & state, std::size_t texts, Order order)
{
    const std::string name = files().make(texts, order);
    for (auto step : state)
        benchmark::DoNotOptimize(loadOurs(name).get());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts));
}

void peer(benchmark::State & state, std::size_t texts, Order order)
{
    const std::string name = files().make(texts, order);
    for (auto step : state)
        benchmark::DoNotOptimize(loadPeer(name).size());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts));
}

constexpr std::size_t manyTexts = 200'000;

/// Keys in an order that helps nobody.
const std::vector<Vontal::u8string> & wantedKeys()
{
    static const std::vector<Vontal::u8string> keys = []
    {
        std::vector<Vontal::u8string> made;
        std::mt19937 random(7);
        for (int i = 0; i < 4096; ++i)
            made.emplace_back(keyOf(random() % manyTexts));
        return made;
    }();
    return keys;
}

template <class Lookup>
void lookUp(benchmark::State & state, const Lookup & lookup)
{
    const std::vector<Vontal::u8string> & keys = wantedKeys();
    std::size_t at = 0;
    for (auto step : state)
        benchmark::DoNotOptimize(lookup(keys[at++ % keys.size()]).size());
    state.SetItemsProcessed(state.iterations());
}

void lookUpOurs(benchmark::State & state)
{
    const auto manager = loadOurs(files().make(manyTexts, Order::Sorted));
    lookUp(
        state, [&](const Vontal::u8string & key) -> const std::string & { return manager->getString(key); });
}

void lookUpOursNamed(benchmark::State & state)
{
    const Vontal::u8string name = files().make(manyTexts, Order::Sorted);
    const auto manager = loadOurs(name);
    lookUp(state,
        [&](const Vontal::u8string & key) -> const std::string & { return manager->getString(name, key); });
}

void lookUpPeer(benchmark::State & state)
{
    const Map texts = loadPeer(files().make(manyTexts, Order::Sorted));
    std::recursive_mutex mutex;
    lookUp(state,
        [&](const std::string & key) -> const std::string &
        {
            const std::lock_guard lock(mutex);
            const auto found = texts.find(key);
            return found == texts.end() ? key : found->second;
        });
}

void lookUpPeerNamed(benchmark::State & state)
{
    const std::string name = files().make(manyTexts, Order::Sorted);
    std::map<std::string, Map> bundles;
    bundles[name] = loadPeer(name);
    std::recursive_mutex mutex;
    lookUp(state,
        [&](const std::string & key) -> const std::string &
        {
            const std::lock_guard lock(mutex);
            const Map & texts = bundles.find(name)->second;
            const auto found = texts.find(key);
            return found == texts.end() ? key : found->second;
        });
}

void registerLoading(const std::string & document, std::size_t texts, Order order)
{
    benchmark::RegisterBenchmark(("bundle_load/" + document + "/ours").c_str(),
        [=](benchmark::State & state) { ours(state, texts, order); });
    benchmark::RegisterBenchmark(("bundle_load/" + document + "/getline_map").c_str(),
        [=](benchmark::State & state) { peer(state, texts, order); });
}

const bool isRegistered = []
{
    registerLoading("sorted_200k", manyTexts, Order::Sorted);
    registerLoading("mixed_200k", manyTexts, Order::Mixed);
    registerLoading("growth:2k", 2'000, Order::Mixed);
    registerLoading("growth:20k", 20'000, Order::Mixed);
    registerLoading("growth:200k", 200'000, Order::Mixed);
    registerLoading("growth:2000k", 2'000'000, Order::Mixed);
    return true;
}();

BENCHMARK(lookUpOurs)->Name("bundle_lookup/default_200k/ours");
BENCHMARK(lookUpPeer)->Name("bundle_lookup/default_200k/locked_map");
BENCHMARK(lookUpOursNamed)->Name("bundle_lookup/named_200k/ours");
BENCHMARK(lookUpPeerNamed)->Name("bundle_lookup/named_200k/locked_map");

} // namespace
