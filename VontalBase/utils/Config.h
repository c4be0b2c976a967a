/// @file
/// The store of settings.
#pragma once

#include "VontalBase/core/ListenerContainer.h"
#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <list>

class VontalException;

namespace qvxml
{
class Node;
class XMLDocPtr;
} // namespace qvxml

namespace qvutils
{

/// Named settings, filled from one or more XML files, each of which overlays the ones before.
///
/// A setting has a default and a value. It is read as its value if one was ever assigned, and as its default
/// otherwise. Names are compared byte by byte.
///
/// A file has a root element "Config" with elements "Item" below it, whose attributes are "name" (the key,
/// never empty), "type" ("int" for a number, anything else is a text; counts for new items only), "default",
/// "value" and "local" (a number that selects items for saving). An item without the attribute "value" may
/// have child elements "Value" instead, one for each language: see `Vontal::ml_u8string`. Everything else in
/// the file is passed over.
///
/// A store, its items and all calls of listeners belong to one thread at a time. Nothing throws for bad
/// input; `std::bad_alloc` and what the XML service throws (see `qvxml::XMLDocPtr`) may leave every
/// operation.
class VONTALBASE_API Config
{
public:
    class Item;

    /// What setting an unknown item does.
    enum ConfigMode : int
    {
        /// It fails.
        Strict = 0,
        /// It makes the item.
        AutoCreate = 1
    };

    /// What an item was declared as. No operation of the store looks at it.
    enum ItemType : int
    {
        Integer = 0,
        String = 1
    };

    /// Is told when an item's value is assigned, even to what it was. Listeners belong to the application.
    class ItemChangeListener
    {
    public:
        /// The value of @p item was assigned. The call may do anything with the store but destroy it, also
        /// unregister listeners; those that were registered when the value was assigned are called all the
        /// same, and must live until then. An item that is removed during the call stays valid until the last
        /// of them returns.
        virtual void itemChanged(const Item * item) = 0;

    protected:
        ~ItemChangeListener() = default;
    };

protected:
    /// The item of a name.
    /// @return null if there is none.
    virtual Item * getItemInternal(const Vontal::u8string & name);
    /// The item of a name, made if there is none.
    /// @param name the name.
    /// @param type what a new item is declared as; an old one keeps its own.
    /// @param source where a new item comes from; an old one keeps its own.
    /// @return the item, which is the store's. An override may return null to refuse.
    virtual Item * addItemInternal(
        const Vontal::u8string & name, ItemType type, const Vontal::u8string & source);

public:
    /// Destroys all items, but no listeners.
    virtual ~Config();

    /// Appends all items to @p out in the order of their names. They are the store's, and each is valid until
    /// it is removed, or the store is cleared or destroyed.
    virtual void getItems(std::list<const Item *> & out);
    /// Adds a text item, unless there is one of that name, and assigns its value in both cases.
    /// @return the item, which is the store's and valid until it is removed, or the store is cleared or
    ///     destroyed; null if it was refused, or if a listener removed it.
    virtual const Item * addItem(
        const Vontal::u8string & name, const Vontal::u8string & source, const Vontal::u8string & value);
    /// Adds a text item, unless there is one of that name.
    /// @return the item, as above; null if it was refused.
    virtual const Item * addItem(const Vontal::u8string & name, const Vontal::u8string & source);
    /// Destroys an item.
    /// @return false if there is none of that name.
    virtual bool removeItem(const Vontal::u8string & name);
    /// Destroys all items. The mode and the default source stay.
    virtual void clear();

    /// Loads the items among the children of an element.
    /// @param source where items that are new come from.
    /// @param node the parent of the items; its own name does not matter.
    /// @param error receives an entry on failure.
    /// @return false on failure. What was read before it stays, and listeners have been told of it.
    virtual bool loadXML(const Vontal::u8string & source, qvxml::Node & node, VontalException & error);
    /// Loads a file.
    /// @param source where items that are new come from.
    /// @param fileName its path, in UTF-8.
    /// @param error receives one or two entries on failure. Where the file is no well-formed document, a line
    ///     that says why goes to the standard wide error stream as well.
    /// @return as above.
    virtual bool loadXML(
        const Vontal::u8string & source, const Vontal::u8string & fileName, VontalException & error);

