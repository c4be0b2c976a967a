#include "VontalBase/core/ComUtils.h"
#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/text/U8StringBuilder.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/u8string.h"

#include "support/IntendedLeak.h"
#include "support/VirtualSlot.h"
#include "support/XmlService.h"

#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::processComException;
using qvbase::StatSg;
using qvbase::var2dispatch;
using qvbase::var2int;
using qvbase::var2string;
using Vontal::u8string;
using Vontal::U8StringBuilder;

static_assert(std::has_virtual_destructor_v<StatSg>);
static_assert(std::is_same_v<decltype(std::declval<StatSg &>().GetType()), tagSTGTY>);

constexpr GUID someInterface = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 8}};

const std::string collected = "Reposted exception from COM:\n-----Begin of exception----\n\n"
                              "caf\xC3\xA9\n\n-----End of exception----\n";

/// An object with rich errors, or without.
class Failing : public ISupportErrorInfo
{
public:
    virtual ~Failing() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void ** out) override
    {
        const bool isKnown = id == qvplatform::idOf<IUnknown>() ||
                             (supportsErrors && id == qvplatform::idOf<ISupportErrorInfo>());
        *out = isKnown ? static_cast<ISupportErrorInfo *>(this) : nullptr;
        if (!isKnown)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        if (clearsError)
            SetErrorInfo(0, nullptr);
        return --references;
    }
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) override
    {
        asked = id;
        return answer;
    }

    ULONG references = 1;
    bool supportsErrors = true;
    /// Whether it spoils the thread's error when it is released, as objects do that call others then.
    bool clearsError = false;
    HRESULT answer = S_OK;
    GUID asked = {};
};

/// A rich error whose description cannot be had, or is null.
class OddError : public IErrorInfo
{
public:
    virtual ~OddError() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void ** out) override
    {
        const bool isKnown = id == qvplatform::idOf<IUnknown>() || id == qvplatform::idOf<IErrorInfo>();
        *out = isKnown ? static_cast<IErrorInfo *>(this) : nullptr;
        if (!isKnown)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        return --references;
    }
    HRESULT STDMETHODCALLTYPE GetGUID(GUID *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR * text) override
    {
        if (failing != nullptr)
            referencesOfFailing = failing->references;
        *text = nullptr;
        return result;
    }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD *) override
    {
        return E_NOTIMPL;
    }

    ULONG references = 1;
    HRESULT result = E_FAIL;
    /// Whose references are looked at while the description is read.
    const Failing * failing = nullptr;
    ULONG referencesOfFailing = 0;
};

/// Makes a rich error the thread's own.
void setError(const wchar_t * description)
{
    qvbase::ReferenceMSCom<ICreateErrorInfo> creator;
    ASSERT_TRUE(SUCCEEDED(CreateErrorInfo(creator.receive())));
    ASSERT_TRUE(SUCCEEDED(creator->SetDescription(const_cast<wchar_t *>(description))));
    void * found = nullptr;
    ASSERT_TRUE(SUCCEEDED(creator->QueryInterface(qvplatform::idOf<IErrorInfo>(), &found)));
    auto * const error = static_cast<IErrorInfo *>(found);
    EXPECT_TRUE(SUCCEEDED(SetErrorInfo(0, error)));
    error->Release();
}

/// A thread whose error is its own, and none at first.
class ComErrors : public testing::Test
{
protected:
    ComErrors()
    {
        SetErrorInfo(0, nullptr);
    }
    ~ComErrors() override
    {
        SetErrorInfo(0, nullptr);
        EXPECT_EQ(object.references, 1U) << "every reference is given back";
    }

    std::string textOf(Vontal::long32 result, const std::string & before = "")
    {
        U8StringBuilder out;
        out.append(before);
        processComException(&object, &someInterface, result, out);
        return static_cast<const u8string &>(out);
    }

    std::string entriesOf()
    {
        VontalException failure("before", 1, "stays");
        processComException(&object, &someInterface, failure);
        std::string entries;
        for (const VontalExceptionDescription * entry = failure.first; entry != nullptr; entry = entry->next)
            entries += entry->file + "|" + entry->text + ";";
        return entries;
    }

    Failing object;
};

TEST_F(ComErrors, AreCollectedAsOneText)
{
    setError(L"caf\xE9");
    EXPECT_EQ(textOf(0), collected);
    EXPECT_EQ(object.asked, someInterface);
}

TEST_F(ComErrors, AreAddedAsOneEntry)
{
    setError(L"caf\xE9");
    EXPECT_EQ(entriesOf(), "ComUtils|" + collected + ";before|stays;");
}

