#include "VontalBase/platform/posix/xmlparsing.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/xmlguard.h"
#include "VontalBase/platform/posix/xmlscopes.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <algorithm>
#include <cstring>
#include <libxml/dict.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace qvplatform
{

namespace
{

constexpr std::size_t longestLine = 200;

struct FreeContext
{
    void operator()(xmlParserCtxt * context) const noexcept
    {
        // What the parser makes for entities that it reads ahead of us stays with it where it is stopped.
        if (context != nullptr && context->myDoc != nullptr)
        {
            xmlFreeDoc(context->myDoc);
            context->myDoc = nullptr;
        }
        xmlFreeParserCtxt(context);
    }
};

struct ReleaseTree
{
    void operator()(Tree * tree) const noexcept
    {
        tree->release();
    }
};

LONG numberOf(long number) noexcept
{
    return static_cast<LONG>(std::clamp<long>(number, 0, std::numeric_limits<LONG>::max()));
}

/// Builds the tree from what the parser tells. What the parser calls never throws: the first fault is kept,
/// and the parser is brought to its end.
class Builder
{
public:
    Builder(XmlSource & source, const ParseOptions & options, XmlFault & fault) noexcept
        : m_source(source), m_options(options), m_fault(fault)
    {
    }

    Tree * build();

    int read(char * buffer, int size) noexcept;
    void startDocument();
    void doctype();
    void startElement(const xmlChar * name, const xmlChar ** attributes);
    void endElement();
    void characters(std::string_view text);
    void section(std::string_view text);
    void comment(std::string_view text);
    void instruction(const xmlChar * target, std::string_view data);
    void parserFault(const xmlError & error);

    /// Runs what an event asks for, unless the end has come already.
    template <class Function>
    void guard(Function && function) noexcept
    {
        if (m_isStopped)
            return;
        try
        {
            std::forward<Function>(function)();
        }
        catch (...)
        {
            outOfMemory();
        }
    }

private:
    void outOfMemory() noexcept;
    void stop() noexcept;
    void fail(HRESULT code, std::string_view reason);
    void failAt(HRESULT code, std::string_view reason, long line, long position, long byte);
    /// Whether the parser's place in its input can be read.
    [[nodiscard]] bool isInputInPlace() const noexcept;
    std::string presentLine() const;
    void checkEnd();
    void append(xmlNode * node);
    void flushText();
    bool declarePrefixes(const xmlChar ** attributes);
    bool checkName(const xmlChar * name, bool isAttribute);
    void checkDifferent(const xmlChar ** attributes);
    const xmlChar * meaningOf(const xmlChar * name) const;
    const xmlChar * prefixIn(const xmlChar * name) const;

    XmlSource & m_source;
    const ParseOptions m_options;
    XmlFault & m_fault;
    std::unique_ptr<xmlParserCtxt, FreeContext> m_context;
    std::unique_ptr<Tree, ReleaseTree> m_tree;
    xmlNode * m_parent = nullptr;
    int m_depth = 0;
    std::string m_text;
    PrefixScopes<const xmlChar *> m_scopes;
    bool m_isStopped = false;
    bool m_isOutOfMemory = false;
    bool m_sourceFailed = false;
};

// ---------------------------------------------------------------------------------------------------
// What the parser calls

Builder & builderOf(void * context) noexcept
{
    return *static_cast<Builder *>(context);
}

/// The parser's room has two places for each attribute and is doubled when it is full: beyond this there are
/// more than `mostAttributes` for certain.
constexpr int roomOfTooMany = 2 * 2 * mostAttributes;

std::string_view bytesOf(const xmlChar * text, int length) noexcept
{
    return {reinterpret_cast<const char *>(text), static_cast<std::size_t>(std::max(length, 0))};
}

int onRead(void * context, char * buffer, int size)
{
    return builderOf(context).read(buffer, size);
}

int onClose(void *)
{
    return 0;
}

void onStartDocument(void * context)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.startDocument(); });
}

void onDoctype(void * context, const xmlChar *, const xmlChar *, const xmlChar *)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.doctype(); });
}

void onStartElement(void * context, const xmlChar * name, const xmlChar ** attributes)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.startElement(name, attributes); });
}

void onEndElement(void * context, const xmlChar *)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.endElement(); });
}

void onCharacters(void * context, const xmlChar * text, int length)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.characters(bytesOf(text, length)); });
}

void onSection(void * context, const xmlChar * text, int length)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.section(bytesOf(text, length)); });
}

void onComment(void * context, const xmlChar * text)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.comment(viewOf(text)); });
}

void onInstruction(void * context, const xmlChar * target, const xmlChar * data)
{
    Builder & builder = builderOf(context);
    builder.guard([&] { builder.instruction(target, viewOf(data)); });
}

