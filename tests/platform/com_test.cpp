// COM's base: texts with a length, memory, identifiers, apartments, the free-threaded marshaler.
#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <objidl.h>
#include <oleauto.h>

#include <cstring>
#include <string_view>
#include <thread>

namespace
{

using namespace std::string_view_literals;

std::wstring_view TextOf(BSTR bstr)
{
    return {bstr, SysStringLen(bstr)};
}

TEST(Bstr, LengthStandsInFrontOfTheText)
{
    const BSTR bstr = SysAllocStringLen(L"a\0b€", 4);
    ASSERT_NE(bstr, nullptr);
    EXPECT_TRUE(TextOf(bstr) == L"a\0b€"sv);
    EXPECT_EQ(bstr[4], L'\0');
    UINT length = 0;
    std::memcpy(&length, reinterpret_cast<const char*>(bstr) - 4, 4);
    EXPECT_EQ(length, 8u);
    EXPECT_EQ(SysStringByteLen(bstr), 8u);
    SysFreeString(bstr);
}

TEST(Bstr, NothingAndEmptyAreDifferent)
{
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysStringByteLen(nullptr), 0u);
    SysFreeString(nullptr);
    const BSTR empty = SysAllocString(L"");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(SysStringLen(empty), 0u);
    EXPECT_EQ(empty[0], L'\0');
    SysFreeString(empty);
    const BSTR blank = SysAllocStringLen(nullptr, 3);
    ASSERT_NE(blank, nullptr);
    EXPECT_EQ(SysStringLen(blank), 3u);
    EXPECT_EQ(blank[3], L'\0');
    SysFreeString(blank);
}

TEST(Bstr, OddNumberOfBytesIsTerminatedToo)
{
    const BSTR bstr = SysAllocStringByteLen("abc", 3);
    ASSERT_NE(bstr, nullptr);
    EXPECT_EQ(SysStringByteLen(bstr), 3u);
    EXPECT_EQ(SysStringLen(bstr), 1u);
    EXPECT_EQ(std::memcmp(bstr, "abc\0", 4), 0);
    SysFreeString(bstr);
}

TEST(Bstr, ReallocationReplacesTheText)
{
    BSTR bstr = nullptr;
    EXPECT_TRUE(SysReAllocString(&bstr, L"first"));
    EXPECT_TRUE(TextOf(bstr) == L"first"sv);
    EXPECT_TRUE(SysReAllocStringLen(&bstr, L"longer than before", 11));
    EXPECT_TRUE(TextOf(bstr) == L"longer than"sv);
    EXPECT_EQ(bstr[11], L'\0');
    EXPECT_TRUE(SysReAllocStringLen(&bstr, nullptr, 6)) << "without a text the length changes and the text stays";
    EXPECT_TRUE(TextOf(bstr) == L"longer"sv);
    EXPECT_TRUE(SysReAllocStringLen(&bstr, nullptr, 9));
    EXPECT_TRUE(TextOf(bstr).substr(0, 6) == L"longer"sv);
    EXPECT_EQ(bstr[9], L'\0');
    EXPECT_TRUE(SysReAllocStringLen(&bstr, L"", 0));
    EXPECT_EQ(SysStringLen(bstr), 0u);
    SysFreeString(bstr);
}

#ifndef _WIN32
// Undefined on the system, but callers do it.
TEST(Bstr, TextMayLieInTheOldOne)
{
    BSTR bstr = SysAllocString(L"some text");
    EXPECT_TRUE(SysReAllocString(&bstr, bstr + 5));
    EXPECT_TRUE(TextOf(bstr) == L"text"sv);
    EXPECT_TRUE(SysReAllocStringLen(&bstr, bstr + 1, 2));
    EXPECT_TRUE(TextOf(bstr) == L"ex"sv);
    SysFreeString(bstr);
}
#endif

TEST(TaskMemory, ReallocationAllocatesKeepsAndFrees)
{
    void* memory = CoTaskMemRealloc(nullptr, 3);
    ASSERT_NE(memory, nullptr);
    std::memcpy(memory, "abc", 3);
    memory = CoTaskMemRealloc(memory, 100000);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(std::memcmp(memory, "abc", 3), 0);
    EXPECT_EQ(CoTaskMemRealloc(memory, 0), nullptr);
    void* const nothing = CoTaskMemAlloc(0);
    EXPECT_NE(nothing, nullptr);
    CoTaskMemFree(nothing);
    CoTaskMemFree(nullptr);
}

