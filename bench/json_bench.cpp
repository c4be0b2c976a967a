// JSON text to events, to trees and back to text, beside the peers on the same documents.

#include "VontalBase/VontalBase.h"

#include "about.h"
#include "documents.h"

#include <benchmark/benchmark.h>
#include <boost/json.hpp>
#include <boost/version.hpp>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>
#include <sstream>

namespace
{

[[maybe_unused]] const bool isDescribed = bench::describe("JSON",
    "Text into events and into trees, and trees into text.",
    {{"rapidjson", "RapidJSON " RAPIDJSON_VERSION_STRING},
        {"nlohmann", "JSON for Modern C++ " + bench::version(NLOHMANN_JSON_VERSION_MAJOR,
                                                  NLOHMANN_JSON_VERSION_MINOR, NLOHMANN_JSON_VERSION_PATCH)},
        {"boost", "Boost.JSON " + bench::version(BOOST_VERSION / 100000, BOOST_VERSION / 100 % 1000,
                                      BOOST_VERSION % 100)},
        {"simdjson",
            "simdjson " + bench::version(simdjson::SIMDJSON_VERSION_MAJOR, simdjson::SIMDJSON_VERSION_MINOR,
                              simdjson::SIMDJSON_VERSION_REVISION)}});

using qvbase::Reference;
using qvjson::Item;

void check(bool isGood)
{
    if (!isGood)
        std::abort();
}

/// Counts events and the bytes of texts.
class CountingAcceptor final : public qvjson::JSONParserAcceptor
{
public:
    JSONParserAcceptor * parserBeginObject() override
    {
        ++events;
        return this;
    }
    bool parserEndChildObject(JSONParserAcceptor *) override
    {
        return true;
    }
    bool parserEndObject() override
    {
        return count(0);
    }
    bool parseKey(Vontal::u8string const & key) override
    {
        return count(key.size());
    }
    bool parseInt(char const *, unsigned int) override
    {
        return count(0);
    }
    bool parseString(char const *, unsigned int length) override
    {
        return count(length);
    }
    bool parseBool(bool) override
    {
        return count(0);
    }
    bool parseNull() override
    {
        return count(0);
    }
    bool parserBeginArray() override
    {
        return count(0);
    }
    bool parserEndArray() override
    {
        return count(0);
    }

    std::size_t events = 0;
    std::size_t bytes = 0;

private:
    bool count(std::size_t size) noexcept
    {
        ++events;
        bytes += size;
        return true;
    }
};

/// The same for RapidJSON.
struct CountingHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, CountingHandler>
{
    bool Default()
    {
        ++events;
        return true;
    }
    bool String(const char *, rapidjson::SizeType length, bool)
    {
        ++events;
        bytes += length;
        return true;
    }
    bool Key(const char * text, rapidjson::SizeType length, bool copy)
    {
        return String(text, length, copy);
    }

