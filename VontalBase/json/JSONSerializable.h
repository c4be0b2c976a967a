/// @file
/// Binding the members of a class to JSON.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"
#include "VontalBase/json/JSONParserAcceptor.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/text/u8string.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

namespace qvjson
{

class JSONPrinter;
class JSONSerializableArrayProviderInterface;
class JSONRefObjInterface;
class JSONSerializableFactory;
class JSONTreeParser;

/// A class whose members are read from JSON and written to it.
///
/// A class derives from this one and declares each member once, by key and address, in
/// `jsonFieldsDeclare`. Text is parsed straight into the members, without a tree between; a second route
/// fills them from a tree. The two tolerate different things:
///
/// | | from text | from a tree |
/// |---|---|---|
/// | a declared key is absent | the member stays | fails |
/// | a key is not declared | fails | ignored |
/// | an `unsigned long` or a 64-bit integer | set | left as it is, though the key must be there |
/// | a reference to another bound object | set | not assigned |
///
/// Nothing is undone on failure: members that were set stay set. Text that ends early counts as parsed. After
/// a parse that failed or ended early, `jsonEndParse` must run before the object takes text again; one that
/// ended within a tree member is not to be used for text any more.
///
/// Members, factories and providers must outlive the object and its copies; a field holds its factory or
/// provider. Either may be null: the field then refuses objects. Nested objects are filled, printed and
/// destroyed by recursion, so the factory of a class that can hold itself decides how deep a text may go.
///
/// Kept: of integers within a tree member only the low 32 bits are printed.
///
/// Kept: copies share the declared fields, which go on to point into the members of the first object.
///
/// An object is parsed or printed by one thread at a time.
class VONTALBASE_API JSONSerializable : public JSONParserAcceptor, public qvbase::ReferencedObject
{
public:
    /// What the target of a field is. The numbers are fixed.
    enum FieldType : std::uint32_t
    {
        FieldBool = 0,
        FieldInt = 1,
        FieldULong = 2,
        FieldInt64 = 3,
        FieldString = 4,
        FieldStringSet = 5,
        FieldStringVector = 6,
        FieldIntVector = 7,
        FieldInt64Vector = 8,
        FieldTree = 9,
        FieldRawObject = 10,
        FieldReferencedObject = 11,
        FieldObjectVector = 12,
        FieldArrayProvider = 13,
        FieldRefObj = 14
    };

    /// What the target of a field of the types 10 to 12 points at.
    struct FactoryHolder
    {
        /// Makes the objects.
        qvbase::Reference<JSONSerializableFactory> factory;
        /// The address of the member.
        void * member;
    };

    /// One declared member.
    class VONTALBASE_API JSONField
    {
    public:
        /// Makes a field of the types 0 to 9, or of another type whose holder the derived class owns.
        /// @param type what @p target points at.
        /// @param key the key in the text.
        /// @param target the member, or the holder for the types 10 to 14. It is not owned.
        JSONField(std::uint32_t type, const Vontal::u8string & key, void * target);
        JSONField(const JSONField &) = delete;
        JSONField & operator=(const JSONField &) = delete;
        virtual ~JSONField();

        /// A value of `FieldType`.
        std::uint32_t type;
        /// The key in the text.
        Vontal::u8string key;
        /// The member or its holder.
        void * target;

    private:
        friend class JSONSerializable;

        /// Whether the target of an unsigned number is a native `unsigned long` of more than 32 bits.
        bool m_isWide = false;
    };

    JSONSerializable() = default;
    /// Copies what the other one has.
    JSONSerializable(const JSONSerializable &) = default;
    /// Copies what the other one has.
    JSONSerializable & operator=(const JSONSerializable &) = default;

protected:
    JSONParserAcceptor * parserBeginObject() override;
    bool parserEndChildObject(JSONParserAcceptor * child) override;
    bool parserEndObject() override;
    bool parseKey(Vontal::u8string const & key) override;
    bool parseInt(char const * text, unsigned int length) override;
    bool parseString(char const * text, unsigned int length) override;
    bool parseBool(bool value) override;
    bool parseNull() override;
    bool parserBeginArray() override;
    bool parserEndArray() override;

public:
    /// Destroys the fields, unless a copy still shares them.
    virtual ~JSONSerializable();

protected:
    /// Called once when a `fromJson` has read everything, for the outermost object of a text, and for each
    /// object that is filled from a tree. @return whether the members are good. This one says true.
    virtual bool onParseEnd();

public:
    /// Declares the members by calls of `jsonFieldAdd`. Every `fromJson` and `toJson` calls it first, and
    /// `jsonFieldAdd` always appends, so the derived class sees to it that it declares only once.
    virtual void jsonFieldsDeclare() = 0;

    /// Sets the members from text.
    /// @param data the text; need not be NUL-terminated.
    /// @param size its length in bytes.
    /// @param exception receives the failure; its last entry is "Failed to restore from JSON", or
    ///     "Failed to finalized parsed JSON object" where `onParseEnd` refused.
    /// @return whether the text was accepted.
    virtual bool fromJson(char const * data, std::uint64_t size, VontalException & exception);
    /// Sets the members from the bytes of @p text, as the other form does.
    virtual bool fromJson(Vontal::u8string const & text, VontalException & exception);
    /// Sets the members from a tree, in the order of their declaration.
    ///
    /// Kept: `unsigned long` and 64-bit members are left as they are, and objects made for members of the
    /// types 11 and 12 are filled and let go.
    ///
    /// @return false as soon as a key is absent or its item has the wrong type, or if @p object is null.
    virtual bool fromJson(Object * object);

