/// Any bytes that are JSON: what the printer makes of the tree is read back as an equal one, and so is what
/// is built again by hand. Integers are printed with 32 bits, so the first tree is compared by its text.

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/jsonparse.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>

namespace
{

using fuzzing::require;
using ItemReference = qvbase::Reference<qvjson::Item>;

bool parse(const Vontal::u8string & text, ItemReference & root)
{
    VontalException record;
    return qvjson::jsonParse(text, root, record);
}

Vontal::u8string print(const ItemReference & root)
{
    std::ostringstream stream;
    qvbase::Reference<qvjson::JSONPrinter> printer;
    require(qvjson::jsonPrinterFactory(&stream, printer), "there is no printer");
    require(printer->printItem(root), "a parsed tree cannot be printed");
    return stream.str();
}

/// The same tree, its containers made by hand. It recurses.
ItemReference rebuilt(const ItemReference & item)
{
    if (qvjson::Array * const array = *item)
    {
        const qvbase::Reference<qvjson::Array> made = new qvbase::ReferencedImpl<qvjson::Array>;
        for (unsigned int i = 0; i < array->getLength(); ++i)
        {
            ItemReference element;
            require(array->getItem(i, element), "an element is missing");
            made->add(rebuilt(element));
        }
        return made;
    }
    if (qvjson::Object * const object = *item)
    {
        std::map<Vontal::u8string, ItemReference> items;
        object->getItems(items);
        const qvbase::Reference<qvjson::Object> made = new qvbase::ReferencedImpl<qvjson::Object>;
        // Backwards, so that the order is the object's own doing.
        for (auto entry = items.rbegin(); entry != items.rend(); ++entry)
        {
            ItemReference found;
            require(object->getItem(entry->first, found) && found.get() == entry->second.get(),
                "a key does not lead to its item");
            require(made->addKey(entry->first) && made->add(rebuilt(entry->second)), "a key is not taken");
        }
        return made;
    }
    return item;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    ItemReference first;
    if (!parse(Vontal::u8string(reinterpret_cast<const char *>(data), size), first))
        return 0;
    const Vontal::u8string printed = print(first);
    ItemReference second;
    require(parse(printed, second), "what was printed cannot be read");
    const Vontal::u8string printedAgain = print(second);
    require(printed == printedAgain, "what was read back is printed otherwise");
    ItemReference third;
    require(parse(printedAgain, third), "what was printed again cannot be read");
    require(second->equals(third) && third->equals(second), "the trees are not equal");
    if (size > 4096)
        return 0;
    const ItemReference byHand = rebuilt(first);
    require(byHand->equals(first) && first->equals(byHand), "the tree built by hand is not equal");
    require(print(byHand) == printed, "the tree built by hand is printed otherwise");
    return 0;
}
