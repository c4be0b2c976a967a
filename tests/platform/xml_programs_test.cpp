// Other programs read what the XML service writes, and see in what it reads the same as it does.
#include "comtesting.h"
#include "support/ChildProcess.h"
#include "support/TempDirectory.h"
#include "support/XmlService.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::firstOf;
using comtesting::makeDocument;
using comtesting::nameOf;
using comtesting::nextOf;
using comtesting::rootOf;
using comtesting::Text;
using comtesting::Value;
using comtesting::variantOf;

constexpr const char * notHere = "the other programs are run beside the library's own service";

struct Document
{
    const char * label;
    std::string_view bytes;
};

using namespace std::string_view_literals;

const Document documents[] = {
    {"one element", "<a/>"},
    {"a declaration", "<?xml version='1.0' encoding='UTF-8' standalone='yes'?>\n<a></a>\n"},
    {"mixed content", "<p>one <b>two <i>three</i></b> four<br/> five\n</p>"},
    {"white space", "<a> \n\t<b> </b>\r\n  <c\n  x = '1'\n/>\r</a>"},
    {"attributes", "<a z='1' b=\"it's\" m='\"' e='' long='a value that is too long for a node of its own'/>"},
    {"white space in attributes", "<a b=' x\ty\nz '  c='&#9;&#10;&#13;&#32;' d='1\r\n2'/>"},
    {"references", "<a b='&lt;&amp;&gt;&quot;&apos;'>&lt;&amp;&gt;&quot;&apos;&#x41;&#66;&#13;</a>"},
    {"the end of a section in a text", "<a>]]&gt; and ]] and &gt;</a>"},
    {"sections", "<a><![CDATA[<b>&amp;]]>x<![CDATA[]] >]]><c><![CDATA[ ]]></c></a>"},
    {"comments", "<!-- top --><a><!----><!-- - x --><b/><!--\n<c>&amp;--></a><!-- end -->"},
    {"processing instructions", "<?p one?><a><?q?><?r  two  three?></a><?s <x> & ?>"},
    {"a default namespace", "<a xmlns='urn:one'><b/><c xmlns=''><d/></c><e xmlns='urn:two'><f/></e></a>"},
    {"prefixes",
        "<p:a xmlns:p='urn:one' xmlns:q='urn:two' p:x='1' q:x='2' x='3'><q:b><p:c xmlns:p='urn:three' "
        "p:y='4'/></q:b></p:a>"},
    {"names of the xml prefix", "<a xml:lang='de' xml:space='preserve'> <b xml:id='i'/> </a>"},
    {"letters in UTF-8", "<\xC3\xA4 \xC3\xB6='\xE2\x82\xAC'>\xF0\x9F\x98\x80 \xE4\xB8\xAD</\xC3\xA4>"},
    {"a mark in front", "\xEF\xBB\xBF<a>\xC3\xA4</a>"},
    {"letters as references", "<?xml version='1.0' encoding='US-ASCII'?><a b='&#228;'>&#x20AC;&#x1F600;</a>"},
    {"ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xE4'>\xDF &#x20AC;</a>"},
    {"windows-1252", "<?xml version='1.0' encoding='windows-1252'?><a b='\x80'>\x84\xE4\x93</a>"},
    {"UTF-16, the low byte first", "\xFF\xFE<\0a\0>\0\xE4\0\x3D\xD8\0\xDE<\0/\0a\0>\0"sv},
    {"UTF-16, the high byte first",
        "\xFE\xFF\0<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0\x31\0.\0\x30\0'\0 "
        "\0e\0n\0c\0o\0d\0i\0n\0g\0="
        "\0'\0U\0T\0F\0-\0\x31\0\x36\0'\0?\0>\0<\0a\0>\0\xE4\0<\0/\0a\0>"sv},
};

/// What a program writes; the test fails where it cannot be run, does not end well or complains.
std::string outputOf(const char * program, const std::vector<std::string> & arguments)
{
    const testsupport::ChildResult result = testsupport::runProgram(program, arguments);
    EXPECT_TRUE(result.started) << result.standardError;
    EXPECT_EQ(result.exitCode, 0) << program;
    EXPECT_EQ(result.standardError, "") << program;
    return result.standardOutput;
}

/// The one form that all ways to write a document share.
std::string canonical(const std::string & path)
{
    return outputOf("xmllint", {"--nonet", "--c14n", path});
}

bool saveTo(IXMLDOMDocument * document, const std::string & path)
{
    const Text name{std::string_view(path)};
    return document->save(variantOf(static_cast<BSTR>(name))) == S_OK;
}

Com<IXMLDOMDocument> loadFrom(const std::string & path)
{
    Com<IXMLDOMDocument> document = makeDocument();
    const Text name{std::string_view(path)};
    VARIANT_BOOL isSuccessful = VARIANT_FALSE;
    EXPECT_EQ(document->load(variantOf(static_cast<BSTR>(name)), &isSuccessful), S_OK) << path;
    return document;
}

