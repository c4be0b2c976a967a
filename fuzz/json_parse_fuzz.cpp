/// Any bytes as JSON: into a logging acceptor and into a tree, both held against the plain scanner; and into
/// a bound class, from the text and from the tree.

#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/jsonparse.h"

#include "json/LoggingAcceptor.h"
#include "json/boundclasses.h"
#include "json/scanner_oracle.h"
#include "json/tree_oracle.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using jsontest::Everything;
using EverythingReference = qvbase::Reference<Everything>;

void require(bool holds, const char * what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void parseIntoLog(std::string_view text)
{
    const jsontest::PlainCalls expected = jsontest::callsPlainly(text);
    jsontest::LoggingAcceptor acceptor;
    VontalException record;
    const bool accepted = qvjson::jsonParse(text.data(), text.size(), &acceptor, record);
    require(accepted == expected.accepted, "the scanners do not agree");
    require(acceptor.log == expected.log, "the calls are not the same");
    require(jsontest::textsOf(record) == expected.failures, "the failures are not the same");
}

qvbase::Reference<qvjson::Item> parseIntoTree(std::string_view text)
{
    const jsontest::PlainTree expected = jsontest::treePlainly(text);
    qvbase::Reference<qvjson::Item> root;
    VontalException record;
    const bool accepted = qvjson::jsonParse(Vontal::u8string(text.data(), text.size()), root, record);
    require(accepted == expected.accepted, "a tree came of what should give none, or none");
    require(jsontest::textsOf(record) == expected.failures, "the failures of the tree are not the same");
    require(jsontest::treeText(root) == expected.tree, "the trees are not the same");
    return root;
}

void readBack(Everything & object)
{
    // A holder takes no null, though it prints as one.
    if (object.holder->object.get() == nullptr)
        object.holder->createObject();
    Vontal::u8string printed;
    require(object.toJson(printed), "what was read cannot be printed");
    const EverythingReference again = new qvbase::ReferencedImpl<Everything>;
    VontalException record;
    require(again->fromJson(printed, record), "what was printed cannot be read");
    Vontal::u8string printedAgain;
    require(again->toJson(printedAgain), "what was read back cannot be printed");
    require(printed == printedAgain, "what was read back is not the same");
}

void bindText(std::string_view text)
{
    const jsontest::PlainScan plain = jsontest::scanPlainly(text);
    const EverythingReference object = new qvbase::ReferencedImpl<Everything>;
    VontalException record;
    const bool bound = object->fromJson(text.data(), text.size(), record);
    require(!bound || plain.accepted, "a bound class took what is no JSON");
    require(bound == (record.first == nullptr), "the record does not go with the result");
    require(object->ends == (bound ? 1 : 0), "the end was not told once");
    if (!bound)
    {
        const std::vector<std::string> failures = jsontest::textsOf(record);
        require(failures.back() == "Failed to restore from JSON", "the last failure is another one");
        require(
            failures[failures.size() - 2] == "Failed to parse JSON", "the failure before it is another one");
    }
    readBack(*object);
    object->jsonEndParse();
}

void bindTree(qvjson::Item & root)
{
    const EverythingReference object = new qvbase::ReferencedImpl<Everything>;
    if (qvjson::Object * const source = root)
        object->fromJson(source);
    // Not to be read back: on this route an integer may become the least one, which the readers refuse.
    Vontal::u8string printed;
    require(object->toJson(printed), "what was taken from a tree cannot be printed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    parseIntoLog(text);
    bindText(text);
    // The plain tree recurses.
    if (size > 4096)
        return 0;
    const qvbase::Reference<qvjson::Item> root = parseIntoTree(text);
    if (root.get() != nullptr)
        bindTree(*root);
    return 0;
}
