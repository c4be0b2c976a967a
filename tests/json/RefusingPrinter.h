/// @file
/// A printer that writes its calls down.
#pragma once

#include "VontalBase/json/JSONPrinter.h"

#include "json/jsonsupport.h"

#include <cstddef>
#include <string>
#include <vector>

namespace jsontest
{

/// Writes its calls down and refuses one of them.
class RefusingPrinter : public qvjson::JSONPrinter
{
public:
    bool printObjectBegin() override
    {
        return take("{");
    }
    bool printObjectEnd() override
    {
        return take("}");
    }
    bool printKey(Vontal::u8string const & key) override
    {
        return take("key " + key);
    }
    bool printString(Vontal::u8string const & string) override
    {
        return take("string " + string);
    }
    bool printNumber(Vontal::u8string const & digits) override
    {
        return take("number " + digits);
    }
    bool printInt(int value) override
    {
        return take("int " + std::to_string(value));
    }
    bool printItem(qvjson::Item * item) override
    {
        return take("item " + printed(item));
    }
    bool printNull() override
    {
        return take("null");
    }
    bool printBool(bool value) override
    {
        return take(value ? "true" : "false");
    }
    bool printArrayBegin() override
    {
        return take("[");
    }
    bool printArrayEnd() override
    {
        return take("]");
    }

    /// Which call is refused, counted from 1; 0 for none.
    std::size_t refused = 0;
    std::vector<std::string> calls;

private:
    bool take(const std::string & call)
    {
        calls.push_back(call);
        return calls.size() != refused;
    }
};

} // namespace jsontest
