// The reader of property stores, with stores that the test provides.
#include "docinfo/document_list.h"
#include "docinfo/shell_index.h"
#include "support/temp_folder.h"
#include "unit/docinfo/document_in_memory.h"

#include <map>
#include <tuple>

using namespace qx;

namespace
{

struct StoredValue
{
    VARTYPE type;
    const char* text = "";
};

using StoredValues = std::map<DWORD, StoredValue>;

constexpr FILETIME kTime = {0x7E2D6950, 0x01C08D96}; // 2001-02-03 04:05:06.789
constexpr FILETIME kNever = {0xFFFFFFFF, 0xFFFFFFFF};

int valuesInUse;

// A store that returns the properties of the summary and fails for all others. Releasing it doesn't delete it.
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
        value->vt = found->second.type;
        if (value->vt == VT_FILETIME)
            value->filetime = *found->second.text == '\0' ? kTime : kNever;
        else
            value->pszVal = const_cast<char*>(found->second.text);
        ++valuesInUse;
        return S_OK;
    }

    StoredValues values;
    std::string order;
    ULONG references = 0;
};

Store firstStore, secondStore;

template <Store& store>
HRESULT Open(const wchar_t*, IPropertyStore** opened)
{
    store.order.clear();
    store.AddRef();
    *opened = &store;
    return S_OK;
}

HRESULT WINAPI ConvertToVariant(const PROPVARIANT& value, VARIANT* variant)
{
    if (value.vt == VT_FILETIME)
    {
        variant->vt = VT_DATE;
        variant->date = 36925 + (4 * 3600 + 5 * 60 + 6.789) / 86'400;
    }
    else if (value.vt == VT_LPSTR)
    {
        variant->vt = VT_BSTR;
        EXPECT_TRUE(qxtest::Wide(value.pszVal).ToBSTR(&variant->bstrVal));
    }
    return S_OK;
}

HRESULT WINAPI ClearValue(PROPVARIANT*)
{
    --valuesInUse;
    return S_OK;
}

// Returns the result, the record and the properties that were requested from each store.
std::string ReadStores(
    const StoredValues& first, const StoredValues& second, ShellIndex::OpenStore openFirst = Open<firstStore>)
{
    firstStore.values = first;
    secondStore.values = second;
    firstStore.order = secondStore.order = "not opened";
    const clsAutoRelease<clsDocu*> record = qxtest::EmptyRecord();
    const int result = ReadShellIndex(*record, L"x", {openFirst, Open<secondStore>, ConvertToVariant, ClearValue});
    EXPECT_EQ(firstStore.references + secondStore.references, 0u);
    EXPECT_EQ(valuesInUse, 0);
    return std::to_string(result) + " " + qxtest::Summary(*record) + "." +
           std::to_string(record->Created.wMilliseconds) + ": " + firstStore.order + "/ " + secondStore.order;
}

} // namespace

TEST(ShellIndex, Rules)
{
    const StoredValue title = {VT_LPSTR, "t"}, date = {VT_FILETIME}, empty = {VT_EMPTY}, other = {VT_LPSTR, "x"};
    const StoredValues texts = {{2, title}, {3, {VT_LPSTR, "s"}}, {4, {VT_LPSTR, "a"}}, {5, {VT_LPSTR, "k"}},
        {6, other}, {12, date}, {13, date}};
    const StoredValues none, dates = {{2, empty}, {12, date}, {13, empty}};
    const std::tuple<StoredValues, StoredValues, const char*> stores[] = {
        {texts, {{4, other}}, "0 t|s|a|-|k|-|2001-2-3 4:5:6|2001-2-3 4:5:6.789: 2 4 5 3 12 13 / not opened"},
        {none, texts, "0 t|s|a|-|k|-|2001-2-3 4:5:6|2001-2-3 4:5:6.789: 2 4 5 3 12 13 / 2 4 5 3 12 13 "},
        {dates, none, "-1 -|-|-|-|-|-|2001-2-3 4:5:6|-.789: 2 4 5 3 12 13 / 2 4 5 3 12 13 "},
        {dates, {{5, other}, {12, {VT_FILETIME, "never"}}}, "0 -|-|-|-|x|-|-|-.0: 2 4 5 3 12 13 / 2 4 5 3 12 13 "},
        // The type of texts must be VT_LPSTR.
        {{{2, title}, {5, {VT_LPWSTR}}}, texts, "-1 t|-|-|-|-|-|-|-.0: 2 4 5 / not opened"},
        {{{2, title}, {13, other}}, texts, "-1 t|-|-|-|-|-|-|-.0: 2 4 5 3 12 13 / not opened"},
        {none, {{2, title}, {3, {VT_BSTR}}}, "-1 t|-|-|-|-|-|-|-.0: 2 4 5 3 12 13 / 2 4 5 3 "}};
    for (const auto& [first, second, expected] : stores)
        EXPECT_EQ(ReadStores(first, second), expected);
    EXPECT_EQ(ReadStores(texts, none, nullptr), "-1 -|-|-|-|-|-|-|-.0: not opened/ 2 4 5 3 12 13 ");
}

// Neither the layer nor Wine has property stores.
TEST(ShellIndex, OfTheSystem)
{
    const qxtest::TempFolder folder;
    const String path = folder.Make(L"a.htm", "<head><title>title</title></head>");
    const clsAutoRelease<clsDocu*> record = clsDocu::Create(path, nullptr, 0, 0);
    EXPECT_EQ(ReadShellIndex(*record, path), -1);
    EXPECT_EQ(qxtest::Summary(*record), "-|-|-|-|-|-|-|-");
    EXPECT_STREQ(clsDocuList(0).Get(path, 1)->reader, L"HTML");
}