    std::size_t events = 0;
    std::size_t bytes = 0;
};

void eventsOurs(benchmark::State & state, const std::string & text)
{
    for (auto step : state)
    {
        CountingAcceptor acceptor;
        VontalException exception;
        check(qvjson::jsonParse(text.data(), text.size(), &acceptor, exception));
        benchmark::DoNotOptimize(acceptor.events);
    }
}

void eventsRapidjson(benchmark::State & state, const std::string & text)
{
    for (auto step : state)
    {
        CountingHandler handler;
        rapidjson::Reader reader;
        rapidjson::StringStream stream(text.c_str());
        check(!reader.Parse(stream, handler).IsError());
        benchmark::DoNotOptimize(handler.events);
    }
}

Reference<Item> treeOf(const std::string & text)
{
    Reference<Item> root;
    VontalException exception;
    check(qvjson::jsonParse(Vontal::u8string(text), root, exception));
    return root;
}

// Parse and destruction together.

void treeOurs(benchmark::State & state, const std::string & text)
{
    const Vontal::u8string copy(text);
    for (auto step : state)
    {
        Reference<Item> root;
        VontalException exception;
        check(qvjson::jsonParse(copy, root, exception));
        benchmark::DoNotOptimize(root.get());
    }
}

void treeRapidjson(benchmark::State & state, const std::string & text)
{
    for (auto step : state)
    {
        rapidjson::Document document;
        document.Parse(text.c_str());
        check(!document.HasParseError());
        benchmark::DoNotOptimize(document.GetType());
    }
}

void treeNlohmann(benchmark::State & state, const std::string & text)
{
    for (auto step : state)
    {
        const nlohmann::json root = nlohmann::json::parse(text);
        benchmark::DoNotOptimize(root.size());
    }
}

void treeBoost(benchmark::State & state, const std::string & text)
{
    for (auto step : state)
    {
        const boost::json::value root = boost::json::parse(text);
        benchmark::DoNotOptimize(root.kind());
    }
}

/// A read-only tape rather than a tree, and no copy of it is made for each element: the lower bound.
void treeSimdjson(benchmark::State & state, const std::string & text)
{
    const simdjson::padded_string padded(text);
    for (auto step : state)
    {
        simdjson::dom::parser parser;
        simdjson::dom::element root;
        check(parser.parse(padded).get(root) == simdjson::SUCCESS);
        benchmark::DoNotOptimize(root.type());
    }
}

void printOurs(benchmark::State & state, const std::string & text)
{
    const Reference<Item> root = treeOf(text);
    for (auto step : state)
    {
        std::ostringstream stream;
        Reference<qvjson::JSONPrinter> printer;
        check(qvjson::jsonPrinterFactory(&stream, printer) && printer->printItem(root));
        const std::string out = std::move(stream).str();
        benchmark::DoNotOptimize(out.data());
    }
}

void printRapidjson(benchmark::State & state, const std::string & text)
{
    rapidjson::Document document;
    document.Parse(text.c_str());
    for (auto step : state)
    {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        check(document.Accept(writer));
        benchmark::DoNotOptimize(buffer.GetString());
    }
}

void printNlohmann(benchmark::State & state, const std::string & text)
{
    const nlohmann::json root = nlohmann::json::parse(text);
    for (auto step : state)
    {
        const std::string out = root.dump();
        benchmark::DoNotOptimize(out.data());
    }
}

void printBoost(benchmark::State & state, const std::string & text)
{
    const boost::json::value root = boost::json::parse(text);
    for (auto step : state)
    {
        const std::string out = boost::json::serialize(root);
        benchmark::DoNotOptimize(out.data());
    }
}

using Workload = void (*)(benchmark::State &, const std::string &);

void add(const std::string & name, Workload workload, const std::string & text)
{
    benchmark::RegisterBenchmark(
        name.c_str(), [workload, &text](benchmark::State & state) { workload(state, text); });
}

/// Registers one workload on every document.
void addAll(
    const std::string & workload, const std::vector<std::pair<std::string, Workload>> & implementations)
{
    for (const auto & [name, text] : bench::documents())
    {
        for (const auto & [implementation, run] : implementations)
            add(workload + "/" + name + "/" + implementation, run, text);
    }
    for (const auto & [name, size] : bench::growthSizes())
    {
        const Workload run = implementations.front().second;
        benchmark::RegisterBenchmark((workload + "/growth:" + name + "/ours").c_str(),
            [run, size = size](benchmark::State & state) { run(state, bench::recordsOfSize(size)); })
            ->MinTime(size > (std::size_t{1} << 24) ? 0.01 : 0.2);
    }
}

const bool isRegistered = []
{
    addAll("json_events", {{"ours", eventsOurs}, {"rapidjson", eventsRapidjson}});
    addAll("json_tree", {{"ours", treeOurs}, {"rapidjson", treeRapidjson}, {"nlohmann", treeNlohmann},
                            {"boost", treeBoost}, {"simdjson", treeSimdjson}});
    addAll("json_print", {{"ours", printOurs}, {"rapidjson", printRapidjson}, {"nlohmann", printNlohmann},
                             {"boost", printBoost}});
    return true;
}();

} // namespace
