// Printing the members of a bound class.

#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/fieldtargets.h"
#include "VontalBase/text/Decimal.h"

#include <cstdint>
#include <memory>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

namespace qvjson
{

bool JSONSerializable::toJson(Vontal::u8string & text)
{
    std::ostringstream stream;
    // A want of memory within the stream must not pass for a text.
    stream.exceptions(std::ios::badbit);
    if (!toJson(&stream))
        return false;
    text = std::move(stream).str();
    return true;
}

bool JSONSerializable::toJson(std::basic_ostream<char> * stream)
{
    qvbase::Reference<JSONPrinter> printer;
    return jsonPrinterFactory(stream, printer) && toJson(printer, true);
}

bool JSONSerializable::toJson(JSONPrinter * printer, bool wrap)
{
    jsonFieldsDeclare();
    if (printer == nullptr || (wrap && !printer->printObjectBegin()))
        return false;
    for (std::size_t i = 0; i < m_fields.size(); ++i)
    {
        const std::shared_ptr<JSONField> field = m_fields[i];
        if (!printer->printKey(field->key) || !print(*field, *printer))
            return false;
    }
    return !wrap || printer->printObjectEnd();
}

namespace
{

template <class Number>
bool printNumber(JSONPrinter & printer, Number value)
{
    const Vontal::Decimal digits(value);
    return printer.printNumber(Vontal::u8string(digits.text().data(), digits.text().size()));
}

template <class List, class Print>
bool printList(JSONPrinter & printer, const List & list, Print printElement)
{
    if (!printer.printArrayBegin())
        return false;
    for (const auto & element : list)
    {
        if (!printElement(element))
            return false;
    }
    return printer.printArrayEnd();
}

bool printObject(JSONPrinter & printer, JSONSerializable * object)
{
    return object == nullptr ? printer.printNull() : object->toJson(&printer, true);
}

bool printProvider(JSONPrinter & printer, const ArrayProviderPointer & provider)
{
    if (provider == nullptr)
        return printer.printNull();
    if (!printer.printArrayBegin())
        return false;
    const unsigned int size = provider->getSize();
    for (unsigned int i = 0; i < size; ++i)
    {
        qvbase::Reference<JSONSerializable> element;
        if (!provider->getElement(i, element) || !printObject(printer, element))
            return false;
    }
    return printer.printArrayEnd();
}

} // namespace

bool JSONSerializable::print(const JSONField & field, JSONPrinter & printer)
{
    const auto printText = [&printer](const Vontal::u8string & text)
    {
        return printer.printString(text);
    };
    const auto printDigits = [&printer](auto value)
    {
        return printNumber(printer, value);
    };
    switch (field.type)
    {
    case FieldBool:
        return printer.printBool(targetOf<bool>(field));
    case FieldInt:
        return printDigits(targetOf<int>(field));
    case FieldULong:
        return printDigits(loadNumber<Vontal::ulong32>(field.target));
    case FieldInt64:
        return printDigits(targetOf<std::int64_t>(field));
    case FieldString:
        return printText(targetOf<Vontal::u8string>(field));
    case FieldStringSet:
        return printList(printer, targetOf<std::set<Vontal::u8string>>(field), printText);
    case FieldStringVector:
        return printList(printer, targetOf<std::vector<Vontal::u8string>>(field), printText);
    case FieldIntVector:
        return printList(printer, targetOf<std::vector<int>>(field), printDigits);
    case FieldInt64Vector:
        return printList(printer, targetOf<std::vector<std::int64_t>>(field), printDigits);
    case FieldTree:
    {
        const qvbase::Reference<Object> & tree = targetOf<qvbase::Reference<Object>>(field);
        return tree.get() == nullptr ? printer.printNull() : printer.printItem(tree);
    }
    case FieldRawObject:
        return printObject(printer, rawObjectOf(holderOf(field)));
    case FieldReferencedObject:
        return printObject(printer, referencedObjectOf(holderOf(field)));
    case FieldObjectVector:
        if (holderOf(field).member == nullptr)
            return printer.printNull();
        return printList(printer, objectVectorOf(holderOf(field)),
            [&printer](const auto & element) { return printObject(printer, element); });
    case FieldArrayProvider:
        return printProvider(printer, providerOf(field));
    case FieldRefObj:
    {
        const RefObjPointer & object = refObjOf(field);
        return printObject(printer, object == nullptr ? nullptr : object->get());
    }
    default:
        return false;
    }
}

} // namespace qvjson
