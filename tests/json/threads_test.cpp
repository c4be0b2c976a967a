// Several threads with a parse each, at one time.

#include "VontalBase/json/JSONSerializable.h"

#include "json/LoggingAcceptor.h"
#include "json/boundclasses.h"
#include "json/jsonsupport.h"
#include "support/TestBarrier.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

using jsontest::ItemReference;
using jsontest::make;
using qvjson::jsonParse;

constexpr int threadCount = 4;
constexpr int rounds = 50;

/// Runs the work on several threads that begin together. What it throws or finds wrong is told by its answer.
template <class Work>
void together(const Work & work)
{
    testsupport::TestBarrier start(threadCount);
    std::vector<int> wrong(threadCount, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                start.arriveAndWait();
                for (int round = 0; round < rounds; ++round)
                    wrong[static_cast<std::size_t>(i)] += work(i, round) ? 0 : 1;
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(threadCount, 0));
}

std::string documentOf(int thread, int round)
{
    std::string json = "[";
    for (int i = 0; i < 100; ++i)
    {
        const std::string number = std::to_string(thread * 1000000 + round * 1000 + i);
        json += (i == 0 ? "{\"a\":\"text of more than twenty bytes "
                        : ",{\"a\":\"text of more than twenty bytes ") +
                number + "\",\"b\":[" + number + ",true,null],\"c\":{\"k" + number + "\":{}}}";
    }
    return json + "]";
}

TEST(JsonThreads, ParsePrintAndCompareAtOneTime)
{
    together(
        [](int thread, int round)
        {
            const std::string json = documentOf(thread, round);
            ItemReference root;
            ItemReference again;
            VontalException record;
            if (!jsonParse(jsontest::text(json), root, record) ||
                !jsonParse(jsontest::text(json), again, record) || !root->equals(again))
                return false;
            std::ostringstream stream;
            qvbase::Reference<qvjson::JSONPrinter> printer;
            return qvjson::jsonPrinterFactory(&stream, printer) && printer->printItem(root) &&
                   stream.str() == json;
        });
}

TEST(JsonThreads, FailEachWithItsOwnRecord)
{
    together(
        [](int thread, int round)
        {
            const std::string key = std::to_string(thread) + '-' + std::to_string(round);
            const auto object = make<jsontest::Everything>();
            VontalException record;
            const bool failed = !object->fromJson(jsontest::text("{\"" + key + "\":1}"), record);
            return failed &&
                   jsontest::textsOf(record) == std::vector<std::string>{"Failed to parse key: " + key,
                                                    "Failed to parse JSON", "Failed to restore from JSON"};
        });
}

TEST(JsonThreads, TellTheirOwnAcceptors)
{
    together(
        [](int thread, int round)
        {
            jsontest::LoggingAcceptor acceptor;
            VontalException record;
            const std::string number = std::to_string(1000 + thread * 100 + round);
            return jsonParse(jsontest::text("{\"a\":[" + number + "]}"), &acceptor, record) &&
                   acceptor.log == "begin object\nkey 1 a\nbegin array\nint 4 " + number +
                                       "\nend array\nend object\nend child\n";
        });
}

TEST(JsonThreads, ReadOneTreeAtOneTime)
{
    const std::string json = "[1,\"text of more than twenty bytes\"," + documentOf(1, 2) + "]";
    const ItemReference root = jsontest::parsed(json);
    const ItemReference same = jsontest::parsed(json);
    const ItemReference object = jsontest::parsed("{\"n\":5000000000,\"s\":\"x\",\"b\":true}");
    together(
        [&](int, int)
        {
            const auto & array = *static_cast<qvjson::Array *>(*root);
            int number = 0;
            Vontal::u8string string;
            if (array.getLength() != 3 || !array.getInt(0, number) || number != 1 ||
                !array.getString(1, string) || string != "text of more than twenty bytes" ||
                array.getInt(1, number) || !array.equals(same))
                return false;
            const auto & values = *static_cast<qvjson::Object *>(*object);
            bool flag = false;
            if (!values.getValue("n", number) || number != 705032704 || !values.getValue("s", string) ||
                string != "x" || !values.getValue("b", flag) || !flag || values.getValue("absent", flag))
                return false;
            std::ostringstream stream;
            qvbase::Reference<qvjson::JSONPrinter> printer;
            return qvjson::jsonPrinterFactory(&stream, printer) && printer->printItem(root.get()) &&
                   stream.str() == json;
        });
}

TEST(JsonThreads, TakePartsOfOneParseEach)
{
    // Parts of one tree belong to different threads afterwards, and are changed and let go there.
    for (int round = 0; round < rounds; ++round)
    {
        std::vector<ItemReference> parts(threadCount);
        {
            std::string json = "[";
            for (int i = 0; i < threadCount; ++i)
            {
                json += i == 0 ? "" : ",";
                json += documentOf(i, round);
            }
            json += ']';
            const ItemReference root = jsontest::parsed(json);
            for (unsigned int i = 0; i < threadCount; ++i)
                static_cast<qvjson::Array *>(*root)->getItem(i, parts[i]);
        }
        testsupport::TestBarrier start(threadCount);
        std::vector<std::thread> threads;
        for (ItemReference & part : parts)
        {
            threads.emplace_back(
                [&start, &part]
                {
                    start.arriveAndWait();
                    static_cast<qvjson::Array *>(*part)->add(make<qvjson::ValueNull>());
                    part = nullptr;
                });
        }
        for (std::thread & thread : threads)
            thread.join();
    }
}

} // namespace
