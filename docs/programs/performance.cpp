// Adds up the numbers below one key of a document without making a tree of it.

#include "VontalBase/VontalBase.h"

#include <charconv>
#include <cstdint>
#include <iostream>
#include <system_error>

namespace
{

// Takes objects and arrays at any depth, and remembers nothing but the key and the sum.
class Total final : public qvjson::JSONParserAcceptor
{
public:
    explicit Total(const Vontal::u8string & wanted) : m_wanted(wanted)
    {
    }

    std::uint64_t sum() const
    {
        return m_sum;
    }

    JSONParserAcceptor * parserBeginObject() override
    {
        return this;
    }
    bool parserEndChildObject(JSONParserAcceptor *) override
    {
        return true;
    }
    bool parserEndObject() override
    {
        return true;
    }
    bool parseKey(Vontal::u8string const & key) override
    {
        m_isWanted = key == m_wanted;
        return true;
    }
    bool parseInt(char const * text, unsigned int length) override
    {
        unsigned int number = 0;
        if (!m_isWanted)
            return true;
        // What is negative, or more than fits, ends the parse here.
        const std::from_chars_result read = std::from_chars(text, text + length, number);
        m_sum += number;
        return read.ec == std::errc();
    }
    bool parseString(char const *, unsigned int) override
    {
        return true;
    }
    bool parseBool(bool) override
    {
        return true;
    }
    bool parseNull() override
    {
        return true;
    }
    bool parserBeginArray() override
    {
        return true;
    }
    bool parserEndArray() override
    {
        return true;
    }

private:
    const Vontal::u8string m_wanted;
    std::uint64_t m_sum = 0;
    bool m_isWanted = false;
};

bool printTotal(const Vontal::u8string & text)
{
    Total total("bytes");
    VontalException failure;
    if (!qvjson::jsonParse(text, &total, failure))
    {
        std::cerr << failure.format() << '\n';
        return false;
    }
    std::cout << "bytes in all: " << total.sum() << '\n';
    return true;
}

} // namespace

int main()
{
    const bool isGood =
        printTotal(R"([{"name": "a.txt", "bytes": 1200}, {"name": "b.txt", "bytes": 34, "lines": 2}])");
    if (printTotal(R"([{"bytes": 99999999999999999999}])"))
        return 1;
    std::cout << "the other list has too large a number\n";
    return isGood ? 0 : 1;
}
