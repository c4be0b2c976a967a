// 100,000 objects of 20 members each from text into plain structs: a bound class beside a hand-written
// handler.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstring>
#include <rapidjson/reader.h>
#include <string_view>

namespace
{

[[maybe_unused]] const bool isDescribed =
    bench::describe("JSON into structs", "100,000 objects of 20 members each, from text into plain structs.",
        {{"rapidjson", "a hand-written handler of RapidJSON " RAPIDJSON_VERSION_STRING}});

struct Record
{
    std::array<int, 6> numbers{};
    std::array<std::int64_t, 4> longNumbers{};
    std::array<bool, 4> flags{};
    std::array<Vontal::u8string, 6> texts;
};

constexpr std::array<const char *, 20> keys = {"id", "age", "height", "weight", "level", "score", "created",
    "changed", "bytesSent", "bytesReceived", "active", "verified", "administrator", "subscribed", "firstName",
    "lastName", "street", "city", "country", "comment"};

enum class Kind
{
    Number,
    LongNumber,
    Flag,
    Text
};

constexpr Kind kindOf(std::size_t key)
{
    if (key < 6)
        return Kind::Number;
    if (key < 10)
        return Kind::LongNumber;
    return key < 14 ? Kind::Flag : Kind::Text;
}

const std::string & document()
{
    static const std::string text = []
    {
        std::string out = "{\"records\":[";
        for (int i = 0; i < 100000; ++i)
        {
            out += i == 0 ? "{" : ",{";
            for (std::size_t key = 0; key < keys.size(); ++key)
            {
                out += (key == 0 ? "\"" : ",\"") + std::string(keys[key]) + "\":";
                switch (kindOf(key))
                {
                case Kind::Number:
                    out += std::to_string((i * 7919 + static_cast<int>(key) * 31) % 100000);
                    break;
                case Kind::LongNumber:
                    out += std::to_string(1700000000000 + i * 1000LL);
                    break;
                case Kind::Flag:
                    out += (i + static_cast<int>(key)) % 2 == 0 ? "true" : "false";
                    break;
                case Kind::Text:
                    out += "\"value of " + std::to_string(i) + "\"";
                    break;
                }
            }
            out += "}";
        }
        return out + "]}";
    }();
    return text;
}

/// The bound class: its fields are declared once, and pointed at the struct to fill.
class BoundRecord : public qvjson::JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (m_fields.front() != nullptr)
            return;
        for (std::size_t key = 0; key < keys.size(); ++key)
        {
            m_fields[key] = new JSONField(typeOf(key), keys[key], nullptr);
            jsonFieldAdd(m_fields[key]);
        }
    }

    void fill(Record & record)
    {
        jsonFieldsDeclare();
        for (std::size_t key = 0; key < keys.size(); ++key)
            m_fields[key]->target = memberOf(record, key);
    }

private:
    static FieldType typeOf(std::size_t key)
    {
        switch (kindOf(key))
        {
        case Kind::Number:
            return FieldInt;
        case Kind::LongNumber:
            return FieldInt64;
        case Kind::Flag:
            return FieldBool;
        default:
            return FieldString;
        }
    }

    static void * memberOf(Record & record, std::size_t key)
    {
        switch (kindOf(key))
        {
        case Kind::Number:
            return &record.numbers[key];
        case Kind::LongNumber:
            return &record.longNumbers[key - 6];
        case Kind::Flag:
            return &record.flags[key - 10];
        default:
            return &record.texts[key - 14];
        }
    }

    std::array<JSONField *, keys.size()> m_fields = {};
};

/// Keeps the records as plain structs.
class Records : public qvjson::JSONSerializableArrayProviderInterface
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject(qvjson::JSONSerializable::JSONField *) override
    {
        m_bound->fill(records.emplace_back());
        return m_bound->jsonBeginParse() ? m_bound.get() : nullptr;
    }
    void clear() override
    {
        records.clear();
    }
    qvjson::JSONSerializable * createElement() override
    {
        return nullptr;
    }
    bool getElement(unsigned int, qvbase::Reference<qvjson::JSONSerializable> &) override
    {
        return false;
    }
    void removeLastElement() override
    {
    }
    unsigned int getSize() override
    {
        return static_cast<unsigned int>(records.size());
    }

    std::vector<Record> records;

