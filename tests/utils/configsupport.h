/// What the tests of settings share.
#pragma once

#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/utils/Config.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <vector>

namespace configtest
{

inline std::string valueOf(const qvutils::Config & config, const std::string & name)
{
    Vontal::u8string value = "(none)";
    config.getItemString(name, value);
    return value;
}

inline std::string namesOf(qvutils::Config & config)
{
    std::list<const qvutils::Config::Item *> items;
    config.getItems(items);
    std::string names;
    for (const qvutils::Config::Item * const item : items)
        names += item->getName() + " ";
    return names;
}

/// The entries as "file:line text", the oldest first.
inline std::string entriesOf(const VontalException & error)
{
    std::string entries;
    for (const VontalExceptionDescription * entry = error.first; entry != nullptr; entry = entry->next)
    {
        const std::string text = entry->file + ":" + std::to_string(entry->line) + " " + entry->text;
        entries = text + (entries.empty() ? "" : "|" + entries);
    }
    return entries;
}

/// Remembers what it is told, and may do something more.
class Listener : public qvutils::Config::ItemChangeListener
{
public:
    void itemChanged(const qvutils::Config::Item * item) override
    {
        heard.push_back(item->getName() + "=" + item->getEffectiveValue());
        last = item;
        if (reaction)
            reaction();
    }

    std::vector<std::string> heard;
    /// What it was told of last, which may be gone.
    const qvutils::Config::Item * last = nullptr;
    std::function<void()> reaction;
};

/// Loads the children of a root element into a store.
inline bool loadItems(qvutils::Config & config, const std::string & items, VontalException & error,
    const Vontal::u8string & source = "s")
{
    qvxml::XMLDocPtr document;
    EXPECT_TRUE(document.loadBuffer(Vontal::u8string("<Config>" + items + "</Config>"))) << items;
    return config.loadXML(source, *document.getRootElement(), error);
}

/// The same, where nothing is to be refused.
inline bool loadItems(qvutils::Config & config, const std::string & items)
{
    VontalException error;
    const bool loaded = loadItems(config, items, error);
    EXPECT_EQ(entriesOf(error), "");
    return loaded;
}

} // namespace configtest
