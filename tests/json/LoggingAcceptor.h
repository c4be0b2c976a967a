/// @file
/// An acceptor that writes its calls down.
#pragma once

#include "VontalBase/json/JSONParserAcceptor.h"
#include "VontalBase/text/VontalException.h"

#include <string>
#include <vector>

namespace jsontest
{

/// Takes every event, and itself the content of every object. Each call is a line of the log, in the form
/// that `callsPlainly` gives.
class LoggingAcceptor : public qvjson::JSONParserAcceptor
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject() override
    {
        log += "begin object\n";
        return this;
    }
    bool parserEndChildObject(qvjson::JSONParserAcceptor * child) override
    {
        log += child == this ? "end child\n" : "end child of another\n";
        return true;
    }
    bool parserEndObject() override
    {
        log += "end object\n";
        return true;
    }
    bool parseKey(Vontal::u8string const & key) override
    {
        write("key", key);
        return true;
    }
    bool parseInt(char const * text, unsigned int length) override
    {
        write("int", {text, length}, text);
        return true;
    }
    bool parseString(char const * text, unsigned int length) override
    {
        write("string", {text, length}, text);
        return true;
    }
    bool parseBool(bool value) override
    {
        log += value ? "true\n" : "false\n";
        return true;
    }
    bool parseNull() override
    {
        log += "null\n";
        return true;
    }
    bool parserBeginArray() override
    {
        log += "begin array\n";
        return true;
    }
    bool parserEndArray() override
    {
        log += "end array\n";
        return true;
    }

    std::string log;

private:
    void write(const char * call, const std::string & text, const char * buffer = nullptr)
    {
        log += std::string(call) + ' ' + std::to_string(text.size()) + ' ' + text + '\n';
        if (buffer != nullptr && buffer[text.size()] != '\0')
            log += "no zero byte behind the text\n";
    }
};

/// The texts of a record, the first cause first.
inline std::vector<std::string> textsOf(const VontalException & record)
{
    std::vector<std::string> texts;
    for (const VontalExceptionDescription * entry = record.first; entry != nullptr; entry = entry->next)
        texts.insert(texts.begin(), entry->text);
    return texts;
}

/// Whether every entry names the source file and a line of it.
inline bool havePositions(const VontalException & record)
{
    for (const VontalExceptionDescription * entry = record.first; entry != nullptr; entry = entry->next)
    {
        if (entry->file != "qvjson" || entry->line <= 0)
            return false;
    }
    return true;
}

} // namespace jsontest
