// The peak memory of a tree while it is parsed. What the table shows as time is bytes.

#include "VontalBase/VontalBase.h"

#include "about.h"
#include "documents.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <nlohmann/json.hpp>

namespace
{

std::size_t liveBytes = 0;
std::size_t peakBytes = 0;

void * allocate(std::size_t size)
{
    void * const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    liveBytes += malloc_usable_size(memory) + sizeof(std::size_t);
    peakBytes = std::max(peakBytes, liveBytes);
    return memory;
}

void deallocate(void * memory) noexcept
{
    if (memory == nullptr)
        return;
    liveBytes -= malloc_usable_size(memory) + sizeof(std::size_t);
    std::free(memory);
}

} // namespace

// NOLINTBEGIN: the one place that replaces them.
void * operator new(std::size_t size)
{
    return allocate(size);
}
void * operator new[](std::size_t size)
{
    return allocate(size);
}
void operator delete(void * memory) noexcept
{
    deallocate(memory);
}
void operator delete[](void * memory) noexcept
{
    deallocate(memory);
}
void operator delete(void * memory, std::size_t) noexcept
{
    deallocate(memory);
}
void operator delete[](void * memory, std::size_t) noexcept
{
    deallocate(memory);
}
// NOLINTEND

namespace
{

[[maybe_unused]] const bool isDescribed = bench::describe("Memory of JSON trees",
    "The greatest memory in use while text becomes a tree: the numbers are bytes, not time.",
    {{"nlohmann", "JSON for Modern C++ " + bench::version(NLOHMANN_JSON_VERSION_MAJOR,
                                               NLOHMANN_JSON_VERSION_MINOR, NLOHMANN_JSON_VERSION_PATCH)}});

/// Reports the peak of one run, above what was there before, as so many nanoseconds.
template <class Run>
void measure(benchmark::State & state, Run run)
{
    for (auto step : state)
    {
        const std::size_t before = liveBytes;
        peakBytes = before;
        run();
        state.SetIterationTime(static_cast<double>(peakBytes - before) * 1e-9);
    }
}

void treeOurs(benchmark::State & state, const std::string & text)
{
    const Vontal::u8string copy(text);
    measure(state,
        [&copy]
        {
            qvbase::Reference<qvjson::Item> root;
            VontalException exception;
            if (!qvjson::jsonParse(copy, root, exception))
                std::abort();
        });
}

void treeNlohmann(benchmark::State & state, const std::string & text)
{
    measure(state, [&text] { benchmark::DoNotOptimize(nlohmann::json::parse(text).size()); });
}

/// The least favourable document: one array of integers, for each of which we have a node.
const std::string & integers()
{
    static const std::string text = []
    {
        std::string out = "[0";
        for (int i = 1; i < 1000000; ++i)
            out.append(",").append(std::to_string(i));
        return out + "]";
    }();
    return text;
}

void addPair(const std::string & name, const std::string & text)
{
    const auto add = [&](const char * implementation, void (*run)(benchmark::State &, const std::string &))
    {
        benchmark::RegisterBenchmark(("json_tree_memory/" + name + "/" + implementation).c_str(),
            [run, &text](benchmark::State & state) { run(state, text); })
            ->UseManualTime()
            ->Iterations(1);
    };
    add("ours", treeOurs);
    add("nlohmann", treeNlohmann);
}

const bool isRegistered = []
{
    for (const auto & [name, text] : bench::documents())
        addPair(name, text);
    addPair("integers", integers());
    for (const auto & [name, size] : bench::growthSizes())
    {
        benchmark::RegisterBenchmark(("json_tree_memory/growth:" + name + "/ours").c_str(),
            [size = size](benchmark::State & state) { treeOurs(state, bench::recordsOfSize(size)); })
            ->UseManualTime()
            ->Iterations(1);
    }
    return true;
}();

} // namespace