// ---------------------------------------------------------------------------------------------------
// Trees in a plain form, one line a node

/// The other side of it.
const char * const treeScript = R"(
import sys
import xml.dom.minidom

def plain(text):
    # An empty declaration of a namespace has no value.
    return ((text or '').replace('\\', '\\\\').replace('\n', '\\n').replace('\r', '\\r').replace('\t', '\\t'))

lines = []

def show(node, depth):
    value = '' if node.nodeValue is None else ' [' + plain(node.nodeValue) + ']'
    lines.append('%d %d %s%s' % (depth, node.nodeType, node.nodeName, value))
    if node.nodeType == node.ELEMENT_NODE:
        own = node.attributes
        lines.extend(sorted('%d 2 %s [%s]' % (depth + 1, own.item(i).name, plain(own.item(i).value))
                            for i in range(own.length)))
    for child in node.childNodes:
        show(child, depth + 1)

for name in sys.argv[1:]:
    lines.append('= ' + name)
    with open(name, 'rb') as file:
        document = xml.dom.minidom.parse(file)
    for child in document.childNodes:
        show(child, 0)
sys.stdout.buffer.write(''.join(line + '\n' for line in lines).encode('utf-8'))
)";

std::string plain(const std::string & text)
{
    std::string result;
    for (const char c : text)
    {
        if (c == '\\')
            result += "\\\\";
        else if (c == '\n')
            result += "\\n";
        else if (c == '\r')
            result += "\\r";
        else if (c == '\t')
            result += "\\t";
        else
            result += c;
    }
    return result;
}

std::string valueOf(IXMLDOMNode * node)
{
    Value value;
    const HRESULT result = node->get_nodeValue(value.receive());
    EXPECT_GE(result, 0);
    return result == S_OK ? " [" + plain(value.utf8()) + "]" : "";
}

void showAttributes(IXMLDOMNode * node, int depth, std::vector<std::string> & lines)
{
    Com<IXMLDOMNamedNodeMap> attributes;
    if (node->get_attributes(attributes.receive()) != S_OK)
        return;
    std::vector<std::string> own;
    Com<IXMLDOMNode> item;
    for (LONG i = 0; attributes->get_item(i, item.receive()) == S_OK; ++i)
        own.push_back(std::to_string(depth) + " 2 " + nameOf(item.get()) + valueOf(item.get()));
    std::sort(own.begin(), own.end());
    lines.insert(lines.end(), own.begin(), own.end());
}

void show(IXMLDOMNode * parent, int depth, std::vector<std::string> & lines)
{
    for (Com<IXMLDOMNode> node = firstOf(parent); node; node = nextOf(node.get()))
    {
        DOMNodeType type = NODE_INVALID;
        EXPECT_EQ(node->get_nodeType(&type), S_OK);
        // Others do not count the declaration among the nodes.
        if (type == NODE_PROCESSING_INSTRUCTION && nameOf(node.get()) == "xml")
            continue;
        lines.push_back(std::to_string(depth) + " " + std::to_string(static_cast<int>(type)) + " " +
                        nameOf(node.get()) + valueOf(node.get()));
        showAttributes(node.get(), depth + 1, lines);
        show(node.get(), depth + 1, lines);
    }
}

std::string treeOf(IXMLDOMDocument * document)
{
    std::vector<std::string> lines;
    show(document, 0, lines);
    std::string text;
    for (const std::string & line : lines)
        text += line + '\n';
    return text;
}

// ---------------------------------------------------------------------------------------------------
// The tests

TEST(XmlPrograms, XmllintAcceptsEachSavedFileAndSeesTheSameDocument)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << notHere;
    const Apartment apartment;
    for (const Document & row : documents)
    {
        SCOPED_TRACE(row.label);
        const testsupport::TempDirectory directory;
        const std::string in = directory.write("in.xml", std::string(row.bytes));
        const std::string out = directory.text("out.xml");
        ASSERT_TRUE(saveTo(loadFrom(in).get(), out));
        EXPECT_EQ(outputOf("xmllint", {"--nonet", "--noout", out}), "");
        const std::string expected = canonical(in);
        EXPECT_NE(expected, "");
        EXPECT_EQ(canonical(out), expected);
        directory.remove("in.xml");
        directory.remove("out.xml");
    }
}