TEST_F(ComErrors, HaveAPosition)
{
    setError(L"x");
    VontalException failure;
    processComException(&object, &someInterface, failure);
    ASSERT_NE(failure.first, nullptr);
    EXPECT_GT(failure.first->line, 0);
}

TEST_F(ComErrors, AreTakenOnce)
{
    setError(L"caf\xE9");
    EXPECT_EQ(textOf(0), collected);
    // Of a thread without an error the call succeeds, and gives none.
    EXPECT_EQ(textOf(0), "IErrorInfo is NULL");
    EXPECT_EQ(entriesOf(), "ComUtils|IErrorInfo is NULL;before|stays;");
}

TEST_F(ComErrors, BelongToTheirThread)
{
    setError(L"caf\xE9");
    std::string elsewhere;
    std::thread([this, &elsewhere] { elsewhere = textOf(0); }).join();
    EXPECT_EQ(elsewhere, "IErrorInfo is NULL");
    EXPECT_EQ(textOf(0), collected);
}

TEST_F(ComErrors, AreReadBeforeTheObjectIsReleased)
{
    object.clearsError = true;
    setError(L"caf\xE9");
    EXPECT_EQ(textOf(0), collected);

    OddError error;
    error.failing = &object;
    SetErrorInfo(0, &error);
    EXPECT_EQ(textOf(0), "Cannot get error description");
    EXPECT_EQ(error.referencesOfFailing, 2U) << "the test's own and one for the time of the call";
    EXPECT_EQ(error.references, 1U);
}

TEST_F(ComErrors, StandBehindALineEndWhereTextIsThere)
{
    setError(L"caf\xE9");
    EXPECT_EQ(textOf(0, "x"), "x\n" + collected);
}

TEST_F(ComErrors, AreNothingWhereTheObjectDoesNotSupportThem)
{
    setError(L"caf\xE9");
    object.answer = E_NOINTERFACE;
    EXPECT_EQ(textOf(0), "");
    EXPECT_EQ(entriesOf(), "before|stays;");
    object.answer = S_OK;
    object.supportsErrors = false;
    EXPECT_EQ(textOf(0), "");
    EXPECT_EQ(entriesOf(), "before|stays;");
    EXPECT_EQ(textOf(0, "x"), "x\n") << "kept: the line end comes also where nothing follows";
    EXPECT_EQ(textOf(S_FALSE), "") << "not negative";
    // The error was not taken.
    object.supportsErrors = true;
    EXPECT_EQ(textOf(0), collected);
}

TEST_F(ComErrors, AreSupportedByEveryResultThatIsNotNegative)
{
    setError(L"caf\xE9");
    object.answer = S_FALSE;
    EXPECT_EQ(textOf(0), collected);
}

TEST_F(ComErrors, MayHaveNoDescription)
{
    OddError error;
    SetErrorInfo(0, &error);
    EXPECT_EQ(textOf(0), "Cannot get error description");
    EXPECT_EQ(error.references, 1U);

    error.result = S_OK;
    SetErrorInfo(0, &error);
    EXPECT_EQ(textOf(0),
        "Reposted exception from COM:\n-----Begin of exception----\n\n\n\n-----End of exception----\n");
    EXPECT_EQ(error.references, 1U);
}

