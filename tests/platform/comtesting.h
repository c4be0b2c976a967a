/// @file
/// Working with COM in tests.
#pragma once

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/utf.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

namespace comtesting
{

/// A thread that may make objects, as long as it lives.
class Apartment
{
public:
    Apartment() : m_result(CoInitialize(nullptr))
    {
    }
    Apartment(const Apartment &) = delete;
    Apartment & operator=(const Apartment &) = delete;
    ~Apartment()
    {
        if (m_result >= 0)
            CoUninitialize();
    }

private:
    HRESULT m_result;
};

/// An owned interface.
template <class Interface>
using Com = qvbase::ReferenceMSCom<Interface>;

/// Takes over the reference that a call has given.
template <class Interface>
Com<Interface> adopt(void * given)
{
    Com<Interface> owned;
    *owned.receive() = static_cast<Interface *>(given);
    return owned;
}

/// An owned string.
class Text
{
public:
    Text() = default;
    Text(const wchar_t * units) : m_string(SysAllocString(units))
    {
    }
    explicit Text(const std::wstring & units)
        : m_string(SysAllocStringLen(units.data(), static_cast<UINT>(units.size())))
    {
    }
    /// From UTF-8.
    explicit Text(std::string_view utf8)
    {
        std::wstring units;
        Vontal::wideFromUtf8(utf8, units);
        m_string = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    }
    Text(const Text &) = delete;
    Text & operator=(const Text &) = delete;
    ~Text()
    {
        SysFreeString(m_string);
    }

    operator BSTR() const
    {
        return m_string;
    }
    BSTR * receive()
    {
        SysFreeString(m_string);
        m_string = nullptr;
        return &m_string;
    }
    std::wstring units() const
    {
        return {m_string != nullptr ? m_string : L"", SysStringLen(m_string)};
    }
    /// As UTF-8.
    std::string utf8() const
    {
        std::string bytes;
        Vontal::utf8FromWide(units(), bytes);
        return bytes;
    }

private:
    BSTR m_string = nullptr;
};

inline VARIANT variantOf(BSTR string)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = string;
    return variant;
}

inline VARIANT variantOf(IUnknown * object)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_UNKNOWN;
    variant.punkVal = object;
    return variant;
}

inline VARIANT variantOf(IDispatch * object)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_DISPATCH;
    variant.pdispVal = object;
    return variant;
}

inline VARIANT emptyVariant()
{
    VARIANT variant;
    VariantInit(&variant);
    return variant;
}

/// An owned variant.
class Value
{
public:
    Value()
    {
        VariantInit(&m_variant);
    }
    Value(const Value &) = delete;
    Value & operator=(const Value &) = delete;
    ~Value()
    {
        VariantClear(&m_variant);
    }
    VARIANT * receive()
    {
        VariantClear(&m_variant);
        return &m_variant;
    }
    const VARIANT & get() const
    {
        return m_variant;
    }
    /// As UTF-8; what is no text gives "(none)".
    std::string utf8() const
    {
        if (m_variant.vt != VT_BSTR)
            return "(none)";
        std::string bytes;
        const wchar_t * const units = m_variant.bstrVal != nullptr ? m_variant.bstrVal : L"";
        Vontal::utf8FromWide({units, SysStringLen(m_variant.bstrVal)}, bytes);
        return bytes;
    }

private:
    VARIANT m_variant;
};

template <class Interface>
Com<Interface> make(REFCLSID classId)
{
    void * object = nullptr;
    EXPECT_EQ(
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, qvplatform::idOf<Interface>(), &object),
        S_OK);
    return adopt<Interface>(object);
}

template <class Interface>
Com<Interface> query(IUnknown * object)
{
    void * found = nullptr;
    if (object == nullptr || object->QueryInterface(qvplatform::idOf<Interface>(), &found) != S_OK)
        return {};
    return adopt<Interface>(found);
}

