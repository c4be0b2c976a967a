// UTF-8 to wide text and back, beside ICU and iconv.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <benchmark/benchmark.h>
#include <gnu/libc-version.h>
#include <iconv.h>
#include <map>
#include <random>
#include <unicode/ustring.h>
#include <unicode/uvernum.h>
#include <vector>

namespace
{

[[maybe_unused]] const bool isDescribed =
    bench::describe("Text", "UTF-8 into wide text and back: plain ASCII, and words of several scripts.",
        {{"icu", "ICU " U_ICU_VERSION}, {"iconv", std::string("iconv of glibc ") + gnu_get_libc_version()}});

const std::vector<std::string> asciiWords = {"the", "quick", "brown", "fox", "jumps", "over", "lazy", "dog,",
    "and", "0123456789", "sheep", "look", "on.", "Configuration", "of", "a", "library"};

const std::vector<std::string> mixedWords = {"Größe", "und", "Maß;", "la", "forêt", "où", "l'été",
    "s'achève;", "Żółć", "i", "łódź;", "Широкая", "электрификация", "южных", "губерний", "the", "brown",
    "fox", "東京は日本の首都です。", "北京是中国的首都。", "서울은", "한국의", "수도이다。", "τῶν", "Ἑλλήνων",
    "niño", "øre"};

/// Words in an order without a period, so that no branch predictor learns the text.
std::string textOfWords(const std::vector<std::string> & words, std::size_t size)
{
    std::mt19937 random(20240229);
    std::uniform_int_distribution<std::size_t> index(0, words.size() - 1);
    std::string out;
    out.reserve(size + 64);
    while (out.size() < size)
        out.append(words[index(random)]).append(" ");
    return out;
}

void toWideOurs(benchmark::State & state, const std::string & text)
{
    std::wstring wide;
    for (auto step : state)
    {
        Vontal::c_u8u16(wide, text);
        benchmark::DoNotOptimize(wide.data());
    }
}

void fromWideOurs(benchmark::State & state, const std::string & text)
{
    std::wstring wide;
    Vontal::c_u8u16(wide, text);
    std::string narrow;
    for (auto step : state)
    {
        Vontal::c_u16u8(narrow, wide);
        benchmark::DoNotOptimize(narrow.data());
    }
}

std::u16string toUtf16(const std::string & text)
{
    std::u16string wide(text.size(), u'\0');
    int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(wide.data(), static_cast<int32_t>(wide.size()), &length, text.data(),
        static_cast<int32_t>(text.size()), &error);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

void toWideIcu(benchmark::State & state, const std::string & text)
{
    std::u16string wide(text.size() + 1, u'\0');
    for (auto step : state)
    {
        int32_t length = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8(wide.data(), static_cast<int32_t>(wide.size()), &length, text.data(),
            static_cast<int32_t>(text.size()), &error);
        benchmark::DoNotOptimize(length);
    }
}

void fromWideIcu(benchmark::State & state, const std::string & text)
{
    const std::u16string wide = toUtf16(text);
    std::string narrow(text.size() + 1, '\0');
    for (auto step : state)
    {
        int32_t length = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strToUTF8(narrow.data(), static_cast<int32_t>(narrow.size()), &length, wide.data(),
            static_cast<int32_t>(wide.size()), &error);
        benchmark::DoNotOptimize(length);
    }
}

void convert(
    benchmark::State & state, const char * to, const char * from, std::string source, std::size_t room)
{
    const iconv_t converter = iconv_open(to, from);
    std::vector<char> target(room);
    for (auto step : state)
    {
        char * in = source.data();
        std::size_t inLeft = source.size();
        char * out = target.data();
        std::size_t outLeft = target.size();
        if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0)
            std::abort();
        benchmark::DoNotOptimize(out);
    }
    iconv_close(converter);
}

void toWideIconv(benchmark::State & state, const std::string & text)
{
    convert(state, "UTF-16LE", "UTF-8", text, 2 * text.size() + 16);
}

void fromWideIconv(benchmark::State & state, const std::string & text)
{
    const std::u16string wide = toUtf16(text);
    convert(state, "UTF-8", "UTF-16LE",
        std::string(reinterpret_cast<const char *>(wide.data()), 2 * wide.size()), text.size() + 16);
}

using Workload = void (*)(benchmark::State &, const std::string &);

const std::string & textOf(const std::string & kind, std::size_t size)
{
    static std::map<std::pair<std::string, std::size_t>, std::string> kept;
    std::string & text = kept[{kind, size}];
    if (text.empty())
        text = textOfWords(kind == "ascii" ? asciiWords : mixedWords, size);
    return text;
}

void add(const std::string & name, const std::string & kind, std::size_t size, Workload run)
{
    benchmark::RegisterBenchmark(
        name.c_str(), [=](benchmark::State & state) { run(state, textOf(kind, size)); })
        ->MinTime(size > (std::size_t{1} << 24) ? 0.01 : 0.2);
}

const bool isRegistered = []
{
    const std::map<std::string, std::vector<std::pair<std::string, Workload>>> workloads = {
        {"utf8_to_wide", {{"ours", toWideOurs}, {"icu", toWideIcu}, {"iconv", toWideIconv}}},
        {"wide_to_utf8", {{"ours", fromWideOurs}, {"icu", fromWideIcu}, {"iconv", fromWideIconv}}},
    };
    for (const auto & [workload, implementations] : workloads)
    {
        for (const std::string kind : {"ascii", "mixed"})
        {
            for (const auto & [implementation, run] : implementations)
                add(workload + "/" + kind + "_64KiB/" + implementation, kind, std::size_t{1} << 16, run);
        }
        const std::map<std::string, std::size_t> sizes = {
            {"1KiB", 10}, {"32KiB", 15}, {"1MiB", 20}, {"32MiB", 25}, {"256MiB", 28}};
        for (const std::string size : {"1KiB", "32KiB", "1MiB", "32MiB", "256MiB"})
            add(workload + "/growth:" + size + "/ours", "mixed", std::size_t{1} << sizes.at(size),
                implementations.front().second);
    }
    return true;
}();

} // namespace