TEST_F(ComErrors, BeginWithTheResultCode)
{
    object.supportsErrors = false;
    const std::string text = textOf(static_cast<Vontal::long32>(0x80004005));
    EXPECT_EQ(text.rfind("HRESULT = 0x80004005 (", 0), 0U) << text;
    ASSERT_GE(text.size(), 3U);
    EXPECT_EQ(text.substr(text.size() - 2), ")\n");
    EXPECT_EQ(textOf(static_cast<Vontal::long32>(0x80004005), "before"), "before\n" + text);

    const _com_error known(E_FAIL);
    const u8string message(known.ErrorMessage());
    EXPECT_NE(message, "");
    EXPECT_EQ(message.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(text, "HRESULT = 0x80004005 (" + message + ")\n");

    // Codes of which the system knows nothing.
    EXPECT_EQ(
        textOf(static_cast<Vontal::long32>(0x80040200)), "HRESULT = 0x80040200 (Unknown error 0x80040200)\n");
    EXPECT_EQ(
        textOf(static_cast<Vontal::long32>(0x8004FFFF)), "HRESULT = 0x8004FFFF (IDispatch error #65023)\n");
    EXPECT_EQ(
        textOf(static_cast<Vontal::long32>(0x8004ABCD)), "HRESULT = 0x8004ABCD (IDispatch error #43469)\n");
    EXPECT_EQ(
        textOf(static_cast<Vontal::long32>(0xA0ABCDEF)), "HRESULT = 0xA0ABCDEF (Unknown error 0xA0ABCDEF)\n");
    EXPECT_EQ(
        textOf(static_cast<Vontal::long32>(0x80050000)), "HRESULT = 0x80050000 (Unknown error 0x80050000)\n");
    // Some systems have a text of their own for this one.
    const std::string first = textOf(static_cast<Vontal::long32>(0x80040201));
    if (testsupport::isXmlServiceOurs())
    {
        EXPECT_EQ(first, "HRESULT = 0x80040201 (IDispatch error #1)\n");
    }

    object.supportsErrors = true;
    setError(L"caf\xE9");
    EXPECT_EQ(textOf(static_cast<Vontal::long32>(0xA0ABCDEF)),
        "HRESULT = 0xA0ABCDEF (Unknown error 0xA0ABCDEF)\n" + collected);
}

/// A variant of a type, which does not own what it holds.
struct Variant : VARIANT
{
    explicit Variant(VARTYPE type = VT_EMPTY)
    {
        VariantInit(this);
        vt = type;
    }
    Variant(const Variant &) = delete;
    Variant & operator=(const Variant &) = delete;
    ~Variant() = default;
};

/// A text of COM that is given back when it dies.
struct Text
{
    explicit Text(const std::wstring & units)
        : text(SysAllocStringLen(units.data(), static_cast<UINT>(units.size())))
    {
    }
    Text(const Text &) = delete;
    Text & operator=(const Text &) = delete;
    ~Text()
    {
        SysFreeString(text);
    }

    BSTR text;
};

/// An object of which only the references count.
class Counted : public IDispatch
{
public:
    virtual ~Counted() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override
    {
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        return --references;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo **) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(
        DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *, EXCEPINFO *, UINT *) override
    {
        return E_NOTIMPL;
    }

    ULONG references = 1;
};

void expectText(const VARIANT & value, const std::wstring & wideExpected, const std::string & expected)
{
    std::wstring wide = L"before";
    u8string utf8 = "before";
    EXPECT_TRUE(var2string(value, wide));
    EXPECT_TRUE(var2string(value, utf8));
    EXPECT_EQ(wide, wideExpected);
    EXPECT_EQ(utf8, expected);
}

TEST(ComVariants, GiveTexts)
{
    Text text(std::wstring(L"caf\xE9"));
    Variant direct(VT_BSTR);
    direct.bstrVal = text.text;
    expectText(direct, L"caf\xE9", "caf\xC3\xA9");

    Variant referring(VT_BSTR | VT_BYREF);
    referring.pbstrVal = &text.text;
    expectText(referring, L"caf\xE9", "caf\xC3\xA9");

    Variant outer(VT_VARIANT | VT_BYREF);
    outer.pvarVal = &referring;
    Variant outermost(VT_VARIANT | VT_BYREF);
    outermost.pvarVal = &outer;
    expectText(outer, L"caf\xE9", "caf\xC3\xA9");
    expectText(outermost, L"caf\xE9", "caf\xC3\xA9");

    Text cut(std::wstring(L"a\0b", 3));
    direct.bstrVal = cut.text;
    expectText(direct, L"a", "a");
    Text empty(L"");
    direct.bstrVal = empty.text;
    expectText(direct, L"", "");
}

TEST(ComVariants, GiveNoTextOfOtherTypes)
{
    for (const int type : std::initializer_list<int>{VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_R8, VT_BOOL,
             VT_DISPATCH, VT_UNKNOWN, VT_UI1, VT_VARIANT, VT_I4 | VT_BYREF, VT_ARRAY | VT_BSTR})
    {
        SCOPED_TRACE(type);
        const Variant value(static_cast<VARTYPE>(type));
        Variant outer(VT_VARIANT | VT_BYREF);
        outer.pvarVal = const_cast<Variant *>(&value);
        std::wstring wide = L"before";
        u8string utf8 = "before";
        EXPECT_FALSE(var2string(value, wide));
        EXPECT_FALSE(var2string(value, utf8));
        EXPECT_FALSE(var2string(outer, utf8));
        EXPECT_EQ(wide, L"before");
        EXPECT_EQ(utf8, "before");
    }
}

TEST(ComVariants, FollowReferencesToAnyDepth)
{
    Variant value(VT_I4);
    value.lVal = 7;
    constexpr std::size_t depth = 100000;
    std::vector<VARIANT> chain(depth, value);
    for (std::size_t i = 0; i + 1 < depth; ++i)
    {
        chain[i].vt = VT_VARIANT | VT_BYREF;
        chain[i].pvarVal = &chain[i + 1];
    }
    EXPECT_EQ(var2int(chain.front()), 7);

    Text text(L"text");
    chain.back().vt = VT_BSTR;
    chain.back().bstrVal = text.text;
    expectText(chain.front(), L"text", "text");

    Counted object;
    chain.back().vt = VT_DISPATCH;
    chain.back().pdispVal = &object;
    IDispatch * out = nullptr;
    EXPECT_TRUE(var2dispatch(chain.front(), &out));
    EXPECT_EQ(out, &object);
    EXPECT_EQ(object.references, 2U);
}

TEST(ComVariants, GiveNumbers)
{
    Variant value(VT_I2);
    value.iVal = -2;
    EXPECT_EQ(var2int(value), -2);
    value.vt = VT_I4;
    value.lVal = -70000;
    EXPECT_EQ(var2int(value), -70000);
    Variant outer(VT_VARIANT | VT_BYREF);
    outer.pvarVal = &value;
    EXPECT_EQ(var2int(outer), -70000);
    value.vt = VT_UI1;
    value.bVal = 200;
    EXPECT_EQ(var2int(value), 200);
    value.vt = VT_R8;
    value.dblVal = 5;
    EXPECT_EQ(var2int(value), 0);
    for (const int type : std::initializer_list<int>{
             VT_EMPTY, VT_NULL, VT_BOOL, VT_I1, VT_UI2, VT_UI4, VT_I8, VT_I4 | VT_BYREF, VT_BSTR | VT_BYREF})
    {
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(var2int(value), 0) << type;
    }
}

TEST(ComVariants, GiveNumbersOfTexts)
{
    struct Case
    {
        const wchar_t * text;
        int number;
    };
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    const Case cases[] = {{L"12", 12}, {L" -12x", -12}, {L"abc", 0}, {L"", 0}, {L"+3", 3}, {L"1.9", 1},
        {L"2147483647", most}, {L"2147483648", most}, {L"-2147483647", least + 1}, {L"-2147483648", least},
        {L"-2147483649", least}, {L"99999999999", most}, {L"-99999999999", least},
        {L"99999999999999999999999", most}, {L"-99999999999999999999999", least}, {L"\t\n 5", 5},
        {L"\v\f\r 5", 5}, {L"- 5", 0}, {L"+-5", 0}, {L"--5", 0}, {L"0x10", 0}, {L"-", 0}, {L"007", 7},
        // No blanks and no digits of ASCII.
        {L"\u2003"
         L"12",
            0},
        {L"\u00A0"
         L"12",
            0},
        {L"\u0661", 0}};
    for (const Case & read : cases)
    {
        Text text(read.text);
        Variant value(VT_BSTR);
        value.bstrVal = text.text;
        EXPECT_EQ(var2int(value), read.number) << u8string(read.text);
        Variant outer(VT_VARIANT | VT_BYREF);
        outer.pvarVal = &value;
        EXPECT_EQ(var2int(outer), read.number) << u8string(read.text);
    }
    Variant null(VT_BSTR);
    null.bstrVal = nullptr;
    EXPECT_EQ(var2int(null), 0);
}

TEST(ComVariants, GiveObjectsWithAReference)
{
    Counted object;
    IDispatch * asInterface = &object;
    Variant direct(VT_DISPATCH);
    direct.pdispVal = asInterface;
    Variant referring(VT_DISPATCH | VT_BYREF);
    referring.ppdispVal = &asInterface;
    Variant outer(VT_VARIANT | VT_BYREF);
    outer.pvarVal = &referring;
    ULONG expected = 1;
    for (const VARIANT * const value : {static_cast<const VARIANT *>(&direct),
             static_cast<const VARIANT *>(&referring), static_cast<const VARIANT *>(&outer)})
    {
        IDispatch * out = nullptr;
        EXPECT_TRUE(var2dispatch(*value, &out));
        EXPECT_EQ(out, asInterface);
        EXPECT_EQ(object.references, ++expected);
    }
}

TEST(ComVariants, GiveNoObjectWhereThereIsNone)
{
    IDispatch * none = nullptr;
    Counted object;
    IDispatch * out = &object;
    Variant value(VT_DISPATCH);
    value.pdispVal = nullptr;
    EXPECT_FALSE(var2dispatch(value, &out));
    value.vt = VT_DISPATCH | VT_BYREF;
    value.ppdispVal = nullptr;
    EXPECT_FALSE(var2dispatch(value, &out));
    value.ppdispVal = &none;
    EXPECT_FALSE(var2dispatch(value, &out));
    for (const int type : std::initializer_list<int>{VT_EMPTY, VT_UNKNOWN, VT_BSTR, VT_I4})
    {
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_FALSE(var2dispatch(value, &out)) << type;
    }
    EXPECT_EQ(out, &object);
    EXPECT_EQ(object.references, 1U);
}

TEST(StatSg, IsZeroAtFirst)
{
    StatSg status;
    STATSTG * const raw = status;
    const STATSTG zero = {};
    EXPECT_EQ(std::memcmp(raw, &zero, sizeof zero), 0);
    EXPECT_EQ(static_cast<int>(status.GetType()), 0);
    EXPECT_EQ(testsupport::virtualSlots<StatSg>(), testsupport::slotsOfDestructor);
}

TEST(StatSg, IsZeroWhateverItsMemoryHeld)
{
    alignas(StatSg) unsigned char memory[sizeof(StatSg)];
    std::memset(memory, 0xFF, sizeof memory);
    auto * const status = new (memory) StatSg;
    const STATSTG & raw = *static_cast<STATSTG *>(*status);
    const GUID noClass = {};
    EXPECT_EQ(raw.pwcsName, nullptr);
    EXPECT_EQ(raw.type, 0U);
    EXPECT_EQ(raw.cbSize.QuadPart, 0U);
    for (const FILETIME & time : {raw.mtime, raw.ctime, raw.atime})
        EXPECT_TRUE(time.dwLowDateTime == 0 && time.dwHighDateTime == 0);
    EXPECT_EQ(raw.grfMode, 0U);
    EXPECT_EQ(raw.grfLocksSupported, 0U);
    EXPECT_TRUE(raw.clsid == noClass);
    EXPECT_EQ(raw.grfStateBits, 0U);
    EXPECT_EQ(raw.reserved, 0U);
    status->~StatSg();
}

TEST(StatSg, KeptAssignmentDoesNotFreeTheNameThatWasThere)
{
    StatSg target;
    auto * const name = static_cast<wchar_t *>(CoTaskMemAlloc(2 * sizeof(wchar_t)));
    ASSERT_NE(name, nullptr);
    static_cast<STATSTG *>(target)->pwcsName = name;
    StatSg source;
    std::memset(static_cast<STATSTG *>(source), 0x5A, sizeof(STATSTG));
    static_cast<STATSTG *>(source)->pwcsName = nullptr;
    EXPECT_EQ(&(target = source), &target);
    StatSg copy(source);
    EXPECT_EQ(
        std::memcmp(static_cast<STATSTG *>(target), static_cast<STATSTG *>(source), sizeof(STATSTG)), 0);
    EXPECT_EQ(std::memcmp(static_cast<STATSTG *>(copy), static_cast<STATSTG *>(source), sizeof(STATSTG)), 0);
    // It is still the test's to write to and to give back.
    name[0] = L'x';
    name[1] = L'\0';
    CoTaskMemFree(name);
}

TEST(StatSg, OwnsTheNameThatACallFillsIn)
{
    StatSg status;
    STATSTG * const raw = status;
    raw->pwcsName = static_cast<wchar_t *>(CoTaskMemAlloc(2 * sizeof(wchar_t)));
    raw->type = STGTY_STREAM;
    EXPECT_EQ(status.GetType(), STGTY_STREAM);
    // The leak check sees whether it is given back.
}

TEST(StatSg, KeptCopiesShareTheName)
{
    // One of the three may give it back.
    const testsupport::IntendedLeak leak;
    auto & first = *new StatSg;
    auto & assigned = *new StatSg;
    static_cast<STATSTG *>(first)->pwcsName = static_cast<wchar_t *>(CoTaskMemAlloc(sizeof(wchar_t)));
    static_cast<STATSTG *>(first)->type = STGTY_STORAGE;
    auto & copy = *new StatSg(first);
    assigned = first;
    EXPECT_EQ(static_cast<STATSTG *>(copy)->pwcsName, static_cast<STATSTG *>(first)->pwcsName);
    EXPECT_EQ(static_cast<STATSTG *>(assigned)->pwcsName, static_cast<STATSTG *>(first)->pwcsName);
    EXPECT_EQ(copy.GetType(), STGTY_STORAGE);
}

TEST(StatSg, IsFilledByAStream)
{
    qvbase::ReferenceMSCom<IStream> stream;
    ASSERT_TRUE(SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive())));
    stream->Write("abc", 3, nullptr);
    StatSg status;
    ASSERT_TRUE(SUCCEEDED(stream->Stat(status, STATFLAG_NONAME)));
    EXPECT_EQ(status.GetType(), STGTY_STREAM);
    EXPECT_EQ(static_cast<STATSTG *>(status)->cbSize.QuadPart, 3U);
}

} // namespace
