// The writer and the reader, which together indent a document.

#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/xmlclasses.h"
#include "VontalBase/platform/posix/xmldocument.h"
#include "VontalBase/platform/posix/xmlformatting.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <string>
#include <string_view>

namespace qvplatform
{

namespace
{

/// The identity by which a writer knows itself, behind whichever of its interfaces; what it gives has no
/// reference.
constexpr GUID writerObjectId = {
    0x47f1c9d2, 0xe835, 0x4b0a, {0x96, 0x2c, 0xfa, 0x10, 0x5d, 0x83, 0xbe, 0x67}};

class Writer final : public WithoutMembers<IMXWriter>,
                     public ISAXContentHandler,
                     public ISAXDTDHandler,
                     public ISAXErrorHandler
{
public:
    Writer() = default;
    Writer(const Writer &) = delete;
    Writer & operator=(const Writer &) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (iid == writerObjectId)
        {
            *object = this;
            return S_OK;
        }
        if (iid == idOf<IUnknown>() || iid == idOf<IDispatch>() || iid == idOf<IMXWriter>())
            *object = static_cast<IMXWriter *>(this);
        else if (iid == idOf<ISAXContentHandler>())
            *object = static_cast<ISAXContentHandler *>(this);
        else if (iid == idOf<ISAXDTDHandler>())
            *object = static_cast<ISAXDTDHandler *>(this);
        else if (iid == idOf<ISAXErrorHandler>())
            *object = static_cast<ISAXErrorHandler *>(this);
        else
            return E_NOINTERFACE;
        ++m_references;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++m_references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE put_output(VARIANT target) override
    {
        if (target.vt == VT_EMPTY)
        {
            m_output.release();
            return S_OK;
        }
        DocumentObject * const document = documentIn(objectIn(target));
        if (document == nullptr)
            return E_INVALIDARG;
        m_output = qvbase::ReferenceMSCom<DocumentObject>(document);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_output(VARIANT * target) override
    {
        if (target == nullptr)
            return E_INVALIDARG;
        *target = {};
        if (m_output)
        {
            m_output->AddRef();
            target->vt = VT_DISPATCH;
            target->pdispVal = m_output.get();
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_encoding(BSTR encoding) override
    {
        const Bytes bytes(encoding);
        if (FAILED(bytes.result()))
            return bytes.result();
        return withoutThrowing(
            [&]
            {
                // What is no name of an encoding would make the declaration none.
                Declaration declaration;
                if (!readDeclaration(textOf({"1.0", std::string(bytes.view()), {}}), declaration) ||
                    declaration.encoding != bytes.view())
                    return E_INVALIDARG;
                m_format.encoding = bytes.view();
                return S_OK;
            });
    }
    HRESULT STDMETHODCALLTYPE get_encoding(BSTR * encoding) override
    {
        return giveString(m_format.encoding, encoding);
    }
    HRESULT STDMETHODCALLTYPE put_indent(VARIANT_BOOL indent) override
    {
        return setFlag(m_format.indents, indent);
    }
    HRESULT STDMETHODCALLTYPE get_indent(VARIANT_BOOL * indent) override
    {
        return giveFlag(m_format.indents, indent);
    }
    HRESULT STDMETHODCALLTYPE put_standalone(VARIANT_BOOL value) override
    {
        return setFlag(m_format.isStandalone, value);
    }
    HRESULT STDMETHODCALLTYPE get_standalone(VARIANT_BOOL * value) override
    {
        return giveFlag(m_format.isStandalone, value);
    }
    HRESULT STDMETHODCALLTYPE put_omitXMLDeclaration(VARIANT_BOOL value) override
    {
        return setFlag(m_format.omitsDeclaration, value);
    }
    HRESULT STDMETHODCALLTYPE get_omitXMLDeclaration(VARIANT_BOOL * value) override
    {
        return giveFlag(m_format.omitsDeclaration, value);
    }

    /// Formats the document that is read, if it is the one to write to.
    HRESULT write(const DocumentObject & document)
    {
        if (m_output.get() != &document)
            return E_NOTIMPL;
        return withoutThrowing([&] { return formatTree(document.tree(), m_format); });
    }

private:
    ~Writer() = default;

    ULONG m_references = 1;
    qvbase::ReferenceMSCom<DocumentObject> m_output;
    XmlFormat m_format;
};

Writer * writerBehind(IUnknown * object) noexcept
{
    void * found = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(writerObjectId, &found)))
        return nullptr;
    return static_cast<Writer *>(found);
}

class Reader final : public CountedObject<ISAXXMLReader>
{
public:
    HRESULT STDMETHODCALLTYPE getProperty(const wchar_t * name, VARIANT * value) override
    {
        const qvbase::ReferenceMSCom<IUnknown> * const property = propertyOf(name);
        if (property == nullptr || value == nullptr)
            return E_INVALIDARG;
        *value = {};
        if (property->get() != nullptr)
        {
            property->get()->AddRef();
            value->vt = VT_UNKNOWN;
            value->punkVal = property->get();
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE putProperty(const wchar_t * name, VARIANT value) override
    {
        qvbase::ReferenceMSCom<IUnknown> * const property = propertyOf(name);
        IUnknown * const object = objectIn(value);
        if (property == nullptr)
            return E_INVALIDARG;
        if (object == nullptr ? value.vt != VT_EMPTY && value.vt != VT_NULL : writerBehind(object) == nullptr)
            return E_INVALIDARG;
        *property = qvbase::ReferenceMSCom<IUnknown>(object);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE getContentHandler(ISAXContentHandler ** handler) override
    {
        return give(m_contentHandler, handler);
    }
    HRESULT STDMETHODCALLTYPE putContentHandler(ISAXContentHandler * handler) override
    {
        return set(m_contentHandler, handler);
    }
    HRESULT STDMETHODCALLTYPE getDTDHandler(ISAXDTDHandler ** handler) override
    {
        return give(m_dtdHandler, handler);
    }
    HRESULT STDMETHODCALLTYPE putDTDHandler(ISAXDTDHandler * handler) override
    {
        return set(m_dtdHandler, handler);
    }
    HRESULT STDMETHODCALLTYPE getErrorHandler(ISAXErrorHandler ** handler) override
    {
        return give(m_errorHandler, handler);
    }
    HRESULT STDMETHODCALLTYPE putErrorHandler(ISAXErrorHandler * handler) override
    {
        return set(m_errorHandler, handler);
    }
    HRESULT STDMETHODCALLTYPE parse(VARIANT source) override
    {
        DocumentObject * const document = documentIn(objectIn(source));
        Writer * const writer = writerBehind(m_contentHandler.get());
        return document != nullptr && writer != nullptr ? writer->write(*document) : E_NOTIMPL;
    }

private:
    /// The place of a property; null for another name.
    qvbase::ReferenceMSCom<IUnknown> * propertyOf(const wchar_t * name) noexcept
    {
        const std::wstring_view wanted = name != nullptr ? name : L"";
        if (wanted == L"http://xml.org/sax/properties/lexical-handler")
            return &m_lexicalHandler;
        if (wanted == L"http://xml.org/sax/properties/declaration-handler")
            return &m_declarationHandler;
        return nullptr;
    }

    template <class Interface>
    static HRESULT set(qvbase::ReferenceMSCom<Interface> & place, Interface * handler) noexcept
    {
        if (handler != nullptr && writerBehind(handler) == nullptr)
            return E_NOTIMPL;
        place = qvbase::ReferenceMSCom<Interface>(handler);
        return S_OK;
    }
    template <class Interface>
    static HRESULT give(const qvbase::ReferenceMSCom<Interface> & place, Interface ** handler) noexcept
    {
        if (handler == nullptr)
            return E_POINTER;
        *handler = qvbase::ReferenceMSCom<Interface>(place.get()).detach();
        return S_OK;
    }

    qvbase::ReferenceMSCom<ISAXContentHandler> m_contentHandler;
    qvbase::ReferenceMSCom<ISAXDTDHandler> m_dtdHandler;
    qvbase::ReferenceMSCom<ISAXErrorHandler> m_errorHandler;
    qvbase::ReferenceMSCom<IUnknown> m_lexicalHandler;
    qvbase::ReferenceMSCom<IUnknown> m_declarationHandler;
};

} // namespace

IUnknown * makeXmlWriter() noexcept
{
    try
    {
        return static_cast<IMXWriter *>(new Writer);
    }
    catch (...)
    {
        return nullptr;
    }
}

IUnknown * makeXmlReader() noexcept
{
    return new (std::nothrow) Reader;
}

} // namespace qvplatform