    /// Replaces @p text by this object as JSON. On failure the text stays as it was.
    virtual bool toJson(Vontal::u8string & text);
    /// Writes this object as JSON to a stream. @return false for a null stream, and as the next form does.
    virtual bool toJson(std::basic_ostream<char> * stream);
    /// Prints the members in the order of their declaration.
    /// @param printer where to.
    /// @param wrap whether to print the brackets of the object as well; if not, the caller has opened one.
    /// @return false as soon as something refuses, or if @p printer is null.
    virtual bool toJson(JSONPrinter * printer, bool wrap);

    /// Makes the object ready for the events of one JSON object, as the acceptor of a nested one. Declares
    /// the fields if there are none yet. @return false if it is being parsed already.
    virtual bool jsonBeginParse();
    /// Ends a parse, also one that failed, and calls `onParseEnd` if it did not end within a member.
    /// @return false if there was no parse, if it ended within a member, or if `onParseEnd` refuses.
    virtual bool jsonEndParse();

protected:
    /// Declares a bool.
    void jsonFieldAdd(Vontal::u8string const & key, bool * target);
    /// Declares a 32-bit integer.
    void jsonFieldAdd(Vontal::u8string const & key, int * target);
    /// Declares an unsigned 32-bit integer.
    void jsonFieldAdd(Vontal::u8string const & key, Vontal::ulong32 * target);
    /// Declares an `unsigned long` that is wider than 32 bits: its low 32 bits are printed, and reading
    /// clears the others.
    template <std::same_as<unsigned long> ULong>
    requires(!std::same_as<ULong, Vontal::ulong32>) void jsonFieldAdd(
        Vontal::u8string const & key, ULong * target)
    {
        addNativeULong(key, target);
    }
    /// Declares a 64-bit integer.
    void jsonFieldAdd(Vontal::u8string const & key, std::int64_t * target);
    /// Declares a string.
    void jsonFieldAdd(Vontal::u8string const & key, Vontal::u8string * target);
    /// Declares a set of strings: an array in JSON, printed in sorted order.
    void jsonFieldAdd(Vontal::u8string const & key, std::set<Vontal::u8string> * target);
    /// Declares a list of strings.
    void jsonFieldAdd(Vontal::u8string const & key, std::vector<Vontal::u8string> * target);
    /// Declares a list of 32-bit integers.
    void jsonFieldAdd(Vontal::u8string const & key, std::vector<int> * target);
    /// Declares a list of 64-bit integers.
    void jsonFieldAdd(Vontal::u8string const & key, std::vector<std::int64_t> * target);
    /// Declares any object, which is kept as a tree, or null.
    void jsonFieldAdd(Vontal::u8string const & key, qvbase::Reference<Object> * target);
    /// Declares a nested object, or null. The member holds one reference and gives it back when it is set
    /// anew; at the end it is the derived class's to give back.
    void jsonFieldAdd(
        Vontal::u8string const & key, JSONSerializable ** target, JSONSerializableFactory * factory);
    /// Declares a nested object, or null.
    void jsonFieldAdd(Vontal::u8string const & key, qvbase::Reference<JSONSerializable> * target,
        JSONSerializableFactory * factory);
    /// Declares a list of nested objects.
    void jsonFieldAdd(Vontal::u8string const & key, std::vector<qvbase::Reference<JSONSerializable>> * target,
        JSONSerializableFactory * factory);
    /// Declares a list of nested objects that the provider keeps, or null.
    void jsonFieldAdd(Vontal::u8string const & key,
        const std::shared_ptr<JSONSerializableArrayProviderInterface> & provider);
    /// Declares a nested object that @p object keeps. It is printed as null where @p object keeps none, and
    /// null in a tree changes nothing.
    ///
    /// Kept: null in a text is refused, unlike for the other forms of nested objects.
    void jsonFieldAdd(Vontal::u8string const & key, const std::shared_ptr<JSONRefObjInterface> & object);
    /// Appends a ready field, which is owned from here on. Every other form ends here.
    void jsonFieldAdd(JSONField * field);

private:
    void addNativeULong(Vontal::u8string const & key, void * target);
    bool readULong(std::string_view digits);

    using FieldList = std::vector<std::shared_ptr<JSONField>>;

    bool isAtField(std::uint32_t type) const noexcept;
    bool isAtAnyField() const noexcept;
    void clearField() noexcept;
    JSONParserAcceptor * beginTree();
    JSONParserAcceptor * beginRawObject(const FactoryHolder & holder);
    JSONParserAcceptor * beginReferencedObject(const FactoryHolder & holder);
    JSONParserAcceptor * beginVectorElement(const FactoryHolder & holder);
    bool fromItem(const JSONField & field, Item * item);
    bool print(const JSONField & field, JSONPrinter & printer);

    JSONField * findField(const Vontal::u8string & key);

    FieldList m_fields;
    bool m_isListOpen = false;
    bool m_isParsing = false;
    JSONField * m_field = nullptr;
    std::shared_ptr<JSONTreeParser> m_childParser;
    /// Where the search for the next key begins: fields mostly come in the order of their declaration.
    std::size_t m_expected = 0;
    /// How many fields from the front are known to be the first with their keys.
    std::size_t m_knownFirst = 0;
};

} // namespace qvjson