void onFault(void * context, xmlError * error)
{
    Builder & builder = builderOf(context);
    if (error != nullptr && error->level >= XML_ERR_ERROR)
        builder.guard([&] { builder.parserFault(*error); });
}

xmlSAXHandler makeHandler() noexcept
{
    xmlSAXHandler handler{};
    // The older kind of handler: elements are told by whole names, and attributes in the order in which they
    // stand.
    handler.initialized = 1;
    handler.startDocument = onStartDocument;
    handler.internalSubset = onDoctype;
    handler.startElement = onStartElement;
    handler.endElement = onEndElement;
    handler.characters = onCharacters;
    // The same function, or else the parser would judge by itself which white space is of no meaning.
    handler.ignorableWhitespace = onCharacters;
    handler.cdataBlock = onSection;
    handler.comment = onComment;
    handler.processingInstruction = onInstruction;
    return handler;
}

// ---------------------------------------------------------------------------------------------------
// Faults

void Builder::stop() noexcept
{
    m_isStopped = true;
    if (m_context)
    {
        m_context->wellFormed = 0;
        m_context->disableSAX = 1;
    }
}

void Builder::outOfMemory() noexcept
{
    m_isOutOfMemory = true;
    stop();
}

bool Builder::isInputInPlace() const noexcept
{
    const xmlParserInput * const input = m_context->input;
    if (input == nullptr || input->cur == nullptr)
        return false;
    const xmlParserInputBuffer * const buffer = input->buf;
    return buffer == nullptr || buffer->buffer == nullptr || xmlBufContent(buffer->buffer) == input->base;
}

std::string Builder::presentLine() const
{
    const xmlParserInput * const input = m_context->input;
    if (!isInputInPlace())
        return {};
    const xmlChar * start = input->cur;
    while (start > input->base && start[-1] != '\n' &&
           static_cast<std::size_t>(input->cur - start) < longestLine)
        --start;
    const xmlChar * end = input->cur;
    while (end < input->end && *end != '\n' && *end != '\r' && *end != 0 &&
           static_cast<std::size_t>(end - input->cur) < longestLine)
        ++end;
    // Not in the middle of a character.
    while (start < end && (*start & 0xC0) == 0x80)
        ++start;
    while (end > start && end < input->end && (*end & 0xC0) == 0x80)
        --end;
    return std::string(reinterpret_cast<const char *>(start), static_cast<std::size_t>(end - start));
}

void Builder::failAt(HRESULT code, std::string_view reason, long line, long position, long byte)
{
    if (m_isStopped)
        return;
    stop();
    m_fault.code = code;
    m_fault.reason = reason;
    m_fault.line = presentLine();
    m_fault.lineNumber = numberOf(line);
    m_fault.linePosition = numberOf(position);
    m_fault.filePosition = numberOf(byte);
}

void Builder::fail(HRESULT code, std::string_view reason)
{
    const xmlParserInput * const input = m_context->input;
    const long line = input != nullptr ? input->line : 1;
    const long position = input != nullptr ? input->col : 1;
    // A fault of the encoding comes while the input is being moved, and what the parser points at is gone.
    const long byte = isInputInPlace()   ? xmlByteConsumed(m_context.get())
                      : input != nullptr ? static_cast<long>(input->consumed)
                                         : 0;
    failAt(code, reason, line, position, byte);
}

void Builder::parserFault(const xmlError & error)
{
    if (error.code == XML_ERR_NO_MEMORY)
    {
        outOfMemory();
        return;
    }
    std::string reason = error.message != nullptr ? error.message : "The document is not well-formed.";
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r'))
        reason.pop_back();
    // The parser's own words name a wrong line.
    if (error.code == XML_ERR_TAG_NAME_MISMATCH && error.str1 != nullptr && error.str2 != nullptr)
        reason =
            std::string("End tag '") + error.str2 + "' does not match the start tag '" + error.str1 + "'.";
    fail(notWellFormed, reason);
}

// ---------------------------------------------------------------------------------------------------
// Events

int Builder::read(char * buffer, int size) noexcept
{
    if (m_isStopped)
        return 0;
    if (m_context && m_context->maxatts > roomOfTooMany)
    {
        guard([this] { fail(notWellFormed, "An element has too many attributes."); });
        return 0;
    }
    const int count = gateFails("xml reading") ? -1 : m_source.read(buffer, size);
    if (count < 0)
        m_sourceFailed = true;
    return count;
}

