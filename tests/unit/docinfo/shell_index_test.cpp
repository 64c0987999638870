// The reader of property stores, on a store of this test.
#include "docinfo/document_list.h"
#include "docinfo/shell_index.h"
#include "support/temp_folder.h"
#include "unit/docinfo/document_in_memory.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace qx;
using qxtest::Summary;

namespace
{

struct StoredValue
{
    VARTYPE type;
    std::string text;
    std::int64_t time = 0;
};

using StoredValues = std::map<DWORD, StoredValue>;

// A store with the properties of the summary; others fail. It stays alive when it is released.
class Store final : public IPropertyStore
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Commit() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override
    {
        order += std::to_string(key.pid) + " ";
        const auto found = values.find(key.pid);
        if (key.fmtid.Data1 != 0xF29F85E0 || found == values.end())
            return E_FAIL;
        const StoredValue& stored = found->second;
        value->vt = stored.type;
        if (stored.type == VT_FILETIME)
            std::memcpy(&value->filetime, &stored.time, sizeof stored.time);
        else
        {
            value->pszVal = static_cast<LPSTR>(CoTaskMemAlloc(stored.text.size() + 1));
            std::memcpy(value->pszVal, stored.text.c_str(), stored.text.size() + 1);
        }
        ++valuesInUse;
        return S_OK;
    }

    StoredValues values;
    std::string order;
    ULONG references = 0;
    int valuesInUse = 0;
};

Store firstStore, secondStore;

HRESULT OpenTestStore(Store& store, IPropertyStore** opened)
{
    store.AddRef();
    *opened = &store;
    return S_OK;
}

HRESULT WINAPI ConvertToVariant(const PROPVARIANT& value, VARIANT* variant)
{
    if (value.vt == VT_LPSTR)
    {
        String text;
        text.Assign(value.pszVal);
        variant->vt = VT_BSTR;
        return text.ToBSTR(&variant->bstrVal) ? S_OK : E_OUTOFMEMORY;
    }
    if (value.vt != VT_FILETIME)
        return S_OK;
    constexpr std::uint64_t kTicksPerSecond = 10'000'000, kTicksPerDay = 86'400 * kTicksPerSecond;
    const std::uint64_t time = std::uint64_t{value.filetime.dwHighDateTime} << 32 | value.filetime.dwLowDateTime;
    const std::uint64_t second = time - time % kTicksPerSecond;
    const FILETIME fileTime = {static_cast<DWORD>(second), static_cast<DWORD>(second >> 32)};
    SYSTEMTIME parts = {};
    if (!FileTimeToSystemTime(&fileTime, &parts) || !SystemTimeToVariantTime(&parts, &variant->date))
        return E_INVALIDARG;
    variant->vt = VT_DATE;
    variant->date += static_cast<double>(time % kTicksPerSecond) / static_cast<double>(kTicksPerDay);
    return S_OK;
}

HRESULT WINAPI ClearValue(PROPVARIANT* value)
{
    Store& store = firstStore.valuesInUse > 0 ? firstStore : secondStore;
    --store.valuesInUse;
    if (value->vt != VT_FILETIME)
        CoTaskMemFree(value->pszVal);
    return S_OK;
}

constexpr ShellIndex::OpenStore kOpenFirst = [](const wchar_t*, IPropertyStore** store)
{
    return OpenTestStore(firstStore, store);
};
constexpr ShellIndex::OpenStore kOpenSecond = [](const wchar_t*, IPropertyStore** store)
{
    return OpenTestStore(secondStore, store);
};

// 3 February 2001, 04:05:06.789
std::int64_t TestTime()
{
    const SYSTEMTIME time = {2001, 2, 0, 3, 4, 5, 6, 789};
    FILETIME fileTime = {};
    SystemTimeToFileTime(&time, &fileTime);
    return static_cast<std::int64_t>(std::uint64_t{fileTime.dwHighDateTime} << 32 | fileTime.dwLowDateTime);
}

