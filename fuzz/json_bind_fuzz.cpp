/// Any lines as JSON into one bound object, one after the other, whatever state the last one left it in; what
/// it then holds, printed, read back from text and from the tree of that text; and the first line into a
/// further object by way of its tree.

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/jsonparse.h"

#include "json/LoggingAcceptor.h"
#include "json/boundclasses.h"
#include "json/scanner_oracle.h"
#include "require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using fuzzing::require;
using jsontest::Everything;
using jsontest::Inner;
using EverythingReference = qvbase::Reference<Everything>;
using ItemReference = qvbase::Reference<qvjson::Item>;

EverythingReference makeObject()
{
    return new qvbase::ReferencedImpl<Everything>;
}

ItemReference parse(std::string_view text)
{
    ItemReference root;
    VontalException record;
    qvjson::jsonParse(Vontal::u8string(text.data(), text.size()), root, record);
    return root;
}

Vontal::u8string print(Everything & object)
{
    Vontal::u8string printed;
    require(object.toJson(printed), "what was read cannot be printed");
    return printed;
}

void readText(Everything & object, std::string_view text)
{
    const int ends = object.ends;
    VontalException record;
    const bool bound = object.fromJson(text.data(), text.size(), record);
    require(bound == (record.first == nullptr), "the record does not go with the result");
    require(object.ends == ends + (bound ? 1 : 0), "the end was not told once");
    require(!bound || jsontest::scanPlainly(text).accepted, "a bound class took what is no JSON");
    if (bound)
        return;
    const std::vector<std::string> failures = jsontest::textsOf(record);
    require(failures.size() >= 2 && failures.back() == "Failed to restore from JSON" &&
                failures[failures.size() - 2] == "Failed to parse JSON",
        "the last failures are other ones");
    object.jsonEndParse();
}

bool areSame(const std::vector<qvbase::Reference<Inner>> & a, const std::vector<qvbase::Reference<Inner>> & b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](const auto & left, const auto & right) { return left->number == right->number; });
}

/// Whether the members are the same that a tree sets, but for trees.
bool areSameByTree(const Everything & a, const Everything & b)
{
    const bool isSameRaw = (a.raw == nullptr) == (b.raw == nullptr) &&
                           (a.raw == nullptr || jsontest::numberOf(a.raw) == jsontest::numberOf(b.raw));
    return isSameRaw && a.flag == b.flag && a.number == b.number && a.string == b.string &&
           a.stringSet == b.stringSet && a.strings == b.strings && a.numbers == b.numbers &&
           a.wideNumbers == b.wideNumbers && areSame(a.provider->elements, b.provider->elements) &&
           a.holder->object->number == b.holder->object->number;
}

void readBack(Everything & object)
{
    // A holder takes no null, though it prints as one.
    if (object.holder->object.get() == nullptr)
        object.holder->createObject();
    const Vontal::u8string printed = print(object);
    const EverythingReference again = makeObject();
    VontalException record;
    require(again->fromJson(printed, record), "what was printed cannot be read");
    require(print(*again) == printed, "what was read back is not the same");

    const ItemReference tree = parse(printed);
    const EverythingReference byTree = makeObject();
    require(
        byTree->fromJson(static_cast<qvjson::Object *>(*tree)), "the tree of what was printed is not taken");
    require(areSameByTree(*again, *byTree), "the tree of what was printed sets other members");
    require((again->tree.get() == nullptr) == (byTree->tree.get() == nullptr) &&
                (again->tree.get() == nullptr || again->tree->equals(byTree->tree)),
        "the tree of what was printed holds another tree");
    require(byTree->unsignedNumber == 0 && byTree->wideNumber == 0 && byTree->referenced.get() == nullptr &&
                byTree->objects.empty(),
        "a tree sets what it is to leave alone");
}

void readTree(std::string_view text)
{
    const ItemReference root = parse(text);
    if (root.get() == nullptr)
        return;
    const EverythingReference object = makeObject();
    if (qvjson::Object * const source = *root)
        object->fromJson(source);
    // Not to be read back: on this route an integer may become the least one, which the readers refuse.
    print(*object);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    std::string_view lines(reinterpret_cast<const char *>(data), size);
    readTree(lines.substr(0, lines.find('\n')));
    const EverythingReference object = makeObject();
    for (int i = 0; i < 8 && !lines.empty(); ++i)
    {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        readText(*object, line);
        readBack(*object);
    }
    return 0;
}