TEST(Identifier, TextFormAndBack)
{
    wchar_t text[39];
    EXPECT_EQ(StringFromGUID2(IID_ISequentialStream, text, 39), 39);
    EXPECT_STREQ(text, L"{0C733A30-2A1C-11CE-ADE5-00AA0044773D}");
    EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, 38), 0);
    CLSID clsid;
    EXPECT_EQ(CLSIDFromString(L"{0c733a30-2a1c-11ce-Ade5-00aa0044773d}", &clsid), S_OK);
    EXPECT_TRUE(clsid == IID_ISequentialStream);
    EXPECT_EQ(CLSIDFromString(nullptr, &clsid), S_OK);
    EXPECT_TRUE(clsid == GUID_NULL);
    for (const wchar_t* bad :
        {L"", L"{", L"0c733a30-2a1c-11ce-ade5-00aa0044773d", L"{0c733a30-2a1c-11ce-ade5-00aa0044773d",
            L"{0c733a30-2a1c-11ce-ade5-00aa0044773g}", L"{0c733a30+2a1c-11ce-ade5-00aa0044773d}"})
        EXPECT_EQ(CLSIDFromString(bad, &clsid), CO_E_CLASSSTRING) << bad;
}

TEST(Identifier, InterfacesHaveThePublishedOnes)
{
    struct
    {
        const IID& iid;
        const wchar_t* text;
    } const cases[] = {
        {IID_IUnknown, L"{00000000-0000-0000-C000-000000000046}"},
        {IID_IMarshal, L"{00000003-0000-0000-C000-000000000046}"},
        {IID_IStorage, L"{0000000B-0000-0000-C000-000000000046}"},
        {IID_IStream, L"{0000000C-0000-0000-C000-000000000046}"},
        {IID_IEnumSTATSTG, L"{0000000D-0000-0000-C000-000000000046}"},
        {GUID_NULL, L"{00000000-0000-0000-0000-000000000000}"},
    };
    for (const auto& c : cases)
    {
        wchar_t text[39];
        StringFromGUID2(c.iid, text, 39);
        EXPECT_STREQ(text, c.text);
    }
    EXPECT_TRUE(IsEqualIID(IID_IStream, IID_IStream));
    EXPECT_TRUE(IID_IStream != IID_IStorage);
}

TEST(Apartment, InitialisationsAreCountedByThread)
{
    std::thread(
        []
        {
            EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
            EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
            EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
            CoUninitialize();
            EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
            CoUninitialize();
            EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
            CoUninitialize();
            CoUninitialize();
            EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK) << "one too many ends nothing";
            CoUninitialize();
        })
        .join();
}

// An object that aggregates the marshaler, as it is meant to be used.
class OuterObject final : public IUnknown
{
public:
    ~OuterObject()
    {
        if (marshaler != nullptr)
            marshaler->Release();
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override
    {
        if (riid == IID_IMarshal)
            return marshaler->QueryInterface(riid, object);
        if (riid != IID_IUnknown)
            return E_NOINTERFACE;
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 1;
    IUnknown* marshaler = nullptr;
};

TEST(FreeThreadedMarshaler, ItsInterfaceBelongsToTheOuterObject)
{
    OuterObject outer;
    ASSERT_EQ(CoCreateFreeThreadedMarshaler(&outer, &outer.marshaler), S_OK);
    EXPECT_EQ(outer.references, 1u) << "the inner object holds no reference, which would be a circle";

    IMarshal* marshal = nullptr;
    ASSERT_EQ(outer.QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&marshal)), S_OK);
    EXPECT_EQ(outer.references, 2u);
    IUnknown* identity = nullptr;
    ASSERT_EQ(marshal->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    EXPECT_EQ(identity, &outer);
    identity->Release();
    EXPECT_EQ(marshal->DisconnectObject(0), S_OK);
    marshal->Release();
    EXPECT_EQ(outer.references, 1u);

    void* other = &outer;
    EXPECT_EQ(outer.marshaler->QueryInterface(IID_IStream, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

TEST(FreeThreadedMarshaler, StandsAloneWithoutAnOuterObject)
{
    IUnknown* marshaler = nullptr;
    ASSERT_EQ(CoCreateFreeThreadedMarshaler(nullptr, &marshaler), S_OK);
    IMarshal* marshal = nullptr;
    ASSERT_EQ(marshaler->QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&marshal)), S_OK);
    EXPECT_EQ(marshaler->Release(), 1u);
    EXPECT_EQ(marshal->Release(), 0u);
}

} // namespace
