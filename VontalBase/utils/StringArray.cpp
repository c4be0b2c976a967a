#include "VontalBase/utils/StringArray.h"

#include "VontalBase/core/Reference.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/ValueString.h"
#include "VontalBase/json/jsonparse.h"
#include "VontalBase/text/VontalException.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace qvutils
{

using qvbase::Reference;
using qvjson::Item;

namespace
{

/// The text of a node that is a string; false for any other.
bool appendText(StringArray & target, Item & item)
{
    qvjson::ValueString * const text = item;
    if (text == nullptr)
        return false;
    target.push_back(text->getValue());
    return true;
}

} // namespace

bool StringArray::parseJson(const Vontal::u8string & text)
{
    Reference<Item> root;
    VontalException dropped;
    if (!qvjson::jsonParse(text, root, dropped))
        return false;
    qvjson::Array * const array = *root;
    // Kept: a string alone counts as an array of one.
    if (array == nullptr)
        return appendText(*this, *root);
    for (unsigned int i = 0; i < array->getLength(); ++i)
    {
        Reference<Item> element;
        if (!array->getItem(i, element) || !appendText(*this, *element))
            return false;
    }
    return true;
}

bool StringArray::serializeJson(Vontal::u8string & out) const
{
    std::ostringstream stream;
    // A want of memory would otherwise cost the text a part and tell nobody.
    stream.exceptions(std::ios_base::badbit);
    Reference<qvjson::JSONPrinter> printer;
    if (!qvjson::jsonPrinterFactory(&stream, printer) || !printer->printArrayBegin())
        return false;
    for (const Vontal::u8string & element : *this)
        printer->printString(element);
    if (!printer->printArrayEnd())
        return false;
    out = std::move(stream).str();
    return true;
}

bool StringArray::contains(const Vontal::u8string & text) const
{
    return std::find(begin(), end(), text) != end();
}

} // namespace qvutils
