// Documents, settings, list databases and multi-language strings, beside libxml2 with standard containers.
// Files lie in the cache of the system.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlversion.h>
#include <list>
#include <malloc.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

[[maybe_unused]] const bool isDescribed = bench::describe("XML, settings, lists and translated strings",
    "Documents loaded, walked and saved; settings and lists loaded and searched; strings that switch their "
    "language. Of list_memory_as_time the numbers are bytes, not time.",
    {{"libxml2", "libxml2 " LIBXML_DOTTED_VERSION},
        {"libxml2+map", "libxml2 " LIBXML_DOTTED_VERSION " and a std::map"},
        {"map", "std::map of " + bench::standardLibrary},
        {"structs", "nodes of std::string, std::map and std::list, of " + bench::standardLibrary},
        {"set", "std::set of the addresses of plain objects"}});

void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Files that are made once, for the whole run.
class Files
{
public:
    Files() : m_directory(fs::temp_directory_path() / "vontalbase-xml-bench")
    {
        fs::remove_all(m_directory);
        fs::create_directory(m_directory);
    }
    Files(const Files &) = delete;
    Files & operator=(const Files &) = delete;
    ~Files()
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    const std::string & get(const std::string & name, const std::function<std::string()> & make)
    {
        std::string & path = m_made[name];
        if (path.empty())
        {
            path = (m_directory / name).string();
            std::ofstream(path, std::ios::binary) << make();
        }
        return path;
    }

private:
    fs::path m_directory;
    std::map<std::string, std::string> m_made;
};

Files & files()
{
    static Files instance;
    return instance;
}

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

Document parse(const std::string & path)
{
    Document document(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_HUGE), &xmlFreeDoc);
    require(document != nullptr);
    return document;
}

std::string attribute(xmlNode * element, const char * name)
{
    xmlChar * const value = xmlGetProp(element, reinterpret_cast<const xmlChar *>(name));
    std::string text = value != nullptr ? reinterpret_cast<const char *>(value) : "";
    xmlFree(value);
    return text;
}

