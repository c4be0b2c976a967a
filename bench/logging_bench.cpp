// Lines that are in the file when the call returns, beside a daily sink that flushes at every level; and
// lines that are not wanted, beside one locked increment.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <spdlog/logger.h>
#include <spdlog/sinks/daily_file_sink.h>
#include <spdlog/version.h>
#include <string>

namespace
{

namespace fs = std::filesystem;

[[maybe_unused]] const bool isDescribed = bench::describe("Logs",
    "Lines that are in the file when the call returns, from one and from 16 threads, and lines below the "
    "level.",
    {{"spdlog", "a daily file of spdlog " +
                    bench::version(SPDLOG_VER_MAJOR, SPDLOG_VER_MINOR, SPDLOG_VER_PATCH) +
                    ", flushed at every line"},
        {"locked_increment", "our mutex round the increment of a number"}});

constexpr char message[] = "The file could not be opened and is left out";

/// A directory for the files of one run.
class Place
{
public:
    Place() : m_path(fs::temp_directory_path() / "vontalbase-logging-bench")
    {
        fs::remove_all(m_path);
        fs::create_directories(m_path);
    }
    Place(const Place &) = delete;
    Place & operator=(const Place &) = delete;
    ~Place()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    [[nodiscard]] std::string file(const char * name) const
    {
        return (m_path / name).string();
    }

private:
    fs::path m_path;
};

struct Ours
{
    Place place;
    qvutils::DailyLogger logger{1024, Vontal::u8string(place.file("log")), Vontal::u8string(".log")};
    qvutils::LogFormater formater{&logger, 1024, true};

    void write()
    {
        formater.writeMessage(5, message, "src/disk.cpp", 310);
    }
};

/// Its pattern gives lines such as ours, the number of a line apart.
struct Peer
{
    Peer() : logger("bench", std::make_shared<spdlog::sinks::daily_file_sink_mt>(place.file("log"), 0, 0))
    {
        logger.set_pattern("%H:%M:%S thrId=%t:%@: %v");
        logger.set_level(spdlog::level::trace);
        logger.flush_on(spdlog::level::trace);
    }

    void write()
    {
        logger.log(spdlog::source_loc{"src/disk.cpp", 310, "write"}, spdlog::level::info, message);
    }

    Place place;
    spdlog::logger logger;
};

template <class Log>
void writeLines(benchmark::State & state)
{
    static std::unique_ptr<Log> log;
    if (state.thread_index() == 0)
        log = std::make_unique<Log>();
    for (auto step : state)
        log->write();
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0)
        log.reset();
}

void filteredLine(benchmark::State & state)
{
    qvutils::DailyLogger logger;
    qvutils::LogFormater formater(&logger, 4'000'000'000U, true);
    qvutils::LogFormaterInterface * address = &formater;
    for (auto step : state)
    {
        benchmark::DoNotOptimize(address);
        address->writeMessage(2000, message, "src/disk.cpp", 310);
    }
}

void lockedIncrement(benchmark::State & state)
{
    qvbase::ThreadMutex mutex;
    qvbase::ThreadMutex * address = &mutex;
    std::uint32_t count = 0;
    for (auto step : state)
    {
        benchmark::DoNotOptimize(address);
        address->acquire();
        ++count;
        address->release();
        benchmark::DoNotOptimize(count);
    }
}

BENCHMARK(writeLines<Ours>)->Name("log/line/ours")->UseRealTime();
BENCHMARK(writeLines<Peer>)->Name("log/line/spdlog")->UseRealTime();
BENCHMARK(writeLines<Ours>)->Name("log_16_threads/line/ours")->Threads(16)->UseRealTime();
BENCHMARK(writeLines<Peer>)->Name("log_16_threads/line/spdlog")->Threads(16)->UseRealTime();
BENCHMARK(filteredLine)->Name("log_filtered/line/ours");
BENCHMARK(lockedIncrement)->Name("log_filtered/line/locked_increment");

} // namespace