private:
    qvbase::Reference<BoundRecord> m_bound = new qvbase::ReferencedImpl<BoundRecord>;
};

class BoundDocument : public qvjson::JSONSerializable
{
public:
    explicit BoundDocument(std::shared_ptr<Records> records) : m_records(std::move(records))
    {
    }
    void jsonFieldsDeclare() override
    {
        if (!m_isDeclared)
            jsonFieldAdd(
                "records", std::shared_ptr<qvjson::JSONSerializableArrayProviderInterface>(m_records));
        m_isDeclared = true;
    }

private:
    std::shared_ptr<Records> m_records;
    bool m_isDeclared = false;
};

void bindOurs(benchmark::State & state)
{
    const std::string & text = document();
    for (auto step : state)
    {
        const auto records = std::make_shared<Records>();
        const qvbase::Reference<BoundDocument> bound = new qvbase::ReferencedImpl<BoundDocument>(records);
        VontalException exception;
        if (!bound->fromJson(text.data(), text.size(), exception) || records->records.size() != 100000)
            std::abort();
        benchmark::DoNotOptimize(records->records.data());
    }
}

/// What one would write by hand: keys mostly come in their order.
struct RecordHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RecordHandler>
{
    bool Null()
    {
        return false;
    }
    bool Bool(bool value)
    {
        if (key < 10 || key >= 14)
            return false;
        records.back().flags[key - 10] = value;
        return true;
    }
    bool Int(int value)
    {
        return Int64(value);
    }
    bool Uint(unsigned int value)
    {
        return Int64(value);
    }
    bool Int64(std::int64_t value)
    {
        if (key < 6)
            records.back().numbers[key] = static_cast<int>(value);
        else if (key < 10)
            records.back().longNumbers[key - 6] = value;
        return key < 10;
    }
    bool Uint64(std::uint64_t value)
    {
        return Int64(static_cast<std::int64_t>(value));
    }
    bool String(const char * text, rapidjson::SizeType length, bool)
    {
        if (key < 14)
            return false;
        records.back().texts[key - 14].assign(text, length);
        return true;
    }
    bool StartObject()
    {
        if (++depth == 2)
        {
            records.emplace_back();
            key = keys.size() - 1;
        }
        return true;
    }
    bool EndObject(rapidjson::SizeType)
    {
        --depth;
        return true;
    }
    bool Key(const char * text, rapidjson::SizeType length, bool)
    {
        if (depth == 1)
            return true;
        const std::string_view wanted(text, length);
        for (std::size_t i = 1; i <= keys.size(); ++i)
        {
            const std::size_t candidate = (key + i) % keys.size();
            if (wanted == keyViews()[candidate])
            {
                key = candidate;
                return true;
            }
        }
        return false;
    }

    static const std::array<std::string_view, keys.size()> & keyViews()
    {
        static const auto views = []
        {
            std::array<std::string_view, keys.size()> all;
            for (std::size_t i = 0; i < keys.size(); ++i)
                all[i] = keys[i];
            return all;
        }();
        return views;
    }

    std::vector<Record> records;
    std::size_t key = 0;
    int depth = 0;
};

void bindRapidjson(benchmark::State & state)
{
    const std::string & text = document();
    for (auto step : state)
    {
        RecordHandler handler;
        rapidjson::Reader reader;
        rapidjson::StringStream stream(text.c_str());
        if (reader.Parse(stream, handler).IsError() || handler.records.size() != 100000)
            std::abort();
        benchmark::DoNotOptimize(handler.records.data());
    }
}

BENCHMARK(bindOurs)->Name("json_bind/100k_objects/ours");
BENCHMARK(bindRapidjson)->Name("json_bind/100k_objects/rapidjson");

} // namespace