TEST(XmlPrograms, MinidomSeesTheSameTreeInWhatIsReadAndInWhatIsWritten)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << notHere;
    const Apartment apartment;
    const testsupport::TempDirectory directory;
    std::vector<std::string> arguments{directory.write("tree.py", treeScript)};
    std::vector<std::string> names{"tree.py"};
    std::string ours;
    for (const Document & row : documents)
    {
        SCOPED_TRACE(row.label);
        const std::string in = row.label + std::string(" in.xml");
        const std::string out = row.label + std::string(" out.xml");
        arguments.push_back(directory.write(in, std::string(row.bytes)));
        arguments.push_back(directory.text(out));
        const Com<IXMLDOMDocument> document = loadFrom(arguments[arguments.size() - 2]);
        EXPECT_TRUE(saveTo(document.get(), arguments.back()));
        for (const std::string & name : {in, out})
        {
            ours += "= " + arguments[names.size()] + '\n' + treeOf(document.get());
            names.push_back(name);
        }
    }
    EXPECT_EQ(ours, outputOf("python3", arguments));
    for (const std::string & name : names)
        directory.remove(name);
}

TEST(XmlPrograms, ADocumentThatWasMadeIsReadBackByBoth)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << notHere;
    const Apartment apartment;
    const testsupport::TempDirectory directory;
    const std::string script = directory.write("tree.py", treeScript);
    const std::string out = directory.text("out.xml");
    const Com<IXMLDOMDocument> document = documentOf("<?xml version='1.0'?><a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    ASSERT_TRUE(comtesting::setAttribute(root.get(), L"v", L" <&>\"'\t\n\r\xE4\x20AC"));
    Com<IXMLDOMText> text;
    ASSERT_EQ(document->createTextNode(Text(L" ]]> <&\r\n\xE4"), text.receive()), S_OK);
    ASSERT_EQ(root->appendChild(text.get(), nullptr), S_OK);
    Com<IXMLDOMCDATASection> section;
    ASSERT_EQ(document->createCDATASection(Text(L"<x>&"), section.receive()), S_OK);
    ASSERT_EQ(root->appendChild(section.get(), nullptr), S_OK);
    ASSERT_TRUE(saveTo(document.get(), out));
    EXPECT_EQ(outputOf("xmllint", {"--nonet", "--noout", out}), "");
    EXPECT_EQ(outputOf("python3", {script, out}),
        "= " + out +
            "\n0 1 a\n1 2 v [ <&>\"'\\t\\n\\r\xC3\xA4\xE2\x82\xAC]\n1 3 #text [ ]]> <&\\r\\n\xC3\xA4]\n"
            "1 4 #cdata-section [<x>&]\n");
    directory.remove("tree.py");
    directory.remove("out.xml");
}

const char * const catalogue =
    "<c:books xmlns:c='urn:catalogue' xmlns='urn:book'>\n"
    "  <book id='b2' price='20.5'><title>Zw\xC3\xB6lf "
    "&lt;K\xC3\xB6pfe&gt;</title><author>Weiss</author></book>\n"
    "  <book id='b1' price='7'><title>Eins &amp; zwei</title><author>Adam</author></book>\n"
    "  <book id='b3' price='9'><title/><author>Weiss</author></book>\n"
    "  <note xmlns=''>plain</note>\n"
    "</c:books>\n";