void Builder::startDocument()
{
    // The parser leaves it at -1 where there is no declaration.
    const int standalone = m_context->standalone;
    if (standalone == -1 || m_context->version == nullptr)
        return;
    Declaration declaration;
    declaration.version = viewOf(m_context->version);
    const xmlChar * const encoding =
        m_context->input->encoding != nullptr ? m_context->input->encoding : m_context->encoding;
    declaration.encoding = viewOf(encoding);
    if (standalone == 0 || standalone == 1)
        declaration.standalone = standalone == 1 ? "yes" : "no";
    const xmlChar * const target = m_tree->intern("xml");
    append(target != nullptr ? m_tree->makeInstruction(target, textOf(declaration)) : nullptr);
}

void Builder::doctype()
{
    // Seen only when its name has been read. The parser then has the place behind that.
    const xmlParserInput * const input = m_context->input;
    constexpr std::string_view opening = "<!DOCTYPE";
    const std::string_view before(
        reinterpret_cast<const char *>(input->base), static_cast<std::size_t>(input->cur - input->base));
    const std::size_t place = before.rfind(opening);
    long line = input->line;
    long position = input->col;
    long byte = xmlByteConsumed(m_context.get());
    if (place != std::string_view::npos)
    {
        const std::string_view since = before.substr(place);
        const long lines = static_cast<long>(std::count(since.begin(), since.end(), '\n'));
        line -= lines;
        byte -= static_cast<long>(since.size());
        const std::size_t lineStart = before.rfind('\n', place);
        const std::size_t start = lineStart == std::string_view::npos ? 0 : lineStart + 1;
        position = lines != 0 || start != 0 ? static_cast<long>(place - start) + 1
                                            : position - static_cast<long>(since.size());
    }
    failAt(dtdProhibited, "DTD is prohibited.", line, position, byte);
}

void Builder::append(xmlNode * node)
{
    if (node == nullptr)
        throw std::bad_alloc();
    link(m_parent, node, nullptr);
}

void Builder::flushText()
{
    if (m_text.empty())
        return;
    if (m_options.keepsWhiteSpace || !isBlankText(m_text))
        append(m_tree->makeText(XML_TEXT_NODE, m_text));
    m_text.clear();
    // A single long text is not to hold its room until the end.
    if (m_text.capacity() > std::size_t{1024} * 1024)
        m_text.shrink_to_fit();
}

const xmlChar * Builder::prefixIn(const xmlChar * name) const
{
    const char * const text = reinterpret_cast<const char *>(name);
    const char * const colon = std::strchr(text, ':');
    if (colon == nullptr)
        return nullptr;
    const xmlChar * const prefix = xmlDictLookup(m_context->dict, name, static_cast<int>(colon - text));
    if (prefix == nullptr)
        throw std::bad_alloc();
    return prefix;
}

/// The URI that the prefix of a name stands for, as a place in the dictionary; null where it is not declared.
const xmlChar * Builder::meaningOf(const xmlChar * name) const
{
    return m_scopes.find(prefixIn(name));
}

bool Builder::declarePrefixes(const xmlChar ** attributes)
{
    for (; *attributes != nullptr; attributes += 2)
    {
        const std::string_view name = viewOf(attributes[0]);
        if (!name.starts_with("xmlns:"))
            continue;
        const std::string_view prefix = name.substr(6);
        const std::string_view uri = viewOf(attributes[1]);
        if (!isAllowedDeclaration(prefix, uri))
        {
            fail(undeclaredPrefix,
                "The declaration of a namespace prefix is wrong: '" + std::string(name) + "'.");
            return false;
        }
        const xmlChar * const knownPrefix =
            xmlDictLookup(m_context->dict, xmlText(prefix.data()), static_cast<int>(prefix.size()));
        const xmlChar * const knownUri =
            xmlDictLookup(m_context->dict, xmlText(uri.data()), static_cast<int>(uri.size()));
        if (knownPrefix == nullptr || knownUri == nullptr)
            throw std::bad_alloc();
        m_scopes.declare(knownPrefix, knownUri, m_depth);
    }
    return true;
}

bool Builder::checkName(const xmlChar * name, bool isAttribute)
{
    const char * const text = reinterpret_cast<const char *>(name);
    if (std::strchr(text, ':') == nullptr)
        return true;
    if (!isQualifiedName(text))
    {
        fail(notWellFormed, "A colon stands in the wrong place: '" + std::string(text) + "'.");
        return false;
    }
    const std::string_view prefix = prefixOf(text);
    if (prefix == "xml" || (isAttribute && prefix == "xmlns") || meaningOf(name) != nullptr)
        return true;
    fail(undeclaredPrefix, "Reference to undeclared namespace prefix: '" + std::string(prefix) + "'.");
    return false;
}

