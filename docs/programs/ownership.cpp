// Who holds what: counted results, objects that the caller deletes, and results that are only lent.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <memory>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImpl;

class Page : public qvbase::ReferencedObject
{
public:
    explicit Page(const Vontal::u8string & title) : m_title(title)
    {
    }
    virtual ~Page()
    {
        std::cout << m_title << " is gone\n";
    }

    const Vontal::u8string & title() const
    {
        return m_title;
    }

private:
    const Vontal::u8string m_title;
};

bool findPage(int number, Reference<Page> & out)
{
    if (number != 1)
        return false;
    out = new ReferencedImpl<Page>("Page 1");
    return true;
}

} // namespace

int main()
{
    // Counted: the reference that received it holds it.
    Reference<Page> page;
    if (!findPage(1, page))
        return 1;
    const Reference<Page> held = page;
    page = nullptr;
    std::cout << held->title() << " is held by the other reference\n";

    // A raw result that the caller deletes: its description says so.
    qvdisk::File file("note.txt");
    {
        const std::unique_ptr<qvdisk::FileWriter> writer(file.openForWrite());
        if (writer == nullptr || !writer->write("text", 4) || !writer->close())
            return 1;
    }
    std::cout << "note.txt has " << file.getFileSize() << " bytes\n";

    // A raw result that is lent: the node is the document's and goes with it.
    qvxml::XMLDocPtr document;
    const qvxml::Node * const root = document.create("list");
    if (root == nullptr)
        return 1;
    document.release(); // From here on nobody may use root.

    std::cout << "the end\n";
    return 0;
}
