/// Any bytes as JSON: into a logging acceptor and into a tree, both held against the plain scanner.

#include "VontalBase/json/jsonparse.h"

#include "json/LoggingAcceptor.h"
#include "json/scanner_oracle.h"
#include "json/tree_oracle.h"
#include "require.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace
{

using fuzzing::require;

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

void parseIntoTree(std::string_view text)
{
    const jsontest::PlainTree expected = jsontest::treePlainly(text);
    qvbase::Reference<qvjson::Item> root;
    VontalException record;
    const bool accepted = qvjson::jsonParse(Vontal::u8string(text.data(), text.size()), root, record);
    require(accepted == expected.accepted, "a tree came of what should give none, or none");
    require(jsontest::textsOf(record) == expected.failures, "the failures of the tree are not the same");
    require(jsontest::treeText(root) == expected.tree, "the trees are not the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    parseIntoLog(text);
    // The plain tree recurses.
    if (size <= 4096)
        parseIntoTree(text);
    return 0;
}
