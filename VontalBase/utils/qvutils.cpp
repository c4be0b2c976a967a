// The store of settings, and every failure that names this file.

#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/ml_u8string.h"
#include "VontalBase/utils/Config.h"
#include "VontalBase/utils/ItemTable.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qvutils
{

namespace
{

// The positions that failures have.
constexpr int lineOfFile = 0; // Kept: the file cannot be read, and the position has no line.
constexpr int lineOfRoot = 424;
constexpr int lineOfTag = 429;
constexpr int lineOfItems = 434;
constexpr int lineOfName = 454;
constexpr int lineOfAdding = 467;

/// Adds an entry to the record. Returns false, for the caller to return.
bool refuse(VontalException & error, int line, const Vontal::u8string & text)
{
    error.add("qvutils", line, text);
    return false;
}

int numberOf(const Vontal::u8string & text)
{
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<int>(
        std::clamp<long long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace

/// Keeps an item for the time of a call, also if the store lets it go meanwhile.
class Config::Item::Pin
{
public:
    explicit Pin(Item & item) : m_item(item)
    {
        ++m_item.pins;
    }
    Pin(const Pin &) = delete;
    Pin & operator=(const Pin &) = delete;
    ~Pin()
    {
        --m_item.pins;
        if (m_item.isRemoved)
            destroy(&m_item);
    }

private:
    Item & m_item;
};

Config::Item::Item(const Vontal::u8string & itemName, ItemType itemType, const Vontal::u8string & itemSource)
    : type(itemType), name(itemName), source(itemSource)
{
}

// NOLINTNEXTLINE(bugprone-copy-constructor-init): the listeners are not copied.
Config::Item::Item(const Item & other)
    : qvbase::ListenerContainer<ItemChangeListener>(), type(other.type), note(other.note), name(other.name),
      value(other.value), defaultValue(other.defaultValue), source(other.source), hasValue(other.hasValue),
      localStatus(other.localStatus)
{
}

const Vontal::u8string & Config::Item::getName() const noexcept
{
    return name;
}

Config::ItemType Config::Item::getType() const noexcept
{
    return type;
}

const Vontal::u8string & Config::Item::getEffectiveValue() const noexcept
{
    return hasValue ? value : defaultValue;
}

const Vontal::u8string & Config::Item::getDefaultValue() const noexcept
{
    return defaultValue;
}

bool Config::Item::hasAssignedValue() const noexcept
{
    return hasValue;
}

const Vontal::u8string & Config::Item::getSource() const noexcept
{
    return source;
}

int Config::Item::getLocalStatus() const noexcept
{
    return localStatus;
}

void Config::Item::destroy(Item * item)
{
    item->isRemoved = true;
    if (item->pins == 0)
        delete item;
}

void Config::Item::setValue(const Vontal::u8string & text)
{
    value = text;
    hasValue = true;
    if (getListeners().empty())
        return;
    const Pin pin(*this);
    const std::vector<ItemChangeListener *> listeners = getListeners();
    for (ItemChangeListener * const listener : listeners)
        listener->itemChanged(this);
}

Config::Config() : items(new ItemTable), mode(Strict)
{
}

Config::Config(const Config & other) : Config()
{
    // The destructor frees the copies made so far if the next one cannot be made.
    mode = other.mode;
    defaultSource = other.defaultSource;
    other.items->forEach(
        [this](const Item * item)
        {
            auto copy = std::make_unique<Item>(*item);
            items->insert(copy.get());
            copy.release(); // NOLINT(bugprone-unused-return-value): the table has it.
        });
}

Config::~Config()
{
    Config::clear();
    delete items;
}

// Kept: both stores have one map from here on, and what this one had is not destroyed.
Config & Config::operator=(const Config & other) = default;

Config::Item * Config::getItemInternal(const Vontal::u8string & name)
{
    return items->find(name);
}

Config::Item * Config::addItemInternal(
    const Vontal::u8string & name, ItemType type, const Vontal::u8string & source)
{
    if (Item * const known = items->find(name))
        return known;
    auto item = std::make_unique<Item>(name, type, source);
    items->insert(item.get());
    return item.release();
}

void Config::getItems(std::list<const Item *> & out)
{
    const std::vector<Item *> all = items->inOrder();
    out.insert(out.end(), all.begin(), all.end());
}

const Config::Item * Config::addItem(
    const Vontal::u8string & name, const Vontal::u8string & source, const Vontal::u8string & value)
{
    Item * const item = addItemInternal(name, String, source);
    if (item == nullptr)
        return nullptr;
    // A listener may remove the item.
    const Item::Pin pin(*item);
    item->setValue(value);
    return item->isRemoved ? nullptr : item;
}

const Config::Item * Config::addItem(const Vontal::u8string & name, const Vontal::u8string & source)
{
    return addItemInternal(name, String, source);
}

bool Config::removeItem(const Vontal::u8string & name)
{
    Item * const item = items->find(name);
    if (item == nullptr)
        return false;
    items->erase(item);
    Item::destroy(item);
    return true;
}

void Config::clear()
{
    ItemTable removed;
    std::swap(removed, *items);
    removed.forEach(&Item::destroy);
}

bool Config::loadXML(
    const Vontal::u8string & source, const Vontal::u8string & fileName, VontalException & error)
{
    qvxml::XMLDocPtr document;
    if (!document.loadFile(fileName))
        return refuse(error, lineOfFile, "Cannot read file: " + fileName);
    qvxml::Node * const root = document.getRootElement();
    // A document that has been loaded has a root: this is a service that does not give it out.
    if (root == nullptr)
        return refuse(error, lineOfRoot, "Cannot get root element");
    if (!root->isNodeName("Config"))
        return refuse(error, lineOfTag, "File is not configuration, expected tag <Config>");
    // Kept: the message is misspelt.
    return loadXML(source, *root, error) || refuse(error, lineOfItems, "Filed to read configuration");
}

bool Config::loadXML(const Vontal::u8string & source, qvxml::Node & node, VontalException & error)
{
    // The argument may be the source of an item, which a listener may remove.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const Vontal::u8string sourceOfNew = source;
    qvxml::Node * child = node.getFirstChild("Item");
    for (; child != nullptr; child = child->getNextSibling("Item"))
    {
        if (!loadItem(sourceOfNew, *child, error))
            return false;
    }
    return true;
}

bool Config::loadItem(const Vontal::u8string & source, qvxml::Node & node, VontalException & error)
{
    Vontal::u8string name;
    if (!node.getProperty("name", name) || name.empty())
        return refuse(error, lineOfName, "<Item> with empty name.");
    Vontal::u8string type;
    node.getProperty("type", type);

    Item * item = getItemInternal(name);
    if (item == nullptr)
        item = addItemInternal(name, type == "int" ? Integer : String, source);
    if (item == nullptr)
        return refuse(error, lineOfAdding, "Failed to add item");

    // A listener may remove the item.
    const Item::Pin pin(*item);
    node.getProperty("default", item->defaultValue);
    Vontal::u8string value;
    const bool hasValueAttribute = node.getProperty("value", value);
    if (hasValueAttribute)
        item->setValue(value);
    node.getProperty("local", item->localStatus);
    if (hasValueAttribute || node.getFirstChild() == nullptr)
        return true;
    Vontal::ml_u8string languages;
    Vontal::u8string tag("Value");
    if (languages.read(&node, tag))
        item->setValue(languages.get());
    return true;
}

const Config::Item * Config::getItem(const Vontal::u8string & name) const
{
    return items->find(name);
}

bool Config::getItemInt(const Vontal::u8string & name, int & out) const
{
    const Item * const item = Config::getItem(name);
    if (item == nullptr)
        return false;
    out = numberOf(item->getEffectiveValue());
    return true;
}

bool Config::getItemString(const Vontal::u8string & name, Vontal::u8string & out) const
{
    const Item * const item = Config::getItem(name);
    if (item == nullptr)
        return false;
    out = item->getEffectiveValue();
    return true;
}

Config::Item * Config::itemToSet(const Vontal::u8string & name, ItemType type)
{
    Item * const item = getItemInternal(name);
    if (item != nullptr || mode != AutoCreate)
        return item;
    return addItemInternal(name, type, defaultSource);
}

bool Config::setItemInt(const Vontal::u8string & name, int value)
{
    const Vontal::u8string text = std::to_string(value);
    Item * const item = itemToSet(name, Integer);
    if (item == nullptr)
        return false;
    item->setValue(text);
    return true;
}

bool Config::setItemString(const Vontal::u8string & name, const Vontal::u8string & value)
{
    Item * const item = itemToSet(name, String);
    if (item == nullptr)
        return false;
    item->setValue(value);
    return true;
}

bool Config::setItemLocalStatus(const Vontal::u8string & name, int status)
{
    Item * const item = itemToSet(name, String);
    if (item == nullptr)
        return false;
    item->localStatus = status;
    return true;
}

void Config::setMode(ConfigMode newMode)
{
    mode = newMode;
}

void Config::setDefaultSource(const Vontal::u8string & source)
{
    defaultSource = source;
}

void Config::registerListener(const Vontal::u8string & name, ItemChangeListener * listener)
{
    if (Item * const item = items->find(name))
        item->registerListener(listener);
}

void Config::unregisterListener(const Vontal::u8string & name, ItemChangeListener * listener)
{
    if (Item * const item = items->find(name))
        item->unregisterListener(listener);
}

bool Config::saveSettings(qvxml::XMLDocPtr & doc, int localFilter) const
{
    qvxml::Node * const root = doc.create("Config");
    if (root == nullptr)
        return false;
    for (const Item * const item : items->inOrder())
    {
        if (localFilter >= 0 && item->localStatus != localFilter)
            continue;
        qvxml::Node * const child = root->createChild("Item");
        if (child == nullptr)
            return false;
        child->setProperty("name", item->name);
        child->setProperty("value", item->getEffectiveValue());
    }
    return true;
}

} // namespace qvutils
