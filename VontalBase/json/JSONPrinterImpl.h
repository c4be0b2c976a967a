/// @internal
/// @file
/// The printer over a standard stream.
#pragma once

#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/JSONWriter.h"

#include <string_view>

namespace qvjson
{

/// Composes each call's text in a buffer of its own and hands it to the stream before the call returns.
class JSONPrinterImpl : public JSONPrinter
{
public:
    explicit JSONPrinterImpl(std::basic_ostream<char> & stream) : m_writer(stream)
    {
    }
    JSONPrinterImpl(const JSONPrinterImpl &) = delete;
    JSONPrinterImpl & operator=(const JSONPrinterImpl &) = delete;

    bool printObjectBegin() override;
    bool printObjectEnd() override;
    bool printKey(Vontal::u8string const & key) override;
    bool printString(Vontal::u8string const & text) override;
    bool printNumber(Vontal::u8string const & digits) override;
    bool printInt(int value) override;
    bool printItem(Item * item) override;
    bool printNull() override;
    bool printBool(bool value) override;
    bool printArrayBegin() override;
    bool printArrayEnd() override;
    virtual ~JSONPrinterImpl();

private:
    char * separate();
    bool open(char bracket);
    bool close(char bracket);
    bool word(std::string_view text);
    bool handOver(const char * to);
    void handOverQuietly(const char * to) noexcept;

    JSONWriter m_writer;
    bool m_afterKey = false;
    bool m_atStart = true;
};

} // namespace qvjson
