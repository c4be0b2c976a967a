// Reads JSON and prints it compact, the keys of every object in order.
//
//     json_compact [--stats] [FILE]
//
// Without FILE, or with "-", it reads the standard input. --stats prints counts of what is in the document
// instead. Exit codes: 0; 1 for a document that is refused, with the reason on the standard error stream;
// 2 for a file that cannot be read or wrong arguments.

#include "VontalBase/VontalBase.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

namespace
{

using Items = std::map<Vontal::u8string, qvbase::Reference<qvjson::Item>>;

/// A container that the walk is in, with what it still has to visit.
struct OpenContainer
{
    qvbase::Reference<qvjson::Item> container;
    Items items;
    Items::const_iterator item;
    unsigned int index = 0;
};

/// Visits every node of a tree, in order and without recursion, so that no document is too deep.
class TreeWalk
{
public:
    virtual void begin(qvjson::Item & container) = 0;
    virtual void end(qvjson::Item & container) = 0;
    virtual void key(const Vontal::u8string & key) = 0;
    virtual void value(qvjson::Item & item) = 0;

    void walk(const qvbase::Reference<qvjson::Item> & root)
    {
        visit(root);
        while (!m_open.empty())
        {
            qvbase::Reference<qvjson::Item> child;
            if (takeChild(m_open.back(), child))
            {
                visit(child);
                continue;
            }
            end(*m_open.back().container);
            m_open.pop_back();
        }
    }

protected:
    ~TreeWalk() = default;

    std::size_t depth() const noexcept
    {
        return m_open.size();
    }

private:
    void visit(const qvbase::Reference<qvjson::Item> & item)
    {
        const qvjson::Type type = item->getType();
        if (type != qvjson::TypeObject && type != qvjson::TypeArray)
        {
            value(*item);
            return;
        }
        m_open.push_back({item, {}, {}, 0});
        if (qvjson::Object * const object = *item)
            object->getItems(m_open.back().items);
        m_open.back().item = m_open.back().items.begin();
        begin(*item);
    }

    bool takeChild(OpenContainer & open, qvbase::Reference<qvjson::Item> & child)
    {
        if (qvjson::Array * const array = *open.container)
            return array->getItem(open.index++, child);
        if (open.item == open.items.end())
            return false;
        key(open.item->first);
        child = open.item->second;
        ++open.item;
        return true;
    }

    /// Nothing in it moves, which the iterators rely on.
    std::deque<OpenContainer> m_open;
};

/// Prints with all 64 bits of integers, of which JSONPrinter::printItem keeps 32.
class ExactPrinter final : public TreeWalk
{
public:
    explicit ExactPrinter(qvjson::JSONPrinter & printer) : m_printer(printer)
    {
    }

    void begin(qvjson::Item & container) override
    {
        if (container.getType() == qvjson::TypeArray)
            m_printer.printArrayBegin();
        else
            m_printer.printObjectBegin();
    }
    void end(qvjson::Item & container) override
    {
        if (container.getType() == qvjson::TypeArray)
            m_printer.printArrayEnd();
        else
            m_printer.printObjectEnd();
    }
    void key(const Vontal::u8string & key) override
    {
        m_printer.printKey(key);
    }
    void value(qvjson::Item & item) override
    {
        std::int64_t number = 0;
        if (item.getInt64(number))
            m_printer.printNumber(Vontal::U8StringBuilder().append(number));
        else
            m_printer.printItem(&item);
    }

private:
    qvjson::JSONPrinter & m_printer;
};

class Statistics final : public TreeWalk
{
public:
    void begin(qvjson::Item & container) override
    {
        ++m_counts[container.getType()];
        m_deepest = std::max(m_deepest, depth());
    }
    void end(qvjson::Item &) override
    {
    }
    void key(const Vontal::u8string &) override
    {
        ++m_keys;
    }
    void value(qvjson::Item & item) override
    {
        ++m_counts[item.getType()];
    }

    void print(std::ostream & out)
    {
        out << "objects:       " << m_counts[qvjson::TypeObject] << '\n'
            << "arrays:        " << m_counts[qvjson::TypeArray] << '\n'
            << "keys:          " << m_keys << '\n'
            << "strings:       " << m_counts[qvjson::TypeString] << '\n'
            << "integers:      " << m_counts[qvjson::TypeInt] << '\n'
            << "bools:         " << m_counts[qvjson::TypeBool] << '\n'
            << "nulls:         " << m_counts[qvjson::TypeNull] << '\n'
            << "deepest level: " << m_deepest << '\n';
    }

private:
    std::map<qvjson::Type, std::size_t> m_counts;
    std::size_t m_keys = 0;
    std::size_t m_deepest = 0;
};

bool readAll(std::istream & in, Vontal::u8string & text)
{
    std::array<char, 65536> piece;
    while (in.read(piece.data(), piece.size()) || in.gcount() != 0)
        text.append(piece.data(), static_cast<std::size_t>(in.gcount()));
    return !in.bad();
}

bool readAll(const std::string & name, Vontal::u8string & text)
{
    if (name == "-")
        return readAll(std::cin, text);
    std::ifstream file(name, std::ios::binary);
    return file && readAll(file, text);
}

int run(const std::string & name, bool wantStatistics)
{
    Vontal::u8string text;
    if (!readAll(name, text))
    {
        std::cerr << "json_compact: cannot read " << name << '\n';
        return 2;
    }
    //! [parse]
    qvbase::Reference<qvjson::Item> root;
    VontalException exception;
    if (!qvjson::jsonParse(text, root, exception))
    {
        std::cerr << exception.format() << '\n';
        return 1;
    }
    //! [parse]
    if (wantStatistics)
    {
        Statistics statistics;
        statistics.walk(root);
        statistics.print(std::cout);
        return 0;
    }
    qvbase::Reference<qvjson::JSONPrinter> printer;
    if (!qvjson::jsonPrinterFactory(&std::cout, printer))
        return 2;
    ExactPrinter(*printer).walk(root);
    std::cout << std::endl;
    return std::cout ? 0 : 2;
}

} // namespace

int main(int argc, char ** argv)
{
    std::string name = "-";
    bool wantStatistics = false;
    int names = 0;
    for (int i = 1; i < argc; ++i)
    {
        const std::string argument = argv[i];
        if (argument == "--stats")
        {
            wantStatistics = true;
        }
        else if (argument.size() > 1 && argument[0] == '-')
        {
            names = 2;
        }
        else
        {
            name = argument;
            ++names;
        }
    }
    if (names > 1)
    {
        std::cerr << "usage: json_compact [--stats] [FILE]\n";
        return 2;
    }
    return run(name, wantStatistics);
}
