// The lock, beside the one that it stands on.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <benchmark/benchmark.h>
#include <mutex>

namespace
{

[[maybe_unused]] const bool isDescribed =
    bench::describe("Locks", "A lock that nobody else wants, taken and given back.",
        {{"recursive_mutex", "std::recursive_mutex of " + bench::standardLibrary}});

void mutexOurs(benchmark::State & state)
{
    qvbase::ThreadMutex mutex;
    qvbase::ThreadMutex * address = &mutex;
    for (auto step : state)
    {
        benchmark::DoNotOptimize(address);
        address->acquire();
        address->release();
    }
}

void mutexStandard(benchmark::State & state)
{
    std::recursive_mutex mutex;
    std::recursive_mutex * address = &mutex;
    for (auto step : state)
    {
        benchmark::DoNotOptimize(address);
        address->lock();
        address->unlock();
    }
}

BENCHMARK(mutexOurs)->Name("mutex/free/ours");
BENCHMARK(mutexStandard)->Name("mutex/free/recursive_mutex");

} // namespace