xmlNode * elementFrom(xmlNode * node)
{
    while (node != nullptr && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

/// A time that a benchmark measures itself.
class Stopwatch
{
public:
    void stop(benchmark::State & state) const
    {
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count());
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// Settings

std::string settingName(std::size_t number)
{
    return "application.section" + std::to_string(number % 97) + ".setting" + std::to_string(number);
}

const std::string & settingsFile(std::size_t count)
{
    return files().get("settings" + std::to_string(count),
        [count]
        {
            std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Config>\n";
            for (std::size_t i = 0; i < count; ++i)
                text += "  <Item name=\"" + settingName(i) + "\" type=\"string\" default=\"default " +
                        std::to_string(i) + "\" value=\"value " + std::to_string(i * 7) + "\"/>\n";
            return text + "</Config>\n";
        });
}

void loadOurs(benchmark::State & state, std::size_t count)
{
    const Vontal::u8string path = settingsFile(count);
    for (auto step : state)
    {
        qvutils::Config config;
        VontalException error;
        require(config.loadXML("file", path, error));
        benchmark::DoNotOptimize(config);
    }
}

std::map<std::string, std::string> loadMap(const std::string & path)
{
    std::map<std::string, std::string> settings;
    const Document document = parse(path);
    xmlNode * const root = xmlDocGetRootElement(document.get());
    for (xmlNode * node = elementFrom(root->children); node != nullptr; node = elementFrom(node->next))
        settings[attribute(node, "name")] = attribute(node, "value");
    return settings;
}

void loadLibxml2(benchmark::State & state, std::size_t count)
{
    const std::string & path = settingsFile(count);
    for (auto step : state)
    {
        const auto settings = loadMap(path);
        require(settings.size() == count);
    }
}

/// Names in an order that no cache likes.
std::vector<Vontal::u8string> shuffledNames(std::size_t count)
{
    std::vector<Vontal::u8string> names;
    for (std::size_t i = 0; i < count; ++i)
        names.emplace_back(settingName((i * 7919) % count));
    return names;
}

void lookUpOurs(benchmark::State & state, std::size_t count)
{
    qvutils::Config config;
    VontalException error;
    require(config.loadXML("file", settingsFile(count), error));
    const std::vector<Vontal::u8string> names = shuffledNames(count);
    std::size_t next = 0;
    for (auto step : state)
    {
        benchmark::DoNotOptimize(config.getItem(names[next]));
        next = next + 1 == count ? 0 : next + 1;
    }
}

void lookUpMap(benchmark::State & state, std::size_t count)
{
    const auto settings = loadMap(settingsFile(count));
    const std::vector<Vontal::u8string> names = shuffledNames(count);
    std::size_t next = 0;
    for (auto step : state)
    {
        benchmark::DoNotOptimize(settings.find(names[next]));
        next = next + 1 == count ? 0 : next + 1;
    }
}

// List databases

const std::string & listFile(std::size_t count)
{
    return files().get("list" + std::to_string(count),
        [count]
        {
            std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<list version=\"1\">\n";
            for (std::size_t i = 0; i < count; i += 10)
            {
                text += " <group id=\"" + std::to_string(i) + "\">\n";
                for (std::size_t j = i + 1; j < i + 10; ++j)
                    text += "  <item id=\"" + std::to_string(j) + "\" name=\"name " + std::to_string(j) +
                            "\"/>\n";
                text += " </group>\n";
            }
            return text + "</list>\n";
        });
}

void listOurs(benchmark::State & state, std::size_t count)
{
    const Vontal::u8string path = listFile(count);
    for (auto step : state)
    {
        auto database = std::make_unique<qv_soop::soop_db>();
        const Stopwatch watch;
        require(database->init(path));
        watch.stop(state);
    }
}

void listLibxml2(benchmark::State & state, std::size_t count)
{
    const std::string & path = listFile(count);
    for (auto step : state)
    {
        const Stopwatch watch;
        const Document document = parse(path);
        watch.stop(state);
    }
}

/// What anybody would write for the content of a list.
struct Plain
{
    Plain * parent = nullptr;
    std::string name;
    std::map<std::string, std::string> attributes;
    std::list<std::unique_ptr<Plain>> children;
};

void fill(Plain & plain, xmlNode * element)
{
    plain.name = reinterpret_cast<const char *>(element->name);
    for (xmlAttr * held = element->properties; held != nullptr; held = held->next)
        plain.attributes.emplace(reinterpret_cast<const char *>(held->name),
            reinterpret_cast<const char *>(held->children->content));
    for (xmlNode * node = elementFrom(element->children); node != nullptr; node = elementFrom(node->next))
    {
        plain.children.push_back(std::make_unique<Plain>());
        plain.children.back()->parent = &plain;
        fill(*plain.children.back(), node);
    }
}

double bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

void listMemoryOurs(benchmark::State & state, std::size_t count)
{
    const Vontal::u8string path = listFile(count);
    for (auto step : state)
    {
        const double before = bytesInUse();
        qv_soop::soop_db database;
        require(database.init(path));
        state.SetIterationTime((bytesInUse() - before) * 1e-9);
    }
}

void listMemoryPlain(benchmark::State & state, std::size_t count)
{
    const std::string & path = listFile(count);
    for (auto step : state)
    {
        const double before = bytesInUse();
        Plain root;
        fill(root, xmlDocGetRootElement(parse(path).get()));
        state.SetIterationTime((bytesInUse() - before) * 1e-9);
    }
}

void addListOurs(benchmark::State & state, std::size_t count)
{
    qv_soop::soop_db source;
    require(source.init(listFile(count)));
    for (auto step : state)
    {
        state.PauseTiming();
        // Shares the nodes, which it must not destroy.
        alignas(qv_soop::soop_db) std::byte place[sizeof(qv_soop::soop_db)];
        auto * const database = new (place) qv_soop::soop_db(source);
        state.ResumeTiming();
        require(database->addList("item"));
        state.PauseTiming();
        require(database->getList("item").size() == count / 10 * 9);
        const_cast<std::list<qv_soop::soop_node *> &>(database->getList("item")).clear();
        state.ResumeTiming();
    }
}

void getNodeOurs(benchmark::State & state, std::size_t count)
{
    qv_soop::soop_db database;
    require(database.init(listFile(count)));
    const std::string last = std::to_string(count - 1);
    for (auto step : state)
        require(database.getNode("item", "id", last) != nullptr);
}

// Documents

constexpr std::size_t mebibyte = std::size_t{1} << 20;

const std::string & documentFile(std::size_t size)
{
    return files().get("document" + std::to_string(size),
        [size]
        {
            std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<library>\n";
            for (std::size_t i = 0; text.size() < size; ++i)
                text += "  <book id=\"" + std::to_string(i) +
                        "\" lang=\"en\">\n    <title>The title of number " + std::to_string(i) +
                        "</title>\n    <author born=\"19" + std::to_string(i % 100) +
                        "\">Somebody Else</author>\n    <pages>" + std::to_string(i % 999) +
                        "</pages>\n  </book>\n";
            return text + "</library>\n";
        });
}

std::size_t countNodes(qvxml::Node * root)
{
    std::size_t count = 0;
    std::vector<qvxml::Node *> open = {root};
    while (!open.empty())
    {
        qvxml::Node * const node = open.back();
        open.pop_back();
        ++count;
        if (qvxml::Node * const next = count > 1 ? node->getNextSibling() : nullptr)
            open.push_back(next);
        if (qvxml::Node * const child = node->getFirstChild())
            open.push_back(child);
    }
    return count;
}

std::size_t countElements(xmlNode * root)
{
    std::size_t count = 0;
    std::vector<xmlNode *> open = {root};
    while (!open.empty())
    {
        xmlNode * const node = open.back();
        open.pop_back();
        ++count;
        if (xmlNode * const next = elementFrom(node->next))
            open.push_back(next);
        if (xmlNode * const child = elementFrom(node->children))
            open.push_back(child);
    }
    return count;
}

/// The first walk makes the nodes.
void walkOurs(benchmark::State & state, std::size_t size, bool again)
{
    const Vontal::u8string path = documentFile(size);
    for (auto step : state)
    {
        qvxml::XMLDocPtr document;
        require(document.loadFile(path));
        if (again)
            countNodes(document.getRootElement());
        const Stopwatch watch;
        benchmark::DoNotOptimize(countNodes(document.getRootElement()));
        watch.stop(state);
    }
}

void walkLibxml2(benchmark::State & state, std::size_t size, bool again)
{
    const std::string & path = documentFile(size);
    for (auto step : state)
    {
        const Document document = parse(path);
        if (again)
            countElements(xmlDocGetRootElement(document.get()));
        const Stopwatch watch;
        benchmark::DoNotOptimize(countElements(xmlDocGetRootElement(document.get())));
        watch.stop(state);
    }
}

void parseOurs(benchmark::State & state, std::size_t size)
{
    const Vontal::u8string path = documentFile(size);
    for (auto step : state)
    {
        qvxml::XMLDocPtr document;
        require(document.loadFile(path));
    }
}

void parseLibxml2(benchmark::State & state, std::size_t size)
{
    const std::string & path = documentFile(size);
    for (auto step : state)
        parse(path);
}

void saveOurs(benchmark::State & state, std::size_t size)
{
    qvxml::XMLDocPtr document;
    require(document.loadFile(Vontal::u8string(documentFile(size))));
    for (auto step : state)
    {
        std::string text;
        require(document.saveBuffer(text, false));
        benchmark::DoNotOptimize(text.data());
    }
}

void saveLibxml2(benchmark::State & state, std::size_t size)
{
    const Document document = parse(documentFile(size));
    for (auto step : state)
    {
        xmlChar * memory = nullptr;
        int length = 0;
        xmlDocDumpMemory(document.get(), &memory, &length);
        const std::string text(reinterpret_cast<const char *>(memory), static_cast<std::size_t>(length));
        xmlFree(memory);
        benchmark::DoNotOptimize(text.data());
    }
}

// Multi-language strings, beside a set of the addresses of as many plain objects

using Text = Vontal::ml_u8string;

struct PlainText
{
    virtual ~PlainText() = default;

    std::string language = "C";
    std::string value;
    std::map<std::string, std::string> * translations = nullptr;
};

enum class Part
{
    Construct,
    Switch,
    Destroy
};

void textsOurs(benchmark::State & state, std::size_t count, Part measured)
{
    bool german = false;
    for (auto step : state)
    {
        std::unique_ptr<std::byte[]> memory(new std::byte[count * sizeof(Text)]);
        Text * const texts = reinterpret_cast<Text *>(memory.get());
        const Stopwatch construction;
        for (std::size_t i = 0; i < count; ++i)
            new (&texts[i]) Text;
        if (measured == Part::Construct)
            construction.stop(state);
        german = !german;
        const Stopwatch switching;
        Vontal::ml_u8string_set_default_language(german ? "de" : "en");
        if (measured == Part::Switch)
            switching.stop(state);
        const Stopwatch destruction;
        for (std::size_t i = 0; i < count; ++i)
            texts[i].~Text();
        if (measured == Part::Destroy)
            destruction.stop(state);
    }
}

/// What entering all addresses into a set costs, going through it, and taking them out.
void textsSet(benchmark::State & state, std::size_t count, Part measured)
{
    for (auto step : state)
    {
        std::vector<PlainText> texts(count);
        std::set<PlainText *> live;
        const Stopwatch construction;
        for (PlainText & text : texts)
            live.insert(&text);
        if (measured == Part::Construct)
            construction.stop(state);
        const Stopwatch switching;
        for (PlainText * const text : live)
            text->language = "DE";
        if (measured == Part::Switch)
            switching.stop(state);
        const Stopwatch destruction;
        for (PlainText & text : texts)
            live.erase(&text);
        if (measured == Part::Destroy)
            destruction.stop(state);
    }
}

void add(const std::string & name, const std::function<void(benchmark::State &)> & run,
    benchmark::TimeUnit unit = benchmark::kMillisecond, bool isManual = false)
{
    auto * const entry = benchmark::RegisterBenchmark(name.c_str(), run)->Unit(unit);
    if (isManual)
        entry->UseManualTime();
}

bool addSettings()
{
    for (const std::size_t count : {1000U, 10000U, 100000U})
    {
        const std::string name = count == 100000U ? "100k" : "growth:" + std::to_string(count);
        add("config_load/" + name + "/ours", [count](benchmark::State & state) { loadOurs(state, count); });
        add("config_load/" + name + "/libxml2+map",
            [count](benchmark::State & state) { loadLibxml2(state, count); });
    }
    const std::size_t many = 100000;
    add(
        "config_lookup/100k/ours", [many](benchmark::State & state) { lookUpOurs(state, many); },
        benchmark::kNanosecond);
    add(
        "config_lookup/100k/map", [many](benchmark::State & state) { lookUpMap(state, many); },
        benchmark::kNanosecond);
    return true;
}

bool addLists()
{
    for (const std::size_t count : {10000U, 100000U, 1000000U})
    {
        const std::string name = count == 1000000U ? "1M" : "growth:" + std::to_string(count);
        const auto both = [&name](const std::string & workload, const char * peer, const auto & ours,
                              const auto & theirs, benchmark::TimeUnit unit)
        {
            add(workload + "/" + name + "/ours", ours, unit, true);
            add(workload + "/" + name + "/" + peer, theirs, unit, true);
        };
        both(
            "list_load", "libxml2", [count](benchmark::State & state) { listOurs(state, count); },
            [count](benchmark::State & state) { listLibxml2(state, count); }, benchmark::kMillisecond);
        both(
            "list_memory_as_time", "structs",
            [count](benchmark::State & state) { listMemoryOurs(state, count); },
            [count](benchmark::State & state) { listMemoryPlain(state, count); }, benchmark::kMillisecond);
        add("list_get_node/growth:" + std::to_string(count) + "/ours",
            [count](benchmark::State & state) { getNodeOurs(state, count); });
        add("list_add_list/growth:" + std::to_string(count) + "/ours",
            [count](benchmark::State & state) { addListOurs(state, count); });
    }
    return true;
}

bool addDocuments()
{
    for (const std::size_t size : {5 * mebibyte, 50 * mebibyte})
    {
        const std::string name = std::to_string(size / mebibyte) + "MiB";
        for (const bool again : {false, true})
        {
            const std::string workload = again ? "xml_walk_again/" : "xml_walk/";
            add(
                workload + name + "/ours",
                [size, again](benchmark::State & state) { walkOurs(state, size, again); },
                benchmark::kMillisecond, true);
            add(
                workload + name + "/libxml2",
                [size, again](benchmark::State & state) { walkLibxml2(state, size, again); },
                benchmark::kMillisecond, true);
        }
        add("xml_load/" + name + "/ours", [size](benchmark::State & state) { parseOurs(state, size); });
        add("xml_load/" + name + "/libxml2", [size](benchmark::State & state) { parseLibxml2(state, size); });
        add("xml_save/" + name + "/ours", [size](benchmark::State & state) { saveOurs(state, size); });
        add("xml_save/" + name + "/libxml2", [size](benchmark::State & state) { saveLibxml2(state, size); });
    }
    return true;
}

bool addTexts()
{
    const std::pair<Part, const char *> parts[] = {
        {Part::Construct, "construct"}, {Part::Switch, "switch"}, {Part::Destroy, "destroy"}};
    for (const auto & [part, name] : parts)
    {
        const std::size_t count = 100000;
        const std::string workload = std::string("ml_strings_") + name + "/100k/";
        const Part measured = part;
        add(
            workload + "ours", [=](benchmark::State & state) { textsOurs(state, count, measured); },
            benchmark::kMillisecond, true);
        add(
            workload + "set", [=](benchmark::State & state) { textsSet(state, count, measured); },
            benchmark::kMillisecond, true);
    }
    return true;
}

[[maybe_unused]] const bool added = addSettings() && addLists() && addDocuments() && addTexts();

} // namespace