    /// The item of a name, or null. It is the store's, and valid until it is removed, or the store is cleared
    /// or destroyed.
    virtual const Item * getItem(const Vontal::u8string & name) const;
    /// Reads an item as a decimal number: blanks, a sign, digits; what follows them is ignored.
    ///
    /// Kept: a text that is no number gives 0 and true.
    /// @param name the name.
    /// @param out receives the number, or the nearest one that fits.
    /// @return false, with @p out as it was, if there is no such item.
    virtual bool getItemInt(const Vontal::u8string & name, int & out) const;
    /// Reads an item as text.
    /// @return false, with @p out as it was, if there is no such item.
    virtual bool getItemString(const Vontal::u8string & name, Vontal::u8string & out) const;
    /// Assigns a number.
    /// @return false if there is no such item and the mode does not make one.
    virtual bool setItemInt(const Vontal::u8string & name, int value);
    /// Assigns a text.
    /// @return as above.
    virtual bool setItemString(const Vontal::u8string & name, const Vontal::u8string & value);
    /// Sets the number that selects an item for saving. No listener is told.
    /// @return as above.
    virtual bool setItemLocalStatus(const Vontal::u8string & name, int status);

    /// An empty store in the mode `Strict` with an empty default source.
    Config();
    /// Copies the mode, the default source and all items. The copies have no listeners.
    Config(const Config & other);
    /// Shares the items of @p other and copies its mode and default source.
    ///
    /// Kept: the assignment is shallow, and what this store had is not destroyed. Only one of the two may be
    /// destroyed.
    Config & operator=(const Config & other);

    /// Chooses what setting an unknown item does. Kept: what is not `AutoCreate` acts as `Strict`.
    void setMode(ConfigMode newMode);
    /// Sets the source of items that setting makes.
    void setDefaultSource(const Vontal::u8string & source);
    /// Registers a listener with an item; nothing happens where there is none of that name.
    /// @param name the name.
    /// @param listener stays the caller's, and must live until it is unregistered or the item is gone, and a
    ///     notification that is under way then has ended; not null.
    void registerListener(const Vontal::u8string & name, ItemChangeListener * listener);
    /// Removes the first registration of a listener with an item; nothing happens where there is none.
    void unregisterListener(const Vontal::u8string & name, ItemChangeListener * listener);

    /// Makes a document of items.
    ///
    /// Kept: the names and the effective values alone are saved. An item that has only a default gets it as
    /// its value, and all are texts when they are loaded again.
    /// @param doc receives the new document; what it held, and the nodes of that, go. A name or a value ends
    ///     at its first NUL there.
    /// @param localFilter the local status of the items to save; a negative number saves all.
    /// @return false if the XML service refused an element; the document then has what was written before, or
    ///     is as it was if that was the root. An attribute that it refuses is missing without a report.
    bool saveSettings(qvxml::XMLDocPtr & doc, int localFilter) const;

private:
    class ItemTable;

    bool loadItem(const Vontal::u8string & source, qvxml::Node & node, VontalException & error);
    Item * itemToSet(const Vontal::u8string & name, ItemType type);

    ItemTable * items;
    ConfigMode mode;
    Vontal::u8string defaultSource;
};

/// A setting.
class VONTALBASE_API Config::Item : public qvbase::ListenerContainer<Config::ItemChangeListener>
{
public:
    /// A setting without a default and a value.
    Item(const Vontal::u8string & itemName, ItemType itemType, const Vontal::u8string & itemSource);
    /// Copies everything but the listeners.
    Item(const Item & other);
    Item & operator=(const Item &) = delete;

    /// The key.
    const Vontal::u8string & getName() const noexcept;
    /// What it was declared as.
    ItemType getType() const noexcept;
    /// The value if one was ever assigned, otherwise the default.
    const Vontal::u8string & getEffectiveValue() const noexcept;
    /// The default.
    const Vontal::u8string & getDefaultValue() const noexcept;
    /// Whether a value was ever assigned, even an empty one.
    bool hasAssignedValue() const noexcept;
    /// Where it comes from.
    const Vontal::u8string & getSource() const noexcept;
    /// The number that selects it for saving.
    int getLocalStatus() const noexcept;

private:
    friend class Config;
    class Pin;

    /// Destroys an item, or has the notification that is under way do so at its end.
    static void destroy(Item * item);
    void setValue(const Vontal::u8string & text);

    ItemType type;
    /// Kept: part of the form of the object. Nothing reads it.
    Vontal::u8string note;
    Vontal::u8string name;
    Vontal::u8string value;
    Vontal::u8string defaultValue;
    Vontal::u8string source;
    bool hasValue = false;
    int localStatus = 0;
    // How many calls need the item, and whether it is no longer in the store.
    int pins = 0;
    bool isRemoved = false;
};

} // namespace qvutils