/// An empty document that keeps white space.
inline Com<IXMLDOMDocument> makeDocument()
{
    Com<IXMLDOMDocument> document = make<IXMLDOMDocument>(qvplatform::domDocumentClass());
    EXPECT_EQ(document->put_async(VARIANT_FALSE), S_OK);
    EXPECT_EQ(document->put_resolveExternals(VARIANT_FALSE), S_OK);
    EXPECT_EQ(document->put_validateOnParse(VARIANT_FALSE), S_OK);
    EXPECT_EQ(document->put_preserveWhiteSpace(VARIANT_TRUE), S_OK);
    return document;
}

/// A stream over these bytes, at its start.
inline Com<IStream> streamOf(std::string_view bytes)
{
    Com<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), S_OK);
    ULONG written = 0;
    EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(written, bytes.size());
    LARGE_INTEGER start;
    start.QuadPart = 0;
    EXPECT_EQ(stream->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    return stream;
}

/// All bytes of a stream.
inline std::string bytesOf(IStream * stream)
{
    LARGE_INTEGER start;
    start.QuadPart = 0;
    EXPECT_EQ(stream->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    STATSTG state;
    EXPECT_EQ(stream->Stat(&state, STATFLAG_NONAME), S_OK);
    std::string bytes(static_cast<std::size_t>(state.cbSize.QuadPart), '\0');
    ULONG read = 0;
    if (!bytes.empty())
    {
        EXPECT_GE(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read), 0);
    }
    EXPECT_EQ(read, bytes.size());
    return bytes;
}

/// Loads bytes.
inline bool load(IXMLDOMDocument * document, std::string_view bytes)
{
    const Com<IStream> stream = streamOf(bytes);
    VARIANT_BOOL isSuccessful = VARIANT_FALSE;
    const HRESULT result = document->load(variantOf(static_cast<IUnknown *>(stream.get())), &isSuccessful);
    EXPECT_EQ(result == S_OK, isSuccessful == VARIANT_TRUE) << result;
    return isSuccessful == VARIANT_TRUE;
}

/// A document of these bytes; the test fails if it does not load.
inline Com<IXMLDOMDocument> documentOf(std::string_view bytes)
{
    Com<IXMLDOMDocument> document = makeDocument();
    EXPECT_TRUE(load(document.get(), bytes)) << bytes;
    return document;
}

/// The saved bytes; the test fails if that does not work.
inline std::string saved(IXMLDOMDocument * document)
{
    Com<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), S_OK);
    EXPECT_EQ(document->save(variantOf(static_cast<IUnknown *>(stream.get()))), S_OK);
    return bytesOf(stream.get());
}

/// Line ends are those of the system: here they are all LF, and there is none at the end.
inline std::string withPlainLines(std::string text)
{
    std::string plain;
    for (const char c : text)
    {
        if (c != '\r')
            plain += c;
    }
    while (!plain.empty() && plain.back() == '\n')
        plain.pop_back();
    return plain;
}

inline Com<IXMLDOMElement> rootOf(IXMLDOMDocument * document)
{
    Com<IXMLDOMElement> root;
    EXPECT_EQ(document->get_documentElement(root.receive()), S_OK);
    return root;
}

inline std::string nameOf(IXMLDOMNode * node)
{
    Text name;
    EXPECT_EQ(node->get_nodeName(name.receive()), S_OK);
    return name.utf8();
}

inline Com<IXMLDOMNode> firstOf(IXMLDOMNode * node)
{
    Com<IXMLDOMNode> child;
    node->get_firstChild(child.receive());
    return child;
}

inline Com<IXMLDOMNode> nextOf(IXMLDOMNode * node)
{
    Com<IXMLDOMNode> sibling;
    node->get_nextSibling(sibling.receive());
    return sibling;
}

inline std::string attributeOf(IXMLDOMElement * element, const wchar_t * name)
{
    Value value;
    element->getAttribute(Text(name), value.receive());
    return value.utf8();
}

inline bool setAttribute(IXMLDOMElement * element, const wchar_t * name, const wchar_t * value)
{
    const Text text(value);
    return element->setAttribute(Text(name), variantOf(static_cast<BSTR>(text))) >= 0;
}

/// Whether the service is complete in what Wine's lacks: it refuses a document type.
inline bool refusesDocumentTypes()
{
    return !load(makeDocument().get(), "<!DOCTYPE a><a/>");
}

} // namespace comtesting