std::string ReadStores(
    const StoredValues& first, const StoredValues& second, ShellIndex::OpenStore openFirst = kOpenFirst)
{
    firstStore.values = first;
    secondStore.values = second;
    firstStore.order.clear();
    secondStore.order.clear();
    const clsAutoRelease<clsDocu*> record = qxtest::EmptyRecord();
    const int result = ReadShellIndex(*record, L"x", {openFirst, kOpenSecond, ConvertToVariant, ClearValue});
    EXPECT_EQ(firstStore.references + secondStore.references, 0u);
    EXPECT_EQ(firstStore.valuesInUse, 0);
    EXPECT_EQ(secondStore.valuesInUse, 0);
    return std::to_string(result) + " " + Summary(*record) + "." + std::to_string(record->Created.wMilliseconds);
}

} // namespace

TEST(ShellIndex, Rules)
{
    const StoredValues nothing;
    const StoredValues texts = {{2, {VT_LPSTR, "t"}}, {3, {VT_LPSTR, "s"}}, {4, {VT_LPSTR, "a"}}, {5, {VT_LPSTR, "k"}},
        {6, {VT_LPSTR, "not read"}}, {12, {VT_FILETIME, "", TestTime()}}, {13, {VT_FILETIME, "", TestTime()}}};
    const StoredValues dates = {{2, {VT_EMPTY, ""}}, {12, {VT_FILETIME, "", TestTime()}}, {13, {VT_EMPTY, ""}}};
    const StoredValues late = {{5, {VT_LPSTR, "k"}}, {12, {VT_FILETIME, "", -1}}};
    const std::string allTexts = "0 t|s|a|-|k|-|2001-2-3 4:5:6|2001-2-3 4:5:6.789";
    EXPECT_EQ(ReadStores(texts, {{4, {VT_LPSTR, "not asked"}}}), allTexts);
    EXPECT_EQ(firstStore.order, "2 4 5 3 12 13 ");
    EXPECT_EQ(secondStore.order, "");
    EXPECT_EQ(ReadStores(nothing, texts), allTexts);
    EXPECT_EQ(ReadStores(texts, nothing, nullptr), "-1 -|-|-|-|-|-|-|-.0");
    EXPECT_EQ(ReadStores(dates, nothing), "-1 -|-|-|-|-|-|2001-2-3 4:5:6|-.789");
    EXPECT_EQ(secondStore.order, "2 4 5 3 12 13 ");
    EXPECT_EQ(ReadStores(dates, late), "0 -|-|-|-|k|-|-|-.0");
    // The type of texts must be VT_LPSTR.
    EXPECT_EQ(ReadStores({{2, {VT_LPSTR, "t"}}, {5, {VT_LPWSTR, "k"}}}, texts), "-1 t|-|-|-|-|-|-|-.0");
    EXPECT_EQ(secondStore.order, "");
    EXPECT_EQ(ReadStores({{2, {VT_LPSTR, "t"}}, {13, {VT_LPSTR, "x"}}}, texts), "-1 t|-|-|-|-|-|-|-.0");
    EXPECT_EQ(ReadStores(nothing, {{2, {VT_LPSTR, "t"}}, {3, {VT_BSTR, "x"}}}), "-1 t|-|-|-|-|-|-|-.0");
}

// Neither the layer nor Wine has property stores.
TEST(ShellIndex, OfTheSystem)
{
    const qxtest::TempFolder folder;
    const String path = folder.Make(L"a.htm", "<head><title>title</title></head>");
    const clsAutoRelease<clsDocu*> record = clsDocu::Create(path, nullptr, 0, 0);
    EXPECT_EQ(ReadShellIndex(*record, path), -1);
    EXPECT_EQ(Summary(*record), "-|-|-|-|-|-|-|-");
    EXPECT_STREQ(clsDocuList(0).Get(path, 1)->reader, L"HTML");
}
