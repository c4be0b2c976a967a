// What a program tells the report of itself: it goes into the results as their context.
#pragma once

#include <benchmark/benchmark.h>
#include <cstddef>
#include <fstream>
#include <initializer_list>
#include <string>
#include <utility>

namespace bench
{

/// A peer by its name in the names of benchmarks, and what it is, with its version where that can be asked.
using Peer = std::pair<const char *, std::string>;

inline std::string processorModel()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
    {
        const std::size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos)
            return line.substr(colon + 2);
    }
    return "unknown";
}

/// To be called once in each program, before its main function; the report refuses a program that does not.
///
/// @param title what the subsystem is called.
/// @param workloads one sentence on what is measured.
inline bool describe(const char * title, const char * workloads, std::initializer_list<Peer> peers)
{
    benchmark::AddCustomContext("title", title);
    benchmark::AddCustomContext("workloads", workloads);
    benchmark::AddCustomContext("processor", processorModel());
    benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
    for (const auto & [name, what] : peers)
        benchmark::AddCustomContext(std::string("peer:") + name, what);
    return true;
}

inline std::string version(int major, int minor, int patch)
{
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

inline const std::string standardLibrary = "libstdc++ " + std::to_string(_GLIBCXX_RELEASE);

} // namespace bench
