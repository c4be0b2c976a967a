#include "VontalBase/platform/comerror.h"

#include "comtesting.h"

#include <cstring>
#include <string>
#include <thread>

namespace
{

using comtesting::Com;
using comtesting::emptyVariant;
using comtesting::Text;
using comtesting::Value;
using comtesting::variantOf;

TEST(ComStrings, AStringKnowsItsLengthAndMayHoldZeros)
{
    const Text text(std::wstring(L"a\0b", 3));
    EXPECT_EQ(SysStringLen(text), 3U);
    EXPECT_EQ(SysStringByteLen(text), 3U * sizeof(OLECHAR));
    EXPECT_EQ(static_cast<BSTR>(text)[3], 0);
    EXPECT_EQ(text.units(), std::wstring(L"a\0b", 3));
}

TEST(ComStrings, NullIsAnEmptyStringThatMayBeFreed)
{
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
}

TEST(ComStrings, ALengthWithoutUnitsMakesRoom)
{
    BSTR const room = SysAllocStringLen(nullptr, 2);
    ASSERT_NE(room, nullptr);
    room[0] = L'x';
    room[1] = L'y';
    EXPECT_EQ(std::wstring(room), L"xy");
    SysFreeString(room);
}

TEST(ComMemory, TaskMemoryKeepsItsBytesWhenItGrows)
{
    char * memory = static_cast<char *>(CoTaskMemAlloc(4));
    ASSERT_NE(memory, nullptr);
    std::memcpy(memory, "abc", 4);
    memory = static_cast<char *>(CoTaskMemRealloc(memory, 100'000));
    ASSERT_NE(memory, nullptr);
    EXPECT_STREQ(memory, "abc");
    EXPECT_EQ(CoTaskMemRealloc(memory, 0), nullptr) << "size 0 frees";
    CoTaskMemFree(nullptr);
}

TEST(ComMemory, ABlockIsUsedWhileItIsLocked)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 8);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(GlobalSize(block), 8U);
    char * const bytes = static_cast<char *>(GlobalLock(block));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[7], 0);
    EXPECT_EQ(GlobalLock(block), bytes);
    EXPECT_NE(GlobalUnlock(block), FALSE) << "locked twice";
    EXPECT_EQ(GlobalUnlock(block), FALSE);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

LARGE_INTEGER by(std::int64_t distance)
{
    LARGE_INTEGER move;
    move.QuadPart = distance;
    return move;
}

ULARGE_INTEGER size(std::uint64_t bytes)
{
    ULARGE_INTEGER number;
    number.QuadPart = bytes;
    return number;
}

TEST(ComStreams, WhatIsWrittenIsReadFromThePosition)
{
    const Com<IStream> stream = comtesting::streamOf("0123456789");
    ULARGE_INTEGER position = size(99);
    EXPECT_EQ(stream->Seek(by(-3), STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 7U);
    char buffer[10] = {};
    ULONG read = 0;
    EXPECT_GE(stream->Read(buffer, 10, &read), 0);
    EXPECT_EQ(std::string(buffer, read), "789") << "fewer bytes at the end are no failure";
    EXPECT_GE(stream->Read(buffer, 10, &read), 0);
    EXPECT_EQ(read, 0U);
    EXPECT_EQ(stream->Seek(by(2), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(stream->Write("ab", 2, nullptr), S_OK);
    EXPECT_EQ(stream->Seek(by(-1), STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 3U);
    EXPECT_EQ(comtesting::bytesOf(stream.get()), "01ab456789");
}

TEST(ComStreams, AnImpossiblePositionIsRefused)
{
    const Com<IStream> stream = comtesting::streamOf("abc");
    ULARGE_INTEGER position = size(0);
    EXPECT_EQ(stream->Seek(by(2), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_LT(stream->Seek(by(-3), STREAM_SEEK_CUR, nullptr), 0);
    EXPECT_LT(stream->Seek(by(0), 3, nullptr), 0);
    EXPECT_EQ(stream->Seek(by(0), STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 2U) << "it stays where it was";
}

TEST(ComStreams, WritingBehindTheEndLeavesZerosBetween)
{
    const Com<IStream> stream = comtesting::streamOf("a");
    EXPECT_EQ(stream->Seek(by(4), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(stream->Write("b", 1, nullptr), S_OK);
    const std::string bytes = comtesting::bytesOf(stream.get());
    ASSERT_EQ(bytes.size(), 5U);
    EXPECT_EQ(bytes.front(), 'a');
    EXPECT_EQ(bytes.back(), 'b');
}

TEST(ComStreams, ACloneSharesTheBytesAndHasItsOwnPosition)
{
    const Com<IStream> stream = comtesting::streamOf("abc");
    Com<IStream> clone;
    ASSERT_EQ(stream->Clone(clone.receive()), S_OK);
    EXPECT_EQ(clone->Write("X", 1, nullptr), S_OK);
    char c = 0;
    EXPECT_GE(stream->Read(&c, 1, nullptr), 0);
    EXPECT_EQ(c, 'X');
}

TEST(ComStreams, AStreamIsCopiedAndCut)
{
    const Com<IStream> stream = comtesting::streamOf("abcdef");
    const Com<IStream> target = comtesting::streamOf("");
    ULARGE_INTEGER read = size(0);
    ULARGE_INTEGER written = size(0);
    EXPECT_EQ(stream->CopyTo(target.get(), size(4), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 4U);
    EXPECT_EQ(written.QuadPart, 4U);
    EXPECT_EQ(comtesting::bytesOf(target.get()), "abcd");
    EXPECT_EQ(stream->SetSize(size(2)), S_OK);
    EXPECT_EQ(comtesting::bytesOf(stream.get()), "ab");
}

TEST(ComStreams, TheBlockBehindAStreamHoldsItsBytes)
{
    const Com<IStream> stream = comtesting::streamOf("abc");
    HGLOBAL block = nullptr;
    ASSERT_EQ(GetHGlobalFromStream(stream.get(), &block), S_OK);
    EXPECT_GE(GlobalSize(block), 3U);
    EXPECT_EQ(std::memcmp(GlobalLock(block), "abc", 3), 0);
    GlobalUnlock(block);
}

TEST(ComStreams, ABlockOfTheCallersIsLeftToItWhereThatIsAskedFor)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 3);
    std::memcpy(GlobalLock(block), "xyz", 3);
    GlobalUnlock(block);
    Com<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(block, FALSE, stream.receive()), S_OK);
    EXPECT_EQ(comtesting::bytesOf(stream.get()).substr(0, 3), "xyz");
    stream.release();
    EXPECT_EQ(std::memcmp(GlobalLock(block), "xyz", 3), 0);
    GlobalUnlock(block);
    GlobalFree(block);
}

TEST(ComStreams, AStreamOffersItsInterfacesAndNoOthers)
{
    const Com<IStream> stream = comtesting::streamOf("");
    EXPECT_TRUE(comtesting::query<ISequentialStream>(stream.get()));
    EXPECT_TRUE(comtesting::query<IUnknown>(stream.get()));
    void * other = &other;
    EXPECT_EQ(stream->QueryInterface(qvplatform::idOf<IXMLDOMNode>(), &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

// ---------------------------------------------------------------------------------------------------

VARIANT variantWith(VARTYPE type, std::int64_t number)
{
    VARIANT variant = emptyVariant();
    variant.vt = type;
    variant.llVal = number;
    return variant;
}

TEST(ComVariants, NumbersAndTextsTurnIntoEachOther)
{
    const Text text(L" 42 ");
    const Text negative(L"-7");
    const Text wordy(L"abc");
    VARIANT real = emptyVariant();
    real.vt = VT_R8;
    real.dblVal = 2.5;
    const struct
    {
        const char * label;
        VARIANT source;
        VARTYPE type;
        HRESULT result;
        std::int64_t number;
    } rows[] = {
        {"text to long", variantOf(static_cast<BSTR>(text)), VT_I4, S_OK, 42},
        {"negative text", variantOf(static_cast<BSTR>(negative)), VT_I4, S_OK, -7},
        {"a word", variantOf(static_cast<BSTR>(wordy)), VT_I4, DISP_E_TYPEMISMATCH, 0},
        {"short to long", variantWith(VT_I2, -5 & 0xFFFF), VT_I4, S_OK, -5},
        {"byte to long", variantWith(VT_UI1, 255), VT_I4, S_OK, 255},
        {"long too great for a short", variantWith(VT_I4, 40'000), VT_I2, DISP_E_OVERFLOW, 0},
        {"long that fits into a short", variantWith(VT_I4, 32'767), VT_I2, S_OK, 32'767},
        {"halves go to the even number", real, VT_I4, S_OK, 2},
        {"true is minus one", variantWith(VT_BOOL, VARIANT_TRUE & 0xFFFF), VT_I4, S_OK, -1},
        {"nothing is zero", emptyVariant(), VT_I4, S_OK, 0},
        {"null is no number", variantWith(VT_NULL, 0), VT_I4, DISP_E_TYPEMISMATCH, 0},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        VARIANT source = row.source;
        VARIANT made = emptyVariant();
        ASSERT_EQ(VariantChangeType(&made, &source, 0, row.type), row.result);
        if (row.result != S_OK)
        {
            EXPECT_EQ(made.vt, VT_EMPTY) << "the target stays";
            continue;
        }
        EXPECT_EQ(made.vt, row.type);
        EXPECT_EQ(row.type == VT_I2 ? made.iVal : made.lVal, row.number);
    }
}

TEST(ComVariants, ValuesBecomeTexts)
{
    VARIANT real = emptyVariant();
    real.vt = VT_R8;
    real.dblVal = 0.5;
    VARIANT inner = variantWith(VT_I4, 12);
    VARIANT reference = emptyVariant();
    reference.vt = VT_VARIANT | VT_BYREF;
    reference.pvarVal = &inner;
    VARIANT nothing = emptyVariant();
    VARIANT referenceToNothing = reference;
    referenceToNothing.pvarVal = &nothing;
    const struct
    {
        const char * label;
        VARIANT source;
        USHORT flags;
        const char * text;
    } rows[] = {
        {"long", variantWith(VT_I4, -12), 0, "-12"},
        {"unsigned", variantWith(VT_UI4, 4'000'000'000), 0, "4000000000"},
        {"real", real, 0, "0.5"},
        {"truth", variantWith(VT_BOOL, VARIANT_TRUE & 0xFFFF), 0, "-1"},
        {"truth in words", variantWith(VT_BOOL, VARIANT_TRUE & 0xFFFF), VARIANT_ALPHABOOL, "True"},
        {"nothing", emptyVariant(), 0, ""},
        {"by reference", reference, 0, "12"},
        {"nothing by reference", referenceToNothing, 0, ""},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        VARIANT source = row.source;
        Value made;
        ASSERT_EQ(VariantChangeType(made.receive(), &source, row.flags, VT_BSTR), S_OK);
        EXPECT_EQ(made.utf8(), row.text);
    }
}

TEST(ComVariants, ACopyOwnsItsOwnStringAndReference)
{
    Text text(L"abc");
    VARIANT source = variantOf(static_cast<BSTR>(text));
    Value copy;
    ASSERT_EQ(VariantCopy(copy.receive(), &source), S_OK);
    EXPECT_NE(copy.get().bstrVal, static_cast<BSTR>(text));
    EXPECT_EQ(copy.utf8(), "abc");

    const Com<IStream> stream = comtesting::streamOf("");
    VARIANT object = variantOf(static_cast<IUnknown *>(stream.get()));
    const ULONG before = stream->AddRef();
    {
        Value shared;
        ASSERT_EQ(VariantCopy(shared.receive(), &object), S_OK);
        EXPECT_EQ(stream->AddRef(), before + 2);
        stream->Release();
    }
    EXPECT_EQ(stream->Release(), before - 1);
}

TEST(ComVariants, ClearingFreesOnlyWhatIsOwned)
{
    BSTR text = SysAllocString(L"kept");
    VARIANT reference = emptyVariant();
    reference.vt = VT_BSTR | VT_BYREF;
    reference.pbstrVal = &text;
    EXPECT_EQ(VariantClear(&reference), S_OK);
    EXPECT_EQ(reference.vt, VT_EMPTY);
    EXPECT_EQ(std::wstring(text), L"kept");
    SysFreeString(text);
    VARIANT wrong = emptyVariant();
    wrong.vt = 4711;
    EXPECT_EQ(VariantClear(&wrong), DISP_E_BADVARTYPE);
}

// ---------------------------------------------------------------------------------------------------

TEST(ComErrors, WhatIsLeftBehindIsTakenOnce)
{
    Com<ICreateErrorInfo> made;
    ASSERT_EQ(CreateErrorInfo(made.receive()), S_OK);
    wchar_t description[] = L"it broke";
    EXPECT_EQ(made->SetDescription(description), S_OK);
    EXPECT_EQ(made->SetHelpContext(7), S_OK);
    const Com<IErrorInfo> info = comtesting::query<IErrorInfo>(made.get());
    ASSERT_TRUE(info);
    ASSERT_EQ(SetErrorInfo(0, info.get()), S_OK);

    Com<IErrorInfo> taken;
    ASSERT_EQ(GetErrorInfo(0, taken.receive()), S_OK);
    Text text;
    EXPECT_EQ(taken->GetDescription(text.receive()), S_OK);
    EXPECT_EQ(text.utf8(), "it broke");
    EXPECT_EQ(taken->GetSource(text.receive()), S_OK);
    EXPECT_EQ(text.utf8(), "");
    DWORD context = 0;
    EXPECT_EQ(taken->GetHelpContext(&context), S_OK);
    EXPECT_EQ(context, 7U);
    EXPECT_EQ(GetErrorInfo(0, taken.receive()), S_FALSE);
    EXPECT_FALSE(taken);
}

TEST(ComErrors, AnotherThreadSeesNothingOfIt)
{
    Com<ICreateErrorInfo> made;
    ASSERT_EQ(CreateErrorInfo(made.receive()), S_OK);
    const Com<IErrorInfo> info = comtesting::query<IErrorInfo>(made.get());
    ASSERT_EQ(SetErrorInfo(0, info.get()), S_OK);
    HRESULT seen = S_OK;
    std::thread(
        [&seen]
        {
            Com<IErrorInfo> other;
            seen = GetErrorInfo(0, other.receive());
        })
        .join();
    EXPECT_EQ(seen, S_FALSE);
    EXPECT_EQ(SetErrorInfo(0, nullptr), S_OK);
    Com<IErrorInfo> left;
    EXPECT_EQ(GetErrorInfo(0, left.receive()), S_FALSE);
}

TEST(ComErrors, AResultThatIsThrownIsTold)
{
    try
    {
        _com_issue_error(E_OUTOFMEMORY);
        FAIL() << "nothing was thrown";
    }
    catch (const _com_error & error)
    {
        EXPECT_EQ(error.Error(), E_OUTOFMEMORY);
        const _com_error copy = error;
        EXPECT_EQ(copy.Error(), E_OUTOFMEMORY);
        EXPECT_FALSE(qvplatform::comErrorMessage(copy.Error()).empty());
    }
}

TEST(ComErrors, CodesWithoutAMessageHaveANumber)
{
    const struct
    {
        std::uint32_t code;
        const wchar_t * text;
    } rows[] = {
        {0x80040200, L"Unknown error 0x80040200"},
        {0x80040300, L"IDispatch error #256"},
        {0x8004FFFF, L"IDispatch error #65023"},
        {0x80050000, L"Unknown error 0x80050000"},
        {0xA0001234, L"Unknown error 0xA0001234"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.code);
        EXPECT_EQ(qvplatform::comErrorMessage(static_cast<HRESULT>(row.code)), row.text);
    }
}

TEST(ComErrors, TheSystemsMessageHasNoLineEnd)
{
    for (const HRESULT result : {E_FAIL, E_OUTOFMEMORY, E_INVALIDARG, E_ACCESSDENIED})
    {
        const std::wstring text = qvplatform::comErrorMessage(result);
        ASSERT_FALSE(text.empty());
        EXPECT_NE(text.back(), L'\n');
        EXPECT_NE(text.back(), L'\r');
        EXPECT_EQ(text.find(L"Unknown error"), std::wstring::npos);
    }
}

// ---------------------------------------------------------------------------------------------------

TEST(ComClasses, ObjectsAreMadeWhereTheThreadHasInitialised)
{
    HRESULT before = S_OK;
    HRESULT first = E_FAIL;
    HRESULT second = E_FAIL;
    HRESULT made = E_FAIL;
    HRESULT unknownClass = S_OK;
    HRESULT unknownInterface = S_OK;
    HRESULT after = S_OK;
    std::thread(
        [&]
        {
            const auto create = [](REFCLSID classId, REFIID iid)
            {
                void * object = nullptr;
                const HRESULT result = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, iid, &object);
                if (object != nullptr)
                    static_cast<IUnknown *>(object)->Release();
                return result;
            };
            before = create(qvplatform::domDocumentClass(), qvplatform::idOf<IXMLDOMDocument>());
            first = CoInitialize(nullptr);
            second = CoInitialize(nullptr);
            made = create(qvplatform::domDocumentClass(), qvplatform::idOf<IXMLDOMDocument>());
            unknownClass = create(qvplatform::idOf<IUnknown>(), qvplatform::idOf<IUnknown>());
            unknownInterface = create(qvplatform::domDocumentClass(), qvplatform::idOf<IStream>());
            CoUninitialize();
            CoUninitialize();
            after = create(qvplatform::domDocumentClass(), qvplatform::idOf<IXMLDOMDocument>());
        })
        .join();
    EXPECT_EQ(before, CO_E_NOTINITIALIZED);
    EXPECT_EQ(first, S_OK);
    EXPECT_EQ(second, S_FALSE);
    EXPECT_EQ(made, S_OK);
    EXPECT_EQ(unknownClass, REGDB_E_CLASSNOTREG);
    EXPECT_EQ(unknownInterface, E_NOINTERFACE);
    EXPECT_EQ(after, CO_E_NOTINITIALIZED);
}

} // namespace
