// Child processes, beside a plain loop that starts and awaits them. What children print at once is set beside
// the pauses that the watching of so much is made of: a pipe holds 1 MiB, and is looked at ten times a
// second.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <gnu/libc-version.h>
#include <semaphore>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

[[maybe_unused]] const bool isDescribed = bench::describe("Child processes",
    "Starting children and awaiting them, and taking in what eight of them print at once.",
    {{"posix_spawn", std::string("posix_spawn and waitpid of glibc ") + gnu_get_libc_version()},
        {"watch_cycles", "the pauses alone that the watching of so much output is made of"}});

constexpr char shortProgram[] = "/bin/true";
constexpr int printingChildren = 8;
constexpr std::uint64_t printedMebibytes = 64;
constexpr std::chrono::milliseconds watchCycle{100};

class Counting : public qvbase::ProcessMonitor
{
public:
    Counting() = default;
    Counting(const Counting &) = delete;
    Counting & operator=(const Counting &) = delete;
    virtual ~Counting() = default;

    void onOutput(const char *, unsigned int size) override
    {
        bytes += size;
    }
    void onError(const char *, unsigned int) override
    {
    }
    void onFinished(unsigned int) override
    {
        finished.release();
    }

    std::atomic<std::uint64_t> bytes{0};
    std::counting_semaphore<> finished{0};
};

using CountingReference = qvbase::Reference<qvbase::ReferencedImplMT<Counting>>;

void startsOurs(benchmark::State & state)
{
    const CountingReference monitor(new qvbase::ReferencedImplMT<Counting>);
    const Vontal::u8string program(shortProgram);
    const Vontal::u8string arguments;
    for (auto step : state)
    {
        qvbase::ProcessRunner runner;
        if (!runner.run(program, arguments, monitor, nullptr))
            return state.SkipWithError("no child");
        monitor->finished.acquire();
    }
}

void startsPlain(benchmark::State & state)
{
    std::string program(shortProgram);
    char * arguments[] = {program.data(), nullptr};
    for (auto step : state)
    {
        pid_t child = 0;
        if (posix_spawn(&child, shortProgram, nullptr, nullptr, arguments, environ) != 0)
            return state.SkipWithError("no child");
        waitpid(child, nullptr, 0);
    }
}

void printsOurs(benchmark::State & state)
{
    const Vontal::u8string arguments("-c " + std::to_string(printedMebibytes << 20) + " /dev/zero");
    for (auto step : state)
    {
        const CountingReference monitor(new qvbase::ReferencedImplMT<Counting>);
        qvbase::ProcessRunner runner;
        for (int i = 0; i < printingChildren; ++i)
        {
            if (!runner.run("head", arguments, monitor, nullptr))
                return state.SkipWithError("no child");
        }
        for (int i = 0; i < printingChildren; ++i)
            monitor->finished.acquire();
        if (monitor->bytes != printingChildren * (printedMebibytes << 20))
            return state.SkipWithError("not all of it has come");
    }
}

/// The least time for it: a full pipe in each cycle, and the last one with the end of the child.
void printsBound(benchmark::State & state)
{
    for (auto step : state)
    {
        for (std::uint64_t mebibyte = 1; mebibyte < printedMebibytes; ++mebibyte)
            std::this_thread::sleep_for(watchCycle);
    }
}

BENCHMARK(startsOurs)->Name("process_start/true/ours")->UseRealTime();
BENCHMARK(startsPlain)->Name("process_start/true/posix_spawn")->UseRealTime();
BENCHMARK(printsOurs)->Name("process_output/8x64MiB/ours")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(printsBound)
    ->Name("process_output/8x64MiB/watch_cycles")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
