/// @file
/// A node of the tests' own, which writes down what is done with it.
#pragma once

#include "VontalBase/json/Item.h"

#include <string>

namespace jsontest
{

/// Counts its references and logs every change; it is not destroyed by the last release. It bears a type that
/// no class of the library has.
class CountingItem : public qvjson::Item
{
public:
    explicit CountingItem(qvjson::Type type = qvjson::TypeReserved) : Item(type)
    {
    }
    CountingItem(std::string & sharedLog, const char * itsName) : CountingItem()
    {
        log = &sharedLog;
        name = itsName;
    }

    void addRef() override
    {
        ++count;
        write('+');
    }
    void release() override
    {
        --count;
        write('-');
    }
    /// Equal to any other node of this class.
    bool equals(qvjson::Item const * other) const override
    {
        return other != nullptr && other->getType() == getType();
    }

    int count = 0;

private:
    void write(char change)
    {
        if (log != nullptr)
            *log += change + name + ' ';
    }

    std::string * log = nullptr;
    std::string name;
};

} // namespace jsontest