/// Stylesheets without their element, which declares c and b.
const struct
{
    const char * label;
    const char * inner;
} stylesheets[] = {
    {"text",
        "<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'><xsl:for-each "
        "select='c:books/b:book'><xsl:sort select='b:title'/><xsl:value-of "
        "select=\"concat(position(), ':', @id, ':', b:title, ';&#10;')\"/></xsl:for-each></xsl:template>"},
    {"text in Latin", "<xsl:output method='text' encoding='ISO-8859-1'/><xsl:template match='/'>"
                      "<xsl:value-of select='//b:title'/></xsl:template>"},
    {"xml", "<xsl:output method='xml' encoding='UTF-8'/><xsl:template match='/'><list><xsl:apply-templates "
            "select='//b:book'/></list></xsl:template><xsl:template match='b:book'><item n='{@id}'>"
            "<xsl:copy-of select='b:title'/></item></xsl:template>"},
    {"xml that is indented, with sections and a type",
        "<xsl:output method='xml' encoding='UTF-8' indent='yes' cdata-section-elements='t' "
        "doctype-system='list.dtd' omit-xml-declaration='yes'/><xsl:strip-space elements='*'/>"
        "<xsl:template match='/'><list><xsl:for-each select='//b:book'><t><xsl:value-of "
        "select='b:title'/></t></xsl:for-each></list></xsl:template>"},
    {"xml in Latin",
        "<xsl:output method='xml' encoding='ISO-8859-1'/><xsl:template match='/'><r v='&#8364;{//b:title}'>"
        "<xsl:value-of select='//b:title'/></r></xsl:template>"},
    {"a copy of all", "<xsl:output method='xml' encoding='UTF-8'/><xsl:template match='@*|node()'><xsl:copy>"
                      "<xsl:apply-templates select='@*|node()'/></xsl:copy></xsl:template>"},
    {"namespaces",
        "<xsl:output method='xml' encoding='UTF-8'/><xsl:template match='/'><xsl:element name='x:y' "
        "namespace='urn:new'><xsl:attribute name='b:z'>1</xsl:attribute><xsl:copy-of select='//note'/>"
        "<plain xmlns='urn:plain'><none xmlns=''/></plain></xsl:element></xsl:template>"},
    {"keys, modes and parameters",
        "<xsl:output method='xml' encoding='UTF-8'/><xsl:key name='by' match='b:book' use='b:author'/>"
        "<xsl:template match='/'><r><xsl:for-each select=\"key('by', 'Weiss')\"><xsl:apply-templates "
        "select='.' mode='m'><xsl:with-param name='p' select='@price * 2'/></xsl:apply-templates>"
        "</xsl:for-each></r></xsl:template><xsl:template match='b:book' mode='m'><xsl:param name='p'/>"
        "<xsl:value-of select=\"format-number($p, '0.00')\"/><xsl:text> </xsl:text></xsl:template>"},
    {"html",
        "<xsl:output method='html' encoding='UTF-8' doctype-public='-//W3C//DTD HTML 4.01//EN' "
        "doctype-system='http://www.w3.org/TR/html4/strict.dtd'/><xsl:template match='/'><html><head>"
        "<title>T</title></head><body><br/><p title='{//b:title}'>a &lt; b &#160;</p><script>if (a &lt; b) "
        "f();</script><input disabled='disabled'/></body></html></xsl:template>"},
    {"comments and instructions",
        "<xsl:output method='xml' encoding='UTF-8'/><xsl:template match='/'><xsl:comment>c</xsl:comment>"
        "<xsl:processing-instruction name='p'>q</xsl:processing-instruction><r>"
        "<xsl:value-of select='count(//text())'/></r></xsl:template>"},
};

std::string wholeStylesheet(const char * inner)
{
    return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' "
           "xmlns:c='urn:catalogue' xmlns:b='urn:book' exclude-result-prefixes='c b'>" +
           std::string(inner) + "</xsl:stylesheet>";
}

TEST(XmlPrograms, XsltprocTransformsToTheSameBytes)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << notHere;
    const Apartment apartment;
    for (const auto & row : stylesheets)
    {
        SCOPED_TRACE(row.label);
        const testsupport::TempDirectory directory;
        const std::string source = directory.write("in.xml", catalogue);
        const std::string style = directory.write("style.xsl", wholeStylesheet(row.inner));
        const std::string expected = outputOf("xsltproc", {"--nonet", style, source});
        EXPECT_NE(expected, "");
        const Com<IStream> stream = comtesting::streamOf("");
        const Com<IXMLDOMDocument> styleDocument = loadFrom(style);
        EXPECT_EQ(loadFrom(source)->transformNodeToObject(
                      styleDocument.get(), variantOf(static_cast<IUnknown *>(stream.get()))),
            S_OK);
        EXPECT_EQ(comtesting::bytesOf(stream.get()), expected);
        directory.remove("in.xml");
        directory.remove("style.xsl");
    }
}

TEST(XmlPrograms, XsltprocTransformsToTheSameDocument)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << notHere;
    const Apartment apartment;
    int compared = 0;
    for (const auto & row : stylesheets)
    {
        const std::string_view inner(row.inner);
        if (inner.find("method='xml'") == std::string_view::npos ||
            inner.find("doctype-system") != std::string_view::npos)
            continue;
        SCOPED_TRACE(row.label);
        ++compared;
        const testsupport::TempDirectory directory;
        const std::string source = directory.write("in.xml", catalogue);
        const std::string style = directory.write("style.xsl", wholeStylesheet(row.inner));
        const std::string theirs =
            directory.write("theirs.xml", outputOf("xsltproc", {"--nonet", style, source}));
        const std::string ours = directory.text("ours.xml");
        const Com<IXMLDOMDocument> result = makeDocument();
        const Com<IXMLDOMDocument> styleDocument = loadFrom(style);
        ASSERT_EQ(loadFrom(source)->transformNodeToObject(
                      styleDocument.get(), variantOf(static_cast<IDispatch *>(result.get()))),
            S_OK);
        ASSERT_TRUE(saveTo(result.get(), ours));
        EXPECT_EQ(canonical(ours), canonical(theirs));
        for (const char * const name : {"in.xml", "style.xsl", "theirs.xml", "ours.xml"})
            directory.remove(name);
    }
    EXPECT_EQ(compared, 6);
}

TEST(XmlPrograms, AProgramThatIsMissingIsNoticed)
{
    const testsupport::ChildResult result = testsupport::runProgram("no such program", {});
    EXPECT_FALSE(result.started);
    EXPECT_NE(result.standardError, "");
}

} // namespace
