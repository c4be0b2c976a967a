/// Any bytes as the file of a list database: it is refused, or has the elements of the document, and each of
/// them can be found.

#include "VontalBase/disk/AutoDeleteFile.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/utils/soop_db.h"

#include "require.h"
#include "xmlinput.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace
{

using fuzzing::require;

/// The file that every input goes through.
const Vontal::u8string & filePath()
{
    static qvdisk::AutoDeleteFile file;
    static const Vontal::u8string path = []
    {
        require(file.create(Vontal::pstring(L"fuzz"), Vontal::pstring(L"xml")));
        return Vontal::u8string(file.get().c_str());
    }();
    return path;
}

std::string contentOf(const qv_soop::soop_node & node)
{
    std::string content = node.getName() + "(";
    for (const auto & [name, value] : node.getAttributes())
        content += name + "=" + value + ";";
    return content;
}

/// Compares a node and those below it with an element.
void compare(const qv_soop::soop_node & root, qvxml::Node & element)
{
    std::vector<std::pair<const qv_soop::soop_node *, qvxml::Node *>> open = {{&root, &element}};
    while (!open.empty())
    {
        const auto [node, same] = open.back();
        open.pop_back();
        require(fuzzing::contentOf(*same).starts_with(contentOf(*node)));
        qvxml::Node * child = same->getFirstChild();
        for (const qv_soop::soop_node * const subnode : node->getSubnodes())
        {
            require(child != nullptr && subnode->getParent() == node);
            open.emplace_back(subnode, child);
            child = child->getNextSibling();
        }
        require(child == nullptr);
    }
}

void findAll(const qv_soop::soop_db & database, const qv_soop::soop_node & start)
{
    for (const auto & [name, value] : start.getAttributes())
        require(database.getNode(start.getName(), name, value) != nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const testsupport::WideErrors quiet;
    require(qvdisk::writeTextFile(filePath(), std::string(data, data + size)));
    qv_soop::soop_db database;
    qvxml::XMLDocPtr document;
    const bool isRead = database.init(filePath());
    require(isRead == document.loadFile(filePath()));
    if (!isRead)
        return 0;
    const qv_soop::soop_node & root = *database.getRootNode();
    compare(root, *document.getRootElement());
    findAll(database, root);
    for (const qv_soop::soop_node * const node : root.getSubnodes())
        findAll(database, *node);
    require(database.addList(root.getName()) && database.getList(root.getName()).size() == 1);
    return 0;
}
