/// Any bytes as a document: what can be read of it can be read again after it was saved, and after it was
/// reindented the elements and attributes are the same.

#include "require.h"
#include "xmlinput.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

namespace
{

using fuzzing::require;

std::size_t countElements(qvxml::XMLDocPtr & document)
{
    std::size_t count = 0;
    std::vector<qvxml::Node *> open = {document.getRootElement()};
    while (!open.empty())
    {
        qvxml::Node * const node = open.back();
        open.pop_back();
        ++count;
        for (qvxml::Node * child = node->getFirstChild(); child != nullptr; child = child->getNextSibling())
            open.push_back(child);
    }
    return count;
}

/// Whether the input may name an encoding that can be read and not written, such as UTF-7.
bool namesAnEncoding(const std::uint8_t * data, std::size_t size)
{
    // In UTF-16 a zero stands between the letters.
    std::string letters;
    std::copy_if(data, data + size, std::back_inserter(letters), [](std::uint8_t byte) { return byte != 0; });
    return letters.find("encoding") != std::string::npos;
}

void loadAgain(qvxml::XMLDocPtr & document, bool format, qvxml::XMLDocPtr & again)
{
    std::string text;
    require(document.saveBuffer(text, format), "A document that was loaded cannot be saved.");
    require(again.loadBuffer(text.data(), text.size()), "A document that was saved cannot be loaded.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const testsupport::WideErrors quiet;
    qvxml::XMLDocPtr document;
    if (!document.loadBuffer(reinterpret_cast<const char *>(data), size) || !fuzzing::keepsItsWord(document))
        return 0;
    std::string saved;
    if (namesAnEncoding(data, size) && !document.saveBuffer(saved, false))
        return 0;
    const std::string content = fuzzing::contentOf(document);
    qvxml::XMLDocPtr again;
    loadAgain(document, false, again);
    require(fuzzing::contentOf(again) == content, "A document reads otherwise after it was saved.");

    const std::size_t count = countElements(document);
    loadAgain(document, true, again);
    require(
        countElements(document) == count && countElements(again) == count, "Reindenting lost an element.");
    std::string formatted;
    std::string formattedAgain;
    require(document.saveBuffer(formatted, true) && document.saveBuffer(formattedAgain, true) &&
                formatted == formattedAgain,
        "Reindenting twice changes a document.");
    return 0;
}