/// Two attributes must not have the same name in the same namespace under two prefixes.
void Builder::checkDifferent(const xmlChar ** attributes)
{
    std::vector<std::pair<const xmlChar *, std::string_view>> names;
    for (; *attributes != nullptr; attributes += 2)
    {
        const std::string_view name = viewOf(attributes[0]);
        const std::string_view prefix = prefixOf(name);
        if (!prefix.empty() && prefix != "xmlns" && prefix != "xml")
            names.emplace_back(meaningOf(attributes[0]), baseOf(name));
    }
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    if (twice != names.end())
        fail(notWellFormed, "Duplicate attribute: '" + std::string(twice->second) + "'.");
}

void Builder::startElement(const xmlChar * name, const xmlChar ** attributes)
{
    flushText();
    if (++m_depth > greatestDepth)
    {
        fail(nestedTooDeep, "Nesting too deep.");
        return;
    }
    bool hasPrefixes = false;
    for (const xmlChar ** own = attributes; own != nullptr && *own != nullptr; own += 2)
        hasPrefixes = hasPrefixes || std::strchr(reinterpret_cast<const char *>(*own), ':') != nullptr;
    if (hasPrefixes && !declarePrefixes(attributes))
        return;
    if (!checkName(name, false))
        return;
    xmlNode * const element = m_tree->makeElement(name);
    append(element);
    const xmlChar ** const all = attributes;
    xmlAttr * last = nullptr;
    for (; attributes != nullptr && *attributes != nullptr; attributes += 2)
    {
        if (hasPrefixes && !checkName(attributes[0], true))
            return;
        xmlAttr * const attribute = m_tree->makeAttribute(attributes[0]);
        if (attribute == nullptr)
            throw std::bad_alloc();
        linkBehind(element, last, attribute);
        last = attribute;
        const std::string_view value = viewOf(attributes[1]);
        if (!value.empty() && !setContent(asNode(attribute), value))
            throw std::bad_alloc();
    }
    m_parent = element;
    if (hasPrefixes)
        checkDifferent(all);
}

void Builder::endElement()
{
    flushText();
    m_scopes.leave(m_depth);
    --m_depth;
    m_parent = m_parent->parent;
}

void Builder::characters(std::string_view text)
{
    m_text += text;
}

void Builder::section(std::string_view text)
{
    flushText();
    append(m_tree->makeText(XML_CDATA_SECTION_NODE, text));
}

void Builder::comment(std::string_view text)
{
    flushText();
    append(m_tree->makeText(XML_COMMENT_NODE, text));
}

void Builder::instruction(const xmlChar * target, std::string_view data)
{
    flushText();
    if (std::strchr(reinterpret_cast<const char *>(target), ':') != nullptr)
    {
        fail(notWellFormed, "A colon stands in the name of a processing instruction.");
        return;
    }
    append(m_tree->makeInstruction(target, data));
}

void Builder::checkEnd()
{
    if (m_sourceFailed)
        fail(dataNotAvailable, "The document could not be read.");
    const xmlParserInput * const input = m_context->input;
    // The parser takes a zero for the end.
    const bool hasMore = input != nullptr && input->cur < input->end;
    const bool hasHalf = input != nullptr && input->buf != nullptr && input->buf->encoder != nullptr &&
                         input->buf->raw != nullptr && xmlBufUse(input->buf->raw) != 0;
    if (hasMore || hasHalf)
        fail(notWellFormed, "An invalid character was found behind the document.");
    if (m_context->wellFormed == 0 || m_tree->documentElement() == nullptr)
        fail(notWellFormed, "The document is not well-formed.");
}

Tree * Builder::build()
{
    const QuietErrors quiet;
    xmlSetStructuredErrorFunc(this, onFault);
    m_tree.reset(Tree::make());
    if (!m_tree || gateFails("xml parser"))
        throw std::bad_alloc();
    m_parent = m_tree->top();
    xmlSAXHandler handler = makeHandler();
    m_context.reset(xmlCreateIOParserCtxt(&handler, this, onRead, onClose, this, XML_CHAR_ENCODING_NONE));
    if (!m_context)
        throw std::bad_alloc();
    // References to characters are resolved; there are no entities where there is no document type.
    const int ignoring = m_options.isString ? XML_PARSE_IGNORE_ENC : 0;
    xmlCtxtUseOptions(m_context.get(), XML_PARSE_NOENT | XML_PARSE_HUGE | XML_PARSE_NONET | ignoring);
    // All names of the tree are then those of the parser.
    xmlDictFree(m_tree->document()->dict);
    m_tree->document()->dict = m_context->dict;
    xmlDictReference(m_context->dict);

    xmlParseDocument(m_context.get());
    guard([this] { checkEnd(); });
    if (m_isOutOfMemory)
        throw std::bad_alloc();
    return m_isStopped ? nullptr : m_tree.release();
}

} // namespace

Tree * parseDocument(XmlSource & source, const ParseOptions & options, XmlFault & fault)
{
    fault = {};
    return Builder(source, options, fault).build();
}

} // namespace qvplatform
