// The JSON documents that the benchmarks read: those of the folder in VONTALBASE_BENCH_DATA, or else
// made ones of like shapes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace bench
{

/// Makes documents of any size, always the same ones.
class DocumentMaker
{
public:
    /// Many small records with text in several scripts, written compact.
    std::string records(std::size_t leastSize)
    {
        std::string out = "[";
        for (int id = 1; out.size() < leastSize; ++id)
        {
            out += id == 1 ? "" : ",";
            out += "{\"id\":" + std::to_string(id) + ",\"avatar\":\"images/user_" + std::to_string(id) +
                   ".png\"";
            out += ",\"age\":" + number(18, 80) + ",\"admin\":" + (number(0, 1) == "0" ? "false" : "true");
            out += ",\"name\":\"" + name() + "\",\"company\":\"" + word() + "\",\"phone\":\"+" +
                   number(70000000, 79999999);
            out += "\",\"email\":\"" + word() + "@" + word() + ".com\",\"friends\":[";
            const int friends = std::stoi(number(0, 4));
            for (int i = 0; i < friends; ++i)
            {
                out += i == 0 ? "" : ",";
                out += "{\"id\":" + std::to_string(i) + ",\"name\":\"" + name() + "\",\"phone\":\"+" +
                       number(70000000, 79999999) + "\"}";
            }
            out += "],\"field\":\"field value\"}";
        }
        return out + "]";
    }

    /// Objects within objects and arrays of integers, with much white space.
    std::string catalog(std::size_t leastSize)
    {
        std::string out = "{\n    \"performances\": [";
        for (int i = 0; out.size() < leastSize; ++i)
        {
            out += i == 0 ? "\n" : ",\n";
            out += "        {\n            \"eventId\": " + number(100000000, 399999999) +
                   ",\n            \"logo\": null,\n";
            out += "            \"prices\": [\n                {\n                    \"amount\": " +
                   number(1000, 90000);
            out += ",\n                    \"seatCategoryId\": " + number(300000000, 399999999) +
                   "\n                }\n            ],\n";
            out += "            \"areas\": [";
            for (int k = 0; k < 6; ++k)
            {
                out += k == 0 ? "\n" : ",\n";
                out += "                {\n                    \"areaId\": " + number(200000000, 299999999);
                out += ",\n                    \"blockIds\": []\n                }";
            }
            out += "\n            ],\n            \"start\": " + number(1000000, 1999999999) + "\n        }";
        }
        return out + "\n    ]\n}\n";
    }

    /// Service events: nested objects with long ASCII strings.
    std::string events(std::size_t leastSize)
    {
        std::string out = "[";
        for (int i = 0; out.size() < leastSize; ++i)
        {
            const std::string login = word();
            out += i == 0 ? "\n  " : ",\n  ";
            out +=
                "{\n    \"type\": \"PushEvent\",\n    \"created_at\": \"2013-01-10T07:58:" + number(10, 59) +
                "Z\",\n";
            out += "    \"actor\": {\n      \"gravatar_id\": \"" + number(100000000, 999999999) +
                   "24e9af0edb88ff4c\",\n";
            out += "      \"login\": \"" + login +
                   "\",\n      \"avatar_url\": \"https://images.example/avatar/" +
                   number(100000000, 999999999) + "?d=https://a248.example.net%2Fimages%2Fuser-420.png\",\n";
            out += "      \"url\": \"https://api.example/users/" + login +
                   "\",\n      \"id\": " + number(1000, 9999999) + "\n    },\n";
            out += "    \"public\": true,\n    \"payload\": {\n      \"description\": \"" + word() +
                   " says \\\"" + word() +
                   "\\\" and a few plain words more, so that the text has some length\",\n";
            out += "      \"master_branch\": \"master\",\n      \"ref\": null,\n      \"size\": " +
                   number(1, 20) + "\n    }\n  }";
        }
        return out + "\n]\n";
    }

private:
    std::string number(int least, int most)
    {
        return std::to_string(std::uniform_int_distribution<int>(least, most)(m_random));
    }

    std::string word()
    {
        static const char * const syllables[] = {
            "ja", "mon", "ri", "kel", "to", "vu", "san", "der", "il", "qua"};
        std::string out;
        const int count = std::stoi(number(2, 4));
        for (int i = 0; i < count; ++i)
            out += syllables[std::stoul(number(0, 9))];
        return out;
    }

    std::string name()
    {
        static const char * const names[] = {"Леонард Никитин", "Станислав Тарасов", "Jürgen Groß",
            "François Lefèvre", "山田 太郎", "Αλέξανδρος", "Anna Smith", "John Miller", "Вячеслав Захаров",
            "María Núñez"};
        return names[std::stoul(number(0, 9))];
    }

    std::mt19937 m_random{20240229};
};

inline std::map<std::string, std::string> readDocuments(const std::filesystem::path & folder)
{
    std::map<std::string, std::string> documents;
    for (const auto & entry : std::filesystem::directory_iterator(folder))
    {
        if (entry.path().extension() != ".json")
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        documents[entry.path().stem().string()] = std::string(std::istreambuf_iterator<char>(file), {});
    }
    return documents;
}

/// The documents by name.
inline const std::map<std::string, std::string> & documents()
{
    static const std::map<std::string, std::string> all = []
    {
        if (const char * const folder = std::getenv("VONTALBASE_BENCH_DATA"))
            return readDocuments(folder);
        DocumentMaker maker;
        return std::map<std::string, std::string>{{"catalog", maker.catalog(1700000)},
            {"events", maker.events(65000)}, {"records", maker.records(500000)}};
    }();
    return all;
}

/// Sizes by name for the tables of growth.
inline const std::vector<std::pair<std::string, std::size_t>> & growthSizes()
{
    static const std::vector<std::pair<std::string, std::size_t>> sizes = {{"1KiB", std::size_t{1} << 10},
        {"32KiB", std::size_t{1} << 15}, {"1MiB", std::size_t{1} << 20}, {"32MiB", std::size_t{1} << 25},
        {"256MiB", std::size_t{1} << 28}};
    return sizes;
}

/// Records of about so many bytes, kept for the next call of the same size.
inline const std::string & recordsOfSize(std::size_t size)
{
    static std::map<std::size_t, std::string> kept;
    std::string & document = kept[size];
    if (document.empty())
        document = DocumentMaker().records(size);
    return document;
}

} // namespace bench
